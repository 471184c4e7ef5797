#pragma once
// Choosing, checking and listing the help-text database.

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;

// "" for a database that takes every job; for an Access (Jet) file, the message
// that `job` ("Creating a language") cannot be done in one yet, and what to do.
QString accessFileRefusal(const QString &path, const QString &job);

// Lets the user pick a help-text database; "" when cancelled.
QString ConnectToDB_Helptext(Context &ctx, const QString &title = QString());

// What the caller is going to do with the database. A Jet file is edited in
// place, values of existing rows only; when an earlier conversion "<base>.sqlite"
// lies beside it, that one is used for Editing, as before. For Reading (page
// generation only) the file is used as it is, unrepaired.
enum class ConnectFor { Editing, Reading };

// The path when the database is usable (possibly the path of its SQLite
// conversion), else "" after the "Connection failed!" message, with the active
// path as before and nothing changed on disk. Sets the material-change flag and
// the item counts; a writable database gets its MachineType columns, language
// fonts and too-short tables repaired.
QString CheckConnection(Context &ctx, const QString &path, ConnectFor purpose = ConnectFor::Editing);
// Converts the MachineType column of `table` in the active database to text, keeping every value.
void CorrectFormatMachineName(Context &ctx, const QString &table);
// Copies the active database (or `path`) to <base>_BACKUP.sav, or to
// <base>_BACKUP<n>.sav with the first free n when that exists; never overwrites a file.
// Sets ctx.state.lastBackupPath.
bool CreateDBBackup(Context &ctx);
bool CreateDBBackup(Context &ctx, const QString &path);
// Appends the machine types (never "0") to `list`; returns their count.
int GetMachineList(Context &ctx, QStringList &list);
// Appends the language names to `list`; returns their count.
int GetLanguageList(Context &ctx, QStringList &list);

} // namespace ht
