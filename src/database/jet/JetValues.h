#pragma once
// Column values of Jet 4 rows: reading them as the program's values, and
// storing new Text, Memo and number values the way Jet itself does.

#include "database/jet/JetRows.h"
#include "database/jet/JetTable.h"

#include <QVariant>

namespace ht::jet
{

// Jet dates count days from 1899-12-30; the fraction is the time of day, also for
// negative days. "" for a value no date can have.
QString jetDateToIso(double value);

// Text as stored: UCS-2, or "compressed" (FF FE, then one byte per character
// and a 0x00 byte switching between one and two bytes).
QString decodeText(const QByteArray &bytes);
// Compressed only where the column allows it and it is shorter, as Jet does.
QByteArray encodeText(const QString &text, bool compressible);

bool isNull(const StoredRow &row, const Column &column);
QByteArray storedBytes(const StoredRow &row, const Column &column); // fixed or variable, "" when null
// The value as the program reads it: text as QString, whole numbers as qlonglong,
// Booleans as 0 / -1, other numbers as double, dates as ISO text, binary as QByteArray.
QVariant columnValue(const Image &image, const StoredRow &row, const Column &column);

// A long value's bytes, following its pages; the rows it occupies (to be freed when it changes).
QByteArray readLongValue(const Image &image, const QByteArray &header, std::vector<RowPointer> *rows = nullptr);

// Sets a column's stored bytes (nullopt: null). The caller has encoded them.
void setStoredBytes(StoredRow &row, const Column &column, const std::optional<QByteArray> &bytes);
// A fixed-size number column's bytes for `value`; nullopt when it does not fit the type.
std::optional<QByteArray> encodeNumber(const Column &column, const QVariant &value);

} // namespace ht::jet
