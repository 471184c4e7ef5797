#include "database/Database.h"
#include "database/DatabaseImpl.h"
#include "database/JetFile.h"
#include "database/jet/JetEditor.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

namespace ht
{

namespace
{

// SQLite refused a copied row (a key value repeated), as opposed to a failed read.
struct RowRefused : DbError {
    using DbError::DbError;
};

// A key or index of the Access table, to be made in the copy.
struct CopyKey {
    QString name;
    QStringList columns; // with " DESC" where the Access index sorts down
    bool primary = false, unique = false;
};

using RowReader = std::function<void(const std::function<void(const std::vector<JetColumn> &)> &,
                                     const std::function<void(const QVariantList &)> &)>;

// One key per physical index of the table: the design's name for it, the primary
// key's where it is one. Relationship-only entries add no index of their own.
std::vector<CopyKey> keysOf(const jet::TableDef &def)
{
    std::vector<CopyKey> keys;
    std::vector<int> keyOfPhysical(def.indexColumns.size(), -1);
    for (const jet::LogicalIndex &index : def.logicalIndexes) {
        if (index.physical >= def.indexColumns.size())
            continue;
        int &at = keyOfPhysical[index.physical];
        if (at >= 0) {
            keys[size_t(at)].primary = keys[size_t(at)].primary || index.primaryKey;
            continue;
        }
        CopyKey key;
        key.name = index.name;
        key.primary = index.primaryKey;
        key.unique = def.indexFlags[index.physical] & jet::kIndexUnique;
        const std::vector<quint16> &numbers = def.indexColumns[index.physical];
        for (size_t k = 0; k < numbers.size(); ++k)
            for (const jet::Column &c : def.columns)
                if (c.number == numbers[k])
                    key.columns << quoteIdentifier(c.name) +
                                       (def.indexAscending[index.physical][k] ? QString() : QStringLiteral(" DESC"));
        if (key.columns.size() != qsizetype(numbers.size()))
            continue; // names a column the table lacks: a damaged definition, no index
        at = int(keys.size());
        keys.push_back(key);
    }
    return keys;
}

// A name for the index in the copy: Access names indexes per table, SQLite per file.
QString indexName(QSqlDatabase &db, const QString &table, const QString &name)
{
    const QString base = table + (name.isEmpty() ? QStringLiteral("Index") : name);
    QSqlQuery taken(db);
    taken.prepare(QStringLiteral("SELECT 1 FROM sqlite_schema WHERE name = ? COLLATE NOCASE"));
    QString candidate = base;
    for (int n = 2;; ++n) {
        taken.addBindValue(candidate);
        if (!taken.exec() || !taken.next())
            return candidate;
        candidate = base + QString::number(n);
    }
}

// The keys that are not the table's PRIMARY KEY become indexes once the rows are in
// (faster than keeping them up to date row by row). A unique index the rows do not
// fit (an Access file that was already damaged) is made plain: the copy still finds rows fast.
void createIndexes(QSqlDatabase &db, const QString &table, const std::vector<CopyKey> &keys)
{
    for (const CopyKey &key : keys) {
        const QString name = indexName(db, table, key.name);
        const QString sql = QStringLiteral("CREATE %1INDEX %2 ON %3 (%4)")
                                .arg(QStringLiteral("%1"), quoteIdentifier(name), quoteIdentifier(table),
                                     key.columns.join(QStringLiteral(", ")));
        QSqlQuery create(db);
        if (key.unique && create.exec(sql.arg(QStringLiteral("UNIQUE "))))
            continue;
        if (!create.exec(sql.arg(QString())))
            throw DbError(
                QStringLiteral("Cannot index table %1: %2").arg(table, create.lastError().text()).toStdString());
    }
}

// One attempt at copying. `withKeys` makes a single autonumber column the INTEGER PRIMARY
// KEY and the Access primary key the copy's; without, the table is plain and every key an index.
void copyTableOnce(const RowReader &read, const QString &table, QSqlDatabase &db, std::vector<CopyKey> keys,
                   bool withKeys)
{
    QSqlQuery insert(db);
    read(
        [&](const std::vector<JetColumn> &columns) {
            if (columns.empty())
                throw DbError(QStringLiteral("Jet table %1 has no columns").arg(table).toStdString());
            int autoNumbers = 0;
            for (const JetColumn &c : columns)
                autoNumbers += c.autoNumber ? 1 : 0;
            QStringList defs, marks;
            QString rowidKey;
            for (const JetColumn &c : columns) {
                const bool key = withKeys && autoNumbers == 1 && c.autoNumber;
                if (key)
                    rowidKey = quoteIdentifier(c.name);
                defs << quoteIdentifier(c.name) + QLatin1Char(' ') +
                            (key ? QStringLiteral("INTEGER PRIMARY KEY") : c.sqlType);
                marks << QStringLiteral("?");
            }
            // The Access primary key is the copy's unless the autonumber already is:
            // then it is kept as a unique index (unless it is that very column).
            for (auto k = keys.begin(); withKeys && k != keys.end(); ++k) {
                if (!k->primary)
                    continue;
                if (rowidKey.isEmpty())
                    defs << QStringLiteral("PRIMARY KEY (%1)").arg(k->columns.join(QStringLiteral(", ")));
                if (rowidKey.isEmpty() || k->columns == QStringList{rowidKey}) {
                    keys.erase(k);
                    break;
                }
            }
            QSqlQuery create(db);
            if (!create.exec(QStringLiteral("CREATE TABLE %1 (%2)")
                                 .arg(quoteIdentifier(table), defs.join(QStringLiteral(", ")))))
                throw DbError(
                    QStringLiteral("Cannot create table %1: %2").arg(table, create.lastError().text()).toStdString());
            if (!insert.prepare(QStringLiteral("INSERT INTO %1 VALUES (%2)")
                                    .arg(quoteIdentifier(table), marks.join(QStringLiteral(", ")))))
                throw DbError(insert.lastError().text().toStdString());
        },
        [&](const QVariantList &row) {
            for (int i = 0; i < row.size(); ++i)
                insert.bindValue(i, row[i]);
            if (!insert.exec())
                throw RowRefused(QStringLiteral("Cannot copy a row of table %1: %2")
                                     .arg(table, insert.lastError().text())
                                     .toStdString());
        });
    createIndexes(db, table, keys);
}

void copyTable(const RowReader &read, const QString &table, QSqlDatabase &db, const std::vector<CopyKey> &keys)
{
    try {
        copyTableOnce(read, table, db, keys, true);
    } catch (const RowRefused &) {
        // Rows that break a key (a repeated autonumber) cannot have it: copy the table plain.
        QSqlQuery drop(db);
        drop.exec(QStringLiteral("DROP TABLE IF EXISTS %1").arg(quoteIdentifier(table)));
        copyTableOnce(read, table, db, keys, false);
    }
}

// The rows of a Jet 4 file as its pages hold them, in the order of the columns' numbers.
RowReader pageReader(jet::Editor &file, const QString &table)
{
    return [&file, table](const std::function<void(const std::vector<JetColumn> &)> &onColumns,
                          const std::function<void(const QVariantList &)> &onRow) {
        std::vector<JetColumn> columns;
        for (const jet::Column *c : file.columnsOf(table))
            columns.push_back({c->name, c->type, jetSqlType(c->type), c->autoNumber()});
        onColumns(columns);
        file.readRows(table, [&](jet::RowPointer, const QVariantList &values) { onRow(values); });
    };
}

} // namespace

void copyJetTable(JetFile &jet, const QString &table, const QString &connection)
{
    QSqlDatabase db = QSqlDatabase::database(connection, false);
    copyTable([&](const auto &onColumns, const auto &onRow) { jet.readTable(table, onColumns, onRow); }, table, db, {});
}

void convertJetToSqlite(const QString &jetPath, const QString &sqlitePath)
{
    if (QFileInfo::exists(sqlitePath))
        throw DbError(QStringLiteral("Cannot convert, the file exists (%1)").arg(sqlitePath).toStdString());
    if (detectDatabaseFormat(jetPath) != DbFormat::Jet)
        throw DbError(QStringLiteral("Not a Jet database (%1)").arg(jetPath).toStdString());
    // A Jet 4 file is read by the page code, which also knows its keys; other
    // versions (and encoded files) by libmdb, without keys.
    std::unique_ptr<jet::Editor> pages;
    std::unique_ptr<JetFile> jet;
    try {
        pages = std::make_unique<jet::Editor>(jetPath);
    } catch (const DbError &) {
        jet = JetFile::open(jetPath);
    }

    // Built beside the target under another name and renamed at the end: never a partial target.
    QString temp = sqlitePath + QStringLiteral(".converting");
    for (int n = 1; QFileInfo::exists(temp); ++n)
        temp = sqlitePath + QStringLiteral(".converting%1").arg(n);
    auto removeTemp = [&] {
        QFile::remove(temp);
        QFile::remove(temp + QStringLiteral("-journal"));
    };
    try {
        {
            Database::Impl impl;
            impl.path = temp;
            impl.openConnection(temp, false);
            impl.run(QStringLiteral("BEGIN"), {});
            if (pages) {
                for (const QString &table : pages->tableNames())
                    copyTable(pageReader(*pages, table), table, impl.db, keysOf(pages->table(table)));
            } else {
                for (const QString &table : jet->tableNames())
                    copyJetTable(*jet, table, impl.connection);
            }
            impl.run(QStringLiteral("COMMIT"), {});
        }
        if (!QFile::rename(temp, sqlitePath))
            throw DbError(QStringLiteral("Cannot write %1").arg(sqlitePath).toStdString());
    } catch (...) {
        removeTemp();
        throw;
    }
}

} // namespace ht
