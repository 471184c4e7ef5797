#include "database/jet/JetTable.h"

#include "database/jet/JetRows.h"
#include "database/jet/JetValues.h"

#include <algorithm>

namespace ht::jet
{

namespace
{

constexpr int kColumnBlock = 25, kRealIndexBlock = 52, kLogicalIndexBlock = 28, kRealIndexCounts = 12;
constexpr int kMaxTableDefPages = 64;
constexpr quint8 kUserTable = 0x4E, kSystemTable = 0x53;
constexpr quint8 kInlineMap = 0, kReferenceMap = 1;
constexpr quint32 kBitsPerUsagePage = (kPageSize - 4) * 8;
constexpr qint32 kSystemObjectFlags = qint32(0x80000002);

// The TDEF's bytes across its pages, the continuation pages without their 8-byte header.
QByteArray tableDefBytes(const Image &image, quint32 page)
{
    QByteArray bytes;
    for (int n = 0; page != 0; ++n) {
        const char *p = image.page(page);
        if (n >= kMaxTableDefPages || quint8(p[0]) != PageTableDef)
            image.damaged(QStringLiteral("the table definition on page %1 is not one").arg(page));
        bytes += n == 0 ? QByteArray(p, kPageSize) : QByteArray(p + 8, kPageSize - 8);
        page = le32(p + 4);
    }
    return bytes;
}

class Cursor
{
  public:
    Cursor(const Image &image, const QByteArray &bytes, int at) : m_image(image), m_bytes(bytes), m_at(at) {}
    const char *take(int n)
    {
        if (n < 0 || m_at + n > m_bytes.size())
            m_image.damaged(QStringLiteral("a table definition is cut off"));
        const char *p = m_bytes.constData() + m_at;
        m_at += n;
        return p;
    }
    quint16 u16() { return le16(take(2)); }
    quint32 u32() { return le32(take(4)); }
    int at() const { return m_at; }
    QString name()
    {
        const int length = u16();
        const char *p = take(length);
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(p), length / 2);
    }

  private:
    const Image &m_image;
    const QByteArray &m_bytes;
    int m_at;
};

// Where a map's row lies, and its bytes.
struct MapRow {
    quint32 page;
    Slot slot;
    QByteArray bytes;
};

MapRow mapRow(const Image &image, quint32 pointer)
{
    const RowPointer at = RowPointer::unpack(pointer);
    const Slot s = slotOf(image, at.page, at.row);
    MapRow row{at.page, s, QByteArray(image.page(at.page) + s.start, s.end - s.start)};
    if (row.bytes.isEmpty() || (row.bytes[0] != kInlineMap && row.bytes[0] != kReferenceMap) ||
        (row.bytes[0] == kInlineMap && row.bytes.size() < 5))
        image.damaged(QStringLiteral("a page usage map is of a kind that is not known"));
    return row;
}

bool bitAt(const char *bitmap, quint32 bit)
{
    return (quint8(bitmap[bit / 8]) >> (bit % 8)) & 1;
}

void setBitAt(char *bitmap, quint32 bit, bool on)
{
    quint8 byte = quint8(bitmap[bit / 8]);
    bitmap[bit / 8] = char(on ? byte | (1 << (bit % 8)) : byte & ~(1 << (bit % 8)));
}

} // namespace

const Column *TableDef::column(const QString &columnName) const
{
    for (const Column &c : columns)
        if (c.name.compare(columnName, Qt::CaseInsensitive) == 0)
            return &c;
    return nullptr;
}

TableDef readTableDef(const Image &image, quint32 page, const QString &name)
{
    const QByteArray bytes = tableDefBytes(image, page);
    TableDef t;
    t.name = name;
    t.page = page;
    Cursor head(image, bytes, kTableRowCountOffset);
    t.rowCount = head.u32();
    const quint8 type = bytes.size() > 40 ? quint8(bytes[40]) : 0;
    if (type != kUserTable && type != kSystemTable)
        image.damaged(QStringLiteral("table %1 is of a kind that is not known").arg(name));
    Cursor counts(image, bytes, 43);
    t.variableColumns = counts.u16();
    const int columns = counts.u16();
    const quint32 logicalIndexes = counts.u32();
    const quint32 realIndexes = counts.u32();
    t.usedPagesMap = counts.u32();
    t.freePagesMap = counts.u32();
    if (columns == 0 || columns > 255 || realIndexes > 64 || logicalIndexes > 64)
        image.damaged(QStringLiteral("the definition of table %1 is not one that is known").arg(name));

    Cursor c(image, bytes, 63 + kRealIndexCounts * int(realIndexes));
    for (int i = 0; i < columns; ++i) {
        const char *b = c.take(kColumnBlock);
        Column col;
        col.type = quint8(b[0]);
        col.number = le16(b + 5);
        col.variableIndex = le16(b + 7);
        col.sortOrder = le16(b + 11);
        col.flags = quint8(b[15]);
        col.miscFlags = quint8(b[16]);
        col.fixedOffset = le16(b + 21);
        col.length = le16(b + 23);
        t.columns.push_back(col);
    }
    for (Column &col : t.columns)
        col.name = c.name();
    for (quint32 i = 0; i < realIndexes; ++i) {
        t.indexBlockOffsets.push_back(c.at());
        const char *b = c.take(kRealIndexBlock);
        std::vector<quint16> keys;
        std::vector<bool> ascending;
        for (int k = 0; k < 10; ++k) {
            const quint16 number = le16(b + 4 + 3 * k);
            if (number != 0xFFFF) {
                keys.push_back(number);
                ascending.push_back(b[6 + 3 * k] != 0);
            }
        }
        t.indexAscending.push_back(ascending);
        for (Column &col : t.columns)
            if (std::find(keys.begin(), keys.end(), col.number) != keys.end())
                col.indexed = true;
        t.indexColumns.push_back(keys);
        t.indexMaps.push_back(le32(b + 34));
        t.indexRoots.push_back(le32(b + kIndexBlockRoot));
        t.indexFlags.push_back(quint8(b[kIndexBlockFlags]));
    }
    for (quint32 i = 0; i < logicalIndexes; ++i) {
        const char *b = c.take(kLogicalIndexBlock);
        LogicalIndex index;
        index.physical = le32(b + 8);
        index.primaryKey = quint8(b[23]) == 1;
        index.foreignKey = quint8(b[23]) == 2;
        t.logicalIndexes.push_back(index);
    }
    for (LogicalIndex &index : t.logicalIndexes)
        index.name = c.name();
    // The long-value columns' own page maps, up to a column number of 0xFFFF.
    for (int i = 0; i < columns; ++i) {
        const quint16 number = c.u16();
        if (number == 0xFFFF)
            break;
        const quint32 used = c.u32();
        c.u32(); // their pages with free space
        for (Column &col : t.columns)
            if (col.number == number)
                col.longValueMap = used;
    }
    return t;
}

void putTableDef32(Image &image, quint32 tableDefPage, int offset, quint32 value)
{
    // The first page gives all its bytes, each further one all but its 8-byte header.
    quint32 page = tableDefPage;
    int at = offset, header = 0, span = kPageSize;
    for (int n = 0; at >= span; ++n) {
        at -= span;
        page = le32(image.page(page) + 4);
        if (page == 0 || n >= kMaxTableDefPages)
            image.damaged(QStringLiteral("the table definition on page %1 is cut off").arg(tableDefPage));
        header = 8;
        span = kPageSize - 8;
    }
    if (at + 4 > span)
        image.damaged(QStringLiteral("a field of the table definition on page %1 spans two pages").arg(tableDefPage));
    put32(image.changePage(page) + header + at, value);
}

std::vector<CatalogEntry> readCatalog(const Image &image, bool systemTables)
{
    const TableDef objects = readTableDef(image, 2, QStringLiteral("MSysObjects"));
    const Column *id = objects.column(QStringLiteral("Id"));
    const Column *name = objects.column(QStringLiteral("Name"));
    const Column *type = objects.column(QStringLiteral("Type"));
    const Column *flags = objects.column(QStringLiteral("Flags"));
    if (!id || !name || !type || !flags)
        image.damaged(QStringLiteral("its catalog is not one that is known"));
    std::vector<CatalogEntry> tables;
    forEachRow(image, objects, [&](RowPointer, const QByteArray &bytes) {
        const StoredRow row = decodeRow(image, bytes, objects.variableColumns > 0);
        if (columnValue(image, row, *type).toLongLong() != 1 ||
            (!systemTables && (qint32(columnValue(image, row, *flags).toLongLong()) & kSystemObjectFlags) != 0))
            return;
        tables.push_back({columnValue(image, row, *name).toString(),
                          quint32(columnValue(image, row, *id).toLongLong()) & 0x00FFFFFF});
    });
    return tables;
}

std::vector<quint32> mapPages(const Image &image, quint32 mapPointer)
{
    const MapRow row = mapRow(image, mapPointer);
    std::vector<quint32> pages;
    if (row.bytes[0] == kInlineMap) {
        const quint32 start = le32(row.bytes.constData() + 1);
        const quint32 bits = quint32(row.bytes.size() - 5) * 8;
        for (quint32 b = 0; b < bits; ++b)
            if (bitAt(row.bytes.constData() + 5, b))
                pages.push_back(start + b);
        return pages;
    }
    for (int k = 0; 1 + 4 * (k + 1) <= row.bytes.size(); ++k) {
        const quint32 usage = le32(row.bytes.constData() + 1 + 4 * k);
        if (usage == 0)
            continue;
        const char *p = image.page(usage);
        if (quint8(p[0]) != PageUsage)
            image.damaged(QStringLiteral("a page usage map points to page %1, which is none").arg(usage));
        for (quint32 b = 0; b < kBitsPerUsagePage; ++b)
            if (bitAt(p + 4, b))
                pages.push_back(quint32(k) * kBitsPerUsagePage + b);
    }
    return pages;
}

bool mapHas(const Image &image, quint32 mapPointer, quint32 page)
{
    const MapRow row = mapRow(image, mapPointer);
    if (row.bytes[0] == kInlineMap) {
        const quint32 start = le32(row.bytes.constData() + 1);
        const quint32 bits = quint32(row.bytes.size() - 5) * 8;
        return page >= start && page - start < bits && bitAt(row.bytes.constData() + 5, page - start);
    }
    const quint32 k = page / kBitsPerUsagePage;
    if (1 + 4 * (k + 1) > quint32(row.bytes.size()))
        return false;
    const quint32 usage = le32(row.bytes.constData() + 1 + 4 * k);
    return usage != 0 && bitAt(image.page(usage) + 4, page % kBitsPerUsagePage);
}

namespace
{

// A fresh page of bits for a reference map; the global map's pages past the
// file's end count as free, as Jet marks them.
quint32 newUsagePage(Image &image, quint32 mapPointer, quint32 firstPage)
{
    const quint32 page = image.appendPage();
    char *p = image.changePage(page);
    p[0] = char(PageUsage);
    p[1] = 1;
    if (mapPointer == kGlobalMap)
        for (quint32 b = 0; b < kBitsPerUsagePage; ++b)
            if (firstPage + b >= image.pageCount())
                setBitAt(p + 4, b, true);
    // The new page is in use itself.
    if (mapPointer != kGlobalMap && !setMapBit(image, kGlobalMap, page, false))
        return 0;
    if (mapPointer == kGlobalMap && page >= firstPage && page - firstPage < kBitsPerUsagePage)
        setBitAt(p + 4, page - firstPage, false);
    return page;
}

// An inline map turned into a reference map: same row length, the bits moved to usage pages.
bool promote(Image &image, quint32 mapPointer, const MapRow &row)
{
    const std::vector<quint32> marked = mapPages(image, mapPointer);
    const int pointers = int(row.bytes.size() - 1) / 4;
    QByteArray bytes(row.bytes.size(), '\0');
    bytes[0] = char(kReferenceMap);
    char *target = image.changePage(row.page) + row.slot.start;
    std::copy(bytes.begin(), bytes.end(), target);
    // Pages the old window did not reach: the global map counts them as used.
    const quint32 oldStart = le32(row.bytes.constData() + 1);
    const quint32 oldEnd = oldStart + quint32(row.bytes.size() - 5) * 8;
    for (quint32 page : marked)
        if (quint32(page / kBitsPerUsagePage) >= quint32(pointers) || !setMapBit(image, mapPointer, page, true))
            return false;
    if (mapPointer == kGlobalMap) {
        // Free stays only what the old window marked free or lies past the end.
        for (quint32 page = 0; page < image.pageCount(); ++page)
            if ((page < oldStart || page >= oldEnd) && !setMapBit(image, mapPointer, page, false))
                return false;
    }
    return true;
}

} // namespace

bool setMapBit(Image &image, quint32 mapPointer, quint32 page, bool on)
{
    const MapRow row = mapRow(image, mapPointer);
    if (row.bytes[0] == kInlineMap) {
        const quint32 start = le32(row.bytes.constData() + 1);
        const quint32 bits = quint32(row.bytes.size() - 5) * 8;
        if (page >= start && page - start < bits) {
            setBitAt(image.changePage(row.page) + row.slot.start + 5, page - start, on);
            return true;
        }
        if (!on && mapPointer != kGlobalMap)
            return true; // outside the window: not marked anyway
        // An owner's window moves when everything it marks fits around the page;
        // the global map's never does, as pages outside it would count as free.
        if (mapPointer != kGlobalMap) {
            std::vector<quint32> marked = mapPages(image, mapPointer);
            marked.push_back(page);
            const auto [low, high] = std::minmax_element(marked.begin(), marked.end());
            const quint32 newStart = *low / 8 * 8;
            if (*high - newStart < bits) {
                QByteArray bitmap(int(bits / 8), '\0');
                for (quint32 p : marked)
                    setBitAt(bitmap.data(), p - newStart, true);
                char *target = image.changePage(row.page) + row.slot.start;
                put32(target + 1, newStart);
                std::copy(bitmap.begin(), bitmap.end(), target + 5);
                return true;
            }
        }
        return promote(image, mapPointer, row) && setMapBit(image, mapPointer, page, on);
    }
    const quint32 k = page / kBitsPerUsagePage;
    if (1 + 4 * (k + 1) > quint32(row.bytes.size()))
        return false;
    quint32 usage = le32(row.bytes.constData() + 1 + 4 * k);
    if (usage == 0) {
        if (!on && mapPointer != kGlobalMap)
            return true;
        usage = newUsagePage(image, mapPointer, k * kBitsPerUsagePage);
        if (usage == 0)
            return false;
        put32(image.changePage(row.page) + row.slot.start + 1 + 4 * k, usage);
    }
    setBitAt(image.changePage(usage) + 4, page % kBitsPerUsagePage, on);
    return true;
}

void forEachRow(const Image &image, const TableDef &table,
                const std::function<void(RowPointer slot, const QByteArray &bytes)> &visit)
{
    for (quint32 pageNumber : mapPages(image, table.usedPagesMap)) {
        if (pageNumber >= image.pageCount())
            image.damaged(QStringLiteral("table %1 owns page %2, past the end").arg(table.name).arg(pageNumber));
        const char *page = image.page(pageNumber);
        if (quint8(page[0]) != PageData || le32(page + 4) != table.page)
            continue;
        // Rows added while visiting (overflow rows) are not visited; the page is
        // looked up for each row, as a visit may have moved the file in memory.
        const int rows = rowCount(page);
        for (int r = 0; r < rows; ++r) {
            const Slot s = slotOf(image, pageNumber, r);
            if (s.flags & kRowOverflowTarget)
                continue; // deleted, or the data of a slot elsewhere
            QByteArray bytes = rowBytes(image, pageNumber, r);
            if (s.flags & kRowOverflowPointer) {
                if (bytes.size() < 4)
                    image.damaged(QStringLiteral("an overflow pointer is cut off"));
                const RowPointer target = RowPointer::unpack(le32(bytes.constData()));
                if ((slotOf(image, target.page, target.row).flags & kRowDeleted) != kRowOverflowTarget)
                    image.damaged(QStringLiteral("an overflow pointer leads to no overflow row"));
                bytes = rowBytes(image, target.page, target.row);
            }
            visit({pageNumber, quint8(r)}, bytes);
        }
    }
}

} // namespace ht::jet
