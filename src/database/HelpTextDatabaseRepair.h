#pragma once
// Repairs of an older help-text database's schema, used by the connection check
// inside its own error handling (they throw DbError on failure).

#include <QString>

namespace ht
{

class Database;

// True when the MachineType column of `table` is not text, or an interrupted
// earlier conversion left a MachineType_Old column behind.
bool machineTypeNeedsRepair(Database &db, const QString &table);
// Makes MachineType a text column with every value kept, in one transaction.
void repairMachineTypeColumn(Database &db, const QString &table);

} // namespace ht
