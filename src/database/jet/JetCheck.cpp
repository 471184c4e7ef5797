#include "database/jet/JetCheck.h"

#include "database/Database.h"
#include "database/jet/JetIndex.h"
#include "database/jet/JetIndexKeys.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetTable.h"
#include "database/jet/JetValues.h"

#include <QHash>
#include <QSet>
#include <QtEndian>
#include <algorithm>
#include <functional>

namespace ht::jet
{

namespace
{

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
    void nodes(const TableDef &t, int number, const QString &name, const std::vector<quint32> &leaves);
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
    const quint8 flags = t.indexFlags[size_t(number)];
    const bool ignoreNulls = flags & kIndexIgnoreNulls;
    QSet<quint32> listed;
    QByteArray previous, previousKey;
    quint32 previousLeaf = 0, expected = 0;
    std::vector<quint32> leaves;
    const auto entry = [&](quint32 leaf, const QByteArray &entry) {
        const RowPointer at = entryRow(entry);
        if (!previous.isEmpty() && entry < previous)
            problem(name + QStringLiteral(": entries out of order on page %1").arg(leaf));
        previous = entry;
        listed.insert(at.packed());
        if (!liveSlots.contains(at.packed())) {
            problem(name + QStringLiteral(": an entry points at page %1 row %2, no row").arg(at.page).arg(at.row));
            return;
        }
        const StoredRow row = decodeRow(m_image, rowData(m_image, at), t.variableColumns > 0);
        bool anyNull = false;
        const std::optional<QByteArray> key = rowIndexKey(t, number, row, nullptr, nullptr, &anyNull);
        const QByteArray stored = entry.left(entry.size() - 4);
        if (key && *key != stored)
            problem(name + QStringLiteral(": the entry of page %1 row %2 does not hold the row's values")
                               .arg(at.page)
                               .arg(at.row));
        if (key && anyNull && (flags & kIndexRequired))
            problem(name + QStringLiteral(": page %1 row %2 has no value in a required key").arg(at.page).arg(at.row));
        if (key && !anyNull && (flags & kIndexUnique) && stored == previousKey)
            problem(name + QStringLiteral(": the key of page %1 row %2 is another row's too").arg(at.page).arg(at.row));
        previousKey = stored;
    };
    try {
        forEachLeaf(m_image, t.indexRoots[size_t(number)], [&](quint32 leaf, const std::vector<QByteArray> &entries) {
            if (le32(m_image.page(leaf) + 12) != previousLeaf)
                problem(name + QStringLiteral(": leaf %1 does not link back to leaf %2").arg(leaf).arg(previousLeaf));
            if (le32(m_image.page(leaf) + 4) != t.page)
                problem(name + QStringLiteral(": leaf %1 is another table's").arg(leaf));
            leaves.push_back(leaf);
            previousLeaf = leaf;
            for (const QByteArray &e : entries)
                entry(leaf, e);
        });
        // Rows whose key columns are all null are left out of an index that ignores nulls.
        for (quint32 slot : liveSlots) {
            bool allNull = false;
            if (ignoreNulls)
                rowIndexKey(t, number,
                            decodeRow(m_image, rowData(m_image, RowPointer::unpack(slot)), t.variableColumns > 0),
                            nullptr, &allNull);
            expected += allNull ? 0 : 1;
        }
    } catch (const DbError &e) {
        problem(name + QStringLiteral(": ") + QString::fromUtf8(e.what()));
        return;
    }
    if (quint32(listed.size()) != expected)
        problem(name + QStringLiteral(": lists %1 rows of %2").arg(listed.size()).arg(expected));
    nodes(t, number, name, leaves);
}

// The node pages above the leaves lead to every leaf in the leaves' order, and
// each child's entry in its parent is the last entry below that child.
void Checker::nodes(const TableDef &t, int number, const QString &name, const std::vector<quint32> &leaves)
{
    std::vector<quint32> reached;
    QSet<quint32> seen;
    const std::function<QByteArray(quint32, int)> walk = [&](quint32 page, int depth) -> QByteArray {
        if (seen.contains(page)) {
            problem(name + QStringLiteral(": page %1 is reached twice").arg(page));
            return {};
        }
        seen.insert(page);
        const char *p = m_image.page(page);
        if (quint8(p[0]) == kIndexLeafPage) {
            reached.push_back(page);
            const std::vector<QByteArray> entries = indexPageEntries(p);
            return entries.empty() ? QByteArray() : entries.back();
        }
        if (quint8(p[0]) != kIndexNodePage || depth > 16 || le32(p + 4) != t.page) {
            problem(name + QStringLiteral(": page %1 is no index page of its table").arg(page));
            return {};
        }
        QByteArray last;
        for (const QByteArray &entry : indexPageEntries(p)) {
            if (entry.size() < 8) {
                problem(name + QStringLiteral(": a node entry on page %1 is cut off").arg(page));
                return {};
            }
            const quint32 child = qFromBigEndian<quint32>(entry.constData() + entry.size() - 4);
            last = walk(child, depth + 1);
            if (last != entry.left(entry.size() - 4))
                problem(
                    name +
                    QStringLiteral(": node page %1 names child %2 by another key than its last").arg(page).arg(child));
        }
        if (le32(p + 20) != 0)
            last = walk(le32(p + 20), depth + 1);
        return last;
    };
    try {
        walk(t.indexRoots[size_t(number)], 0);
    } catch (const DbError &e) {
        problem(name + QStringLiteral(": ") + QString::fromUtf8(e.what()));
        return;
    }
    if (reached != leaves)
        problem(
            name +
            QStringLiteral(": its nodes lead to %1 leaves, its leaves link %2").arg(reached.size()).arg(leaves.size()));
}

void Checker::table(const CatalogEntry &entry, bool rowsToo)
{
    const TableDef t = readTableDef(m_image, entry.tableDefPage, entry.name);
    const std::vector<quint32> pages = mapPages(m_image, t.usedPagesMap);
    owned(QStringLiteral("table ") + t.name, pages);
    for (const Column &c : t.columns)
        if (c.longValueMap != 0)
            owned(QStringLiteral("table %1, column %2").arg(t.name, c.name), mapPages(m_image, c.longValueMap));
    for (size_t i = 0; i < t.indexMaps.size(); ++i)
        if (t.indexMaps[i] != 0)
            owned(QStringLiteral("table %1, index %2").arg(t.name).arg(i), mapPages(m_image, t.indexMaps[i]));
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
