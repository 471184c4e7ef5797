#pragma once
// The build's version (set once, in project(... VERSION ...) of the top
// CMakeLists.txt) and the --help / --version answers every program gives.

#include <QString>

namespace ht
{

QString programVersion(); // "2.3.15"

// When the first argument is --help or --version, prints `help` or
// "<program> <version>" to stdout and returns true.
bool answerHelpOrVersion(int argc, char **argv, const QString &program, const QString &help);

} // namespace ht
