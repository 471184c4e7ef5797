#include "database/jet/JetEditor.h"

#include "common/FileIo.h"
#include "database/Database.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetIndex.h"
#include "database/jet/JetIndexKeys.h"
#include "database/jet/JetValues.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace ht::jet
{

namespace
{

QByteArray readWhole(const QString &path)
{
    QByteArray bytes;
    QString why;
    if (readRegularFile(path, kMaxDatabaseBytes, true, bytes, &why) != FileRead::Ok)
        throw DbError(QStringLiteral("Cannot read the Access file %1: %2").arg(path, why).toStdString());
    return bytes;
}

bool sameValue(const QVariant &stored, const QVariant &wanted)
{
    if (stored.isNull() || wanted.isNull())
        return stored.isNull() == wanted.isNull() ||
               (stored.typeId() == QMetaType::QString && stored.toString().isEmpty() && wanted.toString().isEmpty());
    if (stored.typeId() == QMetaType::QString)
        return stored.toString() == wanted.toString();
    return stored == wanted || stored.toString() == wanted.toString();
}

} // namespace

// Pages may be half changed when a change fails: the round can only be dropped then.
template <typename Change> auto Editor::guarded(Change change)
{
    if (m_broken)
        throw DbError("An earlier change to the Access file failed; start again");
    try {
        return change();
    } catch (...) {
        m_broken = true;
        throw;
    }
}

std::vector<const Column *> columnsInOrder(const TableDef &table)
{
    std::vector<const Column *> columns;
    for (const Column &c : table.columns)
        columns.push_back(&c);
    std::sort(columns.begin(), columns.end(), [](const Column *a, const Column *b) { return a->number < b->number; });
    return columns;
}

QString Editor::lockFile(const QString &path)
{
    const QFileInfo info(path);
    return info.dir().filePath(info.completeBaseName() + QStringLiteral(".ldb"));
}

// The file's bytes are moved in, never copied: a copy of a large file costs what a save may take.
Editor::Editor(const QString &path) : m_path(path), m_image(readWhole(path), path)
{
    m_catalog = readCatalog(m_image);
}

Editor::Editor(const QString &path, const QByteArray &bytes) : m_path(path), m_image(bytes, path)
{
    m_catalog = readCatalog(m_image);
}

void Editor::checkNotOpenElsewhere() const
{
    // Jet caches pages and locks ranges of a file it has open: writing under it would corrupt the file.
    if (QFileInfo::exists(lockFile(m_path)))
        throw DbError(QStringLiteral("The Access file %1 is open in another program (%2 exists); close that "
                                     "program first. Nothing was written.")
                          .arg(m_path, lockFile(m_path))
                          .toStdString());
}

std::vector<QString> Editor::tableNames() const
{
    std::vector<QString> names;
    for (const CatalogEntry &e : m_catalog)
        names.push_back(e.name);
    return names;
}

QString Editor::findTable(const QString &name) const
{
    for (const CatalogEntry &e : m_catalog)
        if (e.name.compare(name, Qt::CaseInsensitive) == 0)
            return e.name;
    return QString();
}

const TableDef &Editor::table(const QString &name)
{
    const QString found = findTable(name);
    if (found.isEmpty())
        throw DbError(QStringLiteral("No table %1 in the Access file %2").arg(name, m_path).toStdString());
    auto known = m_tables.find(found);
    if (known == m_tables.end()) {
        const auto entry =
            std::find_if(m_catalog.begin(), m_catalog.end(), [&](const CatalogEntry &e) { return e.name == found; });
        known = m_tables.emplace(found, readTableDef(m_image, entry->tableDefPage, found)).first;
        m_columnsInOrder.emplace(found, columnsInOrder(known->second));
    }
    return known->second;
}

const std::vector<const Column *> &Editor::columnsOf(const QString &name)
{
    return m_columnsInOrder.at(table(name).name);
}

void Editor::readRows(const QString &tableName,
                      const std::function<void(RowPointer slot, const QVariantList &values)> &visit)
{
    const TableDef &t = table(tableName);
    const std::vector<const Column *> &columns = columnsOf(tableName);
    forEachRow(m_image, t, [&](RowPointer slot, const QByteArray &bytes) {
        const StoredRow row = decodeRow(m_image, bytes, t.variableColumns > 0);
        QVariantList values;
        for (const Column *c : columns)
            values << columnValue(m_image, row, *c);
        visit(slot, values);
    });
}

QVariantList Editor::rowValues(const QString &tableName, RowPointer slot)
{
    const TableDef &t = table(tableName);
    const StoredRow row = decodeRow(m_image, rowData(m_image, slot), t.variableColumns > 0);
    QVariantList values;
    for (const Column *c : columnsOf(tableName))
        values << columnValue(m_image, row, *c);
    return values;
}

void Editor::updateRow(const QString &tableName, RowPointer slot, const QVariantList &values)
{
    if (m_broken)
        throw DbError("An earlier change to the Access file failed; start again");
    const TableDef &t = table(tableName);
    const std::vector<const Column *> &columns = columnsOf(tableName);
    const Slot s = slotOf(m_image, slot.page, slot.row);
    QByteArray bytes = rowBytes(m_image, slot.page, slot.row);
    if (s.flags == kRowOverflowPointer) {
        const RowPointer target = RowPointer::unpack(le32(bytes.constData()));
        bytes = rowBytes(m_image, target.page, target.row);
    }
    const StoredRow row = decodeRow(m_image, bytes, t.variableColumns > 0);
    std::vector<ColumnChange> changes;
    for (size_t i = 0; i < columns.size() && i < size_t(values.size()); ++i)
        if (!sameValue(columnValue(m_image, row, *columns[i]), values[qsizetype(i)]))
            changes.push_back({columns[i], values[qsizetype(i)]});
    if (changes.empty())
        return;
    const bool keys =
        std::any_of(changes.begin(), changes.end(), [](const ColumnChange &c) { return c.column->indexed; });
    if (keys)
        keysWillChange(t);
    m_changedTables.insert(t.name);
    guarded([&] {
        m_writer.updateRow(t, slot, changes, keys);
        if (keys)
            checkKeysOf(t, slot);
    });
}

void Editor::commit()
{
    if (m_broken)
        throw DbError("An earlier change to the Access file failed; nothing was written");
    if (!changed())
        return;
    rebuildIndexes();
    const QStringList problems = checkStructure(m_image, &m_changedTables);
    if (!problems.isEmpty())
        throw DbError(QStringLiteral("The change to the Access file %1 was not written, as it would leave the file "
                                     "unsound: %2")
                          .arg(m_path, problems.first())
                          .toStdString());
    checkNotOpenElsewhere();
    QString why;
    if (!replaceFileDurably(m_path, m_image.bytes().constData(), m_image.bytes().size(), &why))
        throw DbError(QStringLiteral("The Access file %1 could not be written: %2").arg(m_path, why).toStdString());
}

RowPointer Editor::insertRow(const QString &tableName, const QVariantList &values)
{
    const TableDef &t = table(tableName);
    const std::vector<const Column *> &columns = columnsOf(tableName);
    keysWillChange(t);
    m_changedTables.insert(t.name);
    std::vector<ColumnChange> row;
    for (size_t i = 0; i < columns.size(); ++i)
        row.push_back({columns[i], i < size_t(values.size()) ? values[qsizetype(i)] : QVariant()});
    return guarded([&] {
        const RowPointer slot = m_writer.insertRow(t, row);
        checkKeysOf(t, slot);
        return slot;
    });
}

void Editor::deleteRow(const QString &tableName, RowPointer slot)
{
    deleteRows(tableName, {slot});
}

void Editor::deleteRows(const QString &tableName, const std::vector<RowPointer> &places)
{
    if (places.empty())
        return;
    const TableDef &t = table(tableName);
    keysWillChange(t);
    m_changedTables.insert(t.name);
    guarded([&] { m_writer.deleteRows(t, places); });
}

// The indexes are rebuilt from the rows, with the keys computed here: only when
// they are the ones the file holds can the file's own keys and the new ones sort alike.
void Editor::keysWillChange(const TableDef &t)
{
    if (m_keysChanged.contains(t.name) || t.indexRoots.empty())
        return;
    if (m_broken)
        throw DbError("An earlier change to the Access file failed; start again");
    for (int i = 0; i < int(t.indexRoots.size()); ++i) {
        const QString differs = storedKeysDiffer(m_image, t, i);
        if (!differs.isEmpty())
            throw DbError(QStringLiteral("The rows of table %1 in the Access file %2 cannot be added, deleted or have "
                                         "their keys changed here: its index holds keys this program does not compute "
                                         "alike (%3). Nothing was changed.")
                              .arg(t.name, m_path, differs)
                              .toStdString());
    }
    m_keysChanged.insert(t.name);
}

// A row's keys must be ones the rebuild can compute: said at once, not only on commit.
void Editor::checkKeysOf(const TableDef &t, RowPointer slot) const
{
    const StoredRow row = decodeRow(m_image, rowData(m_image, slot), t.variableColumns > 0);
    for (int i = 0; i < int(t.indexRoots.size()); ++i) {
        QString why;
        if (!rowIndexKey(t, i, row, &why))
            throw DbError(QStringLiteral("The Access file %1 cannot take this row: %2").arg(m_path, why).toStdString());
    }
}

void Editor::rebuildIndexes()
{
    guarded([&] {
        for (const QString &name : m_keysChanged) {
            const TableDef t = readTableDef(m_image, table(name).page, name);
            for (int i = 0; i < int(t.indexRoots.size()); ++i)
                rebuildIndex(m_image, t, i);
        }
        // The definitions read before say where the roots were and how many rows there were.
        for (const QString &name : m_changedTables) {
            TableDef &known = m_tables.at(name);
            const TableDef now = readTableDef(m_image, known.page, name);
            known.rowCount = now.rowCount;
            known.indexRoots = now.indexRoots;
        }
    });
    m_keysChanged.clear();
}

} // namespace ht::jet
