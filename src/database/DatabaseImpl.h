#pragma once
// Internal state of one open database; shared by the Database*.cpp files only.

#include "database/Database.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <memory>

struct sqlite3;

namespace ht
{

class JetFile;
struct JetPages;

struct Database::Impl {
    QString connection; // unique QSqlDatabase connection name, removed with the object
    QSqlDatabase db;
    sqlite3 *handle = nullptr;
    QString path;
    DbFormat format = DbFormat::SQLite;
    Mode mode = Mode::ReadWrite;
    QVariant lastInsertId;
    int transactionDepth = 0;
    int busyWaitMs = 5000;              // the busy timeout as it was when opened
    std::unique_ptr<JetFile> jet;       // set for a Jet file: tables are copied in on first use
    std::unique_ptr<JetPages> jetPages; // set for a Jet file opened ReadWrite

    Impl();
    ~Impl();

    // Opens the connection on `name` (a file path or ":memory:") and installs the caseless text rules.
    void openConnection(const QString &name, bool readOnly);
    // Prepares, binds and executes; copies Jet tables in as the statement needs them.
    QSqlQuery run(const QString &sql, const QVariantList &params);
    // Throws DbError, or DbBusy when SQLite's result code says that another connection holds a lock.
    [[noreturn]] void fail(const QString &what, const QString &detail, int sqliteCode = 0) const;

    // Jet only: copies `table` (any case) into the memory database unless already there.
    // Returns false when the Jet file has no such table.
    bool ensureJetTable(const QString &table);
    bool hasSqliteTable(const QString &table);

    // Jet opened ReadWrite (DatabaseJetPages.cpp): the page code reads the file,
    // SQLite's authorizer refuses what cannot be written, the changed rows go
    // into the file on commit.
    void openJetForWriting();
    // For reading, the page code reads what it knows (Jet 4, not encoded); libmdb the rest.
    void openJetForReading();
    void copyJetTableByPages(const QString &table);
    void writeJetChanges();
    // After a failed write: the changed tables are read from the file again on their next use.
    void dropJetChanges();
};

} // namespace ht
