#include "database/jet/JetBuilder.h"

#include "database/Database.h"
#include "database/jet/JetIndex.h"
#include "database/jet/JetIndexKeys.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetValues.h"

#include <QDateTime>
#include <algorithm>

namespace ht::jet
{

namespace
{

constexpr quint32 kCatalogPage = 2;
constexpr int kColumnBlock = 25, kInlineMapBytes = 64;
constexpr int kRealIndexBlock = 52, kLogicalIndexBlock = 28, kRealIndexCounts = 12, kMaxIndexColumns = 10;
constexpr int kLogicalIndexType = 23;
constexpr quint8 kIndexAccess = 0x80;  // set in every index Access makes for a table design
constexpr quint8 kPrimaryKeyIndex = 1; // the logical index's type
constexpr quint8 kUserTable = 0x4E;
constexpr quint8 kColumnFixed = 0x03, kColumnVariable = 0x02, kCompressibleText = 0x01;

void append16(QByteArray &b, quint16 v)
{
    char w[2];
    put16(w, v);
    b.append(w, 2);
}

void append32(QByteArray &b, quint32 v)
{
    char w[4];
    put32(w, v);
    b.append(w, 4);
}

QByteArray inlineMap(quint32 start)
{
    QByteArray map(1 + 4 + kInlineMapBytes, '\0');
    put32(map.data() + 1, start);
    return map;
}

} // namespace

QByteArray letterIndexKey(const QString &text)
{
    const bool letters = std::all_of(text.begin(), text.end(), [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
    });
    return letters ? textIndexKey(text).value_or(QByteArray()) : QByteArray();
}

Builder::Builder(Image &image) : m_image(image), m_writer(image) {}

TableDef Builder::addTable(const QString &name, const std::vector<NewColumn> &columns,
                           const std::vector<NewIndex> &indexes)
{
    if (letterIndexKey(name).isEmpty())
        throw DbError(QStringLiteral("A table of an Access file made here is named with letters only, not %1")
                          .arg(name)
                          .toStdString());
    for (const CatalogEntry &e : readCatalog(m_image, true))
        if (e.name.compare(name, Qt::CaseInsensitive) == 0)
            throw DbError(QStringLiteral("The Access file has a table %1 already").arg(name).toStdString());
    for (const NewIndex &index : indexes)
        if (index.columns.empty() || index.columns.size() > size_t(kMaxIndexColumns) ||
            std::any_of(index.columns.begin(), index.columns.end(),
                        [&](int c) { return c < 0 || c >= int(columns.size()); }))
            throw DbError(QStringLiteral("Index %1 of table %2 cannot be made in an Access file")
                              .arg(index.name, name)
                              .toStdString());

    const quint32 tableDefPage = m_image.appendPage();
    const quint32 mapPage = m_image.appendPage();
    for (quint32 page : {tableDefPage, mapPage})
        if (!setMapBit(m_image, kGlobalMap, page, false))
            m_image.damaged(QStringLiteral("its global page map cannot take a new page"));

    // The usage maps, as inline maps on a page of their own: the table's, then each long-value column's.
    const quint32 firstData = m_image.pageCount() / 8 * 8;
    std::vector<PageRow> maps{{inlineMap(firstData), 0}, {inlineMap(firstData), 0}};
    const auto pointer = [&](int row) { return RowPointer{mapPage, quint8(row)}.packed(); };

    // Each index's page map comes after the table's two, before those of the long values.
    for (size_t i = 0; i < indexes.size(); ++i)
        maps.push_back({inlineMap(firstData), 0});

    QByteArray blocks, names, longValueMaps;
    quint16 variable = 0, fixedOffset = 0;
    const QByteArray shared(m_image.page(kCatalogPage) + 12, 4); // the same in every definition of the file
    for (size_t i = 0; i < columns.size(); ++i) {
        const NewColumn &c = columns[i];
        const bool fixed = c.type == TypeLong || c.type == TypeInteger;
        const quint16 length = c.type == TypeLong      ? 4
                               : c.type == TypeInteger ? 2
                               : c.type == TypeText    ? c.characters * 2
                                                       : 0;
        QByteArray b(kColumnBlock, '\0');
        b[0] = char(c.type);
        std::copy(shared.begin(), shared.end(), b.begin() + 1);
        put16(b.data() + 5, quint16(i));
        put16(b.data() + 7, variable);
        put16(b.data() + 9, quint16(i));
        put16(b.data() + 11, kGeneralSortOrder);
        b[15] = char(fixed ? kColumnFixed : kColumnVariable);
        b[16] = char(c.type == TypeText || c.type == TypeMemo ? kCompressibleText : 0);
        put16(b.data() + 21, fixed ? fixedOffset : 0);
        put16(b.data() + 23, length);
        blocks += b;
        if (fixed)
            fixedOffset += length;
        else
            ++variable;
        append16(names, quint16(c.name.size() * 2));
        names.append(reinterpret_cast<const char *>(c.name.utf16()), c.name.size() * 2);
        if (c.type == TypeMemo) {
            append16(longValueMaps, quint16(i));
            append32(longValueMaps, pointer(int(maps.size())));
            append32(longValueMaps, pointer(int(maps.size()) + 1));
            maps.push_back({inlineMap(firstData), 0});
            maps.push_back({inlineMap(firstData), 0});
        }
    }
    longValueMaps += QByteArray("\xFF\xFF", 2) + QByteArray(8, '\0');

    // Per index: its key count (filled by the rebuild), its real block and its logical
    // block with its name. The real blocks start as Access's catalog's do; the root
    // stays 0 until the rows are in.
    const TableDef catalog = readTableDef(m_image, kCatalogPage, QStringLiteral("MSysObjects"));
    if (catalog.indexBlockOffsets.empty() || catalog.indexBlockOffsets.front() + 4 > kPageSize)
        m_image.damaged(QStringLiteral("its catalog is not one that is known"));
    const QByteArray realHead(m_image.page(kCatalogPage) + catalog.indexBlockOffsets.front(), 4);
    QByteArray keyCounts, realBlocks, logicalBlocks, indexNames;
    for (size_t i = 0; i < indexes.size(); ++i) {
        const NewIndex &index = indexes[i];
        keyCounts += QByteArray(kRealIndexCounts, '\0');
        QByteArray real(kRealIndexBlock, '\0');
        std::copy(realHead.begin(), realHead.end(), real.begin());
        for (int k = 0; k < kMaxIndexColumns; ++k) {
            const bool used = k < int(index.columns.size());
            put16(real.data() + 4 + 3 * k, used ? quint16(index.columns[size_t(k)]) : 0xFFFF);
            real[6 + 3 * k] = char(used ? 1 : 0);
        }
        put32(real.data() + 34, pointer(2 + int(i)));
        real[kIndexBlockFlags] = char(kIndexAccess | (index.primaryKey ? kIndexUnique | kIndexRequired
                                                      : index.unique   ? kIndexUnique
                                                                       : 0));
        realBlocks += real;
        QByteArray logical(kLogicalIndexBlock, '\0');
        std::copy(shared.begin(), shared.end(), logical.begin());
        put32(logical.data() + 4, quint32(i));
        put32(logical.data() + 8, quint32(i));
        put32(logical.data() + 13, 0xFFFFFFFF); // no related table
        logical[kLogicalIndexType] = char(index.primaryKey ? kPrimaryKeyIndex : 0);
        logicalBlocks += logical;
        append16(indexNames, quint16(index.name.size() * 2));
        indexNames.append(reinterpret_cast<const char *>(index.name.utf16()), index.name.size() * 2);
    }

    QByteArray def(63, '\0');
    def[0] = char(PageTableDef);
    def[1] = 1;
    std::copy(shared.begin(), shared.end(), def.begin() + 12);
    def[24] = 1;
    def[40] = char(kUserTable);
    put16(def.data() + 41, quint16(columns.size()));
    put16(def.data() + 43, variable);
    put16(def.data() + 45, quint16(columns.size()));
    put32(def.data() + 47, quint32(indexes.size()));
    put32(def.data() + 51, quint32(indexes.size()));
    put32(def.data() + 55, pointer(0));
    put32(def.data() + 59, pointer(1));
    def += keyCounts + blocks + names + realBlocks + logicalBlocks + indexNames + longValueMaps;
    if (def.size() > kPageSize)
        throw DbError(QStringLiteral("The definition of table %1 does not fit one page").arg(name).toStdString());
    put32(def.data() + 8, quint32(def.size() - 8));
    put16(def.data() + 2, quint16(kPageSize - def.size()));
    std::copy(def.begin(), def.end(), m_image.changePage(tableDefPage));

    char *mapBytes = m_image.changePage(mapPage);
    initDataPage(mapBytes, 0);
    if (!layOutRows(mapBytes, maps))
        m_image.damaged(QStringLiteral("the usage maps of table %1 do not fit a page").arg(name));

    addCatalogRow(name, tableDefPage);
    return readTableDef(m_image, tableDefPage, name);
}

void Builder::addCatalogRow(const QString &name, quint32 tableDefPage)
{
    const TableDef catalog = readTableDef(m_image, kCatalogPage, QStringLiteral("MSysObjects"));
    const Column *id = catalog.column(QStringLiteral("Id"));
    const Column *parent = catalog.column(QStringLiteral("ParentId"));
    const Column *objectName = catalog.column(QStringLiteral("Name"));
    const Column *type = catalog.column(QStringLiteral("Type"));
    const Column *owner = catalog.column(QStringLiteral("Owner"));
    const Column *flags = catalog.column(QStringLiteral("Flags"));
    const Column *created = catalog.column(QStringLiteral("DateCreate"));
    const Column *updated = catalog.column(QStringLiteral("DateUpdate"));
    if (!id || !parent || !objectName || !type || !owner || !flags || !created || !updated)
        m_image.damaged(QStringLiteral("its catalog is not one that is known"));

    // Tables hang under the container "Tables", owned by whoever owns the catalog itself.
    QVariant tablesId, catalogOwner;
    forEachRow(m_image, catalog, [&](RowPointer, const QByteArray &bytes) {
        const StoredRow row = decodeRow(m_image, bytes, true);
        const QString rowName = columnValue(m_image, row, *objectName).toString();
        if (rowName == QLatin1String("Tables") && columnValue(m_image, row, *type).toInt() == 3)
            tablesId = columnValue(m_image, row, *id);
        if (rowName == QLatin1String("MSysObjects"))
            catalogOwner = columnValue(m_image, row, *owner);
    });
    if (!tablesId.isValid() || !catalogOwner.isValid())
        m_image.damaged(QStringLiteral("its catalog lacks the container of tables"));

    const QDateTime now = QDateTime::currentDateTime();
    m_writer.appendRow(catalog, {{id, qint32(tableDefPage)},
                                 {parent, tablesId},
                                 {objectName, name},
                                 {type, 1},
                                 {created, now},
                                 {updated, now},
                                 {owner, catalogOwner},
                                 {flags, 0}});
    // The catalog's indexes, by Id and by ParentId and Name, made again with the new row.
    for (int i = 0; i < int(catalog.indexRoots.size()); ++i)
        rebuildIndex(m_image, readTableDef(m_image, kCatalogPage, catalog.name), i);
}

void Builder::appendRow(const TableDef &table, const QVariantList &values)
{
    std::vector<ColumnChange> changes;
    for (qsizetype i = 0; i < values.size() && i < qsizetype(table.columns.size()); ++i)
        if (!values[i].isNull())
            changes.push_back({&table.columns[size_t(i)], values[i]});
    m_writer.appendRow(table, changes);
}

void Builder::buildIndexes(const TableDef &table)
{
    for (int i = 0; i < int(table.indexRoots.size()); ++i)
        rebuildIndex(m_image, readTableDef(m_image, table.page, table.name), i);
}

} // namespace ht::jet
