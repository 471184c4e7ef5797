#pragma once
// Read access to a Jet (Access .mdb/.vws) file through libmdb. Only JetFile.cpp sees
// libmdb; the rest of the layer gets names, types and QVariant rows.
// libmdb trusts the file: on a damaged one it may crash or loop for ever. Every read
// therefore runs in a forked child process that streams the values back; a child that
// dies, stalls or talks too much makes the read fail with DbError instead.

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>
#include <vector>

namespace ht
{

struct JetColumn {
    QString name;
    int jetType = 0; // libmdb column type (MDB_TEXT, MDB_LONGINT, ...)
    QString sqlType; // the SQLite declaration the column gets when copied
    bool autoNumber = false;
};

class JetFile
{
  public:
    // Throws DbError when the file is missing, not a Jet file or damaged beyond reading.
    static std::unique_ptr<JetFile> open(const QString &path);
    ~JetFile();
    JetFile(const JetFile &) = delete;
    JetFile &operator=(const JetFile &) = delete;

    // A read whose child sends nothing for this long counts as hung (default 15 s).
    static void setIdleTimeout(int milliseconds);

    QStringList tableNames() const;               // user tables, catalog order
    QString findTable(const QString &name) const; // catalog spelling of `name` (any case), "" when absent

    // Reads one table: its columns first, then every row in file order. Text comes back as
    // QString (NULL as a null QString, "" as an empty one), whole numbers as qlonglong, Booleans as 0 / -1 (Jet's
    // True), floating and currency values as double, dates as ISO text, binary data as
    // QByteArray; other NULLs as a null QVariant. Throws DbError on unreadable data.
    void readTable(const QString &table, const std::function<void(const std::vector<JetColumn> &)> &onColumns,
                   const std::function<void(const QVariantList &)> &onRow);

  private:
    JetFile(QString path, QStringList tables);
    QString m_path;
    QStringList m_tables;
};

// The SQLite declaration a column of this Jet type gets when copied.
QString jetSqlType(int jetType);

// Creates `table` in the SQLite connection `connection` and copies every row into it.
// The caller frames the copy in a transaction.
void copyJetTable(JetFile &jet, const QString &table, const QString &connection);

} // namespace ht
