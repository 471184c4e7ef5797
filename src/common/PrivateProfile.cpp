// The private-profile functions of the settings file, written out by hand
// because the rules differ from QSettings: names compared without case, the
// first matching section and key win, and a write changes only the one line it
// has to, leaving every other byte of the file as it was.

#include "common/IniFile.h"
#include "common/ProfileFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <limits>
#include <vector>

namespace ht::profile
{

namespace
{

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

// Index of the first key line named `key` inside the first section named
// `section`; later sections of the same name are not looked at.
qsizetype findKey(const std::vector<ProfileLine> &lines, const QString &section, const QString &key)
{
    const qsizetype s = findSection(lines, section);
    if (s < 0)
        return -1;
    for (size_t i = size_t(s) + 1; i < lines.size() && lines[i].kind == LineKind::Key; ++i)
        if (sameName(lines[i].name, key))
            return qsizetype(i);
    return -1;
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

// The line break the file uses: the one of the line at hand, else that of the first line.
QByteArray lineBreak(const ProfileFile &f, qsizetype contentEnd = 0, qsizetype next = 0)
{
    if (next > contentEnd)
        return f.bytes.mid(contentEnd, next - contentEnd);
    return f.firstBreak.isEmpty() ? QByteArrayLiteral("\r\n") : f.firstBreak;
}

// Puts `bytes` in place of the settings file `before` was read from.
bool writeAll(const QString &file, std::shared_ptr<const ProfileFile> before, QByteArray bytes)
{
    const bool unchanged = bytes == before->bytes;
    before.reset(); // a large file's parse is not kept twice
    const QFileInfo fi(file);
    // A read-only settings file stays as it is, also for an administrator
    // whom the file system would let through.
    constexpr auto anyWrite = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    if (fi.exists() && (!fi.isFile() || !fi.isWritable() || !(fi.permissions() & anyWrite)))
        return false;
    if (unchanged)
        return true; // the value was there already, as when the start-up writes back what it read
    QSaveFile out(file);
    // The new file is written beside the old one and renamed into its place. Where
    // that cannot be done (a writable file in a read-only folder) the file is not
    // written in place either: a full disk or a crash half-way would lose every
    // setting, where refusing loses only this one change.
    out.setDirectWriteFallback(false);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    if (out.write(bytes) != bytes.size()) {
        out.cancelWriting();
        return false;
    }
    if (!out.commit())
        return false;
    rememberProfile(file, std::move(bytes));
    return true;
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
    const std::shared_ptr<const ProfileFile> f = loadProfile(file);
    const qsizetype k = findKey(f->lines, section, key);
    if (k >= 0)
        return fitBuffer(stripQuotes(f->lines[size_t(k)].value), bufferSize);
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
    std::shared_ptr<const ProfileFile> f = loadProfile(file);
    if (!f->readable)
        return false; // the rest of the file could not be kept
    const std::vector<ProfileLine> &lines = f->lines;
    QByteArray bytes = f->bytes;

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
        return writeAll(file, std::move(f), std::move(bytes));
    }

    const QByteArray keyLine = key.toUtf8() + '=' + newValue;
    if (const qsizetype s = findSection(lines, section); s >= 0) {
        // Added after the last non-blank line of the section, so blank lines
        // that separate it from the next section stay where they are.
        const ProfileLine &l = lines[size_t(s)];
        const QByteArray br = lineBreak(*f, l.tailEnd, l.tailNext);
        if (l.tailNext == l.tailEnd) // last line of the file without a break
            bytes.insert(l.tailNext, br + keyLine + br);
        else
            bytes.insert(l.tailNext, keyLine + br);
        return writeAll(file, std::move(f), std::move(bytes));
    }

    const QByteArray br = lineBreak(*f);
    if (!bytes.isEmpty() && !bytes.endsWith('\n'))
        bytes.append(br);
    bytes.append('[' + section.toUtf8() + ']' + br + keyLine + br);
    return writeAll(file, std::move(f), std::move(bytes));
}

} // namespace ht::profile
