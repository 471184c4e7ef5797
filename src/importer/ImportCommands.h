#pragma once
// The importer's jobs for scripts: import, delete-machine, rename-machine, and
// convert-to-sqlite and sync-to-access between Access and SQLite databases.

#include "common/ConsoleCommand.h"

namespace ht
{

std::vector<ConsoleCommand> importerCommands();

} // namespace ht
