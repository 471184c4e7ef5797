#pragma once
// Adds tables and rows to a Jet 4 file held in memory, laid out as Access lays
// them out: a table definition page, a page of usage maps, data and long-value
// pages, and the table's row in the catalog with the catalog's two indexes
// brought up to date. Used to make Access help-text databases from an empty
// Access-made file. A table's indexes are laid out with it, as Access lays out
// a primary key or an index of the table design, and filled once its rows are in.

#include "database/jet/JetTable.h"
#include "database/jet/JetWriter.h"

#include <QVariantList>

namespace ht::jet
{

struct NewColumn {
    QString name;
    quint8 type = TypeLong; // TypeLong, TypeInteger, TypeText or TypeMemo
    quint16 characters = 0; // Text only
};

struct NewIndex {
    QString name;             // "PrimaryKey" for a primary key, as Access names it
    std::vector<int> columns; // positions in the columns given to addTable, all ascending
    bool primaryKey = false;  // unique, and no key column may be empty
    bool unique = false;
};

class Builder
{
  public:
    explicit Builder(Image &image);
    // Throws DbError when the name is taken or not made of ASCII letters (the
    // catalog's index keys are only known for those), or the file's catalog is
    // not of the layout Access gives an empty database.
    // Also when an index names no column, one not given or more than ten.
    TableDef addTable(const QString &name, const std::vector<NewColumn> &columns,
                      const std::vector<NewIndex> &indexes = {});
    // `values` in the order of the columns given to addTable.
    void appendRow(const TableDef &table, const QVariantList &values);
    // Every index of the table filled from its rows, once they are all appended.
    // Throws DbError when a key cannot be encoded or a unique key is there twice.
    void buildIndexes(const TableDef &table);

  private:
    void addCatalogRow(const QString &name, quint32 tableDefPage);

    Image &m_image;
    Writer m_writer;
};

// The key an ascending index gives a name of ASCII letters (any case), as the
// catalog's index by name holds it; empty when the name holds anything else.
QByteArray letterIndexKey(const QString &text);

} // namespace ht::jet
