#pragma once
// Jet compares text without regard to case in every script, SQLite's own NOCASE
// only folds ASCII. These replace NOCASE, upper() and lower() on one connection,
// so "ÄÖ" = "äö" wherever a column is declared COLLATE NOCASE.

#include <QString>

struct sqlite3;

namespace ht
{

// Three-way comparison of two UTF-8 texts, case folded (full Unicode folding).
int compareCaseless(const char *a, int lenA, const char *b, int lenB);

// Installs the caseless NOCASE collation and Unicode upper()/lower() on `db`.
// Returns an empty string on success, else SQLite's error text.
QString installCaselessText(sqlite3 *db);

} // namespace ht
