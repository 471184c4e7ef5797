#pragma once
// The one database layer: opens a help-text, language-definition or index-text
// database by path (SQLite, or a Jet .mdb/.vws file recognised by its header and
// copied into an in-memory SQLite database as its tables are used: a Jet 4 file
// by the program's own page code, any other through libmdb), runs parameterised SQL,
// returns recordset-like results, and frames writes in transactions.
// Parts never talk to SQLite or libmdb directly.

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace ht
{

class DbError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// Another program held the database locked for longer than the busy timeout.
class DbBusy : public DbError
{
  public:
    using DbError::DbError;
};

enum class DbFormat { Missing, SQLite, Jet, Unknown };
// By the file's header, never its extension. Only a regular file of at most
// kMaxDatabaseBytes can be a database: anything else is Unknown, with the reason in *why.
DbFormat detectDatabaseFormat(const QString &path, QString *why = nullptr);
constexpr qint64 kMaxDatabaseBytes = qint64(2) << 30; // 2 GiB, as far as a Jet file can grow

// A fully read result: rows of values, navigated like a classic recordset.
class Recordset
{
  public:
    Recordset() = default;
    Recordset(QStringList fields, std::vector<QVariantList> rows);

    const QStringList &fields() const & { return m_fields; }
    QStringList fields() && { return std::move(m_fields); }
    int fieldIndex(const QString &name) const; // case-insensitive; -1 when absent
    bool hasField(const QString &name) const { return fieldIndex(name) >= 0; }

    int recordCount() const { return int(m_rows.size()); }
    bool eof() const { return m_pos >= recordCount(); }
    void moveFirst() { m_pos = 0; }
    void moveNext() { ++m_pos; }
    void moveLast() { m_pos = recordCount() > 0 ? recordCount() - 1 : 0; }
    int absolutePosition() const { return m_pos; }

    QVariant value(const QString &field) const; // throws DbError on unknown field
    QVariant value(int column) const;
    QString text(const QString &field) const { return value(field).toString(); } // Null -> ""

    // On a temporary (`for (auto &row : db.query(...).rows())`) the rows are moved out, never dangling.
    const std::vector<QVariantList> &rows() const & { return m_rows; }
    std::vector<QVariantList> rows() && { return std::move(m_rows); }

  private:
    QStringList m_fields;
    std::vector<QVariantList> m_rows;
    int m_pos = 0;
};

struct ColumnInfo {
    QString name;
    QString type; // declared SQL type, upper case ("TEXT", "INTEGER", ...)
    bool isText() const;
};

class Database
{
  public:
    enum class Mode { ReadOnly, ReadWrite };
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // Throws DbError when the file is missing, not a database, or cannot be opened in `mode`.
    // A Jet file opened ReadWrite takes updates of existing rows; they reach the file when
    // the transaction (or the single statement) commits, which fails, naming the column,
    // when an indexed value would change, and with DbBusy when another job of the program
    // is writing the file for longer than the busy timeout.
    // A statement that would add or delete rows or change the design fails, naming it.
    static std::unique_ptr<Database> open(const QString &path, Mode mode = Mode::ReadWrite);
    // Creates a new, empty SQLite database file (fails when the file exists).
    static std::unique_ptr<Database> create(const QString &path);
    // How long a statement waits for another program's lock before DbBusy (default 5 s).
    static void setBusyTimeout(int milliseconds);

    QString path() const;
    DbFormat format() const;

    // Values are bound positionally to "?" placeholders. A failing statement throws DbError.
    Recordset query(const QString &sql, const QVariantList &params = {});
    // The rows one at a time as the database gives them, so that work on a
    // row can start before the last one is read. `handle` returns false to
    // stop; so does forEachRow then.
    bool forEachRow(const QString &sql, const QVariantList &params,
                    const std::function<bool(QVariantList &row)> &handle, QStringList *fieldNames = nullptr);
    int exec(const QString &sql, const QVariantList &params = {}); // rows affected
    QVariant lastInsertId() const;
    // Several ";"-separated statements without parameters (schema scripts).
    void execScript(const QString &sql);
    // Reads every page of an SQLite file once, as a damaged file can have an intact
    // schema; throws DbError when it is damaged. A Jet file is checked as it is read.
    void checkIntact();

    // Schema
    QStringList tables();
    bool hasTable(const QString &table);
    std::vector<ColumnInfo> columns(const QString &table);
    bool hasColumn(const QString &table, const QString &column);

    // Schema changes (SQLite only). Names are quoted here, never taken as SQL.
    void addColumn(const QString &table, const QString &column, const QString &declaredType);
    void renameColumn(const QString &table, const QString &from, const QString &to);
    void dropColumn(const QString &table, const QString &column); // rebuilds the table when indexed
    // Gives `column` a new declared type (e.g. "TEXT COLLATE NOCASE") by rebuilding the
    // table in one transaction; values, column order, keys and indexes are kept. A whole
    // floating-point number given a text type is written without its fraction ("5").
    void changeColumnType(const QString &table, const QString &column, const QString &declaredType);

    // RAII transaction: rolls back unless commit() was called. Nests (inner ones are savepoints).
    // On a writable file it takes the write lock at once, waiting for another writer as a
    // single statement does (a read lock held first could only fail on the upgrade).
    class Transaction
    {
      public:
        explicit Transaction(Database &db);
        ~Transaction();
        void commit();

      private:
        Database &m_db;
        bool m_done = false;
        int m_level = 0;
    };

    struct Impl;

  private:
    explicit Database(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

// "name" quoted as an SQL identifier ("a""b" for a"b).
QString quoteIdentifier(const QString &name);

// Writes every table of a Jet file into a new SQLite file (one transaction), with the keys
// and indexes of a Jet 4 file. Throws DbError when `sqlitePath` exists or anything
// fails; no partial file is left behind.
void convertJetToSqlite(const QString &jetPath, const QString &sqlitePath);
// The other way: every table of an SQLite file into a new Jet file made from an
// empty Access-made one, with the keys and indexes the SQLite file declares (help
// texts as Memo columns).
void convertSqliteToJet(const QString &sqlitePath, const QString &emptyAccessFile, const QString &jetPath);

} // namespace ht
