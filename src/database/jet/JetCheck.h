#pragma once
// A structural check of a Jet 4 file: what the writer must never break and
// every Access-made file keeps. Used before a changed file replaces the old
// one, and by the tests.

#include "database/jet/JetImage.h"

#include <QSet>
#include <QStringList>

namespace ht::jet
{

// The problems found, one line each; empty for a sound file. Checks every
// table, system tables included: free-space fields and row order on its data
// pages, overflow pointers and their rows, its pages and those of its long
// values against the global usage map, its row count, compressed text only in
// columns that allow it, and each index listing every row once, in key order.
// With `changedTables`, the rows and indexes of the other tables are not
// looked at again: changing a table's rows leaves theirs as they were, and
// their pages are still checked against the global map.
QStringList checkStructure(const Image &image, const QSet<QString> *changedTables = nullptr);

} // namespace ht::jet
