#include "common/FileIo.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <atomic>

#ifndef Q_OS_WIN
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace ht
{

namespace
{

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

#ifndef Q_OS_WIN

QString systemError(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

bool writeAll(int fd, const char *data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size_t(size));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

// A name of its own per call, so that two runs or two threads writing into
// one folder never share a temporary file.
QByteArray temporaryNameBeside(const QByteArray &path)
{
    static std::atomic<unsigned> counter{0};
    const qsizetype slash = path.lastIndexOf('/');
    return path.left(slash + 1) + ".~" + QByteArray::number(qint64(::getpid())) + '-' + QByteArray::number(++counter) +
           ".tmp";
}

#endif

} // namespace

FileRead readRegularFile(const QString &path, qint64 maxBytes, bool followLinks, QByteArray &bytes, QString *error)
{
    bytes.clear();
#ifdef Q_OS_WIN
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return FileRead::Missing;
    if (!info.isFile() || (!followLinks && info.isSymLink()))
        return FileRead::NotRegular;
    if (info.size() > maxBytes)
        return FileRead::TooLarge;
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        setError(error, f.errorString());
        return FileRead::Failed;
    }
    bytes = f.read(maxBytes + 1);
    if (bytes.size() > maxBytes) {
        bytes.clear();
        return FileRead::TooLarge;
    }
    return FileRead::Ok;
#else
    // Non-blocking, so that opening a FIFO returns at once instead of waiting for a writer.
    int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    if (!followLinks)
        flags |= O_NOFOLLOW;
    const int fd = ::open(QFile::encodeName(path).constData(), flags);
    if (fd < 0) {
        const int code = errno;
        if (code == ENOENT || code == ENOTDIR)
            return FileRead::Missing;
        if (code == ELOOP && !followLinks)
            return FileRead::NotRegular;
        setError(error, systemError(code));
        return FileRead::Failed;
    }
    struct stat st {
    };
    FileRead result = FileRead::Ok;
    if (::fstat(fd, &st) != 0) {
        setError(error, systemError(errno));
        result = FileRead::Failed;
    } else if (!S_ISREG(st.st_mode)) {
        result = FileRead::NotRegular;
    } else if (st.st_size > maxBytes) {
        result = FileRead::TooLarge;
    } else {
        // One byte more than the size, to see the end at once; a file that
        // grows meanwhile is read on up to one byte past the cap.
        bytes.resize(qsizetype(std::min<qint64>(maxBytes, st.st_size) + 1));
        qint64 done = 0;
        for (;;) {
            if (done == bytes.size()) {
                if (done > maxBytes)
                    break;
                bytes.resize(qsizetype(std::min<qint64>(maxBytes + 1, done * 2)));
            }
            const ssize_t n = ::read(fd, bytes.data() + done, size_t(bytes.size() - done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0) {
                setError(error, systemError(errno));
                result = FileRead::Failed;
                break;
            }
            if (n == 0)
                break;
            done += n;
        }
        bytes.truncate(qsizetype(done));
        if (result == FileRead::Ok && done > maxBytes)
            result = FileRead::TooLarge;
    }
    ::close(fd);
    if (result != FileRead::Ok)
        bytes.clear();
    return result;
#endif
}

bool replaceFile(const QString &path, const char *data, qint64 size, QString *error)
{
#ifdef Q_OS_WIN
    // QSaveFile writes a temporary file and moves it into place.
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(data, size) != size || !out.commit()) {
        setError(error, out.errorString());
        out.cancelWriting();
        return false;
    }
    return true;
#else
    const QByteArray target = QFile::encodeName(path);
    const QByteArray temp = temporaryNameBeside(target);
    const int fd = ::open(temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0) {
        setError(error, systemError(errno));
        return false;
    }
    bool ok = writeAll(fd, data, size);
    int code = ok ? 0 : errno;
    // A full disk may show only when the file is closed.
    if (::close(fd) != 0 && ok) {
        ok = false;
        code = errno;
    }
    if (ok && ::rename(temp.constData(), target.constData()) != 0) {
        ok = false;
        code = errno;
    }
    if (!ok) {
        ::unlink(temp.constData());
        setError(error, systemError(code));
    }
    return ok;
#endif
}

} // namespace ht
