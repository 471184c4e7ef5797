#include "common/FileIo.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <limits>

#ifndef Q_OS_WIN
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
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

#ifdef Q_OS_WIN

QString joined(const QString &dir, const QString &name)
{
    return dir.isEmpty() ? name : QDir(dir).filePath(name);
}

FileRead readPath(const QString &path, qint64 maxBytes, bool followLinks, QByteArray &bytes, QString *error)
{
    bytes.clear();
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
}

bool replacePath(const QString &path, const char *data, qint64 size, QString *error)
{
    // QSaveFile writes a temporary file and moves it into place.
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(data, size) != size || !out.commit()) {
        setError(error, out.errorString());
        out.cancelWriting();
        return false;
    }
    return true;
}

#else

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

// `name` relative to `dirFd` (AT_FDCWD: a path as it stands).
FileRead readAt(int dirFd, const char *name, qint64 maxBytes, bool followLinks, QByteArray &bytes, QString *error)
{
    bytes.clear();
    // Non-blocking, so that opening a FIFO returns at once instead of waiting for a writer.
    int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    if (!followLinks)
        flags |= O_NOFOLLOW;
    const int fd = ::openat(dirFd, name, flags);
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
}

// A new file without a name in the folder (`folder` as in replaceAt), or -1
// where the file system has none: nothing is left behind if the program dies
// before it is linked in.
int openUnnamedAt(int dirFd, const QByteArray &folder)
{
#ifdef O_TMPFILE
    return ::openat(dirFd, folder.isEmpty() ? "." : folder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
#else
    (void)dirFd, (void)folder;
    return -1;
#endif
}

// Gives the unnamed file open on `fd` the name `path` (relative to `dirFd`).
bool linkUnnamed(int fd, int dirFd, const char *path)
{
    // By its descriptor where the program may (it needs the right to look up
    // any file); else through its /proc entry, which works for any user.
    static std::atomic<bool> byDescriptor{true};
    if (byDescriptor) {
#ifdef AT_EMPTY_PATH
        if (::linkat(fd, "", dirFd, path, AT_EMPTY_PATH) == 0)
            return true;
        if (errno != ENOENT && errno != EPERM)
            return false;
#endif
        byDescriptor = false;
    }
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(fd);
    return ::linkat(AT_FDCWD, self.constData(), dirFd, path, AT_SYMLINK_FOLLOW) == 0;
}

// `folder` is the prefix that makes a name in the folder a path for `dirFd`:
// "" with a folder's own descriptor, the folder with its slash with AT_FDCWD.
// `durable`: the new file keeps the old one's permissions, and it and then the
// folder are flushed to the disk, so that after a crash the name holds the old
// file or the new one, complete.
bool replaceAt(int dirFd, const QByteArray &folder, const QByteArray &name, const char *data, qint64 size,
               QString *error, bool durable = false)
{
    // A name of its own per call, so that two runs or two threads writing into
    // one folder never share a temporary file.
    static std::atomic<unsigned> counter{0};
    const QByteArray temp =
        folder + ".~" + QByteArray::number(qint64(::getpid())) + '-' + QByteArray::number(++counter) + ".tmp";
    // Written without a name where the file system allows it, and named only
    // for the rename: a kill while it is written leaves nothing behind.
    int fd = openUnnamedAt(dirFd, folder);
    const bool unnamed = fd >= 0;
    if (!unnamed)
        fd = ::openat(dirFd, temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0) {
        setError(error, systemError(errno));
        return false;
    }
    bool ok = writeAll(fd, data, size);
    if (ok && durable) {
        struct stat old {
        };
        if (::fstatat(dirFd, (folder + name).constData(), &old, 0) == 0)
            ok = ::fchmod(fd, old.st_mode & 07777) == 0;
        ok = ok && ::fsync(fd) == 0;
    }
    int code = ok ? 0 : errno;
    bool named = !unnamed;
    if (ok && unnamed) {
        named = linkUnnamed(fd, dirFd, temp.constData());
        ok = named;
        code = ok ? 0 : errno;
    }
    // A full disk may show only when the file is closed.
    if (::close(fd) != 0 && ok) {
        ok = false;
        code = errno;
    }
    if (ok && ::renameat(dirFd, temp.constData(), dirFd, (folder + name).constData()) != 0) {
        ok = false;
        code = errno;
    }
    if (!ok) {
        if (named)
            ::unlinkat(dirFd, temp.constData(), 0);
        setError(error, systemError(code));
    } else if (durable) {
        // The rename itself reaches the disk with the folder.
        const int dir =
            ::openat(dirFd, folder.isEmpty() ? "." : folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (dir >= 0) {
            ::fsync(dir);
            ::close(dir);
        }
    }
    return ok;
}

// A file that does not exist yet is written unnamed and linked in under its
// name once complete: one change to the folder instead of a temporary name
// and a rename, and nothing is left behind if the program dies meanwhile.
// False when that cannot be done here (no unnamed files on this file system,
// the name taken meanwhile): the caller then goes through a temporary name.
// A failed write is final: `failed` is set, with the reason in `error`.
bool createUnnamedThenLink(int dirFd, const QByteArray &name, const char *data, qint64 size, bool &failed,
                           QString *error)
{
    const int fd = openUnnamedAt(dirFd, QByteArray());
    if (fd < 0)
        return false;
    if (!writeAll(fd, data, size)) {
        failed = true;
        setError(error, systemError(errno));
        ::close(fd);
        return false;
    }
    const bool linked = linkUnnamed(fd, dirFd, name.constData());
    if (::close(fd) != 0 && linked) {
        // A full disk may show only now: such a page must not stay.
        failed = true;
        setError(error, systemError(errno));
        ::unlinkat(dirFd, name.constData(), 0);
        return false;
    }
    return linked;
}

#endif

} // namespace

OpenFolder::OpenFolder(const QString &path) : m_path(path)
{
#ifndef Q_OS_WIN
    m_fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
#endif
}

OpenFolder::~OpenFolder()
{
#ifndef Q_OS_WIN
    if (m_fd >= 0)
        ::close(m_fd);
#endif
}

bool OpenFolder::isOpen() const
{
#ifdef Q_OS_WIN
    return QFileInfo(m_path).isDir();
#else
    return m_fd >= 0;
#endif
}

FileRead OpenFolder::read(const QString &name, qint64 maxBytes, bool followLinks, QByteArray &bytes,
                          QString *error) const
{
#ifdef Q_OS_WIN
    return readPath(joined(m_path, name), maxBytes, followLinks, bytes, error);
#else
    return readAt(m_fd, QFile::encodeName(name).constData(), maxBytes, followLinks, bytes, error);
#endif
}

bool OpenFolder::replace(const QString &name, const char *data, qint64 size, QString *error, bool likelyNew) const
{
#ifdef Q_OS_WIN
    (void)likelyNew;
    return replacePath(joined(m_path, name), data, size, error);
#else
    const QByteArray encoded = QFile::encodeName(name);
    bool failed = false;
    if (likelyNew && createUnnamedThenLink(m_fd, encoded, data, size, failed, error))
        return true;
    return !failed && replaceAt(m_fd, QByteArray(), encoded, data, size, error);
#endif
}

bool OpenFolder::remove(const QString &name) const
{
#ifdef Q_OS_WIN
    return QFile::remove(joined(m_path, name));
#else
    return ::unlinkat(m_fd, QFile::encodeName(name).constData(), 0) == 0;
#endif
}

bool openRegularFile(QFile &file, const QString &path, qint64 maxBytes, QString *why)
{
#ifdef Q_OS_WIN
    const QFileInfo info(path);
    if (!info.isFile()) {
        setError(why, QStringLiteral("not a regular file"));
        return false;
    }
    if (info.size() > maxBytes) {
        setError(why, QStringLiteral("larger than %1 bytes").arg(maxBytes));
        return false;
    }
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly)) {
        setError(why, file.errorString());
        return false;
    }
    return true;
#else
    // The type is taken from the open handle, so the file cannot be swapped
    // between the check and the read.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        setError(why, systemError(errno));
        return false;
    }
    struct stat st {
    };
    QString reason;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode))
        reason = QStringLiteral("not a regular file");
    else if (st.st_size > maxBytes)
        reason = QStringLiteral("larger than %1 bytes").arg(maxBytes);
    else if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        reason = file.errorString();
    if (reason.isEmpty())
        return true;
    ::close(fd);
    setError(why, reason);
    return false;
#endif
}

FileRead readRegularFile(const QString &path, qint64 maxBytes, bool followLinks, QByteArray &bytes, QString *error)
{
#ifdef Q_OS_WIN
    return readPath(path, maxBytes, followLinks, bytes, error);
#else
    return readAt(AT_FDCWD, QFile::encodeName(path).constData(), maxBytes, followLinks, bytes, error);
#endif
}

bool replaceFile(const QString &path, const char *data, qint64 size, QString *error)
{
#ifdef Q_OS_WIN
    return replacePath(path, data, size, error);
#else
    const QByteArray full = QFile::encodeName(path);
    const qsizetype slash = full.lastIndexOf('/');
    return replaceAt(AT_FDCWD, full.left(slash + 1), full.mid(slash + 1), data, size, error);
#endif
}

bool replaceFileDurably(const QString &path, const char *data, qint64 size, QString *error)
{
#ifdef Q_OS_WIN
    return replacePath(path, data, size, error); // QSaveFile flushes before it renames
#else
    const QByteArray full = QFile::encodeName(path);
    const qsizetype slash = full.lastIndexOf('/');
    return replaceAt(AT_FDCWD, full.left(slash + 1), full.mid(slash + 1), data, size, error, true);
#endif
}

int removeStaleTemporaryFiles(const QString &folder)
{
#ifdef Q_OS_WIN
    (void)folder; // QSaveFile's temporary files are its own
    return 0;
#else
    static const QRegularExpression ours(QStringLiteral("^\\.~(\\d+)-\\d+\\.tmp$"));
    const QDir dir(folder);
    int removed = 0;
    for (const QString &name : dir.entryList({QStringLiteral(".~*.tmp")}, QDir::Files | QDir::Hidden | QDir::System)) {
        const QRegularExpressionMatch m = ours.match(name);
        bool ok = false;
        const qint64 pid = m.hasMatch() ? m.captured(1).toLongLong(&ok) : 0;
        if (!ok || pid <= 0 || pid == ::getpid() || pid > std::numeric_limits<pid_t>::max())
            continue;
        // A process that runs (or may: another user's) is still writing it.
        if (::kill(pid_t(pid), 0) == 0 || errno != ESRCH)
            continue;
        if (QFile::remove(dir.filePath(name)))
            ++removed;
    }
    return removed;
#endif
}

#ifdef Q_OS_WIN
struct FileLock::Windows {
    QLockFile file;
    explicit Windows(const QString &path) : file(path) {}
};
#else
struct FileLock::Windows {
};
#endif

FileLock::FileLock() = default;

FileLock::~FileLock()
{
    release();
}

FileLock::Result FileLock::take(const QString &lockPath, int timeoutMs, QString *error)
{
    release();
#ifdef Q_OS_WIN
    m_windows = std::make_unique<Windows>(lockPath);
    if (m_windows->file.tryLock(std::max(0, timeoutMs)))
        return Result::Taken;
    const QLockFile::LockError why = m_windows->file.error();
    m_windows.reset();
    if (why == QLockFile::LockFailedError)
        return Result::Busy;
    setError(error, QStringLiteral("the lock file %1 cannot be made").arg(lockPath));
    return Result::Failed;
#else
    const QByteArray path = QFile::encodeName(lockPath);
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (fd < 0) {
            setError(error, systemError(errno));
            return Result::Failed;
        }
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0) {
            // The holder before may have removed the file meanwhile: only the
            // lock on the file that has the name counts.
            struct stat held {
            }, named{};
            if (::fstat(fd, &held) == 0 && ::stat(path.constData(), &named) == 0 && held.st_dev == named.st_dev &&
                held.st_ino == named.st_ino) {
                m_fd = fd;
                m_path = lockPath;
                return Result::Taken;
            }
            ::close(fd);
            continue;
        }
        const int code = errno;
        ::close(fd);
        if (code != EWOULDBLOCK && code != EINTR) {
            setError(error, systemError(code));
            return Result::Failed;
        }
        if (waited.elapsed() >= timeoutMs)
            return Result::Busy;
        QThread::msleep(10);
    }
#endif
}

void FileLock::release()
{
#ifdef Q_OS_WIN
    m_windows.reset(); // QLockFile removes its file
#else
    if (m_fd < 0)
        return;
    // Removed while still held, so that a waiter that opened it sees it is gone and makes a new one.
    ::unlink(QFile::encodeName(m_path).constData());
    ::close(m_fd);
    m_fd = -1;
#endif
}

} // namespace ht
