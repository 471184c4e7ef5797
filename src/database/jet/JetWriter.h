#pragma once
// Changing values of existing rows in a Jet 4 file held in memory, the way Jet
// itself does: the row stays in its slot when its page can take it, moves to
// an overflow row otherwise; long values go inline, into one long-value row or
// a chain of them; new pages are added at the end and registered in the usage
// maps. Indexed columns are never changed: their index would go stale.

#include "database/jet/JetTable.h"

#include "database/jet/JetRows.h"

#include <QHash>
#include <QVariant>
#include <vector>

namespace ht::jet
{

struct ColumnChange {
    const Column *column;
    QVariant value; // a null QVariant stores NULL
};

class Writer
{
  public:
    explicit Writer(Image &image) : m_image(image) {}
    // Throws DbError, with nothing of this row changed, when a column is
    // indexed, a value does not fit its column or the file's layout is not
    // one the writer knows.
    void updateRow(const TableDef &table, RowPointer slot, const std::vector<ColumnChange> &changes);
    // A new row after the table's last one, for building files: the table's
    // indexes are left to the caller.
    RowPointer appendRow(const TableDef &table, const std::vector<ColumnChange> &values);

  private:
    void applyChange(const TableDef &table, StoredRow &row, const ColumnChange &change, std::vector<RowPointer> &freed);
    QByteArray longValueHeader(const TableDef &table, const Column &column, const QByteArray &data);
    RowPointer addLongValueRow(const TableDef &table, const Column &column, const QByteArray &data);
    void placeRow(const TableDef &table, RowPointer slot, const QByteArray &bytes);
    RowPointer addOverflowRow(const TableDef &table, quint32 notOnPage, const QByteArray &bytes);
    quint32 newPage(quint32 ownerMap, quint32 freeMap, quint32 tableDefPage, bool longValues);
    void deleteRow(RowPointer at);
    bool replaceRowOnPage(quint32 page, int row, const QByteArray &bytes, quint16 flags);
    [[noreturn]] void refuse(const QString &why) const;

    Image &m_image;
    QHash<quint32, quint32> m_lastPage; // per page map, the page that took the last new row
};

} // namespace ht::jet
