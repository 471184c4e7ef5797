#pragma once
// The checks and the progress overview for scripts: `check` and `report`.

#include "common/ConsoleCommand.h"

namespace ht
{

std::vector<ConsoleCommand> reviewCommands();

} // namespace ht
