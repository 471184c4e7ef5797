#pragma once
// Where an installed copy keeps its files. Installed, the program lives in
// <prefix>/bin, its data (the importer's template databases, the page
// templates) in <prefix>/share/helptext, and it cannot write beside itself.

#include <QString>

namespace ht
{

struct Context;

// <prefix>/share/helptext when the program runs from an installation, else "".
QString installedDataDir(const Context &ctx);

// A data file of the program: beside it when there, else in the installed data
// folder when there; else the path beside it (which then names what is missing).
QString programDataFile(const Context &ctx, const QString &name);

// The user's state folder for the error log: $XDG_STATE_HOME/helptext, else
// ~/.local/state/helptext.
QString userStateDir();

} // namespace ht
