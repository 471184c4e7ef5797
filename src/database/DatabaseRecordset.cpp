#include "database/Database.h"

namespace ht
{

Recordset::Recordset(QStringList fields, std::vector<QVariantList> rows)
    : m_fields(std::move(fields)), m_rows(std::move(rows))
{
}

int Recordset::fieldIndex(const QString &name) const
{
    for (int i = 0; i < m_fields.size(); ++i)
        if (m_fields[i].compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

QVariant Recordset::value(const QString &field) const
{
    const int column = fieldIndex(field);
    if (column < 0)
        throw DbError(QStringLiteral("Item not found in this collection: %1").arg(field).toStdString());
    return value(column);
}

QVariant Recordset::value(int column) const
{
    if (eof() || m_pos < 0)
        throw DbError("No current record.");
    if (column < 0 || column >= m_fields.size())
        throw DbError(QStringLiteral("No column %1 in this record").arg(column).toStdString());
    return m_rows[size_t(m_pos)][column];
}

bool ColumnInfo::isText() const
{
    // SQLite's own affinity rule: INT wins, then CHAR/CLOB/TEXT.
    if (type.contains(QLatin1String("INT")))
        return false;
    return type.contains(QLatin1String("CHAR")) || type.contains(QLatin1String("CLOB")) ||
           type.contains(QLatin1String("TEXT"));
}

} // namespace ht
