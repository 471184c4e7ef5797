#include "common/RegularFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ht
{

namespace
{

bool refuse(QString *why, const QString &reason)
{
    if (why)
        *why = reason;
    return false;
}

} // namespace

bool openRegularFile(QFile &file, const QString &path, qint64 maxBytes, QString *why)
{
    // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a writer.
    // The type is then taken from the open handle, so the file cannot be swapped
    // between the check and the read.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return refuse(why, qt_error_string(errno));
    struct stat st = {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return refuse(why, QStringLiteral("not a regular file"));
    }
    if (st.st_size > maxBytes) {
        ::close(fd);
        return refuse(why, QStringLiteral("larger than %1 bytes").arg(maxBytes));
    }
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return refuse(why, file.errorString());
    }
    return true;
}

std::optional<QByteArray> readRegularFile(const QString &path, qint64 maxBytes, QString *why)
{
    QFile file;
    if (!openRegularFile(file, path, maxBytes, why))
        return std::nullopt;
    QByteArray bytes;
    bytes.reserve(file.size());
    char chunk[64 * 1024];
    for (;;) {
        const qint64 n = file.read(chunk, sizeof chunk);
        if (n < 0) {
            refuse(why, file.errorString());
            return std::nullopt;
        }
        if (n == 0)
            return bytes;
        bytes.append(chunk, n);
        if (bytes.size() > maxBytes) { // it grew while being read
            refuse(why, QStringLiteral("larger than %1 bytes").arg(maxBytes));
            return std::nullopt;
        }
    }
}

} // namespace ht
