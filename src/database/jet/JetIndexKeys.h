#pragma once
// The key bytes Jet 4 files hold in their indexes: whole numbers, and text in
// the General sort order for the characters whose weights are known here
// (letters, digits, blank and the usual punctuation of ASCII).

#include "database/jet/JetRows.h"
#include "database/jet/JetTable.h"

#include <optional>

namespace ht::jet
{

// A Long or Integer value `width` bytes wide: a flag byte, then the number
// big-endian with its sign bit flipped; every byte inverted when descending.
QByteArray numberIndexKey(qint64 value, int width, bool ascending = true);
// Nullopt when the text holds a character whose weight is not known here.
std::optional<QByteArray> textIndexKey(const QString &text, bool ascending = true);
QByteArray nullIndexKey(bool ascending);

// The key index `index` of the table gives a row. Nullopt, with the reason in
// `why`, when a key column is of a type or holds a value this cannot encode.
// `allNull` says whether every key column is null, `anyNull` whether one is.
std::optional<QByteArray> rowIndexKey(const TableDef &table, int index, const StoredRow &row, QString *why = nullptr,
                                      bool *allNull = nullptr, bool *anyNull = nullptr);

} // namespace ht::jet
