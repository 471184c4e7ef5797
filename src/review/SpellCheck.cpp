#include "review/SpellCheck.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <hunspell.hxx>
#include <iconv.h>

namespace ht
{

QString dictionaryName(const QString &languageNumber)
{
    static const QHash<QString, QString> names{
        {QStringLiteral("1026"), QStringLiteral("bg_BG")}, {QStringLiteral("1029"), QStringLiteral("cs_CZ")},
        {QStringLiteral("1030"), QStringLiteral("da_DK")}, {QStringLiteral("1031"), QStringLiteral("de_DE")},
        {QStringLiteral("1032"), QStringLiteral("el_GR")}, {QStringLiteral("1033"), QStringLiteral("en_US")},
        {QStringLiteral("1034"), QStringLiteral("es_ES")}, {QStringLiteral("1035"), QStringLiteral("fi_FI")},
        {QStringLiteral("1036"), QStringLiteral("fr_FR")}, {QStringLiteral("1038"), QStringLiteral("hu_HU")},
        {QStringLiteral("1040"), QStringLiteral("it_IT")}, {QStringLiteral("1043"), QStringLiteral("nl_NL")},
        {QStringLiteral("1044"), QStringLiteral("nb_NO")}, {QStringLiteral("1045"), QStringLiteral("pl_PL")},
        {QStringLiteral("1046"), QStringLiteral("pt_BR")}, {QStringLiteral("1048"), QStringLiteral("ro_RO")},
        {QStringLiteral("1049"), QStringLiteral("ru_RU")}, {QStringLiteral("1050"), QStringLiteral("hr_HR")},
        {QStringLiteral("1051"), QStringLiteral("sk_SK")}, {QStringLiteral("1053"), QStringLiteral("sv_SE")},
        {QStringLiteral("1055"), QStringLiteral("tr_TR")}, {QStringLiteral("1058"), QStringLiteral("uk_UA")},
        {QStringLiteral("1060"), QStringLiteral("sl_SI")}, {QStringLiteral("1061"), QStringLiteral("et_EE")},
        {QStringLiteral("1062"), QStringLiteral("lv_LV")}, {QStringLiteral("1063"), QStringLiteral("lt_LT")},
        {QStringLiteral("2057"), QStringLiteral("en_GB")}, {QStringLiteral("2070"), QStringLiteral("pt_PT")},
        {QStringLiteral("3082"), QStringLiteral("es_ES")}, {QStringLiteral("2055"), QStringLiteral("de_CH")},
        {QStringLiteral("3079"), QStringLiteral("de_AT")}, {QStringLiteral("2060"), QStringLiteral("fr_BE")},
    };
    return names.value(languageNumber.trimmed());
}

QStringList dictionaryFolders()
{
    QStringList folders;
    const QString own = qEnvironmentVariable("HELPTEXT_DICTIONARIES");
    if (!own.isEmpty())
        folders << own.split(QDir::listSeparator(), Qt::SkipEmptyParts);
    folders << QStringLiteral("/usr/share/hunspell") << QStringLiteral("/usr/share/myspell/dicts");
    return folders;
}

// One Hunspell dictionary and the conversion to its own encoding.
class SpellCheck::Dictionary
{
  public:
    Dictionary(const QString &aff, const QString &dic)
        : m_hunspell(QFile::encodeName(aff).constData(), QFile::encodeName(dic).constData())
    {
        const std::string encoding = m_hunspell.get_dict_encoding();
        m_utf8 = encoding.empty() || QByteArray::fromStdString(encoding).toUpper().replace('-', "") == "UTF8";
        if (!m_utf8) {
            m_to = iconv_open(encoding.c_str(), "UTF-8");
            m_from = iconv_open("UTF-8", encoding.c_str());
        }
    }
    ~Dictionary()
    {
        if (m_to != iconv_t(-1))
            iconv_close(m_to);
        if (m_from != iconv_t(-1))
            iconv_close(m_from);
    }
    // Help texts repeat their words: each is asked of Hunspell once.
    bool knows(const QString &word)
    {
        auto it = m_known.constFind(word);
        if (it != m_known.constEnd())
            return *it;
        bool convertible = true;
        const std::string w = encode(word, convertible);
        // A word the dictionary's encoding cannot hold is not its to judge.
        const bool known = !convertible || m_hunspell.spell(w) || knownCompound(word, 0);
        m_known.insert(word, known);
        return known;
    }
    QStringList suggest(const QString &word)
    {
        bool convertible = true;
        const std::string w = encode(word, convertible);
        QStringList out;
        if (!convertible)
            return out;
        for (const std::string &s : m_hunspell.suggest(w))
            out << decode(s);
        return out;
    }

  private:
    bool spells(const QString &part)
    {
        bool convertible = true;
        const std::string w = encode(part, convertible);
        return convertible && m_hunspell.spell(w);
    }
    // Technical nouns are compounds the dictionary cannot list
    // ("Faltschachtelmagazin"): a word made of known words of three letters or
    // more, joined directly or by a linking "s", counts as known.
    bool knownCompound(const QString &word, int depth)
    {
        if (depth > 3 || word.size() < 6)
            return false;
        for (qsizetype cut = 3; cut + 3 <= word.size(); ++cut) {
            const QString head = word.left(cut);
            if (!spells(head))
                continue;
            for (const QString &rest : {word.mid(cut), word.mid(cut).mid(word.mid(cut).startsWith(u's') ? 1 : 0)}) {
                if (rest.size() < 3)
                    continue;
                const QString noun = rest.left(1).toUpper() + rest.mid(1);
                if (spells(rest) || spells(noun) || knownCompound(noun, depth + 1))
                    return true;
            }
        }
        return false;
    }
    static std::string convert(iconv_t cd, const QByteArray &in, bool &ok)
    {
        std::string out(size_t(in.size()) * 4 + 4, '\0');
        char *src = const_cast<char *>(in.constData());
        size_t srcLeft = size_t(in.size()), dstLeft = out.size();
        char *dst = out.data();
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        ok = iconv(cd, &src, &srcLeft, &dst, &dstLeft) != size_t(-1);
        out.resize(out.size() - dstLeft);
        return out;
    }
    std::string encode(const QString &word, bool &ok)
    {
        ok = true;
        if (m_utf8)
            return word.toStdString();
        return m_to == iconv_t(-1) ? (ok = false, std::string()) : convert(m_to, word.toUtf8(), ok);
    }
    QString decode(const std::string &s)
    {
        if (m_utf8 || m_from == iconv_t(-1))
            return QString::fromStdString(s);
        bool ok = true;
        return QString::fromStdString(convert(m_from, QByteArray::fromStdString(s), ok));
    }

    Hunspell m_hunspell;
    QHash<QString, bool> m_known;
    bool m_utf8 = true;
    iconv_t m_to = iconv_t(-1), m_from = iconv_t(-1);
};

SpellCheck::SpellCheck(QStringList folders) : m_folders(std::move(folders)) {}

SpellCheck::~SpellCheck() = default;

SpellCheck::Dictionary *SpellCheck::dictionary(const QString &languageNumber)
{
    auto it = m_dictionaries.constFind(languageNumber);
    if (it != m_dictionaries.constEnd())
        return it->get();
    std::shared_ptr<Dictionary> found;
    const QString name = dictionaryName(languageNumber);
    for (const QString &folder : m_folders) {
        const QString aff = QDir(folder).filePath(name + QStringLiteral(".aff")),
                      dic = QDir(folder).filePath(name + QStringLiteral(".dic"));
        if (!name.isEmpty() && QFile::exists(aff) && QFile::exists(dic)) {
            found = std::make_shared<Dictionary>(aff, dic);
            break;
        }
    }
    return m_dictionaries.insert(languageNumber, found)->get();
}

bool SpellCheck::hasDictionary(const QString &languageNumber)
{
    return dictionary(languageNumber) != nullptr;
}

QStringList SpellCheck::unknownWords(const QString &text, const QString &languageNumber)
{
    Dictionary *d = dictionary(languageNumber);
    if (!d)
        return {};
    // Words of letters (with inner apostrophes; the parts of a hyphenated word
    // each by itself, "SPS-Eingang"); codes with digits and
    // words in capitals only (PLC, CPU) are names, not spelling.
    static const QRegularExpression word(QStringLiteral("\\p{L}[\\p{L}\\p{M}]*(?:['’]\\p{L}[\\p{L}\\p{M}]*)*"));
    // A Latin word in a Greek or Cyrillic text is a name or a label of the panel ("Stop"), not its language.
    static const QStringList otherScripts{QStringLiteral("el"), QStringLiteral("ru"), QStringLiteral("bg"),
                                          QStringLiteral("uk")};
    const bool skipLatin = otherScripts.contains(dictionaryName(languageNumber).left(2));
    const auto latin = [](const QString &w) {
        return std::all_of(w.begin(), w.end(),
                           [](QChar c) { return c.script() == QChar::Script_Latin || !c.isLetter(); });
    };
    QStringList unknown;
    QSet<QString> seen;
    for (auto it = word.globalMatch(text); it.hasNext();) {
        const auto m = it.next();
        const QString w = m.captured();
        const qsizetype end = m.capturedEnd();
        const bool partOfCode = (m.capturedStart() > 0 && text[m.capturedStart() - 1].isDigit()) ||
                                (end < text.size() && text[end].isDigit());
        if (w.size() < 2 || partOfCode || w == w.toUpper() || seen.contains(w) || (skipLatin && latin(w)))
            continue;
        seen.insert(w);
        if (!d->knows(w))
            unknown << w;
    }
    return unknown;
}

QStringList SpellCheck::suggestions(const QString &word, const QString &languageNumber)
{
    Dictionary *d = dictionary(languageNumber);
    return d ? d->suggest(word) : QStringList();
}

Findings SpellCheck::check(const FieldTexts &t, const QString &languageNumber)
{
    Findings out;
    for (const QString &w : unknownWords(t.destination, languageNumber))
        out.push_back(
            {QStringLiteral("spelling"), t.field,
             t.field + QStringLiteral(": \"%1\" is not in the %2 dictionary").arg(w, dictionaryName(languageNumber))});
    return out;
}

} // namespace ht
