#pragma once
// Item counts per machine (DBSys) and the rebuild of too-short tables.

#include <QString>

namespace ht
{

struct Context;

// Reads "MaxLenAlarm", "MaxLenWarning", "MaxLenMaterialChange" from DBSys into
// ctx.state.maxItems[1..3], creating the table or a missing item with its default
// (256, 256, 1000) in a writable database. The importer takes the alarm and
// warning counts from ctx.state.anzFehler + 256 once that is set (>= 0).
// True when it ran to its end, or failed after DBSys was found.
bool GetDBSysMaxLenItems(Context &ctx, const QString &databasePath);
// Rebuilds every definition table whose five blocks are shorter than its count
// (after one backup of the database). 0 when all fit, -1 when a rebuild failed.
long CorrectDBLength(Context &ctx, const QString &databasePath);
// Rebuilds the definition and text tables of one kind (kindWord: "Alarm",
// "Warning" or "MaterialChange") of the active database to five blocks of `count`
// rows, in one transaction. Returns the new count, or -1 with the database unchanged.
long CorrectItemLenth(Context &ctx, const QString &kindWord, long &count);
long CorrectItemLenth(Context &ctx, const QString &databasePath, const QString &kindWord, long &count);

class Database;
// The same check and rebuilds on `db` inside the caller's transaction, with no
// backup of their own: for jobs whose transaction is their way back. True
// when a table was rebuilt; throws DbError when a rebuild cannot be done.
bool correctDBLengthIn(Context &ctx, Database &db);
// Whether correctDBLengthIn would rebuild a table (for a backup beforehand).
bool dbLengthTooShort(Context &ctx, Database &db);
void correctItemLengthIn(Database &db, const QString &kindWord, long count);

} // namespace ht
