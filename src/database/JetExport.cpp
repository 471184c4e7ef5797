// Writing an SQLite help-text database out as an Access (Jet 4) file.
#include "database/Database.h"

#include "common/FileIo.h"
#include "database/jet/JetBuilder.h"
#include "database/jet/JetCheck.h"

#include <QFileInfo>
#include <QSet>
#include <algorithm>

namespace ht
{

namespace
{

// The help texts themselves may be long: Access keeps them in Memo columns.
bool holdsLongText(const QString &column)
{
    static const QSet<QString> names{QStringLiteral("device"), QStringLiteral("result"), QStringLiteral("function"),
                                     QStringLiteral("text")};
    return names.contains(column.toLower());
}

jet::NewColumn accessColumn(const ColumnInfo &c)
{
    if (c.type.contains(QLatin1String("INT")))
        return {c.name, jet::TypeLong};
    if (holdsLongText(c.name) || c.type.contains(QLatin1String("MEMO")))
        return {c.name, jet::TypeMemo};
    return {c.name, jet::TypeText, 255};
}

// The keys the SQLite table declares (primary key, UNIQUE, CREATE INDEX), as
// Access indexes: the primary key first and named as Access names it, then the
// others in the order they were declared. One on an expression or on part of the
// rows has no Access counterpart and is refused.
std::vector<jet::NewIndex> declaredIndexes(Database &db, const QString &table, const std::vector<ColumnInfo> &columns)
{
    const auto position = [&](const QString &name) {
        for (size_t i = 0; i < columns.size(); ++i)
            if (columns[i].name.compare(name, Qt::CaseInsensitive) == 0)
                return int(i);
        return -1;
    };
    const QString quoted = quoteIdentifier(table);
    std::vector<jet::NewIndex> indexes;
    std::vector<std::pair<int, int>> primaryKey; // (place in the key, column)
    for (const QVariantList &row : db.query(QStringLiteral("PRAGMA table_info(%1)").arg(quoted)).rows())
        if (row.value(5).toInt() > 0)
            primaryKey.emplace_back(row.value(5).toInt(), position(row.value(1).toString()));
    std::sort(primaryKey.begin(), primaryKey.end());
    if (!primaryKey.empty()) {
        jet::NewIndex key{QStringLiteral("PrimaryKey"), {}, true, true};
        for (const auto &[place, column] : primaryKey)
            key.columns.push_back(column);
        indexes.push_back(key);
    }

    std::vector<QVariantList> list = db.query(QStringLiteral("PRAGMA index_list(%1)").arg(quoted)).rows();
    std::sort(list.begin(), list.end(),
              [](const QVariantList &a, const QVariantList &b) { return a.value(0).toInt() > b.value(0).toInt(); });
    for (const QVariantList &entry : list) {
        const QString name = entry.value(1).toString();
        const QString origin = entry.value(3).toString();
        if (origin == QLatin1String("pk"))
            continue;
        const auto refuse = [&](const QString &why) {
            throw DbError(QStringLiteral("Index %1 of table %2 %3: an Access file has no such index")
                              .arg(name, table, why)
                              .toStdString());
        };
        if (entry.value(4).toInt() != 0)
            refuse(QStringLiteral("covers only some rows"));
        jet::NewIndex index{origin == QLatin1String("c") ? name : QString(), {}, false, entry.value(2).toInt() != 0};
        for (const QVariantList &key :
             db.query(QStringLiteral("PRAGMA index_info(%1)").arg(quoteIdentifier(name))).rows()) {
            const int column = position(key.value(2).toString());
            if (key.value(1).toInt() < 0 || column < 0)
                refuse(QStringLiteral("is on an expression"));
            index.columns.push_back(column);
            if (origin != QLatin1String("c"))
                index.name += columns[size_t(column)].name; // Access names an index of a design after its columns
        }
        const bool twice = std::any_of(indexes.begin(), indexes.end(), [&](const jet::NewIndex &other) {
            return other.columns == index.columns && (other.unique || !index.unique);
        });
        if (twice)
            continue; // a UNIQUE on the primary key's columns, say: the index there serves it
        for (int n = 2; std::any_of(
                 indexes.begin(), indexes.end(),
                 [&](const jet::NewIndex &other) { return other.name.compare(index.name, Qt::CaseInsensitive) == 0; });
             ++n)
            index.name = index.name.left(60) + QString::number(n);
        indexes.push_back(index);
    }
    return indexes;
}

} // namespace

void convertSqliteToJet(const QString &sqlitePath, const QString &emptyAccessFile, const QString &jetPath)
{
    if (QFileInfo::exists(jetPath))
        throw DbError(QStringLiteral("Cannot convert, the file exists (%1)").arg(jetPath).toStdString());
    QByteArray bytes;
    QString why;
    if (readRegularFile(emptyAccessFile, kMaxDatabaseBytes, true, bytes, &why) != FileRead::Ok)
        throw DbError(QStringLiteral("Cannot read %1: %2").arg(emptyAccessFile, why).toStdString());
    jet::Image image(bytes, emptyAccessFile);
    jet::Builder builder(image);
    auto source = Database::open(sqlitePath, Database::Mode::ReadOnly);
    for (const QString &table : source->tables()) {
        std::vector<jet::NewColumn> columns;
        QStringList names;
        const std::vector<ColumnInfo> sourceColumns = source->columns(table);
        for (const ColumnInfo &c : sourceColumns) {
            columns.push_back(accessColumn(c));
            names << quoteIdentifier(c.name);
        }
        const jet::TableDef def = builder.addTable(table, columns, declaredIndexes(*source, table, sourceColumns));
        source->forEachRow(QStringLiteral("SELECT %1 FROM %2 ORDER BY rowid")
                               .arg(names.join(QStringLiteral(", ")), quoteIdentifier(table)),
                           {}, [&](QVariantList &row) {
                               builder.appendRow(def, row);
                               return true;
                           });
        builder.buildIndexes(def);
    }
    const QStringList problems = jet::checkStructure(image);
    if (!problems.isEmpty())
        throw DbError(QStringLiteral("The Access file made from %1 is not sound: %2")
                          .arg(sqlitePath, problems.first())
                          .toStdString());
    if (!replaceFileDurably(jetPath, image.bytes().constData(), image.bytes().size(), &why))
        throw DbError(QStringLiteral("Cannot write %1: %2").arg(jetPath, why).toStdString());
}

} // namespace ht
