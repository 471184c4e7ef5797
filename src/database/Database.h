#pragma once
// The one database layer: opens a help-text, language-definition or index-text
// database by path (SQLite, or a Jet .mdb/.vws file recognised by its header and
// copied into an in-memory SQLite database for reading), runs parameterised SQL,
// returns recordset-like results, and frames writes in transactions.
// Parts never talk to SQLite or libmdb directly.

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantList>
#include <memory>
#include <stdexcept>
#include <vector>

namespace ht {

class DbError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class DbFormat { Missing, SQLite, Jet, Unknown };
DbFormat detectDatabaseFormat(const QString &path); // by the file's header, never its extension

// A fully read result: rows of values, navigated like a classic recordset.
class Recordset {
public:
    Recordset() = default;
    Recordset(QStringList fields, std::vector<QVariantList> rows);

    const QStringList &fields() const { return m_fields; }
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

    const std::vector<QVariantList> &rows() const { return m_rows; }

private:
    QStringList m_fields;
    std::vector<QVariantList> m_rows;
    int m_pos = 0;
};

struct ColumnInfo {
    QString name;
    QString type;   // declared SQL type, upper case ("TEXT", "INTEGER", ...)
    bool isText() const;
};

class Database {
public:
    enum class Mode { ReadOnly, ReadWrite };
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // Throws DbError when the file is missing, not a database, or cannot be opened in `mode`.
    // A Jet file can only be opened ReadOnly.
    static std::unique_ptr<Database> open(const QString &path, Mode mode = Mode::ReadWrite);
    // Creates a new, empty SQLite database file (fails when the file exists).
    static std::unique_ptr<Database> create(const QString &path);

    QString path() const;
    DbFormat format() const;

    // Values are bound positionally to "?" placeholders.
    Recordset query(const QString &sql, const QVariantList &params = {});
    int exec(const QString &sql, const QVariantList &params = {}); // rows affected
    QVariant lastInsertId() const;

    // Schema
    QStringList tables();
    bool hasTable(const QString &table);
    std::vector<ColumnInfo> columns(const QString &table);
    bool hasColumn(const QString &table, const QString &column);

    // RAII transaction: rolls back unless commit() was called.
    class Transaction {
    public:
        explicit Transaction(Database &db);
        ~Transaction();
        void commit();
    private:
        Database &m_db;
        bool m_done = false;
    };

    struct Impl;
private:
    explicit Database(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

} // namespace ht
