#include "html/HtmlConversions.h"

#include "common/Context.h"
#include "common/ErrorLog.h"

namespace ht
{

namespace
{
const QString kBr = QStringLiteral("<br>");
}

QString SingleLineDBToMultiLineHTML(Context &ctx, const QString &text)
{
    try {
        // A "/" swallows one blank right after it; a blank after CR LF is kept.
        QString out;
        out.reserve(text.size() + 16);
        // Copied in runs between the slashes.
        const qsizetype n = text.size();
        qsizetype from = 0;
        for (qsizetype at = text.indexOf(u'/'); at >= 0; at = text.indexOf(u'/', from)) {
            out.append(text.constData() + from, at - from);
            out += kBr;
            from = at + 1;
            if (from < n && text.at(from) == u' ')
                ++from;
        }
        out.append(text.constData() + from, n - from);
        // Most texts hold no CR at all: that is a quicker question than the pair.
        if (!out.contains(u'\r') || !out.contains(QLatin1String("\r\n")))
            return out;
        if (ctx.processEvents)
            ctx.processEvents();
        return out.replace(QLatin1String("\r\n"), kBr);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("SingleLineDBToMultiLineHTML"), e);
        return text;
    }
}

void ConvertHTMLBrToMultiline(Context &ctx, const QStringList &linesIn, QStringList &linesOut)
{
    QStringList out;
    try {
        out.reserve(linesIn.size() + 8);
        for (const QString &line : linesIn) {
            qsizetype from = 0;
            qsizetype at = line.indexOf(kBr);
            if (at < 0) {
                out.append(line);
                continue;
            }
            while (at >= 0) {
                out.append(line.mid(from, at + kBr.size() - from));
                from = at + kBr.size();
                at = line.indexOf(kBr, from);
            }
            out.append(line.mid(from));
            out.append(QString()); // every split line is followed by one empty line
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ConvertHTMLBrToMultiline"), e);
    }
    linesOut = std::move(out);
}

} // namespace ht
