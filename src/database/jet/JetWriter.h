#pragma once
// Changing values of existing rows in a Jet 4 file held in memory, the way Jet
// itself does: the row stays in its slot when its page can take it, moves to
// an overflow row otherwise; long values go inline, into one long-value row or
// a chain of them; new pages are added at the end and registered in the usage
// maps. Rows are added and deleted the same way; the indexes of their tables
// are left to the caller, who rebuilds them.

#include "database/jet/JetTable.h"

#include "database/jet/JetRows.h"

#include <QHash>
#include <QVariant>
#include <functional>
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
    // Throws DbError, with nothing of this row changed, when a value does not
    // fit its column or the file's layout is not one the writer knows, and
    // when a column is indexed unless the caller rebuilds the indexes.
    void updateRow(const TableDef &table, RowPointer slot, const std::vector<ColumnChange> &changes,
                   bool indexesRebuilt = false);
    // A new row after the table's last one, for building files.
    RowPointer appendRow(const TableDef &table, const std::vector<ColumnChange> &values);
    // A new row on the first of the table's pages with room for it, else on a
    // new page. An autonumber column left null gets the table's next number.
    RowPointer insertRow(const TableDef &table, const std::vector<ColumnChange> &values);
    // The row flagged deleted and emptied, with its overflow row and long values.
    void deleteRow(const TableDef &table, RowPointer slot);
    // Many rows at once: each page is laid out once, however many of its rows go.
    void deleteRows(const TableDef &table, const std::vector<RowPointer> &places);

  private:
    void applyChange(const TableDef &table, StoredRow &row, const ColumnChange &change, std::vector<RowPointer> &freed);
    QByteArray longValueHeader(const TableDef &table, const Column &column, const QByteArray &data);
    RowPointer addLongValueRow(const TableDef &table, const Column &column, const QByteArray &data);
    void placeRow(const TableDef &table, RowPointer slot, const QByteArray &bytes);
    RowPointer addOverflowRow(const TableDef &table, quint32 notOnPage, const QByteArray &bytes);
    quint32 newPage(quint32 ownerMap, quint32 freeMap, quint32 tableDefPage, bool longValues);
    RowPointer addRow(const TableDef &table, std::vector<ColumnChange> values, bool anyPage);
    bool takesRow(const TableDef &table, quint32 page, const QByteArray &bytes);
    // The first of the map's pages `takes` the row on, looked at in their order once a round; 0 when none.
    quint32 firstPageTaking(quint32 map, const std::function<bool(quint32)> &takes);
    void markDeleted(RowPointer at);
    void addToRowCount(const TableDef &table, int delta);
    bool replaceRowOnPage(quint32 page, int row, const QByteArray &bytes, quint16 flags);
    [[noreturn]] void refuse(const QString &why) const;

    Image &m_image;
    QHash<quint32, quint32> m_lastPage; // per page map, the page that took the last new row
    struct PagesWithRoom {
        std::vector<quint32> pages;
        size_t next = 0; // those before it are full
    };
    QHash<quint32, PagesWithRoom> m_pagesWithRoom; // per page map
};

} // namespace ht::jet
