#include "editor/KeyboardLayouts.h"

#include <algorithm>

namespace ht
{

namespace
{

struct Layout {
    unsigned short languageId; // the low word of the layout identifier
    const char *name;
    const char *x11; // setxkbmap's layout name, "" when none fits
};

// The languages a machine's operator panel is commonly translated into.
constexpr Layout kLayouts[] = {
    {0x0401, "Arabic", "ara"},
    {0x0402, "Bulgarian", "bg"},
    {0x0403, "Catalan", "es(cat)"},
    {0x0404, "Chinese (Traditional)", "tw"},
    {0x0405, "Czech", "cz"},
    {0x0406, "Danish", "dk"},
    {0x0407, "German", "de"},
    {0x0408, "Greek", "gr"},
    {0x0409, "English (US)", "us"},
    {0x040A, "Spanish", "es"},
    {0x040B, "Finnish", "fi"},
    {0x040C, "French", "fr"},
    {0x040D, "Hebrew", "il"},
    {0x040E, "Hungarian", "hu"},
    {0x040F, "Icelandic", "is"},
    {0x0410, "Italian", "it"},
    {0x0411, "Japanese", "jp"},
    {0x0412, "Korean", "kr"},
    {0x0413, "Dutch", "nl"},
    {0x0414, "Norwegian", "no"},
    {0x0415, "Polish", "pl"},
    {0x0416, "Portuguese (Brazil)", "br"},
    {0x0418, "Romanian", "ro"},
    {0x0419, "Russian", "ru"},
    {0x041A, "Croatian", "hr"},
    {0x041B, "Slovak", "sk"},
    {0x041C, "Albanian", "al"},
    {0x041D, "Swedish", "se"},
    {0x041E, "Thai", "th"},
    {0x041F, "Turkish", "tr"},
    {0x0420, "Urdu", "pk"},
    {0x0421, "Indonesian", "id"},
    {0x0422, "Ukrainian", "ua"},
    {0x0423, "Belarusian", "by"},
    {0x0424, "Slovenian", "si"},
    {0x0425, "Estonian", "ee"},
    {0x0426, "Latvian", "lv"},
    {0x0427, "Lithuanian", "lt"},
    {0x0429, "Persian", "ir"},
    {0x042A, "Vietnamese", "vn"},
    {0x042F, "Macedonian", "mk"},
    {0x0439, "Hindi", "in"},
    {0x0804, "Chinese (Simplified)", "cn"},
    {0x0807, "German (Switzerland)", "ch"},
    {0x0809, "English (UK)", "gb"},
    {0x080A, "Spanish (Mexico)", "latam"},
    {0x080C, "French (Belgium)", "be"},
    {0x0813, "Dutch (Belgium)", "be"},
    {0x0816, "Portuguese", "pt"},
    {0x081A, "Serbian (Latin)", "rs(latin)"},
    {0x0C0C, "French (Canada)", "ca"},
    {0x0C1A, "Serbian (Cyrillic)", "rs"},
    {0x100C, "French (Switzerland)", "ch(fr)"},
};

} // namespace

QString keyboardLayoutId(const QString &stored)
{
    const QString text = stored.trimmed();
    bool ok = false;
    quint32 value = 0;
    const bool hexadecimal =
        text.size() == 8 && (text.startsWith(QLatin1Char('0')) ||
                             std::any_of(text.begin(), text.end(), [](QChar c) { return !c.isDigit(); }));
    if (hexadecimal)
        value = text.toUInt(&ok, 16);
    else if (!text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }))
        value = text.toUInt(&ok, 10);
    if (!ok || value == 0)
        return {};
    return QStringLiteral("%1").arg(value, 8, 16, QLatin1Char('0')).toUpper();
}

QString keyboardLayoutText(const QString &layoutId, const QString &language)
{
    const QString lead = QStringLiteral("Keyboard for ") + language + QStringLiteral(": ");
    if (layoutId.trimmed().isEmpty())
        return lead + QStringLiteral("no layout set");
    const QString id = keyboardLayoutId(layoutId);
    if (!id.isEmpty()) {
        const unsigned short languageId = id.toUInt(nullptr, 16) & 0xFFFF;
        for (const Layout &l : kLayouts) {
            if (l.languageId != languageId)
                continue;
            QString text = lead + QLatin1String(l.name) + QStringLiteral(" (") + id;
            if (*l.x11)
                text += QStringLiteral(", X11 layout \"") + QLatin1String(l.x11) + QLatin1Char('"');
            return text + QLatin1Char(')');
        }
    }
    return lead + QStringLiteral("layout ") + layoutId.trimmed();
}

} // namespace ht
