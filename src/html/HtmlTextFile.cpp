#include "html/HtmlTextFile.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/FileIo.h"
#include "common/Messages.h"

#include <QFile>
#include <QSysInfo>
#include <QtEndian>

namespace ht
{

namespace
{

QString decodeUtf16(const char *data, qsizetype size, bool bigEndian)
{
    // An odd last byte cannot form a character and is dropped.
    const qsizetype units = size / 2;
    QString out(units, Qt::Uninitialized);
    QChar *dst = out.data();
    const auto *src = reinterpret_cast<const unsigned char *>(data);
    for (qsizetype i = 0; i < units; ++i) {
        const unsigned char a = src[2 * i], b = src[2 * i + 1];
        dst[i] = QChar(char16_t(bigEndian ? (a << 8) | b : (b << 8) | a));
    }
    return out;
}

} // namespace

QString decodeTextFileBytes(const QByteArray &bytes)
{
    const auto *b = reinterpret_cast<const unsigned char *>(bytes.constData());
    const qsizetype n = bytes.size();
    if (n >= 2 && b[0] == 0xFF && b[1] == 0xFE)
        return decodeUtf16(bytes.constData() + 2, n - 2, false);
    if (n >= 2 && b[0] == 0xFE && b[1] == 0xFF)
        return decodeUtf16(bytes.constData() + 2, n - 2, true);
    if (n >= 3 && b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF)
        return QString::fromUtf8(bytes.constData() + 3, n - 3);
    // No mark: text with NUL bytes is UTF-16; the NULs of ASCII characters sit
    // in the high byte, so more of them at even offsets means big-endian.
    qsizetype evenNuls = 0, oddNuls = 0;
    for (qsizetype i = 0; i < n; ++i) {
        if (b[i] == 0)
            ++((i % 2) ? oddNuls : evenNuls);
    }
    if (evenNuls + oddNuls == 0)
        return QString::fromUtf8(bytes);
    return decodeUtf16(bytes.constData(), n, evenNuls > oddNuls);
}

QStringList splitTextLines(const QString &text)
{
    QStringList lines;
    const QChar *p = text.constData();
    const qsizetype n = text.size();
    qsizetype start = 0;
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t c = p[i].unicode();
        if (c != u'\n' && c != u'\r')
            continue;
        lines.append(QString(p + start, i - start));
        if (c == u'\r' && i + 1 < n && p[i + 1] == u'\n')
            ++i;
        start = i + 1;
    }
    if (start < n)
        lines.append(QString(p + start, n - start));
    return lines;
}

namespace
{

bool hasMark(QStringView line)
{
    // The caseless searches are slow: most lines are ruled out by their lack of '&'.
    return line.contains(QLatin1Char('&')) && line.contains(QLatin1String("<TITLE>"), Qt::CaseInsensitive) &&
           line.contains(QLatin1String("Harko & Co"), Qt::CaseInsensitive);
}

// Whether any line of the text carries the mark; the mark holds no line break,
// so the lines need not be cut out first.
bool hasMarkedLine(const QString &text)
{
    const QStringView all(text);
    qsizetype start = 0;
    for (qsizetype i = 0; i <= all.size(); ++i) {
        if (i < all.size() && all[i] != u'\n' && all[i] != u'\r')
            continue;
        if (hasMark(all.mid(start, i - start)))
            return true;
        start = i + 1;
    }
    return false;
}

} // namespace

bool hasGeneratedPageMark(const QString &line)
{
    return hasMark(line);
}

namespace
{

QString decodeExistingPage(const QByteArray &bytes)
{
    const bool marked = bytes.startsWith("\xFF\xFE");
    return decodeUtf16(bytes.constData() + (marked ? 2 : 0), bytes.size() - (marked ? 2 : 0), false);
}

// The lines of a file read as it is: a generated page (checkTitle) or an empty
// file gives one empty line.
QStringList linesOf(const QString &text, bool checkTitle)
{
    // A generated page (the common case of a rerun) is never cut into lines.
    if (checkTitle && hasMarkedLine(text))
        return {QString()};
    const QStringList lines = splitTextLines(text);
    if (lines.isEmpty())
        return {QString()};
    return lines;
}

} // namespace

QStringList existingPageLines(FileRead read, const QByteArray &bytes)
{
    if (read == FileRead::Missing)
        return {QStringLiteral("-1")};
    if (read != FileRead::Ok)
        return {kUnreadablePage}; // a link, folder or huge file: not ours to replace
    // Pages are UTF-16 text: one saved in another encoding shows no mark and
    // is kept as made by hand.
    return linesOf(decodeExistingPage(bytes), true);
}

QStringList GetTextFileHTML(Context &ctx, const QString &path, bool report, bool checkTitle)
{
    try {
        QByteArray bytes;
        // A page standing in the help directory is never followed out of it
        // through a link; a template may be a link to a shared one.
        const FileRead read = readRegularFile(path, kMaxPageBytes, !checkTitle, bytes);
        if (ctx.processEvents)
            ctx.processEvents();
        if (checkTitle)
            return existingPageLines(read, bytes);
        if (read != FileRead::Ok) {
            if (!report)
                return {QStringLiteral("-1")};
            showMessage(ctx, QStringLiteral("Error reading predefined HTML-File \"") + path + QStringLiteral("\"!"),
                        Buttons::OK, Icon::Critical);
            return {QString()};
        }
        // Templates may come in any encoding.
        return linesOf(decodeTextFileBytes(bytes), false);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetTextFileHTML"), e);
        return {QString()};
    }
}

bool writeHtmlPageText(const QString &path, const QString &text, QString *error)
{
    // One write for the whole page, converted only where the machine's byte
    // order is not already little-endian.
    QByteArray swapped;
    const char *bytes = reinterpret_cast<const char *>(text.constData());
    if (QSysInfo::ByteOrder != QSysInfo::LittleEndian) {
        swapped.resize(text.size() * 2);
        qToLittleEndian<char16_t>(text.constData(), text.size(), swapped.data());
        bytes = swapped.constData();
    }
    return replaceFile(path, bytes, qint64(text.size()) * 2, error);
}

void appendTextLines(const QStringList &lines, QString &text)
{
    for (const QString &l : lines) {
        text += l;
        text += u'\r';
        text += u'\n';
    }
}

bool writeHtmlPageFile(const QString &path, const QStringList &lines)
{
    QString text(QChar(0xFEFF));
    appendTextLines(lines, text);
    return writeHtmlPageText(path, text);
}

} // namespace ht
