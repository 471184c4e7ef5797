#include "database/Database.h"

#include "database/DatabaseImpl.h"
#include "database/JetFile.h"

#include <QSqlRecord>
#include <optional>
#include <sqlite3.h>

namespace ht
{

QString quoteIdentifier(const QString &name)
{
    QString quoted = name;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QStringList Database::tables()
{
    if (d->jet)
        return d->jet->tableNames();
    QStringList names;
    const Recordset rs = query(QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE "
                                              "'sqlite\\_%' ESCAPE '\\' ORDER BY rowid"));
    for (const QVariantList &row : rs.rows())
        names << row[0].toString();
    return names;
}

bool Database::hasTable(const QString &table)
{
    return tables().contains(table, Qt::CaseInsensitive);
}

std::vector<ColumnInfo> Database::columns(const QString &table)
{
    if (d->jet && !d->ensureJetTable(table))
        return {};
    std::vector<ColumnInfo> result;
    const Recordset rs = query(QStringLiteral("SELECT name, type FROM pragma_table_info(?) ORDER BY cid"), {table});
    for (const QVariantList &row : rs.rows())
        result.push_back({row[0].toString(), row[1].toString().toUpper()});
    return result;
}

bool Database::hasColumn(const QString &table, const QString &column)
{
    for (const ColumnInfo &c : columns(table))
        if (c.name.compare(column, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

namespace
{

struct ColumnDef {
    QString name;
    QString type;
    QString collation;
    bool notNull = false;
    QVariant defaultValue; // SQL text of the default, null when none
    int pk = 0;            // position in the primary key, 0 when not part of it
    bool autoIncrement = false;
    QString value; // SQL of the value the rebuilt table takes over
};

} // namespace

// Rebuilds `table` with `column` given `newType`, or without `column` when newType is empty.
// Indexes and triggers are recreated (those on a dropped column are dropped with it).
static void rebuildTable(Database &db, sqlite3 *handle, const QString &table, const QString &column,
                         const std::optional<QString> &newType)
{
    const Recordset info = db.query(
        QStringLiteral("SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info(?) ORDER BY cid"),
        {table});
    if (info.recordCount() == 0)
        throw DbError(QStringLiteral("No table %1").arg(table).toStdString());
    // The schema's own spelling of the table name.
    const QString realTable = db.query(QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'table' AND "
                                                      "name = ? COLLATE NOCASE"),
                                       {table})
                                  .rows()
                                  .front()[0]
                                  .toString();

    std::vector<ColumnDef> defs;
    bool found = false;
    for (const QVariantList &row : info.rows()) {
        ColumnDef c{row[0].toString(), row[1].toString(), {}, row[2].toInt() != 0, row[3], row[4].toInt(), false, {}};
        c.value = quoteIdentifier(c.name);
        const char *type = nullptr, *collation = nullptr;
        int notNull = 0, primaryKey = 0, autoinc = 0;
        if (sqlite3_table_column_metadata(handle, "main", realTable.toUtf8().constData(), c.name.toUtf8().constData(),
                                          &type, &collation, &notNull, &primaryKey, &autoinc) == SQLITE_OK) {
            c.collation = QString::fromUtf8(collation);
            c.autoIncrement = autoinc != 0;
        }
        if (c.name.compare(column, Qt::CaseInsensitive) == 0) {
            found = true;
            if (!newType)
                continue;
            c.type = *newType;
            c.collation.clear(); // the new declaration says it all
            // A whole number of a floating-point column becomes "5" as text, not SQLite's "5.0".
            if (ColumnInfo{c.name, c.type.toUpper()}.isText())
                c.value = QStringLiteral("CASE WHEN typeof(%1) = 'real' AND %1 = CAST(%1 AS INTEGER) "
                                         "THEN CAST(CAST(%1 AS INTEGER) AS TEXT) ELSE %1 END")
                              .arg(quoteIdentifier(c.name));
        }
        defs.push_back(c);
    }
    if (!found)
        throw DbError(QStringLiteral("No column %1 in table %2").arg(column, table).toStdString());

    int pkCount = 0;
    for (const ColumnDef &c : defs)
        pkCount += c.pk > 0 ? 1 : 0;
    QStringList columnSql, names, values, pkNames;
    for (const ColumnDef &c : defs) {
        QString sql = quoteIdentifier(c.name) + QLatin1Char(' ') + c.type;
        if (!c.collation.isEmpty() && c.collation.compare(QLatin1String("BINARY"), Qt::CaseInsensitive) != 0)
            sql += QStringLiteral(" COLLATE ") + c.collation;
        if (pkCount == 1 && c.pk > 0)
            sql += c.autoIncrement ? QStringLiteral(" PRIMARY KEY AUTOINCREMENT") : QStringLiteral(" PRIMARY KEY");
        if (c.notNull)
            sql += QStringLiteral(" NOT NULL");
        if (!c.defaultValue.isNull())
            sql += QStringLiteral(" DEFAULT ") + c.defaultValue.toString();
        columnSql << sql;
        names << quoteIdentifier(c.name);
        values << c.value;
        if (c.pk > 0)
            pkNames << quoteIdentifier(c.name); // pragma order is column order; good enough for a key
    }
    if (pkCount > 1)
        columnSql << QStringLiteral("PRIMARY KEY (%1)").arg(pkNames.join(QStringLiteral(", ")));

    // Indexes (not the automatic ones) and triggers to create again afterwards.
    QStringList recreate;
    const Recordset objects = db.query(
        QStringLiteral("SELECT type, name, sql FROM sqlite_schema WHERE tbl_name = ? AND type IN ('index', 'trigger') "
                       "AND sql IS NOT NULL"),
        {realTable});
    for (const QVariantList &row : objects.rows()) {
        if (!newType && row[0].toString() == QLatin1String("index")) {
            const Recordset indexed = db.query(
                QStringLiteral("SELECT 1 FROM pragma_index_info(?) WHERE name = ? COLLATE NOCASE"), {row[1], column});
            if (indexed.recordCount() > 0)
                continue;
        }
        recreate << row[2].toString();
    }
    const bool hasSequence =
        db.query(QStringLiteral("SELECT 1 FROM sqlite_schema WHERE name = 'sqlite_sequence'")).recordCount() > 0;
    const Recordset sequence =
        hasSequence ? db.query(QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = ?"), {realTable})
                    : Recordset();

    const QString temp = quoteIdentifier(realTable + QStringLiteral("_rebuild"));
    Database::Transaction transaction(db);
    db.exec(QStringLiteral("CREATE TABLE %1 (%2)").arg(temp, columnSql.join(QStringLiteral(", "))));
    db.exec(QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM %4")
                .arg(temp, names.join(QStringLiteral(", ")), values.join(QStringLiteral(", ")),
                     quoteIdentifier(realTable)));
    db.exec(QStringLiteral("DROP TABLE %1").arg(quoteIdentifier(realTable)));
    db.exec(QStringLiteral("ALTER TABLE %1 RENAME TO %2").arg(temp, quoteIdentifier(realTable)));
    for (const QString &sql : recreate)
        db.exec(sql);
    if (sequence.recordCount() > 0)
        db.exec(QStringLiteral("UPDATE sqlite_sequence SET seq = max(seq, ?) WHERE name = ?"),
                {sequence.rows().front()[0], realTable});
    transaction.commit();
}

static void requireWritable(const Database &db)
{
    if (db.format() != DbFormat::SQLite)
        throw DbError(
            QStringLiteral("The schema of a Jet database cannot be changed here (%1)").arg(db.path()).toStdString());
}

void Database::addColumn(const QString &table, const QString &column, const QString &declaredType)
{
    requireWritable(*this);
    exec(QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3")
             .arg(quoteIdentifier(table), quoteIdentifier(column), declaredType));
}

void Database::renameColumn(const QString &table, const QString &from, const QString &to)
{
    requireWritable(*this);
    exec(QStringLiteral("ALTER TABLE %1 RENAME COLUMN %2 TO %3")
             .arg(quoteIdentifier(table), quoteIdentifier(from), quoteIdentifier(to)));
}

void Database::dropColumn(const QString &table, const QString &column)
{
    requireWritable(*this);
    try {
        exec(QStringLiteral("ALTER TABLE %1 DROP COLUMN %2").arg(quoteIdentifier(table), quoteIdentifier(column)));
    } catch (const DbError &) {
        // SQLite refuses to drop indexed or key columns in place.
        rebuildTable(*this, d->handle, table, column, std::nullopt);
    }
}

void Database::changeColumnType(const QString &table, const QString &column, const QString &declaredType)
{
    requireWritable(*this);
    rebuildTable(*this, d->handle, table, column, declaredType);
}

} // namespace ht
