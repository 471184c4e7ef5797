#include "review/WidthCheck.h"

#include "common/Context.h"
#include "common/IniFile.h"
#include "database/LanguageLookup.h"
#include "html/TextWidthBreaker.h"

#include <cmath>

namespace ht
{

WidthLimits widthLimitsFromSettings(Context &ctx)
{
    const QString &ini = ctx.state.iniPath;
    QString screen = ctx.state.screenResolution;
    if (screen.isEmpty() && !ini.isEmpty())
        screen = QString::number(profile::readInt(ini, QStringLiteral("Setup"), QStringLiteral("ScreenResolution"), 0));
    if (screen.toInt() <= 0)
        screen = QStringLiteral("1024");
    WidthLimits limits;
    limits.fontSize = screen == QLatin1String("1280") ? QStringLiteral("18") : QStringLiteral("10");
    const int panel = int(std::nearbyint(screen.toInt() * 0.9));
    const auto own = [&](const char *key) {
        const int set = ini.isEmpty() ? 0 : profile::readInt(ini, QStringLiteral("Check"), QLatin1String(key), 0);
        return set > 0 ? set : panel;
    };
    limits.device = own("DeviceWidth");
    limits.result = own("ResultWidth");
    return limits;
}

WidthCheck::WidthCheck(Context &context, WidthLimits limits)
    : ctx(context), m_limits(std::move(limits)), m_breaker(std::make_unique<TextWidthBreaker>())
{
}

WidthCheck::~WidthCheck() = default;

Findings WidthCheck::check(const FieldTexts &t, const QString &fontSpec)
{
    int limit = 0;
    if (t.field == QLatin1String("Device"))
        limit = m_limits.device;
    else if (t.field == QLatin1String("Result"))
        limit = m_limits.result;
    if (limit <= 0 || t.destination.trimmed().isEmpty())
        return {};
    // The font as the page writer takes it: name and weight of the language, size of the screen.
    const QStringList font = GetFontSpecs(fontSpec);
    const QString name = font.value(FontName), weight = font.value(FontWeight);
    Findings out;
    const QStringList lines = textLines(t.destination);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        // The page writer breaks a line it cannot fit; a single word too wide it cannot break.
        const qsizetype broken =
            m_breaker->TextSingleLineToArray(ctx, line, name, m_limits.fontSize, weight, limit).size();
        const int pixels = m_breaker->textWidthTwips(line) / 15;
        if (broken > 1 || pixels >= limit) {
            const QString where = lines.size() > 1 ? QStringLiteral("line %1 is").arg(i + 1) : QStringLiteral("is");
            out.push_back(
                {QStringLiteral("width"), t.field,
                 t.field +
                     QStringLiteral(": %1 %2 pixels wide, the panel shows %3").arg(where).arg(pixels).arg(limit)});
        }
    }
    return out;
}

} // namespace ht
