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
    NotAFolderName, // the machine's help pages are kept in a folder of its name, here and on the panel
    Exists,         // another machine of that name (compared without case, as the database does)
};
// What stands against naming a machine `name` among `machines`; `renaming`
// is the machine being renamed, which may change its own name's case.
MachineNameProblem machineNameProblem(const QString &name, const QStringList &machines,
                                      const QString &renaming = QString());

// The machine of that name as the database spells it (names compare without
// case, as the database does); "" when there is none.
QString storedMachineName(const QStringList &machines, const QString &name);

// An older help-text database keeps machine types in a number column: it
// takes only numbers as names.
bool machineTypesAreNumbers(Database &db, bool materialChange);

// In the caller's transaction; `tick` runs after each table.
void renameMachine(Database &db, const QString &from, const QString &to, bool materialChange,
                   const std::function<void()> &tick = {});
// A machine's help pages live in the folder of its name under the help main
// directory; a rename takes the folder along unless the new one exists.
struct HelpFolderRename {
    QString from, to;     // the two folders; `from` "" when there is nothing to move
    bool blocked = false; // `to` exists: the pages stay under the old name
    // One sentence for the question and the report; "" when there is no folder.
    QString note() const;
};
HelpFolderRename planHelpFolderRename(const QString &helpMainDir, const QString &from, const QString &to);
// Renames the machine in one transaction of its own and moves its help folder
// with it: both happen or neither. Throws DbError with nothing changed.
void renameMachineWithHelpFolder(Database &db, const QString &from, const QString &to, bool materialChange,
                                 const HelpFolderRename &folder, const std::function<void()> &tick = {});

// Frees the machine's rows: texts of every language emptied, definitions
// reset (Rejects "0"), the item numbers kept. In the caller's transaction.
void deleteMachine(Database &db, const QString &machine, bool materialChange);

} // namespace ht
