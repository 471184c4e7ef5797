#include "database/Database.h"

#include "common/FileIo.h"

#include <QFile>
#include <QFileInfo>

namespace ht
{

DbFormat detectDatabaseFormat(const QString &path, QString *why)
{
    const QFileInfo info(path);
    if (!info.exists() || info.isDir())
        return DbFormat::Missing;
    QFile file;
    if (!openRegularFile(file, path, kMaxDatabaseBytes, why))
        return DbFormat::Unknown;
    const QByteArray head = file.read(32);
    if (head.startsWith(QByteArrayLiteral("SQLite format 3\0")))
        return DbFormat::SQLite;
    // Jet 3/4 and ACE files name their engine in bytes 4..19.
    const QByteArray engine = head.mid(4, 15);
    if (engine == "Standard Jet DB" || engine == "Standard ACE DB")
        return DbFormat::Jet;
    return DbFormat::Unknown;
}

} // namespace ht
