#include "database/jet/JetRows.h"

#include <algorithm>

namespace ht::jet
{

int rowCount(const char *page)
{
    return le16(page + 12);
}

Slot slotOf(const Image &image, quint32 pageNumber, int row)
{
    const char *page = image.page(pageNumber);
    const int rows = rowCount(page);
    if (row < 0 || row >= rows || kDataHeader + 2 * rows > kPageSize)
        image.damaged(QStringLiteral("row %1 of page %2 does not exist").arg(row).arg(pageNumber));
    const quint16 raw = le16(page + kDataHeader + 2 * row);
    Slot s;
    s.flags = raw & ~kRowOffsetMask;
    s.start = raw & kRowOffsetMask;
    s.end = row == 0 ? kPageSize : le16(page + kDataHeader + 2 * (row - 1)) & kRowOffsetMask;
    if (s.start < kDataHeader + 2 * rows || s.end > kPageSize || s.start > s.end)
        image.damaged(QStringLiteral("row %1 of page %2 lies outside its page").arg(row).arg(pageNumber));
    return s;
}

QByteArray rowBytes(const Image &image, quint32 pageNumber, int row)
{
    const Slot s = slotOf(image, pageNumber, row);
    return QByteArray(image.page(pageNumber) + s.start, s.end - s.start);
}

QByteArray rowData(const Image &image, RowPointer slot)
{
    const Slot s = slotOf(image, slot.page, slot.row);
    if (s.flags & kRowOverflowTarget)
        image.damaged(QStringLiteral("row %1 of page %2 is no row").arg(slot.row).arg(slot.page));
    QByteArray bytes = rowBytes(image, slot.page, slot.row);
    if (s.flags == kRowOverflowPointer) {
        if (bytes.size() < 4)
            image.damaged(QStringLiteral("an overflow pointer is cut off"));
        const RowPointer target = RowPointer::unpack(le32(bytes.constData()));
        if ((slotOf(image, target.page, target.row).flags & kRowDeleted) != kRowOverflowTarget)
            image.damaged(QStringLiteral("an overflow pointer leads to no overflow row"));
        bytes = rowBytes(image, target.page, target.row);
    }
    return bytes;
}

int freeSpaceField(const char *page)
{
    return le16(page + 2);
}

int computedFreeSpace(const Image &image, quint32 pageNumber)
{
    const char *page = image.page(pageNumber);
    const int rows = rowCount(page);
    int lowest = kPageSize;
    for (int r = 0; r < rows; ++r)
        lowest = std::min(lowest, slotOf(image, pageNumber, r).start);
    return lowest - (kDataHeader + 2 * rows);
}

std::vector<PageRow> pageRows(const Image &image, quint32 pageNumber)
{
    std::vector<PageRow> rows;
    const int count = rowCount(image.page(pageNumber));
    for (int r = 0; r < count; ++r)
        rows.push_back({rowBytes(image, pageNumber, r), slotOf(image, pageNumber, r).flags});
    return rows;
}

bool layOutRows(char *page, std::vector<PageRow> rows)
{
    const int count = int(rows.size());
    if (count > kMaxRowsPerPage)
        return false;
    int needed = kDataHeader + 2 * count;
    for (PageRow &r : rows) {
        if (r.flags == kRowDeleted)
            r.bytes.clear();
        needed += int(r.bytes.size());
    }
    if (needed > kPageSize)
        return false;
    int start = kPageSize;
    for (int i = 0; i < count; ++i) {
        start -= int(rows[size_t(i)].bytes.size());
        std::copy(rows[size_t(i)].bytes.begin(), rows[size_t(i)].bytes.end(), page + start);
        put16(page + kDataHeader + 2 * i, quint16(start) | rows[size_t(i)].flags);
    }
    // The unused middle is cleared: nothing of an old row stays readable there.
    std::fill(page + kDataHeader + 2 * count, page + start, '\0');
    put16(page + 12, quint16(count));
    put16(page + 2, quint16(start - (kDataHeader + 2 * count)));
    return true;
}

bool appendRowOnPage(char *page, const QByteArray &bytes, quint16 flags)
{
    const int count = rowCount(page);
    const int headerEnd = kDataHeader + 2 * (count + 1);
    if (count >= kMaxRowsPerPage || headerEnd > kPageSize)
        return false;
    int lowest = kPageSize;
    for (int r = 0; r < count; ++r)
        lowest = std::min(lowest, le16(page + kDataHeader + 2 * r) & kRowOffsetMask);
    const int start = lowest - int(bytes.size());
    if (start < headerEnd)
        return false;
    std::copy(bytes.begin(), bytes.end(), page + start);
    put16(page + kDataHeader + 2 * count, quint16(start) | flags);
    put16(page + 12, quint16(count + 1));
    put16(page + 2, quint16(start - headerEnd));
    return true;
}

void initDataPage(char *page, quint32 tableDefPage, bool longValues)
{
    std::fill(page, page + kPageSize, '\0');
    page[0] = char(PageData);
    page[1] = 1;
    if (longValues)
        std::copy_n("LVAL", 4, page + 4);
    else
        put32(page + 4, tableDefPage);
    put16(page + 2, quint16(kPageSize - kDataHeader));
}

StoredRow decodeRow(const Image &image, const QByteArray &bytes, bool hasVariableColumns)
{
    const auto bad = [&] { image.damaged(QStringLiteral("a row cannot be read")); };
    if (bytes.size() < 3)
        bad();
    const int columns = le16(bytes.constData());
    const int maskLength = (columns + 7) / 8;
    const int size = int(bytes.size());
    StoredRow row;
    if (size < 2 + maskLength)
        bad();
    row.nullMask = bytes.right(maskLength);
    if (!hasVariableColumns) {
        row.head = bytes.left(size - maskLength);
        return row;
    }
    const int countAt = size - maskLength - 2;
    if (countAt < 2)
        bad();
    const int varCount = le16(bytes.constData() + countAt);
    const int eodAt = countAt - 2 * varCount - 2;
    if (eodAt < 2)
        bad();
    const int eod = le16(bytes.constData() + eodAt);
    std::vector<int> offsets(size_t(varCount) + 1);
    for (int k = 0; k < varCount; ++k)
        offsets[size_t(k)] = le16(bytes.constData() + countAt - 2 * (k + 1));
    offsets[size_t(varCount)] = eod;
    const int varStart = offsets[0];
    if (varStart < 2 || eod > eodAt)
        bad();
    for (int k = 0; k < varCount; ++k)
        if (offsets[size_t(k)] > offsets[size_t(k) + 1])
            bad();
    row.head = bytes.left(varStart);
    for (int k = 0; k < varCount; ++k)
        row.variable.push_back(bytes.mid(offsets[size_t(k)], offsets[size_t(k) + 1] - offsets[size_t(k)]));
    return row;
}

QByteArray encodeRow(const StoredRow &row, bool hasVariableColumns)
{
    QByteArray out = row.head;
    if (hasVariableColumns) {
        std::vector<quint16> offsets;
        for (const QByteArray &v : row.variable) {
            offsets.push_back(quint16(out.size()));
            out += v;
        }
        char word[2];
        put16(word, quint16(out.size())); // the end of the variable data
        out.append(word, 2);
        for (auto o = offsets.rbegin(); o != offsets.rend(); ++o) {
            put16(word, *o);
            out.append(word, 2);
        }
        put16(word, quint16(row.variable.size()));
        out.append(word, 2);
    }
    return out + row.nullMask;
}

} // namespace ht::jet
