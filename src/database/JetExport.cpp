// Writing an SQLite help-text database out as an Access (Jet 4) file.
#include "database/Database.h"

#include "common/FileIo.h"
#include "database/jet/JetBuilder.h"
#include "database/jet/JetCheck.h"

#include <QFileInfo>
#include <QSet>

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
        for (const ColumnInfo &c : source->columns(table)) {
            columns.push_back(accessColumn(c));
            names << quoteIdentifier(c.name);
        }
        const jet::TableDef def = builder.addTable(table, columns);
        source->forEachRow(QStringLiteral("SELECT %1 FROM %2 ORDER BY rowid")
                               .arg(names.join(QStringLiteral(", ")), quoteIdentifier(table)),
                           {}, [&](QVariantList &row) {
                               builder.appendRow(def, row);
                               return true;
                           });
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
