#include "common/StringUtils.h"

#include "common/CodePage.h"
#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/Platform.h"

#include <QDir>

namespace ht
{

namespace
{

// The number a code-page text stands for: its leading (signed) digits, 0
// without any. A negative number is no code page at all.
int codePageNumber(const QString &text)
{
    const QString t = text.trimmed();
    const bool negative = t.startsWith(QLatin1Char('-'));
    int n = 0;
    for (qsizetype i = negative ? 1 : 0; i < t.size(); ++i) {
        const QChar c = t[i];
        if (c < QLatin1Char('0') || c > QLatin1Char('9') || n > 100000)
            break;
        n = n * 10 + (c.unicode() - '0');
    }
    return negative ? -n : n;
}

// The replacement as the Windows conversion hands it back: the characters are
// taken as bytes of the current code page, converted up to the first NUL byte,
// and the result keeps the NUL that ends the conversion. A code page the
// converter does not know gives nothing at all.
QString convertFromCurrentCodePage(const Context &ctx, const QString &replacement)
{
    int codePage = codePageNumber(ctx.state.currentCodePage);
    if (codePage == 0)
        codePage = 1252; // the system's ANSI code page of the Western installations
    if (!isSupportedCodePage(codePage))
        return {};
    QByteArray bytes = charactersAsAnsiBytes(replacement);
    if (const qsizetype nul = bytes.indexOf('\0'); nul >= 0)
        bytes.truncate(nul);
    return codePageToUnicode(bytes, codePage) + QChar(QChar::Null);
}

void letEventsRun(Context &ctx)
{
    if (ctx.processEvents)
        ctx.processEvents();
}

QString trimBlanks(const QString &s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && s[b] == QLatin1Char(' '))
        ++b;
    while (e > b && s[e - 1] == QLatin1Char(' '))
        --e;
    return s.mid(b, e - b);
}

} // namespace

bool GetDirectory(Context &ctx, const QString &path)
{
    try {
        if (directoryExists(path))
            return true;
        QDir().mkdir(path); // one level only: a missing parent is an error
        if (directoryExists(path))
            return true;
        showMessage(ctx, QStringLiteral("Error creating directory \"") + path + QStringLiteral("\" !"), Buttons::OK,
                    Icon::Critical);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetDirectory"), e);
    }
    return false;
}

QString ReplaceStringInString(Context &ctx, const QString &text, const QString &find, const QString &replacement,
                              bool convert)
{
    try {
        if (text.isEmpty())
            return text;
        const qsizetype at = text.indexOf(find);
        if (at < 0)
            return text;
        const QString with = convert ? convertFromCurrentCodePage(ctx, replacement) : replacement;
        return text.left(at) + with + text.mid(at + find.size());
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ReplaceStringInString"), e);
    }
    return text;
}

QString ReplaceStringInTextMultiLine(Context &ctx, const QString &text, const QString &find, const QStringList &lines,
                                     bool &replaced, bool convert)
{
    try {
        if (text.isEmpty())
            return text;
        const qsizetype at = text.indexOf(find);
        if (at < 0)
            return text;
        QString with;
        for (const QString &line : lines)
            with += (convert ? convertFromCurrentCodePage(ctx, line) : line) + QStringLiteral("<br>");
        replaced = true;
        return text.left(at) + with + text.mid(at + find.size());
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ReplaceStringInTextMultiLine"), e);
    }
    return text;
}

QStringList StringToStringArray(Context &ctx, const QString &text, const QString &separator)
{
    QStringList pieces{QString()};
    try {
        QString rest = text;
        // An empty separator never splits (it would be "found" forever).
        qsizetype at = separator.isEmpty() ? -1 : rest.indexOf(separator);
        while (at >= 0) {
            pieces << trimBlanks(rest.left(at));
            rest = rest.mid(at + separator.size());
            letEventsRun(ctx);
            at = rest.indexOf(separator);
        }
        pieces << rest;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("StringToStringArray"), e);
    }
    return pieces;
}

QString SingleLineToMultiLine(Context &ctx, const QString &text)
{
    const QChar cr = QLatin1Char('\r'), lf = QLatin1Char('\n');
    try {
        QString s = text;
        if (s.contains(lf) && s.contains(cr)) {
            // Each CR LF or LF CR pair, the first one found each time, becomes
            // one "/", until no line feed is left or no pair remains.
            while (s.contains(lf)) {
                qsizetype pair = -1;
                for (qsizetype i = 0; i + 1 < s.size() && pair < 0; ++i)
                    if ((s[i] == cr && s[i + 1] == lf) || (s[i] == lf && s[i + 1] == cr))
                        pair = i;
                if (pair < 0)
                    break;
                s.replace(pair, 2, QStringLiteral("/"));
            }
        }
        if (!s.contains(lf) || s.contains(cr))
            return s;
        // Line feeds without carriage returns: each one is a line break.
        s.replace(lf, QLatin1Char('/'));
        return s;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("SingleLineToMultiLine"), e);
    }
    return text;
}

QString shortForLog(const QString &value, qsizetype maxLength)
{
    if (value.size() <= maxLength)
        return value;
    qsizetype n = maxLength;
    if (value.at(n - 1).isHighSurrogate())
        --n;
    return value.left(n) + QStringLiteral("... (%1 characters)").arg(value.size());
}

} // namespace ht
