#include "html/PageFiller.h"

#include "common/Context.h"
#include "common/StringUtils.h"
#include "html/HtmlConversions.h"
#include "html/IndexText.h"

namespace ht
{

namespace
{

const QString kSlotNames[6] = {QStringLiteral("###SENSOR."), QStringLiteral("###CAM."),
                               QStringLiteral("###CPU."),    QStringLiteral("###REJECTS."),
                               QStringLiteral("###DEVICE."), QStringLiteral("###RESULT.")};

QString fillLine(Context &ctx, const HtmlKind &kind, QString line, const PageData &data)
{
    line = ReplaceStringInString(ctx, line, QStringLiteral("###FONT###"), data.fontName, false);
    line = ReplaceStringInString(ctx, line, QStringLiteral("###SIZE###"), data.fontSize, false);
    line = ReplaceStringInString(ctx, line, QStringLiteral("###WEIGHT###"), data.fontWeight, false);
    if (!kind.multiValueFields)
        return line;
    for (int f = 0; f < 6; ++f) {
        // Values from slot 1 on; four slots in a template, the unused ones emptied.
        if (!line.contains(kSlotNames[f]))
            continue; // nothing of this field in the line
        const QStringList &values = data.multiValues[f];
        const int count = int(values.size()) - 1;
        for (int i = 1; i <= count; ++i)
            line = ReplaceStringInString(ctx, line, kSlotNames[f] + QString::number(i) + QStringLiteral("###"),
                                         values.at(i), false);
        for (int i = std::max(count, 0) + 1; i <= 4; ++i)
            line = ReplaceStringInString(ctx, line, kSlotNames[f] + QString::number(i) + QStringLiteral("###"),
                                         QString(), false);
    }
    return line;
}

} // namespace

QStringList fillPageTemplate(Context &ctx, const HtmlKind &kind, const QStringList &templateLines, const PageData &data,
                             IndexTextCache &cache, bool &indexTextLost)
{
    QStringList out;
    out.reserve(templateLines.size() + data.textLines.size() * 2);
    bool marked = false;
    for (QString line : templateLines) {
        if (kind.indexTexts && line.contains(QLatin1String("###DIREKT:"))) {
            line = ExchangeDirectAdress_IndexText(ctx, line, data.languageNumber, cache);
            if (ctx.state.indexTextDB.isEmpty()) {
                indexTextLost = true;
                return out;
            }
        }
        if (line.contains(QLatin1String("###"))) {
            line = fillLine(ctx, kind, line, data);
            line = ReplaceStringInTextMultiLine(ctx, line, kind.textPlaceholder, data.textLines, marked, false);
        }
        out.append(line);
    }
    if (!marked)
        return out;
    QStringList split;
    ConvertHTMLBrToMultiline(ctx, out, split);
    return split;
}

} // namespace ht
