#pragma once
// Choosing, checking and listing the help-text database.

#include <QString>
#include <QStringList>

namespace ht {

struct Context;

// Lets the user pick a help-text database; "" when cancelled.
QString ConnectToDB_Helptext(Context &ctx, const QString &title = QString());
// The path when the database is usable (possibly the path of its SQLite
// conversion), else "" after the "Connection failed!" message.
QString CheckConnection(Context &ctx, const QString &path);
// Converts the MachineType column of `table` to text, keeping every value.
void CorrectFormatMachineName(Context &ctx, const QString &table);
// Copies the active database to <base>_BACKUP.sav (or a numbered name).
bool CreateDBBackup(Context &ctx);
// Fills `list` with the machine types (never "0"); returns the count.
int GetMachineList(Context &ctx, QStringList &list);
// Fills `list` with the language names; returns the count.
int GetLanguageList(Context &ctx, QStringList &list);

} // namespace ht
