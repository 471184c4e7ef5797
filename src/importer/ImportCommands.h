#pragma once
// The importer's jobs for scripts: import, delete-machine, rename-machine.

#include "common/ConsoleCommand.h"

namespace ht
{

std::vector<ConsoleCommand> importerCommands();

} // namespace ht
