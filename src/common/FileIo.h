#pragma once
// Reading and replacing whole files safely: only regular files are read, never
// more than a cap, and a replaced file is either the old one or the new one,
// never a half-written mix, whatever happens to the program meanwhile.

#include <QByteArray>
#include <QFile>
#include <QString>
#include <memory>

namespace ht
{

enum class FileRead {
    Ok,
    Missing,    // nothing of that name
    NotRegular, // a folder, FIFO, device, or (when links are not followed) a symbolic link
    TooLarge,   // over the cap: not read at all
    Failed,     // could not be opened or read; `error` says why
};

// A folder held open: the files in it are reached without walking the path
// again, and the folder stays the one that was opened even if its path is
// changed meanwhile.
class OpenFolder
{
  public:
    explicit OpenFolder(const QString &path);
    ~OpenFolder();
    OpenFolder(const OpenFolder &) = delete;
    OpenFolder &operator=(const OpenFolder &) = delete;

    bool isOpen() const;
    const QString &path() const { return m_path; }

    // Reads the whole file into `bytes`. A FIFO is never waited for and a
    // device never read from. With `followLinks` false a symbolic link is not
    // followed and counts as NotRegular.
    FileRead read(const QString &name, qint64 maxBytes, bool followLinks, QByteArray &bytes,
                  QString *error = nullptr) const;
    // Writes the bytes to a new temporary file in the folder and renames it
    // over `name`. A symbolic link there is replaced, never followed. On
    // failure the temporary file is removed, whatever stood there stays, and
    // `error` holds the system's reason (for example "No space left on device").
    // `likelyNew`: nothing was there a moment ago; the file is then made
    // without a temporary name where the system allows it.
    bool replace(const QString &name, const char *data, qint64 size, QString *error = nullptr,
                 bool likelyNew = false) const;
    bool remove(const QString &name) const;

  private:
    QString m_path;
    int m_fd = -1;
};

// Opens `file` read-only on `path` when that is a regular file (links
// followed) of at most maxBytes, for callers that read it piece by piece.
// Otherwise false with the reason in `why`. Never blocks.
bool openRegularFile(QFile &file, const QString &path, qint64 maxBytes, QString *why = nullptr);

// The same as OpenFolder's for a single file given by its path.
FileRead readRegularFile(const QString &path, qint64 maxBytes, bool followLinks, QByteArray &bytes,
                         QString *error = nullptr);
bool replaceFile(const QString &path, const char *data, qint64 size, QString *error = nullptr);
// The same for a file whose loss would lose work: the new file and then the
// folder are flushed to the disk before this returns, and the new file keeps
// the old one's permissions. After a crash at any moment the path holds
// either the old file or the new one, complete.
bool replaceFileDurably(const QString &path, const char *data, qint64 size, QString *error = nullptr);

// Removes the temporary files (".~<process>-<n>.tmp") that replacing a file in
// `folder` left behind when its process was killed; those of processes that
// still run are kept. Returns how many were removed.
int removeStaleTemporaryFiles(const QString &folder);

// An exclusive lock of this program's own, held while the object lives, on a
// lock file that is made for it and removed again when it is released. Every
// process of the program that replaces the guarded file takes it first; the
// system releases it when the process ends, however it ends.
class FileLock
{
  public:
    enum class Result { Taken, Busy, Failed };
    FileLock();
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;
    // Waits up to `timeoutMs` for another holder to release it: Busy when it
    // did not, Failed (the reason in `error`) when the lock file cannot be made.
    Result take(const QString &lockPath, int timeoutMs, QString *error = nullptr);
    void release();

  private:
    QString m_path;
    int m_fd = -1;
    struct Windows;
    std::unique_ptr<Windows> m_windows;
};

} // namespace ht
