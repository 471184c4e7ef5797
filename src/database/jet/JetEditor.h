#pragma once
// One round of changes to an Access (Jet 4) file: its rows read with where
// they lie, rows changed, added and deleted in memory, and the file replaced
// in one step when everything is done. The indexes of a table whose rows were
// added or deleted or whose keys changed are rebuilt from its rows on commit.
// Nothing reaches the file before commit(); a failed or abandoned round leaves
// it as it was.

#include "database/jet/JetTable.h"
#include "database/jet/JetWriter.h"

#include <QSet>
#include <QVariantList>
#include <map>
#include <memory>

namespace ht::jet
{

class Editor
{
  public:
    // Throws DbError when the file cannot be changed: not an unencoded Jet 4
    // file, or of a layout the writer does not know.
    explicit Editor(const QString &path);
    Editor(const QString &path, const QByteArray &bytes); // the file as read before
    Editor(const Editor &) = delete;
    Editor &operator=(const Editor &) = delete;
    const QByteArray &bytes() const { return m_image.bytes(); }
    // Throws DbError when another program has the file open (a lock file beside it).
    void checkNotOpenElsewhere() const;

    std::vector<QString> tableNames() const;
    QString findTable(const QString &name) const;                      // the catalog's spelling, "" when absent
    const TableDef &table(const QString &name);                        // throws DbError when absent
    const std::vector<const Column *> &columnsOf(const QString &name); // in column-number order
    // Every live row: its slot and its values in column-number order. `visit`
    // may change rows; rows it moves to new overflow rows are not visited twice.
    void readRows(const QString &table, const std::function<void(RowPointer slot, const QVariantList &values)> &visit);
    // One live row's values, in column-number order.
    QVariantList rowValues(const QString &table, RowPointer slot);
    // Writes the values that differ from the row's; the rest of the row stays as it is.
    void updateRow(const QString &table, RowPointer slot, const QVariantList &values);
    // A new row, its values in column-number order as readRows gives them; each
    // column is written as given (a null QVariant stores NULL, and gives an
    // autonumber column the table's next number). Returns the row's slot.
    RowPointer insertRow(const QString &table, const QVariantList &values);
    void deleteRow(const QString &table, RowPointer slot);
    void deleteRows(const QString &table, const std::vector<RowPointer> &places); // each page rewritten once
    bool changed() const { return !m_image.changedPages().isEmpty(); }
    // Checks the changed file and that no other program has it open, then puts
    // it in place of the old one, flushed to the disk; throws DbError, with the
    // file as it was, when any of it fails.
    void commit();

    static QString lockFile(const QString &path); // "<base>.ldb"

  private:
    void keysWillChange(const TableDef &table);
    void checkKeysOf(const TableDef &table, RowPointer slot) const;
    void rebuildIndexes();
    template <typename Change> auto guarded(Change change);

    QString m_path;
    Image m_image;
    std::vector<CatalogEntry> m_catalog;
    // Read once per round; a std::map keeps references to them valid as more are read.
    std::map<QString, TableDef> m_tables;
    std::map<QString, std::vector<const Column *>> m_columnsInOrder;
    Writer m_writer{m_image}; // keeps, for the round, where new rows went last
    QSet<QString> m_changedTables;
    QSet<QString> m_keysChanged; // tables whose indexes are rebuilt on commit
    bool m_broken = false;
};

// The columns of a table in the order of their numbers, as rows list them.
std::vector<const Column *> columnsInOrder(const TableDef &table);

} // namespace ht::jet
