#include "common/ProfileFile.h"

#include "common/CodePage.h"
#include "common/FileIo.h"

#include <QFile>
#include <QStringDecoder>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <mutex>
#include <optional>
#include <sys/stat.h>

namespace ht::profile
{

namespace
{

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
QString decodeLine(QByteArrayView bytes)
{
    if (std::all_of(bytes.begin(), bytes.end(), [](char c) { return uchar(c) < 0x80; }))
        return QString::fromLatin1(bytes); // plain ASCII, as nearly every line is
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    return codePageToUnicode(bytes.toByteArray(), 1252);
}

const QByteArray kUtf8Mark = QByteArrayLiteral("\xEF\xBB\xBF"); // some editors put it first

// ---- the parse of the last file read, kept until the file changes ---------------------

struct Stamp {
    qint64 device = 0, inode = 0, size = 0, modifiedNs = 0, changedNs = 0;
    bool operator==(const Stamp &) const = default;
};

std::optional<Stamp> stampOf(const QString &file, int *error)
{
    struct stat st = {};
    if (::stat(QFile::encodeName(file).constData(), &st) != 0) {
        *error = errno;
        return std::nullopt;
    }
    auto ns = [](const timespec &t) { return qint64(t.tv_sec) * 1000000000 + t.tv_nsec; };
    return Stamp{qint64(st.st_dev), qint64(st.st_ino), qint64(st.st_size), ns(st.st_mtim), ns(st.st_ctim)};
}

// A file changed this recently may change again within the same tick of its time
// stamp (file systems keep coarse times, FAT 2 s) and keep its size: such a change
// would go unseen, so a parse of it is not kept.
constexpr qint64 kSettledNs = 2000000000;

bool settled(const Stamp &stamp)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec - stamp.modifiedNs > kSettledNs;
}

struct Cache {
    QString file;
    Stamp stamp;
    std::shared_ptr<const ProfileFile> parsed;
};
std::mutex cacheMutex;
Cache cache; // one file: a run works with one settings file

std::shared_ptr<const ProfileFile> nothingThere(bool readable)
{
    auto none = std::make_shared<ProfileFile>();
    none->readable = readable;
    return none;
}

} // namespace

ProfileFile parseProfile(QByteArray bytes)
{
    ProfileFile f;
    f.bytes = std::move(bytes);
    const QByteArray &b = f.bytes;
    const char *data = b.constData();
    qsizetype section = -1; // the section the lines belong to
    for (qsizetype start = 0, next = 0; start < b.size(); start = next) {
        const void *lf = std::memchr(data + start, '\n', size_t(b.size() - start));
        next = lf ? static_cast<const char *>(lf) - data + 1 : b.size();
        qsizetype contentEnd = lf ? next - 1 : next;
        if (lf && contentEnd > start && data[contentEnd - 1] == '\r')
            --contentEnd;
        if (start == 0)
            f.firstBreak = b.mid(contentEnd, next - contentEnd);

        // Blank lines and lines that can be neither section nor key are not decoded:
        // white space, "[" and "=" are the same single bytes in UTF-8 and Windows-1252.
        qsizetype first = start == 0 && b.startsWith(kUtf8Mark) ? kUtf8Mark.size() : start;
        while (first < contentEnd && isProfileSpace(QLatin1Char(data[first])))
            ++first;
        if (first == contentEnd)
            continue;
        if (data[first] == '[' || std::memchr(data + first, '=', size_t(contentEnd - first))) {
            const QByteArrayView raw(data + start, contentEnd - start);
            QString decoded = decodeLine(raw);
            if (start == 0 && decoded.startsWith(QChar(QChar::ByteOrderMark)))
                decoded.remove(0, 1);
            const QString text = trimProfile(decoded);
            if (text.startsWith(QLatin1Char('['))) {
                const qsizetype close = text.lastIndexOf(QLatin1Char(']'));
                if (close > 0) {
                    section = qsizetype(f.lines.size());
                    f.lines.push_back({LineKind::Section, text.mid(1, close - 1), {}, 0, -1, 0, 0});
                }
            } else if (const qsizetype eq = text.indexOf(QLatin1Char('=')); eq >= 0) {
                // "=" is a single byte in both encodings, so its byte position is
                // the first "=" byte of the raw line.
                f.lines.push_back({LineKind::Key, trimProfile(QStringView(text).left(eq)),
                                   trimProfile(QStringView(text).mid(eq + 1)), contentEnd, start + raw.indexOf('='), 0,
                                   0});
            }
        }
        if (section >= 0) {
            f.lines[size_t(section)].tailEnd = contentEnd;
            f.lines[size_t(section)].tailNext = next;
        }
    }
    return f;
}

std::shared_ptr<const ProfileFile> loadProfile(const QString &file)
{
    int error = 0;
    const std::optional<Stamp> stamp = stampOf(file, &error);
    if (!stamp) // a missing file is made by the first write
        return nothingThere(error == ENOENT || error == ENOTDIR);
    {
        const std::lock_guard lock(cacheMutex);
        if (cache.parsed && cache.file == file && cache.stamp == *stamp)
            return cache.parsed;
    }
    QByteArray bytes;
    if (readRegularFile(file, kMaxSettingsBytes, true, bytes) != FileRead::Ok)
        return nothingThere(false);
    auto parsed = std::make_shared<const ProfileFile>(parseProfile(std::move(bytes)));
    if (settled(*stamp) && stampOf(file, &error) == stamp) { // and unchanged while it was read
        const std::lock_guard lock(cacheMutex);
        cache = {file, *stamp, parsed};
    }
    return parsed;
}

void rememberProfile(const QString &file, QByteArray bytes)
{
    // The write put a new file in place, so what it holds is known however recent it is.
    int error = 0;
    const std::optional<Stamp> stamp = stampOf(file, &error);
    const std::lock_guard lock(cacheMutex);
    cache = {};
    if (stamp)
        cache = {file, *stamp, std::make_shared<const ProfileFile>(parseProfile(std::move(bytes)))};
}

} // namespace ht::profile
