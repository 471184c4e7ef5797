#include "database/jet/JetWriter.h"

#include "database/Database.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetValues.h"

#include <algorithm>
#include <map>

namespace ht::jet
{

namespace
{

constexpr int kMemoHeader = 12;
constexpr int kInlineMemoMax = 64;                                // bytes kept in the row itself
constexpr int kLongValueRowMax = kPageSize - kDataHeader - 2 - 4; // one row on a page of its own
constexpr int kChainPartMax = kLongValueRowMax - 4;               // a chain's rows begin with the next one's pointer
constexpr quint8 kMemoInline = 0x80, kMemoSingle = 0x40, kMemoChain = 0x00;

QByteArray pointerBytes(RowPointer at)
{
    QByteArray b(4, '\0');
    put32(b.data(), at.packed());
    return b;
}

QByteArray memoHeader(quint32 length, quint8 kind, RowPointer first)
{
    QByteArray h(kMemoHeader, '\0');
    put32(h.data(), length | (quint32(kind) << 24));
    put32(h.data() + 4, first.packed());
    return h;
}

} // namespace

void widenRow(const TableDef &table, StoredRow &row);

void Writer::refuse(const QString &why) const
{
    throw DbError(QStringLiteral("%1 cannot be changed here: %2").arg(m_image.name(), why).toStdString());
}

bool Writer::replaceRowOnPage(quint32 page, int row, const QByteArray &bytes, quint16 flags)
{
    // A row after the last goes below the others while there is room: no need to lay them out again.
    if (row == rowCount(m_image.page(page)) && flags != kRowDeleted) {
        char copy[kPageSize];
        std::copy_n(m_image.page(page), kPageSize, copy);
        if (appendRowOnPage(copy, bytes, flags)) {
            std::copy_n(copy, kPageSize, m_image.changePage(page));
            return true;
        }
    }
    std::vector<PageRow> rows = pageRows(m_image, page);
    if (row < 0 || row > int(rows.size()))
        return false;
    if (row == int(rows.size()))
        rows.push_back({});
    rows[size_t(row)] = {bytes, flags};
    char copy[kPageSize];
    std::copy_n(m_image.page(page), kPageSize, copy);
    if (!layOutRows(copy, std::move(rows)))
        return false;
    std::copy_n(copy, kPageSize, m_image.changePage(page));
    return true;
}

void Writer::markDeleted(RowPointer at)
{
    replaceRowOnPage(at.page, at.row, QByteArray(), kRowDeleted);
}

quint32 Writer::newPage(quint32 ownerMap, quint32 freeMap, quint32 tableDefPage, bool longValues)
{
    const quint32 page = m_image.appendPage();
    initDataPage(m_image.changePage(page), tableDefPage, longValues);
    if (!setMapBit(m_image, kGlobalMap, page, false) || !setMapBit(m_image, ownerMap, page, true))
        refuse(QStringLiteral("its page maps cannot take a new page"));
    if (freeMap != 0)
        setMapBit(m_image, freeMap, page, true);
    return page;
}

RowPointer Writer::addLongValueRow(const TableDef &table, const Column &column, const QByteArray &data)
{
    if (column.longValueMap == 0)
        refuse(QStringLiteral("column %1 of table %2 has no pages for long values").arg(column.name, table.name));
    const auto takes = [&](quint32 page) {
        if (page == 0 || page >= m_image.pageCount())
            return false;
        const char *p = m_image.page(page);
        return quint8(p[0]) == PageData && QByteArray(p + 4, 4) == "LVAL" && rowCount(p) < kMaxRowsPerPage &&
               freeSpaceField(p) >= data.size() + 2 && replaceRowOnPage(page, rowCount(p), data, 0);
    };
    const quint32 last = m_lastPage.value(column.longValueMap);
    if (takes(last))
        return {last, quint8(rowCount(m_image.page(last)) - 1)};
    if (const quint32 page = firstPageTaking(column.longValueMap, takes)) {
        m_lastPage[column.longValueMap] = page;
        return {page, quint8(rowCount(m_image.page(page)) - 1)};
    }
    const quint32 page = newPage(column.longValueMap, 0, table.page, true);
    if (!replaceRowOnPage(page, 0, data, 0))
        refuse(QStringLiteral("a long value does not fit a page"));
    m_lastPage[column.longValueMap] = page;
    return {page, 0};
}

QByteArray Writer::longValueHeader(const TableDef &table, const Column &column, const QByteArray &data)
{
    const quint32 length = quint32(data.size());
    if (data.size() <= kInlineMemoMax)
        return memoHeader(length, kMemoInline, {}) + data;
    if (data.size() <= kLongValueRowMax)
        return memoHeader(length, kMemoSingle, addLongValueRow(table, column, data));
    // A chain, written from its end so that each part knows the next.
    RowPointer next{};
    for (qsizetype end = data.size(); end > 0;) {
        const qsizetype start = std::max<qsizetype>(0, end - kChainPartMax);
        next = addLongValueRow(table, column, pointerBytes(next) + data.mid(start, end - start));
        end = start;
    }
    return memoHeader(length, kMemoChain, next);
}

RowPointer Writer::addOverflowRow(const TableDef &table, quint32 notOnPage, const QByteArray &bytes)
{
    const auto takes = [&](quint32 page) {
        if (page == 0 || page == notOnPage || page >= m_image.pageCount())
            return false;
        const char *p = m_image.page(page);
        return quint8(p[0]) == PageData && le32(p + 4) == table.page && rowCount(p) < kMaxRowsPerPage &&
               computedFreeSpace(m_image, page) >= bytes.size() + 2 &&
               replaceRowOnPage(page, rowCount(p), bytes, kRowOverflowTarget);
    };
    // The page that took the last one first: many rows outgrowing theirs in one round stay cheap.
    quint32 found = m_lastPage.value(table.usedPagesMap);
    if (!takes(found)) {
        found = 0;
        for (quint32 page : mapPages(m_image, table.usedPagesMap))
            if (takes(page)) {
                found = page;
                break;
            }
    }
    if (found == 0) {
        found = newPage(table.usedPagesMap, table.freePagesMap, table.page, false);
        if (!replaceRowOnPage(found, 0, bytes, kRowOverflowTarget))
            refuse(QStringLiteral("a row of table %1 does not fit a page").arg(table.name));
    }
    m_lastPage[table.usedPagesMap] = found;
    return {found, quint8(rowCount(m_image.page(found)) - 1)};
}

// The row's slot never moves: the indexes point at it.
void Writer::placeRow(const TableDef &table, RowPointer slot, const QByteArray &bytes)
{
    const Slot s = slotOf(m_image, slot.page, slot.row);
    std::optional<RowPointer> oldTarget;
    if (s.flags == kRowOverflowPointer)
        oldTarget = RowPointer::unpack(le32(m_image.page(slot.page) + s.start));
    // Back home when the slot's page can take it, an abandoned overflow row deleted.
    if (replaceRowOnPage(slot.page, slot.row, bytes, 0)) {
        if (oldTarget)
            markDeleted(*oldTarget);
        return;
    }
    if (oldTarget && replaceRowOnPage(oldTarget->page, oldTarget->row, bytes, kRowOverflowTarget))
        return;
    const RowPointer target = addOverflowRow(table, slot.page, bytes);
    if (!replaceRowOnPage(slot.page, slot.row, pointerBytes(target), kRowOverflowPointer))
        refuse(QStringLiteral("page %1 has no room for an overflow pointer").arg(slot.page));
    if (oldTarget)
        markDeleted(*oldTarget);
}

void Writer::applyChange(const TableDef &table, StoredRow &row, const ColumnChange &change,
                         std::vector<RowPointer> &freed)
{
    const Column &c = *change.column;
    if (c.number >= row.columnCount())
        widenRow(table, row); // stored before the column was added: Jet widens it the same way
    if (c.longValue() && !isNull(row, c))
        readLongValue(m_image, storedBytes(row, c), &freed);
    if (change.value.isNull()) {
        setStoredBytes(row, c, std::nullopt);
        return;
    }
    switch (c.type) {
    case TypeText: {
        const QString text = change.value.toString();
        if (text.size() * 2 > c.length)
            refuse(QStringLiteral("the text for column %1 of table %2 is longer than its %3 characters")
                       .arg(c.name, table.name)
                       .arg(c.length / 2));
        setStoredBytes(row, c, encodeText(text, c.compressible()));
        break;
    }
    case TypeMemo:
        // Jet stores long values uncompressed where it may not compress them; so does this.
        setStoredBytes(row, c, longValueHeader(table, c, encodeText(change.value.toString(), false)));
        break;
    case TypeBinary:
        if (change.value.toByteArray().size() > c.length)
            refuse(QStringLiteral("the value for column %1 of table %2 is too long").arg(c.name, table.name));
        setStoredBytes(row, c, change.value.toByteArray());
        break;
    case TypeByte:
    case TypeInteger:
    case TypeLong:
    case TypeDouble:
    case TypeDateTime: {
        const std::optional<QByteArray> number = encodeNumber(c, change.value);
        if (!number)
            refuse(QStringLiteral("%1 does not fit column %2 of table %3")
                       .arg(change.value.toString(), c.name, table.name));
        setStoredBytes(row, c, number);
        break;
    }
    default:
        refuse(QStringLiteral("column %1 of table %2 is of a type that cannot be written yet").arg(c.name, table.name));
    }
}

void widenRow(const TableDef &table, StoredRow &row)
{
    int columns = 0, fixedBytes = 0;
    for (const Column &c : table.columns) {
        columns = std::max(columns, c.number + 1);
        if (c.fixed())
            fixedBytes = std::max(fixedBytes, c.fixedOffset + c.length);
    }
    if (row.head.size() < 2)
        row.head = QByteArray(2, '\0');
    if (row.head.size() < 2 + fixedBytes)
        row.head.append(QByteArray(2 + fixedBytes - row.head.size(), '\0'));
    put16(row.head.data(), quint16(std::max<int>(columns, row.columnCount())));
    const int maskBytes = (row.columnCount() + 7) / 8;
    if (row.nullMask.size() < maskBytes)
        row.nullMask.append(QByteArray(maskBytes - row.nullMask.size(), '\0')); // the new columns are null
    if (row.variable.size() < table.variableColumns)
        row.variable.resize(table.variableColumns);
}

bool Writer::takesRow(const TableDef &table, quint32 page, const QByteArray &bytes)
{
    if (page == 0 || page >= m_image.pageCount())
        return false;
    const char *p = m_image.page(page);
    // The free-space field only sorts pages out: laying the rows out again says whether it fits.
    return quint8(p[0]) == PageData && le32(p + 4) == table.page && rowCount(p) < kMaxRowsPerPage &&
           freeSpaceField(p) >= bytes.size() + 2 && replaceRowOnPage(page, rowCount(p), bytes, 0);
}

quint32 Writer::firstPageTaking(quint32 map, const std::function<bool(quint32)> &takes)
{
    auto known = m_pagesWithRoom.find(map);
    if (known == m_pagesWithRoom.end())
        known = m_pagesWithRoom.insert(map, {mapPages(m_image, map), 0});
    // A page that took nothing is full for the rest of the round; one that took the row may take more.
    for (; known->next < known->pages.size(); ++known->next)
        if (takes(known->pages[known->next]))
            return known->pages[known->next];
    return 0;
}

void Writer::addToRowCount(const TableDef &table, int delta)
{
    char *definition = m_image.changePage(table.page);
    put32(definition + kTableRowCountOffset, le32(definition + kTableRowCountOffset) + quint32(delta));
}

RowPointer Writer::addRow(const TableDef &table, std::vector<ColumnChange> values, bool anyPage)
{
    for (const Column &c : table.columns) {
        if (!c.autoNumber() || c.type != TypeLong)
            continue;
        const auto given =
            std::find_if(values.begin(), values.end(), [&](const ColumnChange &v) { return v.column == &c; });
        char *definition = m_image.changePage(table.page);
        const qint64 last = qint32(le32(definition + kTableAutoNumberOffset));
        if (given == values.end() || given->value.isNull()) {
            if (last >= INT32_MAX)
                refuse(QStringLiteral("the numbers of column %1 of table %2 are used up").arg(c.name, table.name));
            if (given == values.end())
                values.push_back({&c, qint32(last + 1)});
            else
                given->value = qint32(last + 1);
            put32(definition + kTableAutoNumberOffset, quint32(last + 1));
        } else if (given->value.toLongLong() > last) {
            put32(definition + kTableAutoNumberOffset, quint32(given->value.toLongLong()));
        }
    }
    StoredRow row;
    widenRow(table, row);
    std::vector<RowPointer> freed;
    for (const ColumnChange &change : values)
        applyChange(table, row, change, freed);
    const QByteArray bytes = encodeRow(row, table.variableColumns > 0);
    if (bytes.size() > kMaxRowBytes)
        refuse(QStringLiteral("a row of table %1 would be longer than Jet allows").arg(table.name));
    quint32 page = m_lastPage.value(table.usedPagesMap);
    if (!takesRow(table, page, bytes)) {
        page = 0;
        if (anyPage)
            page = firstPageTaking(table.usedPagesMap, [&](quint32 p) { return takesRow(table, p, bytes); });
        if (page == 0) {
            page = newPage(table.usedPagesMap, table.freePagesMap, table.page, false);
            if (!replaceRowOnPage(page, 0, bytes, 0))
                refuse(QStringLiteral("a row of table %1 does not fit a page").arg(table.name));
        }
        m_lastPage[table.usedPagesMap] = page;
    }
    addToRowCount(table, 1);
    return {page, quint8(rowCount(m_image.page(page)) - 1)};
}

RowPointer Writer::appendRow(const TableDef &table, const std::vector<ColumnChange> &values)
{
    return addRow(table, values, false);
}

RowPointer Writer::insertRow(const TableDef &table, const std::vector<ColumnChange> &values)
{
    return addRow(table, values, true);
}

void Writer::deleteRow(const TableDef &table, RowPointer slot)
{
    deleteRows(table, {slot});
}

void Writer::deleteRows(const TableDef &table, const std::vector<RowPointer> &places)
{
    std::map<quint32, std::vector<int>> byPage; // every row to flag, with overflow and long-value rows
    for (RowPointer slot : places) {
        const Slot s = slotOf(m_image, slot.page, slot.row);
        const char *page = m_image.page(slot.page);
        if ((s.flags & kRowOverflowTarget) || quint8(page[0]) != PageData || le32(page + 4) != table.page)
            refuse(
                QStringLiteral("row %1 of page %2 is no row of table %3").arg(slot.row).arg(slot.page).arg(table.name));
        std::vector<RowPointer> freed{slot};
        if (s.flags == kRowOverflowPointer)
            freed.push_back(RowPointer::unpack(le32(page + s.start)));
        const StoredRow row = decodeRow(m_image, rowData(m_image, slot), table.variableColumns > 0);
        for (const Column &c : table.columns)
            if (c.longValue() && !isNull(row, c))
                readLongValue(m_image, storedBytes(row, c), &freed);
        for (RowPointer at : freed)
            byPage[at.page].push_back(at.row);
    }
    for (const auto &[page, rows] : byPage) {
        std::vector<PageRow> laid = pageRows(m_image, page);
        for (int row : rows)
            if (row >= 0 && row < int(laid.size()))
                laid[size_t(row)] = {QByteArray(), kRowDeleted};
        char copy[kPageSize];
        std::copy_n(m_image.page(page), kPageSize, copy);
        if (!layOutRows(copy, std::move(laid)))
            refuse(QStringLiteral("page %1 cannot be laid out again").arg(page));
        std::copy_n(copy, kPageSize, m_image.changePage(page));
    }
    addToRowCount(table, -int(places.size()));
}

void Writer::updateRow(const TableDef &table, RowPointer slot, const std::vector<ColumnChange> &changes,
                       bool indexesRebuilt)
{
    const Slot s = slotOf(m_image, slot.page, slot.row);
    if (s.flags & kRowOverflowTarget)
        refuse(QStringLiteral("row %1 of page %2 is no row of table %3").arg(slot.row).arg(slot.page).arg(table.name));
    QByteArray bytes = rowBytes(m_image, slot.page, slot.row);
    if (s.flags == kRowOverflowPointer) {
        const RowPointer target = RowPointer::unpack(le32(bytes.constData()));
        bytes = rowBytes(m_image, target.page, target.row);
    }
    StoredRow row = decodeRow(m_image, bytes, table.variableColumns > 0);
    std::vector<RowPointer> freed;
    for (const ColumnChange &change : changes) {
        if (change.column->indexed && !indexesRebuilt)
            refuse(QStringLiteral("column %1 of table %2 is indexed; indexes cannot be kept up to date yet")
                       .arg(change.column->name, table.name));
        applyChange(table, row, change, freed);
    }
    const QByteArray encoded = encodeRow(row, table.variableColumns > 0);
    if (encoded.size() > kMaxRowBytes)
        refuse(QStringLiteral("a row of table %1 would be longer than Jet allows").arg(table.name));
    placeRow(table, slot, encoded);
    for (RowPointer at : freed)
        markDeleted(at);
}

} // namespace ht::jet
