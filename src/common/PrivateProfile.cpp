// The private-profile functions of the settings file, written out by hand
// because the rules differ from QSettings: names compared without case, the
// first matching section and key win, and a write changes only the one line it
// has to, leaving every other byte of the file as it was.

#include "common/CodePage.h"
#include "common/IniFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <limits>
#include <vector>

namespace ht::profile
{

namespace
{

enum class LineKind { Other, Section, Key };

struct ProfileLine {
    LineKind kind = LineKind::Other;
    QString name;             // section or key name
    QString value;            // key value, blanks trimmed
    qsizetype start = 0;      // first byte of the line
    qsizetype contentEnd = 0; // end of the line without its CR LF / LF
    qsizetype next = 0;       // first byte of the following line
    qsizetype equalsAt = -1;  // byte position of the key's "="
    bool blank = true;        // only white space on the line
};

bool isProfileSpace(QChar c)
{
    // White space as the profile functions see it, including the old
    // end-of-file character that some editors leave behind.
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\r') || c == QLatin1Char('\n') ||
           c == QLatin1Char('\v') || c == QLatin1Char('\f') || c.unicode() == 0x1A;
}

QString trimProfile(QStringView s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && isProfileSpace(s[b]))
        ++b;
    while (e > b && isProfileSpace(s[e - 1]))
        --e;
    return s.mid(b, e - b).toString();
}

// Lines are UTF-8; a line that is not valid UTF-8 was written in the ANSI code
// page of the classic Windows installations and is read as Windows-1252.
QString decodeLine(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    return codePageToUnicode(bytes, 1252);
}

std::vector<ProfileLine> parse(const QByteArray &bytes)
{
    std::vector<ProfileLine> lines;
    qsizetype pos = 0;
    while (pos < bytes.size()) {
        ProfileLine line;
        line.start = pos;
        const qsizetype lf = bytes.indexOf('\n', pos);
        line.next = lf < 0 ? bytes.size() : lf + 1;
        line.contentEnd = lf < 0 ? bytes.size() : lf;
        if (lf >= 0 && line.contentEnd > line.start && bytes[line.contentEnd - 1] == '\r')
            --line.contentEnd;
        pos = line.next;

        const QByteArray raw = bytes.mid(line.start, line.contentEnd - line.start);
        QString decoded = decodeLine(raw);
        if (line.start == 0 && decoded.startsWith(QChar(QChar::ByteOrderMark)))
            decoded.remove(0, 1); // a UTF-8 mark some editors put first
        const QString text = trimProfile(decoded);
        line.blank = text.isEmpty();
        if (text.startsWith(QLatin1Char('['))) {
            const qsizetype close = text.lastIndexOf(QLatin1Char(']'));
            if (close > 0) {
                line.kind = LineKind::Section;
                line.name = text.mid(1, close - 1);
            }
        } else if (const qsizetype eq = text.indexOf(QLatin1Char('=')); eq >= 0) {
            // "=" is a single byte in both encodings, so its byte position is
            // the first "=" byte of the raw line.
            line.kind = LineKind::Key;
            line.name = trimProfile(QStringView(text).left(eq));
            line.value = trimProfile(QStringView(text).mid(eq + 1));
            line.equalsAt = line.start + raw.indexOf('=');
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

bool sameName(const QString &a, const QString &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

// Index of the first section named `section`, or -1.
qsizetype findSection(const std::vector<ProfileLine> &lines, const QString &section)
{
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].kind == LineKind::Section && sameName(lines[i].name, section))
            return qsizetype(i);
    return -1;
}

// One past the last line of the section that starts at `sectionAt`.
qsizetype sectionEnd(const std::vector<ProfileLine> &lines, qsizetype sectionAt)
{
    qsizetype i = sectionAt + 1;
    while (i < qsizetype(lines.size()) && lines[size_t(i)].kind != LineKind::Section)
        ++i;
    return i;
}

// Index of the first key line named `key` inside the first section named
// `section`; later sections of the same name are not looked at.
qsizetype findKey(const std::vector<ProfileLine> &lines, const QString &section, const QString &key)
{
    const qsizetype s = findSection(lines, section);
    if (s < 0)
        return -1;
    const qsizetype end = sectionEnd(lines, s);
    for (qsizetype i = s + 1; i < end; ++i)
        if (lines[size_t(i)].kind == LineKind::Key && sameName(lines[size_t(i)].name, key))
            return i;
    return -1;
}

QByteArray readAll(const QString &file, bool *ok = nullptr)
{
    QFile f(file);
    const bool opened = QFileInfo(file).isFile() && f.open(QIODevice::ReadOnly);
    if (ok)
        *ok = opened;
    return opened ? f.readAll() : QByteArray();
}

// A value enclosed in matching single or double quotes is read without them.
QString stripQuotes(const QString &value)
{
    if (value.size() >= 2 && (value.front() == QLatin1Char('"') || value.front() == QLatin1Char('\'')) &&
        value.back() == value.front())
        return value.mid(1, value.size() - 2);
    return value;
}

// What fits into a buffer of `bufferSize` characters with its terminating NUL.
QString fitBuffer(const QString &value, int bufferSize)
{
    if (bufferSize <= 0)
        return {};
    const qsizetype room = bufferSize - 1;
    if (value.size() <= room)
        return value;
    qsizetype n = room;
    if (n > 0 && value[n - 1].isHighSurrogate())
        --n; // never leave half a character behind
    return value.left(n);
}

QByteArray lineBreakOf(const QByteArray &bytes, const std::vector<ProfileLine> &lines, qsizetype at)
{
    auto breakOf = [&](const ProfileLine &l) -> QByteArray {
        if (l.next == l.contentEnd)
            return {};
        return bytes.mid(l.contentEnd, l.next - l.contentEnd);
    };
    if (at >= 0) {
        if (QByteArray b = breakOf(lines[size_t(at)]); !b.isEmpty())
            return b;
    }
    for (const auto &l : lines)
        if (QByteArray b = breakOf(l); !b.isEmpty())
            return b;
    return QByteArrayLiteral("\r\n");
}

bool writeAll(const QString &file, const QByteArray &bytes)
{
    const QFileInfo fi(file);
    // A read-only settings file stays as it is, also for an administrator
    // whom the file system would let through.
    constexpr auto anyWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    if (fi.exists() && (!fi.isFile() || !fi.isWritable() || !(fi.permissions() & anyWrite)))
        return false;
    QSaveFile out(file);
    // A writable file in a read-only directory is written in place.
    out.setDirectWriteFallback(true);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    if (out.write(bytes) != bytes.size()) {
        out.cancelWriting();
        return false;
    }
    return out.commit();
}

// A value is one line of the file; anything after a line break is dropped so
// that a value can never add lines of its own.
QString singleLine(const QString &value)
{
    for (qsizetype i = 0; i < value.size(); ++i)
        if (value[i] == QLatin1Char('\r') || value[i] == QLatin1Char('\n'))
            return value.left(i);
    return value;
}

} // namespace

QString readString(const QString &file, const QString &section, const QString &key, const QString &def, int bufferSize)
{
    const QByteArray bytes = readAll(file);
    const std::vector<ProfileLine> lines = parse(bytes);
    const qsizetype k = findKey(lines, section, key);
    if (k >= 0)
        return fitBuffer(stripQuotes(lines[size_t(k)].value), bufferSize);
    // The default loses its trailing blanks, so a default of blanks reads as "".
    QString d = def;
    while (!d.isEmpty() && d.back() == QLatin1Char(' '))
        d.chop(1);
    return fitBuffer(d, bufferSize);
}

int readInt(const QString &file, const QString &section, const QString &key, int def)
{
    const QString text = readString(file, section, key, QString(), 255);
    if (text.isEmpty())
        return def;
    // The leading (signed) decimal digits count; no digits read as 0.
    qsizetype i = 0;
    bool negative = false;
    if (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+')) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    long long v = 0;
    for (; i < text.size() && text[i].isDigit() && text[i].unicode() < 128; ++i) {
        v = v * 10 + (text[i].unicode() - '0');
        if (v > (1LL << 32))
            break; // far out of range already; the caller sees a saturated value
    }
    v = negative ? -v : v;
    if (v > std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (v < std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return int(v);
}

bool writeString(const QString &file, const QString &section, const QString &key, const QString &value)
{
    if (section.isEmpty() || key.isEmpty())
        return false;
    const QByteArray newValue = singleLine(value).toUtf8();
    QByteArray bytes = readAll(file);
    const std::vector<ProfileLine> lines = parse(bytes);

    if (const qsizetype k = findKey(lines, section, key); k >= 0) {
        // Only the value of the key line changes; the blanks after "=" stay.
        const ProfileLine &l = lines[size_t(k)];
        qsizetype from = l.equalsAt + 1;
        qsizetype firstText = from;
        while (firstText < l.contentEnd && (bytes[firstText] == ' ' || bytes[firstText] == '\t'))
            ++firstText;
        if (firstText < l.contentEnd)
            from = firstText;
        bytes.replace(from, l.contentEnd - from, newValue);
        return writeAll(file, bytes);
    }

    const QByteArray keyLine = key.toUtf8() + '=' + newValue;
    if (const qsizetype s = findSection(lines, section); s >= 0) {
        // Added after the last non-blank line of the section, so blank lines
        // that separate it from the next section stay where they are.
        qsizetype last = s;
        for (qsizetype i = s + 1; i < sectionEnd(lines, s); ++i)
            if (!lines[size_t(i)].blank)
                last = i;
        const ProfileLine &l = lines[size_t(last)];
        const QByteArray br = lineBreakOf(bytes, lines, last);
        if (l.next == l.contentEnd) // last line of the file without a break
            bytes.insert(l.next, br + keyLine + br);
        else
            bytes.insert(l.next, keyLine + br);
        return writeAll(file, bytes);
    }

    const QByteArray br = lineBreakOf(bytes, lines, -1);
    if (!bytes.isEmpty() && !bytes.endsWith('\n'))
        bytes.append(br);
    bytes.append('[' + section.toUtf8() + ']' + br + keyLine + br);
    return writeAll(file, bytes);
}

} // namespace ht::profile
