#pragma once
// The program's jobs for scripts (see common/ConsoleCommand.h): which the
// variant has, and running one without any window.

#include "common/ConsoleCommand.h"

namespace ht
{

// The commands of the variant `mode` ("IMPORT" has them; "EDIT" has none).
std::vector<ConsoleCommand> programCommands(const QString &mode);

// What --help says before the commands: how the variant `mode` is started,
// its batch run and its files.
QString programHelp(const QString &mode, const QString &program);

// When argv names a command of the variant (or asks for --help), runs it and
// returns true with its exit code; needs no display.
bool runProgramCommand(int argc, char **argv, int &exitCode);

} // namespace ht
