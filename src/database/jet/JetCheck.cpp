#include "database/jet/JetCheck.h"

#include "database/Database.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetTable.h"
#include "database/jet/JetValues.h"

#include <QHash>
#include <QSet>
#include <algorithm>

namespace ht::jet
{

namespace
{

constexpr int kIndexEntries = 480, kIndexBitmap = 27;
constexpr quint8 kIndexNode = 3, kIndexLeaf = 4;

quint32 bigEndianPage(const QByteArray &b, qsizetype at)
{
    return (quint32(quint8(b[at])) << 16) | (quint32(quint8(b[at + 1])) << 8) | quint8(b[at + 2]);
}

// The full entries of an index page, the shared prefix put back.
QList<QByteArray> indexEntries(const char *page)
{
    QList<QByteArray> entries;
    const int prefix = le16(page + 24);
    int start = 0;
    QByteArray first;
    for (int bit = 0; bit < (kIndexEntries - kIndexBitmap) * 8; ++bit) {
        if (!((quint8(page[kIndexBitmap + bit / 8]) >> (bit % 8)) & 1))
            continue;
        if (kIndexEntries + bit > kPageSize)
            break;
        QByteArray stored(page + kIndexEntries + start, bit - start);
        if (entries.isEmpty())
            first = stored;
        entries << (entries.isEmpty() ? stored : first.left(prefix) + stored);
        start = bit;
    }
    return entries;
}

// The key an index gives a row whose indexed columns are all whole numbers:
// per column a flag byte and the number big-endian with its sign bit flipped,
// every byte of it inverted for a descending column. Empty when the index holds
// other columns or a null, which are not checked.
QByteArray numericKey(const Image &image, const TableDef &t, int index, const QByteArray &bytes)
{
    const StoredRow row = decodeRow(image, bytes, t.variableColumns > 0);
    QByteArray key;
    const std::vector<quint16> &columns = t.indexColumns[size_t(index)];
    for (size_t k = 0; k < columns.size(); ++k) {
        const quint16 number = columns[k];
        const bool ascending = t.indexAscending[size_t(index)][k];
        const auto c =
            std::find_if(t.columns.begin(), t.columns.end(), [&](const Column &x) { return x.number == number; });
        if (c == t.columns.end() || (c->type != TypeLong && c->type != TypeInteger) || isNull(row, *c))
            return {};
        const qlonglong value = columnValue(image, row, *c).toLongLong();
        const int width = c->type == TypeLong ? 4 : 2;
        const quint32 flipped = quint32(value) ^ (1u << (8 * width - 1));
        key.append(char(ascending ? 0x7F : 0x80));
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
            key.append(char(ascending ? flipped >> shift : ~(flipped >> shift)));
    }
    return key;
}

class Checker
{
  public:
    explicit Checker(const Image &image) : m_image(image) {}
    QStringList problems;
    void table(const CatalogEntry &entry, bool rowsToo);

  private:
    void problem(const QString &text) { problems << text; }
    void dataPage(const TableDef &t, quint32 page, QSet<quint32> &targets, QHash<quint32, int> &referenced,
                  QSet<quint32> &liveSlots, quint32 &live);
    void index(const TableDef &t, int number, const QSet<quint32> &liveSlots);
    void owned(const QString &owner, const std::vector<quint32> &pages);

    const Image &m_image;
    QSet<quint32> m_longValueRows; // of the table being checked, the rows its long values occupy
};

void Checker::owned(const QString &owner, const std::vector<quint32> &pages)
{
    for (quint32 page : pages) {
        if (page >= m_image.pageCount())
            problem(QStringLiteral("%1 owns page %2, past the end of the file").arg(owner).arg(page));
        else if (mapHas(m_image, kGlobalMap, page))
            problem(QStringLiteral("%1 owns page %2, which the global map calls free").arg(owner).arg(page));
    }
}

void Checker::dataPage(const TableDef &t, quint32 page, QSet<quint32> &targets, QHash<quint32, int> &referenced,
                       QSet<quint32> &liveSlots, quint32 &live)
{
    const char *p = m_image.page(page);
    if (freeSpaceField(p) != computedFreeSpace(m_image, page))
        problem(QStringLiteral("table %1, page %2: free space field %3, but %4 free")
                    .arg(t.name)
                    .arg(page)
                    .arg(freeSpaceField(p))
                    .arg(computedFreeSpace(m_image, page)));
    for (int r = 0; r < rowCount(p); ++r) {
        const Slot s = slotOf(m_image, page, r);
        const RowPointer here{page, quint8(r)};
        if (s.flags == kRowDeleted)
            continue;
        if (s.flags == kRowOverflowTarget) {
            targets.insert(here.packed());
            continue;
        }
        QByteArray bytes(p + s.start, s.end - s.start);
        if (s.flags == kRowOverflowPointer) {
            const RowPointer target = RowPointer::unpack(le32(bytes.constData()));
            ++referenced[target.packed()];
            if (target.page >= m_image.pageCount() || quint8(m_image.page(target.page)[0]) != PageData ||
                le32(m_image.page(target.page) + 4) != t.page || target.row >= rowCount(m_image.page(target.page)) ||
                slotOf(m_image, target.page, target.row).flags != kRowOverflowTarget) {
                problem(QStringLiteral("table %1, page %2 row %3: overflow pointer to no overflow row")
                            .arg(t.name)
                            .arg(page)
                            .arg(r));
                continue;
            }
            bytes = rowBytes(m_image, target.page, target.row);
        } else if (s.flags != 0) {
            problem(
                QStringLiteral("table %1, page %2 row %3: unknown flags %4").arg(t.name).arg(page).arg(r).arg(s.flags));
            continue;
        }
        ++live;
        liveSlots.insert(here.packed());
        const StoredRow row = decodeRow(m_image, bytes, t.variableColumns > 0);
        for (const Column &c : t.columns) {
            const QByteArray stored = storedBytes(row, c);
            if (c.type == TypeText && stored.startsWith("\xFF\xFE") && !c.compressible())
                problem(
                    QStringLiteral("table %1, page %2 row %3: compressed text in column %4, which does not allow it")
                        .arg(t.name)
                        .arg(page)
                        .arg(r)
                        .arg(c.name));
            if (c.longValue() && !isNull(row, c)) {
                std::vector<RowPointer> parts;
                readLongValue(m_image, stored, &parts);
                for (RowPointer part : parts)
                    m_longValueRows.insert(part.packed());
                for (RowPointer part : parts)
                    if (slotOf(m_image, part.page, part.row).flags == kRowDeleted)
                        problem(QStringLiteral("table %1, column %2: a long value lies in a deleted row")
                                    .arg(t.name, c.name));
            }
        }
    }
}

void Checker::index(const TableDef &t, int number, const QSet<quint32> &liveSlots)
{
    const QString name = QStringLiteral("table %1, index %2").arg(t.name).arg(number);
    quint32 page = t.indexRoots[size_t(number)];
    // Down the first entries to the leftmost leaf.
    for (int depth = 0; page != 0; ++depth) {
        const char *p = m_image.page(page);
        if (quint8(p[0]) == kIndexLeaf)
            break;
        const QList<QByteArray> entries = indexEntries(p);
        if (quint8(p[0]) != kIndexNode || depth > 16 || (entries.isEmpty() && le32(p + 20) == 0)) {
            problem(name + QStringLiteral(": page %1 is no index page").arg(page));
            return;
        }
        const QByteArray &first = entries.isEmpty() ? QByteArray() : entries.first();
        page = first.size() >= 4
                   ? (quint32(quint8(first[first.size() - 4])) << 24) | bigEndianPage(first, first.size() - 3)
                   : le32(p + 20);
    }
    QSet<quint32> listed;
    QByteArray previousKey;
    int count = 0;
    for (int pages = 0; page != 0; ++pages) {
        const char *p = m_image.page(page);
        if (quint8(p[0]) != kIndexLeaf || pages > 100000) {
            problem(name + QStringLiteral(": page %1 is no leaf").arg(page));
            return;
        }
        for (const QByteArray &entry : indexEntries(p)) {
            if (entry.size() < 4) {
                problem(name + QStringLiteral(": an entry is cut off"));
                return;
            }
            const QByteArray key = entry.left(entry.size() - 4);
            const RowPointer at{bigEndianPage(entry, entry.size() - 4), quint8(entry[entry.size() - 1])};
            if (count++ > 0 && key < previousKey)
                problem(name + QStringLiteral(": entries out of order on page %1").arg(page));
            previousKey = key;
            if (!liveSlots.contains(at.packed())) {
                problem(name + QStringLiteral(": an entry points at page %1 row %2, no row").arg(at.page).arg(at.row));
            } else {
                QByteArray row = rowBytes(m_image, at.page, at.row);
                if (slotOf(m_image, at.page, at.row).flags == kRowOverflowPointer) {
                    const RowPointer target = RowPointer::unpack(le32(row.constData()));
                    row = rowBytes(m_image, target.page, target.row);
                }
                const QByteArray expected = numericKey(m_image, t, number, row);
                if (!expected.isEmpty() && expected != key)
                    problem(name + QStringLiteral(": the entry of page %1 row %2 does not hold the row's values")
                                       .arg(at.page)
                                       .arg(at.row));
            }
            listed.insert(at.packed());
        }
        page = le32(p + 16);
    }
    if (listed.size() != liveSlots.size())
        problem(name + QStringLiteral(": lists %1 rows of %2").arg(listed.size()).arg(liveSlots.size()));
}

void Checker::table(const CatalogEntry &entry, bool rowsToo)
{
    const TableDef t = readTableDef(m_image, entry.tableDefPage, entry.name);
    const std::vector<quint32> pages = mapPages(m_image, t.usedPagesMap);
    owned(QStringLiteral("table ") + t.name, pages);
    for (const Column &c : t.columns)
        if (c.longValueMap != 0)
            owned(QStringLiteral("table %1, column %2").arg(t.name, c.name), mapPages(m_image, c.longValueMap));
    if (!rowsToo)
        return;
    QSet<quint32> targets, liveSlots;
    QHash<quint32, int> referenced;
    quint32 live = 0;
    m_longValueRows.clear();
    for (quint32 page : pages) {
        if (page >= m_image.pageCount())
            continue;
        const char *p = m_image.page(page);
        if (quint8(p[0]) == PageData && le32(p + 4) == t.page)
            dataPage(t, page, targets, referenced, liveSlots, live);
    }
    for (quint32 target : targets)
        if (referenced.value(target) != 1)
            problem(QStringLiteral("table %1: overflow row at page %2 row %3 is referenced %4 times")
                        .arg(t.name)
                        .arg(target >> 8)
                        .arg(target & 0xFF)
                        .arg(referenced.value(target)));
    if (live != t.rowCount)
        problem(QStringLiteral("table %1: %2 rows, but its definition says %3").arg(t.name).arg(live).arg(t.rowCount));
    // A long value replaced or emptied leaves none of its rows behind.
    for (const Column &c : t.columns) {
        if (c.longValueMap == 0)
            continue;
        for (quint32 page : mapPages(m_image, c.longValueMap)) {
            if (page >= m_image.pageCount() || QByteArray(m_image.page(page) + 4, 4) != "LVAL")
                continue;
            for (int r = 0; r < rowCount(m_image.page(page)); ++r)
                if (slotOf(m_image, page, r).flags != kRowDeleted &&
                    !m_longValueRows.contains(RowPointer{page, quint8(r)}.packed()))
                    problem(
                        QStringLiteral("table %1, column %2: the long-value row at page %3 row %4 belongs to no row")
                            .arg(t.name, c.name)
                            .arg(page)
                            .arg(r));
        }
    }
    for (int i = 0; i < int(t.indexRoots.size()); ++i)
        index(t, i, liveSlots);
}

} // namespace

QStringList checkStructure(const Image &image, const QSet<QString> *changedTables)
{
    Checker checker(image);
    try {
        for (const CatalogEntry &entry : readCatalog(image, true))
            checker.table(entry, !changedTables || changedTables->contains(entry.name));
    } catch (const DbError &e) {
        checker.problems << QString::fromUtf8(e.what());
    }
    return checker.problems;
}

} // namespace ht::jet
