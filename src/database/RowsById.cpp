#include "database/RowsById.h"

#include "database/Database.h"

namespace ht
{

RowsById::RowsById(Database &db, const QString &table, const QString &idColumn, const QVariant &language) : m_db(db)
{
    QString sql = QStringLiteral("SELECT %1, rowid FROM %2").arg(quoteIdentifier(idColumn), quoteIdentifier(table));
    QVariantList params;
    if (!language.isNull()) {
        sql += QStringLiteral(" WHERE Language = ?");
        params << language;
    }
    try {
        for (const QVariantList &row : m_db.query(sql, params).rows())
            if (!row[0].isNull())
                m_rows[row[0].toLongLong()] << row[1].toLongLong();
    } catch (const DbError &) {
        m_usable = false; // a WITHOUT ROWID table: keyed by design, so searching by ID is fast anyway
    }
}

QString RowsById::narrowed(const QString &sql, QVariantList &params, qlonglong id) const
{
    QString body = sql.trimmed();
    if (body.endsWith(QLatin1Char(';')))
        body.chop(1);
    const QList<qlonglong> rows = m_rows.value(id);
    if (rows.isEmpty())
        return body + QStringLiteral(" AND 0"); // no row: SQLite reads none
    QStringList marks;
    for (qlonglong rowid : rows) {
        marks << QStringLiteral("?");
        params << rowid;
    }
    return body + QStringLiteral(" AND rowid IN (%1)").arg(marks.join(QStringLiteral(", ")));
}

int RowsById::exec(const QString &sql, const QVariantList &params, qlonglong id)
{
    if (!m_usable)
        return m_db.exec(sql, params);
    QVariantList all = params;
    const QString narrow = narrowed(sql, all, id);
    return m_db.exec(narrow, all);
}

Recordset RowsById::query(const QString &sql, const QVariantList &params, qlonglong id)
{
    if (!m_usable)
        return m_db.query(sql, params);
    QVariantList all = params;
    const QString narrow = narrowed(sql, all, id);
    return m_db.query(narrow, all);
}

void RowsById::insert(const QString &sql, const QVariantList &params, qlonglong id)
{
    m_db.exec(sql, params);
    if (m_usable)
        m_rows[id] << m_db.lastInsertId().toLongLong();
}

} // namespace ht
