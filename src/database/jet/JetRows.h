#pragma once
// Rows on Jet 4 data pages: the slots at the page's head, the rows stored from
// the page's end down, and a row's columns as they are stored.

#include "database/jet/JetImage.h"

#include <QByteArray>
#include <optional>
#include <vector>

namespace ht::jet
{

struct Slot {
    int start = 0, end = 0; // the row's bytes on the page
    quint16 flags = 0;      // kRowOverflowPointer, kRowOverflowTarget, kRowDeleted or 0
};

int rowCount(const char *page);
// The slot of `row`; the image says "damaged" when it points outside the page.
Slot slotOf(const Image &image, quint32 pageNumber, int row);
QByteArray rowBytes(const Image &image, quint32 pageNumber, int row);
// The bytes of the row whose slot this is, followed through an overflow pointer;
// the image says "damaged" when the slot holds no row.
QByteArray rowData(const Image &image, RowPointer slot);
// The free-space field must be the gap between the slots and the lowest row.
int freeSpaceField(const char *page);
int computedFreeSpace(const Image &image, quint32 pageNumber);

struct PageRow {
    QByteArray bytes;
    quint16 flags = 0;
};
std::vector<PageRow> pageRows(const Image &image, quint32 pageNumber);
// Lays `rows` out on the page again, from its end down in row order, each with
// its flags; deleted rows keep no bytes. False, with the page unchanged, when
// they do not fit.
bool layOutRows(char *page, std::vector<PageRow> rows);
// Adds a row after the page's last one, below its lowest row, the others left
// where they are. False, with the page unchanged, when it has no room there.
bool appendRowOnPage(char *page, const QByteArray &bytes, quint16 flags);
// A new data page of the table whose definition is on `tableDefPage` ("LVAL" for long values).
void initDataPage(char *page, quint32 tableDefPage, bool longValues = false);

// A row's columns as stored: the head (column count and fixed columns) kept
// byte for byte, the variable columns one by one, the null mask.
struct StoredRow {
    QByteArray head;
    std::vector<QByteArray> variable; // by the columns' variable index; a null one is empty
    QByteArray nullMask;              // one bit per column number; Booleans keep their value here
    quint16 columnCount() const { return le16(head.constData()); }
};
// Throws DbError through the image when the bytes are no row of this shape.
StoredRow decodeRow(const Image &image, const QByteArray &bytes, bool hasVariableColumns);
QByteArray encodeRow(const StoredRow &row, bool hasVariableColumns);

} // namespace ht::jet
