#pragma once
// Where the rows of each ID of a table lie (their rowids), read in one pass. A job
// that then writes row by row finds each row through its rowid: fast on a file
// whose tables have no index (a customer's own SQLite file, the memory copy of
// an Access table), where a search by ID would read the whole table every time.

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

namespace ht
{

class Database;
class Recordset;

class RowsById
{
  public:
    // The rows of `table` by `idColumn`; with `language`, only those of that language.
    RowsById(Database &db, const QString &table, const QString &idColumn, const QVariant &language = QVariant());
    // `sql` (an UPDATE or SELECT whose WHERE already names the row) on the rows of
    // `id` only: the same rows, found by rowid.
    int exec(const QString &sql, const QVariantList &params, qlonglong id);
    Recordset query(const QString &sql, const QVariantList &params, qlonglong id);
    // `sql` (an INSERT) run and its new row noted under `id`.
    void insert(const QString &sql, const QVariantList &params, qlonglong id);

  private:
    QString narrowed(const QString &sql, QVariantList &params, qlonglong id) const;
    Database &m_db;
    QHash<qlonglong, QList<qlonglong>> m_rows;
    bool m_usable = true; // false for a table without rowids: the statements run as given
};

} // namespace ht
