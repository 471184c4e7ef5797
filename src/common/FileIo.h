#pragma once
// Reading and replacing whole files safely: only regular files are read, never
// more than a cap, and a replaced file is either the old one or the new one,
// never a half-written mix, whatever happens to the program meanwhile.

#include <QByteArray>
#include <QString>

namespace ht
{

enum class FileRead {
    Ok,
    Missing,    // nothing of that name
    NotRegular, // a folder, FIFO, device, or (when links are not followed) a symbolic link
    TooLarge,   // over the cap: not read at all
    Failed,     // could not be opened or read; `error` says why
};

// Reads the whole file into `bytes`. A FIFO is never waited for and a device
// never read from. With `followLinks` false a final symbolic link is not
// followed and counts as NotRegular.
FileRead readRegularFile(const QString &path, qint64 maxBytes, bool followLinks, QByteArray &bytes,
                         QString *error = nullptr);

// Writes `size` bytes to a new temporary file in the folder of `path` and
// renames it over `path`. A symbolic link at `path` is replaced, never
// followed. On failure the temporary file is removed, whatever stood at
// `path` stays as it was, and `error` holds the system's reason (for example
// "No space left on device").
bool replaceFile(const QString &path, const char *data, qint64 size, QString *error = nullptr);

} // namespace ht
