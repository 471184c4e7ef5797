// Writing an Access (Jet 4) file in place: rows added, deleted and changed.
#include "common/FileIo.h"
#include "database/DatabaseImpl.h"
#include "database/JetFile.h"
#include "database/JetPages.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <algorithm>
#include <sqlite3.h>

namespace ht
{

namespace
{

bool inMainDatabase(const char *database)
{
    return database && qstrcmp(database, "main") == 0;
}

// SQLite asks before it prepares a statement: a design change of the Jet file is refused there,
// before anything changes, and the refusal is kept for the message.
int authorize(void *state, int action, const char *first, const char *, const char *database, const char *)
{
    auto *w = static_cast<JetPages *>(state);
    if (w->copying)
        return SQLITE_OK;
    const QString table = QString::fromUtf8(first);
    // Rows added to or taken from the schema are tables made or dropped. (SQLite
    // asks about "updating" it when it merely reads the schema.)
    if (table.startsWith(QLatin1String("sqlite_")) && inMainDatabase(database)) {
        if (action != SQLITE_INSERT && action != SQLITE_DELETE)
            return SQLITE_OK;
        w->refusal = QStringLiteral("Changing the design of the database");
        return SQLITE_DENY;
    }
    switch (action) {
    case SQLITE_DELETE:
        // Ignoring the check, not the delete: rows then go one by one, each seen
        // by the update hook (a whole table emptied at once would pass it by).
        return inMainDatabase(database) ? SQLITE_IGNORE : SQLITE_OK;
    // An UPDATE is let through even when it names an indexed column: setting a
    // key to the value it has is common (an import names every key of its rows).
    // Only a real change of an indexed value is refused, when the rows are written.
    case SQLITE_CREATE_TABLE:
    case SQLITE_CREATE_INDEX:
    case SQLITE_CREATE_TRIGGER:
    case SQLITE_CREATE_VIEW:
    case SQLITE_DROP_TABLE:
    case SQLITE_DROP_INDEX:
    case SQLITE_DROP_TRIGGER:
    case SQLITE_DROP_VIEW:
    case SQLITE_ALTER_TABLE:
        if (action == SQLITE_ALTER_TABLE ? !inMainDatabase(first) : !inMainDatabase(database))
            return SQLITE_OK;
        w->refusal = QStringLiteral("Changing the design of the database");
        return SQLITE_DENY;
    default:
        return SQLITE_OK;
    }
}

constexpr quint32 kAddedThisRound = 0; // no row's slot: page 0 holds the file's header

// Each row change of a Jet table, kept until it is written. A row added in the
// same round is written once, with its last values; one deleted then is never written.
void noteUpdate(void *state, int operation, const char *database, const char *tableName, sqlite3_int64 rowid)
{
    auto *w = static_cast<JetPages *>(state);
    if (w->copying || !inMainDatabase(database))
        return;
    const QPair<QString, qint64> row{QString::fromUtf8(tableName), rowid};
    switch (operation) {
    case SQLITE_UPDATE:
        if (!w->inserted.contains(row))
            w->changed.insert(row);
        break;
    case SQLITE_INSERT:
        w->inserted.insert(row);
        break;
    case SQLITE_DELETE:
        w->changed.remove(row);
        // Remembered as deleted even when added in this round: a rolled-back
        // savepoint may bring the row back, and it is then written after all.
        if (w->inserted.remove(row)) {
            w->deleted[row.first].insert(rowid, kAddedThisRound);
            break;
        }
        if (const auto place = w->rowPlaces.value(row.first).constFind(rowid);
            place != w->rowPlaces.value(row.first).constEnd())
            w->deleted[row.first].insert(rowid, *place);
        break;
    }
}

// Our own writers' lock, beside the file (Jet's ".ldb" is another program's).
QString writeLockFile(const QString &path)
{
    const QFileInfo info(path);
    return info.dir().filePath(QStringLiteral(".~") + info.fileName() + QStringLiteral(".lock"));
}

// Held from reading the file for the comparison to its replacement, so that a
// second writer of this program sees the first one's change, never overwrites it.
void takeWriteLock(FileLock &lock, const QString &path, int timeoutMs)
{
    QString why;
    switch (lock.take(writeLockFile(path), timeoutMs, &why)) {
    case FileLock::Result::Taken:
        return;
    case FileLock::Result::Busy:
        throw DbBusy(QStringLiteral("The Access file %1 is busy: another job is writing it. Nothing was written; "
                                    "try again when that job is done.")
                         .arg(path)
                         .toStdString());
    case FileLock::Result::Failed:
        break;
    }
    throw DbError(QStringLiteral("The Access file %1 cannot be locked for writing (%2: %3); nothing was written.")
                      .arg(path, writeLockFile(path), why)
                      .toStdString());
}

} // namespace

void Database::Impl::openJetForWriting()
{
    const QFileInfo info(path);
    // The file is replaced by a new one: the folder must take it.
    if (!info.isWritable())
        fail(QStringLiteral("The database file is write-protected"), {});
    if (!QFileInfo(info.absolutePath()).isWritable())
        fail(QStringLiteral("The folder of the database is write-protected"), {});
    {
        // A write that was killed left its temporary file; none of our writers runs while the lock is ours.
        FileLock lock;
        if (lock.take(writeLockFile(path), 0) == FileLock::Result::Taken)
            removeStaleTemporaryFiles(info.absolutePath());
    }
    jetPages = std::make_unique<JetPages>();
    jetPages->file = std::make_unique<jet::Editor>(path);
    jetPages->writable = true;
    sqlite3_set_authorizer(handle, authorize, jetPages.get());
    sqlite3_update_hook(handle, noteUpdate, jetPages.get());
}

void Database::Impl::openJetForReading()
{
    try {
        jetPages = std::make_unique<JetPages>();
        jetPages->file = std::make_unique<jet::Editor>(path);
    } catch (const DbError &) {
        jetPages.reset(); // Jet 3, encoded, or a layout the page code does not know
    }
}

void Database::Impl::copyJetTableByPages(const QString &table)
{
    const jet::TableDef &def = jetPages->file->table(table);
    const std::vector<const jet::Column *> &columns = jetPages->file->columnsOf(def.name);
    QStringList defs, marks;
    for (const jet::Column *c : columns) {
        defs << quoteIdentifier(c->name) + QLatin1Char(' ') + jetSqlType(c->type);
        marks << QStringLiteral("?");
    }
    // Autonumbers stay plain columns: the file numbers added rows, and the copy takes the numbers after the write.
    jetPages->copying = true;
    QSqlQuery(db).exec(QStringLiteral("SAVEPOINT ht_copy")); // one write of the memory copy, not one per row
    try {
        QSqlQuery create(db);
        if (!create.exec(
                QStringLiteral("CREATE TABLE %1 (%2)").arg(quoteIdentifier(def.name), defs.join(QStringLiteral(", ")))))
            throw DbError(create.lastError().text().toStdString());
        QSqlQuery insert(db);
        if (!insert.prepare(QStringLiteral("INSERT INTO %1 VALUES (%2)")
                                .arg(quoteIdentifier(def.name), marks.join(QStringLiteral(", ")))))
            throw DbError(insert.lastError().text().toStdString());
        QHash<qint64, quint32> &rowPlaces = jetPages->rowPlaces[def.name];
        jetPages->file->readRows(def.name, [&](jet::RowPointer slot, const QVariantList &values) {
            for (int i = 0; i < values.size(); ++i)
                insert.bindValue(i, values[i]);
            if (!insert.exec())
                throw DbError(QStringLiteral("Cannot copy a row of table %1: %2")
                                  .arg(def.name, insert.lastError().text())
                                  .toStdString());
            rowPlaces.insert(sqlite3_last_insert_rowid(handle), slot.packed());
        });
        // The file's keys as plain indexes, so that the jobs' look-ups find rows as fast as in SQLite.
        for (size_t i = 0; i < def.indexColumns.size(); ++i) {
            QStringList keyColumns;
            for (quint16 number : def.indexColumns[i])
                for (const jet::Column *c : columns)
                    if (c->number == number)
                        keyColumns << quoteIdentifier(c->name);
            if (!keyColumns.isEmpty() &&
                !create.exec(QStringLiteral("CREATE INDEX %1 ON %2 (%3)")
                                 .arg(quoteIdentifier(QStringLiteral("%1 key %2").arg(def.name).arg(i)),
                                      quoteIdentifier(def.name), keyColumns.join(QStringLiteral(", ")))))
                throw DbError(create.lastError().text().toStdString());
        }
    } catch (...) {
        QSqlQuery(db).exec(QStringLiteral("ROLLBACK TO ht_copy"));
        QSqlQuery(db).exec(QStringLiteral("RELEASE ht_copy"));
        jetPages->copying = false;
        jetPages->rowPlaces.remove(def.name);
        throw;
    }
    QSqlQuery(db).exec(QStringLiteral("RELEASE ht_copy"));
    jetPages->copying = false;
}

void Database::Impl::writeJetChanges()
{
    if (!jetPages || !jetPages->pending())
        return;
    // The memory copy is the file as it was opened or last written here: compared
    // under the lock, any change since, by whatever writer, is caught.
    FileLock lock;
    takeWriteLock(lock, path, busyWaitMs);
    auto editor = std::make_unique<jet::Editor>(path);
    if (editor->bytes() != jetPages->file->bytes())
        throw DbError(QStringLiteral("The Access file %1 was changed by another program since it was read; nothing "
                                     "was written. Open it again and repeat the change.")
                          .arg(path)
                          .toStdString());
    // Table by table: rows deleted by their remembered slots, then each changed or
    // added row read back from the memory copy and written.
    QSet<QString> tables;
    QHash<QString, QList<qint64>> updated, added;
    for (const auto &[table, rowid] : std::as_const(jetPages->changed))
        updated[table] << rowid;
    for (const auto &[table, rowid] : std::as_const(jetPages->inserted))
        added[table] << rowid;
    for (const QString &t : updated.keys() + added.keys() + jetPages->deleted.keys())
        tables.insert(t);
    QHash<QString, QHash<qint64, quint32>> places; // the tables' slots after this write
    struct Numbered {
        QString table;
        qint64 rowid;
        quint32 slot;
    };
    std::vector<Numbered> numbered; // added rows whose autonumber the file gives
    for (const QString &table : std::as_const(tables)) {
        QHash<qint64, quint32> &now = places[table] = jetPages->rowPlaces.value(table);
        QSqlQuery row(db);
        row.prepare(QStringLiteral("SELECT * FROM %1 WHERE rowid = ?").arg(quoteIdentifier(table)));
        const auto read = [&](qint64 rowid, QVariantList &values) {
            row.addBindValue(rowid);
            if (!row.exec())
                throw DbError(QStringLiteral("A changed row of table %1 cannot be read back; nothing was written to %2")
                                  .arg(table, path)
                                  .toStdString());
            if (!row.next())
                return false;
            values.clear();
            for (int i = 0; i < row.record().count(); ++i)
                values << row.value(i);
            return true;
        };
        QVariantList values;
        const QHash<qint64, quint32> gone = jetPages->deleted.value(table);
        QList<qint64> rowids = added.value(table), changedRows = updated.value(table);
        std::vector<jet::RowPointer> deletes;
        for (auto d = gone.cbegin(); d != gone.cend(); ++d) {
            // Still there, and not as a new row under the old number: a rolled-back
            // savepoint kept it, with the values it had before.
            if (!jetPages->inserted.contains({table, d.key()}) && read(d.key(), values)) {
                (d.value() == kAddedThisRound ? rowids : changedRows) << d.key();
                continue;
            }
            if (d.value() == kAddedThisRound)
                continue;
            deletes.push_back(jet::RowPointer::unpack(d.value()));
            now.remove(d.key());
        }
        editor->deleteRows(table, deletes);
        for (qint64 rowid : std::as_const(changedRows)) {
            if (!now.contains(rowid) || !read(rowid, values))
                throw DbError(QStringLiteral("A changed row of table %1 cannot be read back; nothing was written to %2")
                                  .arg(table, path)
                                  .toStdString());
            editor->updateRow(table, jet::RowPointer::unpack(now.value(rowid)), values);
        }
        std::sort(rowids.begin(), rowids.end()); // the file's rows in the order they were added
        const std::vector<const jet::Column *> &columns = editor->columnsOf(table);
        // Added rows have the highest rowids: read in one pass from the first of them.
        QSqlQuery newRows(db);
        newRows.setForwardOnly(true);
        if (!rowids.isEmpty()) {
            newRows.prepare(
                QStringLiteral("SELECT rowid, * FROM %1 WHERE rowid >= ? ORDER BY rowid").arg(quoteIdentifier(table)));
            newRows.addBindValue(rowids.first());
            if (!newRows.exec())
                throw DbError(
                    QStringLiteral("The added rows of table %1 cannot be read back; nothing was written to %2")
                        .arg(table, path)
                        .toStdString());
        }
        bool more = newRows.isActive() && newRows.next();
        for (qint64 rowid : std::as_const(rowids)) {
            while (more && newRows.value(0).toLongLong() < rowid)
                more = newRows.next();
            if (!more || newRows.value(0).toLongLong() != rowid)
                continue; // added and taken back within a rolled-back savepoint
            values.clear();
            for (int i = 1; i < newRows.record().count(); ++i)
                values << newRows.value(i);
            const quint32 slot = editor->insertRow(table, values).packed();
            now.insert(rowid, slot);
            for (size_t i = 0; i < columns.size() && i < size_t(values.size()); ++i)
                if (columns[i]->autoNumber() && values[qsizetype(i)].isNull()) {
                    numbered.push_back({table, rowid, slot});
                    break;
                }
        }
    }
    editor->commit();
    // The memory copy takes the numbers the file gave.
    jetPages->copying = true;
    for (const Numbered &n : numbered) {
        const std::vector<const jet::Column *> &columns = editor->columnsOf(n.table);
        const QVariantList stored = editor->rowValues(n.table, jet::RowPointer::unpack(n.slot));
        for (size_t i = 0; i < columns.size(); ++i)
            if (columns[i]->autoNumber()) {
                QSqlQuery set(db);
                set.prepare(QStringLiteral("UPDATE %1 SET %2 = ? WHERE rowid = ?")
                                .arg(quoteIdentifier(n.table), quoteIdentifier(columns[i]->name)));
                set.addBindValue(stored[qsizetype(i)]);
                set.addBindValue(n.rowid);
                set.exec();
            }
    }
    jetPages->copying = false;
    for (auto p = places.cbegin(); p != places.cend(); ++p)
        jetPages->rowPlaces[p.key()] = p.value();
    jetPages->file = std::move(editor);
    jetPages->forget();
}

void Database::Impl::dropJetChanges()
{
    if (!jetPages)
        return;
    QSet<QString> tables;
    for (const auto &[table, rowid] : std::as_const(jetPages->changed))
        tables.insert(table);
    for (const auto &[table, rowid] : std::as_const(jetPages->inserted))
        tables.insert(table);
    for (const QString &table : jetPages->deleted.keys())
        tables.insert(table);
    jetPages->forget();
    jetPages->copying = true;
    for (const QString &table : tables) {
        QSqlQuery(db).exec(QStringLiteral("DROP TABLE IF EXISTS %1").arg(quoteIdentifier(table)));
        jetPages->rowPlaces.remove(table);
    }
    jetPages->copying = false;
}

} // namespace ht
