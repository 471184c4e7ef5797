#pragma once
// A machine exists only as the machine type of its definition rows: renaming
// it rewrites that type, deleting it frees its rows (type "0") for the next
// machine. Both change every definition table or none.

#include <QString>
#include <QStringList>
#include <functional>

namespace ht
{

class Database;

enum class MachineNameProblem {
    None,
    Empty,          // nothing but blanks
    FreeRowsMark,   // "0" marks free rows
    NotAFolderName, // the machine's help pages are kept in a folder of its name
    Exists,         // another machine of that name (compared without case, as the database does)
};
// What stands against naming a machine `name` among `machines`; `renaming`
// is the machine being renamed, which may change its own name's case.
MachineNameProblem machineNameProblem(const QString &name, const QStringList &machines,
                                      const QString &renaming = QString());

// An older help-text database keeps machine types in a number column: it
// takes only numbers as names.
bool machineTypesAreNumbers(Database &db, bool materialChange);

// In the caller's transaction; `tick` runs after each table.
void renameMachine(Database &db, const QString &from, const QString &to, bool materialChange,
                   const std::function<void()> &tick = {});
// Frees the machine's rows: texts of every language emptied, definitions
// reset (Rejects "0"), the item numbers kept. In the caller's transaction.
void deleteMachine(Database &db, const QString &machine, bool materialChange);

} // namespace ht
