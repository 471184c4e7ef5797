#include "database/jet/JetIndex.h"

#include "database/Database.h"
#include "database/jet/JetIndexKeys.h"
#include "database/jet/JetRows.h"

#include <QSet>
#include <algorithm>
#include <deque>

namespace ht::jet
{

namespace
{

constexpr int kEntryMask = 27, kEntriesStart = 480;
constexpr int kMaxEntryBytes = kPageSize - kEntriesStart;
constexpr int kPointerBytes = 4, kChildBytes = 4;
constexpr int kMaxDepth = 16;

quint32 bigEndian(const QByteArray &b, qsizetype at, int bytes)
{
    quint32 v = 0;
    for (int i = 0; i < bytes; ++i)
        v = (v << 8) | quint8(b[at + i]);
    return v;
}

QByteArray pointerBytes(RowPointer at)
{
    QByteArray b;
    b.append(char(at.page >> 16)).append(char(at.page >> 8)).append(char(at.page)).append(char(at.row));
    return b;
}

QByteArray childBytes(quint32 page)
{
    QByteArray b;
    b.append(char(page >> 24)).append(char(page >> 16)).append(char(page >> 8)).append(char(page));
    return b;
}

int commonPrefix(const QByteArray &a, const QByteArray &b)
{
    const qsizetype n = std::min(a.size(), b.size());
    int i = 0;
    while (i < n && a[i] == b[i])
        ++i;
    return i;
}

[[noreturn]] void refuse(const Image &image, const QString &why)
{
    throw DbError(QStringLiteral("%1 cannot be changed here: %2").arg(image.name(), why).toStdString());
}

// An index page to be written: its entries as stored, its neighbours and its tail.
struct IndexPage {
    quint32 page = 0;
    std::vector<QByteArray> entries;
    quint32 tail = 0;
    QByteArray last; // the greatest leaf entry below it, which its parent lists
};

void writeIndexPage(Image &image, const TableDef &table, const IndexPage &out, bool leaf, quint32 prev, quint32 next)
{
    char *p = image.changePage(out.page);
    std::fill(p, p + kPageSize, '\0');
    p[0] = char(leaf ? kIndexLeafPage : kIndexNodePage);
    p[1] = 1;
    put32(p + 4, table.page);
    put32(p + 12, prev);
    put32(p + 16, next);
    put32(p + 20, out.tail);
    int prefix = out.entries.size() > 1 ? int(out.entries.front().size()) : 0;
    for (const QByteArray &e : out.entries)
        prefix = std::min(prefix, commonPrefix(out.entries.front(), e));
    put16(p + 24, quint16(prefix));
    int at = 0;
    for (size_t i = 0; i < out.entries.size(); ++i) {
        const QByteArray &e = out.entries[i];
        const qsizetype from = i == 0 ? 0 : prefix;
        std::copy(e.begin() + from, e.end(), p + kEntriesStart + at);
        at += int(e.size() - from);
        p[kEntryMask + at / 8] = char(quint8(p[kEntryMask + at / 8]) | (1 << (at % 8)));
    }
    put16(p + 2, quint16(kMaxEntryBytes - at));
}

// How many of `items` from `begin` fit one page, the first whole, the others without the prefix all share.
size_t fitting(const std::vector<QByteArray> &items, size_t begin)
{
    qsizetype total = items[begin].size();
    int prefix = int(items[begin].size());
    size_t end = begin + 1;
    for (; end < items.size(); ++end) {
        const int p = std::min(prefix, commonPrefix(items[begin], items[end]));
        const qsizetype size = total + items[end].size() - qsizetype(end - begin) * p;
        if (size > kMaxEntryBytes)
            break;
        total += items[end].size();
        prefix = p;
    }
    return end;
}

} // namespace

std::vector<QByteArray> indexPageEntries(const char *page)
{
    std::vector<QByteArray> entries;
    const int prefix = le16(page + 24);
    int start = 0;
    for (int bit = 0; bit < (kEntriesStart - kEntryMask) * 8 && kEntriesStart + bit <= kPageSize; ++bit) {
        if (!((quint8(page[kEntryMask + bit / 8]) >> (bit % 8)) & 1))
            continue;
        const QByteArray stored(page + kEntriesStart + start, bit - start);
        entries.push_back(entries.empty() ? stored : entries.front().left(prefix) + stored);
        start = bit;
    }
    return entries;
}

RowPointer entryRow(const QByteArray &entry)
{
    const qsizetype at = entry.size() - kPointerBytes;
    return {bigEndian(entry, at, 3), quint8(entry[at + 3])};
}

void forEachLeaf(const Image &image, quint32 root,
                 const std::function<void(quint32 leaf, const std::vector<QByteArray> &entries)> &visit)
{
    quint32 page = root;
    for (int depth = 0;; ++depth) {
        const char *p = image.page(page);
        if (quint8(p[0]) == kIndexLeafPage)
            break;
        const std::vector<QByteArray> entries = indexPageEntries(p);
        if (quint8(p[0]) != kIndexNodePage || depth > kMaxDepth || (entries.empty() && le32(p + 20) == 0))
            image.damaged(QStringLiteral("page %1 is no index page").arg(page));
        page = entries.empty() || entries.front().size() < kChildBytes + kPointerBytes
                   ? le32(p + 20)
                   : bigEndian(entries.front(), entries.front().size() - kChildBytes, kChildBytes);
    }
    for (quint32 pages = 0; page != 0; ++pages) {
        const char *p = image.page(page);
        if (quint8(p[0]) != kIndexLeafPage || pages > image.pageCount())
            image.damaged(QStringLiteral("page %1 is no index leaf").arg(page));
        const std::vector<QByteArray> entries = indexPageEntries(p);
        for (const QByteArray &entry : entries)
            if (entry.size() < kPointerBytes)
                image.damaged(QStringLiteral("an index entry on page %1 is cut off").arg(page));
        visit(page, entries);
        page = le32(p + 16);
    }
}

QString storedKeysDiffer(const Image &image, const TableDef &table, int index)
{
    QString differs;
    forEachLeaf(image, table.indexRoots[size_t(index)], [&](quint32, const std::vector<QByteArray> &entries) {
        for (const QByteArray &entry : entries) {
            if (!differs.isEmpty())
                return;
            const RowPointer at = entryRow(entry);
            const StoredRow row = decodeRow(image, rowData(image, at), table.variableColumns > 0);
            QString why;
            const std::optional<QByteArray> key = rowIndexKey(table, index, row, &why);
            if (!key)
                differs = why;
            else if (*key != entry.left(entry.size() - kPointerBytes))
                differs =
                    QStringLiteral("the key of page %1 row %2 in index %3 of table %4 is %5, not %6 as computed here")
                        .arg(at.page)
                        .arg(at.row)
                        .arg(index)
                        .arg(table.name, QString::fromLatin1(entry.toHex(' ')), QString::fromLatin1(key->toHex(' ')));
        }
    });
    return differs;
}

void rebuildIndex(Image &image, const TableDef &table, int index)
{
    std::vector<QByteArray> entries;
    QSet<QByteArray> withNull; // keys with a null, which a unique index may hold more than once
    const bool ignoreNulls = table.indexFlags[size_t(index)] & kIndexIgnoreNulls;
    forEachRow(image, table, [&](RowPointer slot, const QByteArray &bytes) {
        const StoredRow row = decodeRow(image, bytes, table.variableColumns > 0);
        QString why;
        bool allNull = false, anyNull = false;
        const std::optional<QByteArray> key = rowIndexKey(table, index, row, &why, &allNull, &anyNull);
        if (!key)
            refuse(image, why);
        // A node page must hold two entries at least, or the levels above the leaves would never end.
        if (key->size() + kPointerBytes + kChildBytes > kMaxEntryBytes / 2)
            refuse(image, QStringLiteral("a key of table %1 is too long for its index").arg(table.name));
        if (anyNull && (table.indexFlags[size_t(index)] & kIndexRequired))
            refuse(image, QStringLiteral("a row of table %1 leaves a column of its primary key empty").arg(table.name));
        if (allNull && ignoreNulls)
            return;
        entries.push_back(*key + pointerBytes(slot));
        if (anyNull)
            withNull.insert(*key);
    });
    std::sort(entries.begin(), entries.end());
    quint32 distinct = 0;
    for (size_t i = 0; i < entries.size(); ++i) {
        const bool same = i > 0 && entries[i].size() == entries[i - 1].size() &&
                          std::equal(entries[i].begin(), entries[i].end() - kPointerBytes, entries[i - 1].begin());
        if (same && (table.indexFlags[size_t(index)] & kIndexUnique) &&
            !withNull.contains(entries[i].left(entries[i].size() - kPointerBytes)))
            refuse(image, QStringLiteral("table %1 would hold the same key twice in a unique index").arg(table.name));
        distinct += same ? 0 : 1;
    }

    // The index's pages so far, used again in their order; new ones appended.
    const quint32 map = table.indexMaps[size_t(index)];
    std::deque<quint32> reusable;
    for (quint32 page : mapPages(image, map)) {
        if (page >= image.pageCount())
            continue;
        const char *p = image.page(page);
        if ((quint8(p[0]) == kIndexLeafPage || quint8(p[0]) == kIndexNodePage) && le32(p + 4) == table.page)
            reusable.push_back(page);
    }
    const auto takePage = [&] {
        if (!reusable.empty()) {
            const quint32 page = reusable.front();
            reusable.pop_front();
            return page;
        }
        const quint32 page = image.appendPage();
        if (!setMapBit(image, kGlobalMap, page, false) || !setMapBit(image, map, page, true))
            refuse(image, QStringLiteral("the page maps of table %1 cannot take a new index page").arg(table.name));
        return page;
    };

    // The leaves, then each level of nodes above them, until one page holds it all.
    std::vector<IndexPage> level;
    for (size_t begin = 0; begin < entries.size() || level.empty();) {
        IndexPage leaf;
        leaf.page = takePage();
        if (!entries.empty()) {
            const size_t end = fitting(entries, begin);
            leaf.entries.assign(entries.begin() + qsizetype(begin), entries.begin() + qsizetype(end));
            leaf.last = leaf.entries.back();
            begin = end;
        }
        level.push_back(std::move(leaf));
    }
    bool leaves = true;
    while (true) {
        for (size_t i = 0; i < level.size(); ++i)
            writeIndexPage(image, table, level[i], leaves, i > 0 ? level[i - 1].page : 0,
                           i + 1 < level.size() ? level[i + 1].page : 0);
        if (level.size() == 1)
            break;
        std::vector<QByteArray> children;
        for (const IndexPage &child : level)
            children.push_back(child.last + childBytes(child.page));
        std::vector<IndexPage> parents;
        for (size_t begin = 0; begin < children.size();) {
            IndexPage node;
            node.page = takePage();
            size_t end = fitting(children, begin);
            // The child after the ones that fit, or else the last of them, goes in as the tail, which takes no
            // room.
            const size_t tail = end < children.size() ? end : (end - begin > 1 ? end - 1 : children.size());
            if (tail < children.size()) {
                node.tail = level[tail].page;
                end = tail;
            }
            node.entries.assign(children.begin() + qsizetype(begin), children.begin() + qsizetype(end));
            node.last = level[tail < children.size() ? tail : end - 1].last;
            begin = tail < children.size() ? tail + 1 : end;
            parents.push_back(std::move(node));
        }
        level = std::move(parents);
        leaves = false;
    }
    for (quint32 page : reusable) {
        char *p = image.changePage(page);
        std::fill(p, p + kPageSize, '\0');
        if (!setMapBit(image, map, page, false) || !setMapBit(image, kGlobalMap, page, true))
            refuse(image, QStringLiteral("the page maps of table %1 cannot free an index page").arg(table.name));
    }
    putTableDef32(image, table.page, table.indexBlockOffsets[size_t(index)] + kIndexBlockRoot, level.front().page);
    putTableDef32(image, table.page, kIndexKeyCounts + 12 * index + 4, distinct);
}

} // namespace ht::jet
