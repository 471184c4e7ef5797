#include "database/Database.h"
#include "database/DatabaseImpl.h"
#include "database/JetFile.h"

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

// One attempt at copying; `withKey` makes a single autonumber column the INTEGER PRIMARY KEY.
void copyTableOnce(JetFile &jet, const QString &table, QSqlDatabase &db, bool withKey)
{
    QSqlQuery insert(db);
    jet.readTable(
        table,
        [&](const std::vector<JetColumn> &columns) {
            if (columns.empty())
                throw DbError(QStringLiteral("Jet table %1 has no columns").arg(table).toStdString());
            int autoNumbers = 0;
            for (const JetColumn &c : columns)
                autoNumbers += c.autoNumber ? 1 : 0;
            QStringList defs, marks;
            for (const JetColumn &c : columns) {
                const bool key = withKey && autoNumbers == 1 && c.autoNumber;
                defs << quoteIdentifier(c.name) + QLatin1Char(' ') +
                            (key ? QStringLiteral("INTEGER PRIMARY KEY") : c.sqlType);
                marks << QStringLiteral("?");
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
}

} // namespace

void copyJetTable(JetFile &jet, const QString &table, const QString &connection)
{
    QSqlDatabase db = QSqlDatabase::database(connection, false);
    try {
        copyTableOnce(jet, table, db, true);
    } catch (const RowRefused &) {
        // An autonumber column with repeated values cannot be the key: copy it plain.
        QSqlQuery drop(db);
        drop.exec(QStringLiteral("DROP TABLE IF EXISTS %1").arg(quoteIdentifier(table)));
        copyTableOnce(jet, table, db, false);
    }
}

void convertJetToSqlite(const QString &jetPath, const QString &sqlitePath)
{
    if (QFileInfo::exists(sqlitePath))
        throw DbError(QStringLiteral("Cannot convert, the file exists (%1)").arg(sqlitePath).toStdString());
    if (detectDatabaseFormat(jetPath) != DbFormat::Jet)
        throw DbError(QStringLiteral("Not a Jet database (%1)").arg(jetPath).toStdString());
    auto jet = JetFile::open(jetPath);

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
            for (const QString &table : jet->tableNames())
                copyJetTable(*jet, table, impl.connection);
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
