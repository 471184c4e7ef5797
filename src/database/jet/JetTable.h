#pragma once
// A table's definition as its TDEF pages hold it, the catalog of user tables,
// and the usage maps that say which pages a table, a long-value column or the
// whole file own.

#include "database/jet/JetImage.h"

#include <QString>
#include <functional>
#include <vector>

namespace ht::jet
{

enum ColumnType : quint8 {
    TypeBoolean = 1,
    TypeByte = 2,
    TypeInteger = 3,
    TypeLong = 4,
    TypeMoney = 5,
    TypeSingle = 6,
    TypeDouble = 7,
    TypeDateTime = 8,
    TypeBinary = 9,
    TypeText = 10,
    TypeOle = 11,
    TypeMemo = 12,
    TypeGuid = 15,
    TypeNumeric = 16,
};

struct Column {
    QString name;
    quint8 type = 0;
    quint16 number = 0;        // position in a row's null mask
    quint16 variableIndex = 0; // position among the row's variable columns
    quint16 fixedOffset = 0;   // after the row's column count
    quint16 length = 0;        // bytes, for Text twice the characters
    quint8 flags = 0;
    quint8 miscFlags = 0;
    quint16 sortOrder = 0; // of Text: the language whose order its index keys follow
    bool indexed = false;
    quint32 longValueMap = 0; // the pages of this long-value column's values (packed row pointer), 0 when none
    bool fixed() const { return flags & 0x01; }
    bool autoNumber() const { return flags & 0x04; }
    bool compressible() const { return miscFlags & 0x01; } // Text may be stored compressed
    bool longValue() const { return type == TypeMemo || type == TypeOle; }
};

constexpr quint16 kGeneralSortOrder = 0x0409; // Access's "General" order

// An index as the table's design names it; several may share one physical index.
struct LogicalIndex {
    QString name;
    quint32 physical = 0; // its entry in TableDef's per-physical-index lists
    bool primaryKey = false;
    bool foreignKey = false; // made for a relationship, not by the design
};

struct TableDef {
    QString name;
    quint32 page = 0;
    quint32 rowCount = 0;
    quint16 variableColumns = 0;
    std::vector<Column> columns;
    quint32 usedPagesMap = 0, freePagesMap = 0;     // packed row pointers
    std::vector<std::vector<quint16>> indexColumns; // per physical index, the column numbers
    std::vector<std::vector<bool>> indexAscending;  // per physical index, per column: ascending (else descending)
    std::vector<quint32> indexRoots;
    std::vector<quint32> indexMaps;     // per physical index, its pages' usage map (packed row pointer)
    std::vector<quint8> indexFlags;     // per physical index: kIndexUnique, kIndexIgnoreNulls, kIndexRequired
    std::vector<int> indexBlockOffsets; // per physical index, where its block lies in the definition's bytes
    std::vector<LogicalIndex> logicalIndexes;
    const Column *column(const QString &name) const; // any case; nullptr when absent
};

TableDef readTableDef(const Image &image, quint32 page, const QString &name);
// The page offsets of the TDEF fields the writer keeps up to date.
constexpr int kTableRowCountOffset = 16;
constexpr int kTableAutoNumberOffset = 20; // the last number an autonumber column was given
constexpr int kIndexKeyCounts = 63;        // per physical index 12 bytes, the count of its distinct keys at +4
constexpr int kIndexBlockRoot = 38;        // in a physical index's block: its root page
constexpr quint8 kIndexUnique = 0x01, kIndexIgnoreNulls = 0x02, kIndexRequired = 0x08;
constexpr int kIndexBlockFlags = 46; // in a physical index's block
// A 32-bit field of a definition that may go on over several pages, at `offset`
// of its bytes as readTableDef joins them.
void putTableDef32(Image &image, quint32 tableDefPage, int offset, quint32 value);

struct CatalogEntry {
    QString name;
    quint32 tableDefPage = 0;
};
// The user tables (with `systemTables`, every table), in catalog order.
std::vector<CatalogEntry> readCatalog(const Image &image, bool systemTables = false);

// The pages a usage map marks, ascending.
std::vector<quint32> mapPages(const Image &image, quint32 mapPointer);
bool mapHas(const Image &image, quint32 mapPointer, quint32 page);
// Marks `page` in the map, or clears its mark. An inline map whose window does
// not reach the page is moved or turned into a reference map; false when that
// cannot be done.
bool setMapBit(Image &image, quint32 mapPointer, quint32 page, bool on);
// The map of free pages on page 1: a page in use has its bit cleared.
constexpr quint32 kGlobalMap = (1u << 8) | 0;

// Each live row of the table: the slot that stands for it (which never moves)
// and its bytes, followed through an overflow pointer where there is one.
void forEachRow(const Image &image, const TableDef &table,
                const std::function<void(RowPointer slot, const QByteArray &bytes)> &visit);

} // namespace ht::jet
