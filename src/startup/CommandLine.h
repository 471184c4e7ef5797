#pragma once
// The command line: its first character is the separator, the parameters
// follow ("/html/Alarms", "-html -Warnings").

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;

// Splits a command line; never empty: an empty line gives one "" element.
QStringList ReadCommandLine(const QString &commandLine);
// The program's own arguments (without the program path), joined by blanks.
QString ProgramCommandLine();
// True when a stored parameter equals `name`, compared without case.
bool FindCommandLineParameter(const Context &ctx, const QString &name);

} // namespace ht
