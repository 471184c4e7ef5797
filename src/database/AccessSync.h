#pragma once
// Between an Access help-text database and an SQLite one: converting on
// request, and carrying the texts of an SQLite conversion back into the Access
// file it was made from.

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;

// Converts the Access database `jetPath` to `target` (default "<base>.sqlite"
// beside it), which must not exist, and tells the user which file to use from
// now on. The target's path, or "" after a message saying why not.
QString ConvertAccessToSqlite(Context &ctx, const QString &jetPath, const QString &target = QString());

struct SyncResult {
    QStringList changed; // "AlarmText: 12 rows", per table with changed rows
    int rows = 0;
};

// Writes into the Access help-text database `jetPath` every text of `sqlitePath`
// that differs from its own: the texts of every language and the alarm
// definitions' Sensor, Cam, CPU and Rejects, in one step. Throws DbError, with
// the Access file unchanged, when the two do not hold the same machines, items
// and text rows, or the file cannot be written.
SyncResult syncToAccess(const QString &sqlitePath, const QString &jetPath);

} // namespace ht
