#include "database/HelpTextFixture.h"

#include "common/IniFile.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace ht::test
{

QString schemaFile(const QString &name)
{
    return sourceDir() + QStringLiteral("/src/database/schema/") + name;
}

QString jetTestFile(const QString &name)
{
    const QString path = sourceDir() + QStringLiteral("/tests/data/jet/") + name + QStringLiteral(".mdb");
    // A missing file reads as empty: the test fails here, naming it, not later on odd data.
    if (QFileInfo(path).size() == 0)
        ADD_FAILURE() << "test file missing or empty: " << path.toStdString();
    return path;
}

QString writeIn(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes)
{
    writeFileBytes(dir.filePath(name), bytes);
    return dir.filePath(name);
}

QStringList filesIn(const QString &dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

QString columnType(Database &db, const QString &table, const QString &column)
{
    for (const ColumnInfo &c : db.columns(table))
        if (c.name == column)
            return c.type;
    return QStringLiteral("<none>");
}

static void runScripts(Database &db, const QStringList &names)
{
    Database::Transaction t(db);
    for (const QString &name : names) {
        const QByteArray script = readFileBytes(schemaFile(name));
        if (script.isEmpty())
            throw DbError(("missing schema script " + name).toStdString());
        db.execScript(QString::fromUtf8(script));
    }
    t.commit();
}

void makeHelpTextDb(const QString &path, bool materialChange)
{
    QStringList scripts{QStringLiteral("helptext.sql")};
    if (materialChange)
        scripts << QStringLiteral("helptext_materialchange.sql");
    runScripts(*Database::create(path), scripts);
}

void makeLookupDb(const QString &path, const std::vector<LookupRow> &rows, bool withSubstBy)
{
    auto db = Database::create(path);
    runScripts(*db, {QStringLiteral("languages.sql")});
    if (!withSubstBy)
        db->dropColumn(QStringLiteral("LookupLanguages"), QStringLiteral("SubstBy"));
    for (const LookupRow &r : rows)
        db->exec(QStringLiteral("INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage) "
                                "VALUES (?, ?, ?, ?, ?)"),
                 {r.number, r.name, r.font, r.layout, r.codePage});
}

void addLanguage(const QString &path, int number, const QString &name, const QString &font)
{
    auto db = openRW(path);
    Database::Transaction t(*db);
    db->exec(QStringLiteral("INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (?, ?, ?, NULL)"),
             {number, name, font.isNull() ? QVariant() : QVariant(font)});
    db->exec(QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language, Device, Result, Function) "
                            "SELECT AlarmID, %1, 'Device ' || AlarmID || ' ' || %1, 'Result ' || AlarmID || ' ' || %1, "
                            "'Function ' || AlarmID || ' ' || %1 FROM AlarmDefinition")
                 .arg(number));
    db->exec(QStringLiteral("INSERT INTO WarningText (Warning_ID, Language, Function) "
                            "SELECT WarningID, %1, 'Warning ' || WarningID || ' ' || %1 FROM WarningDefinition")
                 .arg(number));
    if (db->hasTable(QStringLiteral("MaterialChangeText")))
        db->exec(QStringLiteral("INSERT INTO MaterialChangeText (MaterialChange_ID, Language, Text) "
                                "SELECT MaterialChangeID, %1, 'MaterialChange ' || MaterialChangeID || ' ' || %1 "
                                "FROM MaterialChangeDefinition")
                     .arg(number));
    t.commit();
}

std::unique_ptr<Database> openRW(const QString &path)
{
    return Database::open(path, Database::Mode::ReadWrite);
}

void dropIndexes(const QString &path)
{
    auto db = openRW(path);
    Database::Transaction t(*db);
    for (const QVariantList &table :
         db->query(QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'table'")).rows()) {
        const QString name = table[0].toString();
        const auto columns =
            db->query(QStringLiteral("SELECT name, type, pk, (SELECT count(*) FROM pragma_table_info(?) WHERE pk > 0) "
                                     "FROM pragma_table_info(?)"),
                      {name, name})
                .rows();
        QStringList defs;
        for (const QVariantList &c : columns) {
            const QString type = c[1].toString();
            defs << quoteIdentifier(c[0].toString()) + QLatin1Char(' ') + type +
                        (c[2].toInt() == 1 && c[3].toInt() == 1 && type == QLatin1String("INTEGER")
                             ? QStringLiteral(" PRIMARY KEY")
                         : type == QLatin1String("TEXT") ? QStringLiteral(" COLLATE NOCASE")
                                                         : QString());
        }
        db->exec(QStringLiteral("CREATE TABLE plain_copy (%1)").arg(defs.join(QStringLiteral(", "))));
        db->exec(QStringLiteral("INSERT INTO plain_copy SELECT * FROM %1").arg(quoteIdentifier(name)));
        db->exec(QStringLiteral("DROP TABLE %1").arg(quoteIdentifier(name)));
        db->exec(QStringLiteral("ALTER TABLE plain_copy RENAME TO %1").arg(quoteIdentifier(name)));
    }
    t.commit();
}

QStringList dump(const QString &path, const QString &sql)
{
    QStringList lines;
    for (const QVariantList &row : Database::open(path, Database::Mode::ReadOnly)->query(sql).rows()) {
        QStringList values;
        for (const QVariant &v : row)
            values << (v.isNull() ? QStringLiteral("<null>") : v.toString());
        lines << values.join(u'|');
    }
    return lines;
}

QString DbTestContext::savedHelpTextDb() const
{
    return profile::readString(ini(), QStringLiteral("Setup"), QStringLiteral("StandardHelpTextDB"), QString());
}

QString DbTestContext::newHelpDb(bool materialChange) const
{
    makeHelpTextDb(path(QStringLiteral("Help.mdb")), materialChange);
    return path(QStringLiteral("Help.mdb"));
}

} // namespace ht::test
