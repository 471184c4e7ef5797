#include "support/FullDatabase.h"

#include "database/Database.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <vector>

namespace ht::bench
{

namespace
{

// A help text of about `length` characters, different for every item and language.
QString text(int id, int language, int length)
{
    QString t = QStringLiteral("Item %1, language %2: ").arg(id).arg(language);
    while (t.size() < length)
        t += QStringLiteral("check the sensor at station %1 and the cam setting, then restart the machine. ").arg(id);
    return t.left(length);
}

} // namespace

QString sourceDir()
{
    return QStringLiteral(HELPTEXT_SOURCE_DIR);
}

void makeFullAccessDatabase(const QString &path, int machines)
{
    QFile::remove(path);
    QFile::copy(sourceDir() + QStringLiteral("/tests/data/jet/helptext_keys.mdb"), path);
    QFile(path).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    auto db = Database::open(path);
    Database::Transaction t(*db);
    for (int language = 2000; language < 2007; ++language) {
        db->exec(QStringLiteral("INSERT INTO Language (Language, Name, Font) VALUES (?, ?, 'Arial')"),
                 {language, QStringLiteral("LANGUAGE %1").arg(language - 1996)});
        for (const auto &[text, id, definition, defId, field] :
             {std::array<const char *, 5>{"AlarmText", "Alarm_ID", "AlarmDefinition", "AlarmID", "Function"},
              std::array<const char *, 5>{"WarningText", "Warning_ID", "WarningDefinition", "WarningID", "Function"},
              std::array<const char *, 5>{"MaterialChangeText", "MaterialChange_ID", "MaterialChangeDefinition",
                                          "MaterialChangeID", "Text"}})
            db->exec(QStringLiteral("INSERT INTO %1 (%2, Language, %5) SELECT %4, ?, 'Text ' || %4 FROM %3")
                         .arg(QLatin1String(text), QLatin1String(id), QLatin1String(definition), QLatin1String(defId),
                              QLatin1String(field)),
                     {language});
    }
    for (int m = 3; m <= machines; ++m)
        for (const auto &[definition, id] :
             {std::pair{"AlarmDefinition", "AlarmID"}, std::pair{"WarningDefinition", "WarningID"},
              std::pair{"MaterialChangeDefinition", "MaterialChangeID"}}) {
            const int block = QLatin1String(definition).startsWith(QLatin1String("Material")) ? 1000 : 256;
            db->exec(QStringLiteral("UPDATE %1 SET MachineType = ? WHERE %2 > ? AND %2 <= ?")
                         .arg(QLatin1String(definition), QLatin1String(id)),
                     {QStringLiteral("Machine %1").arg(m), (m - 1) * block, m * block});
        }
    t.commit();
}

void makeLanguageDatabase(const QString &path)
{
    QFile demo(sourceDir() + QStringLiteral("/samples/demo/languages_demo.sql"));
    demo.open(QIODevice::ReadOnly);
    auto db = Database::create(path);
    Database::Transaction t(*db);
    db->execScript(schemaScript("languages.sql") + QString::fromUtf8(demo.readAll()));
    t.commit();
}

QString schemaScript(const char *name)
{
    QFile f(sourceDir() + QStringLiteral("/src/database/schema/") + QLatin1String(name));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

QString templatesDir()
{
    return sourceDir() + QStringLiteral("/samples/templates");
}

void makeFullDatabase(const QString &path, int languages)
{
    auto db = Database::create(path);
    Database::Transaction t(*db);
    db->execScript(schemaScript("helptext.sql") + schemaScript("helptext_materialchange.sql"));
    for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"})
        db->exec(
            QStringLiteral("UPDATE %1 SET MachineType = 'Machine ' || ((rowid - 1) * 5 / (SELECT COUNT(*) FROM %1) "
                           "+ 1)")
                .arg(QLatin1String(table)));
    const auto ids = [&](const char *sql) {
        std::vector<int> out;
        for (const QVariantList &row : db->query(QLatin1String(sql)).rows())
            out.push_back(row[0].toInt());
        return out;
    };
    const std::vector<int> alarms = ids("SELECT AlarmID FROM AlarmDefinition"),
                           warnings = ids("SELECT WarningID FROM WarningDefinition"),
                           changes = ids("SELECT MaterialChangeID FROM MaterialChangeDefinition");
    for (int l = 1; l <= languages; ++l) {
        const int number = 1030 + l;
        db->exec(QStringLiteral("INSERT INTO Language VALUES (?, ?, 'Arial 10 400', '00000407')"),
                 {number, QStringLiteral("LANGUAGE %1").arg(l)});
        for (int id : alarms)
            db->exec(QStringLiteral("INSERT INTO AlarmText VALUES (?, ?, ?, ?, ?)"),
                     {id, number, text(id, l, 60), text(id, l, 200), text(id, l, 300)});
        for (int id : warnings)
            db->exec(QStringLiteral("INSERT INTO WarningText VALUES (?, ?, ?)"), {id, number, text(id, l, 300)});
        for (int id : changes)
            db->exec(QStringLiteral("INSERT INTO MaterialChangeText VALUES (?, ?, ?)"), {id, number, text(id, l, 200)});
    }
    t.commit();
}

void dropIndexes(const QString &path)
{
    auto db = Database::open(path, Database::Mode::ReadWrite);
    Database::Transaction t(*db);
    for (const QVariantList &table :
         db->query(QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'table'")).rows()) {
        const QString name = table[0].toString();
        const auto columns =
            db->query(QStringLiteral("SELECT name, type, pk FROM pragma_table_info(?)"), {name}).rows();
        const bool rowidKey =
            std::count_if(columns.begin(), columns.end(), [](const QVariantList &c) { return c[2].toInt() > 0; }) == 1;
        QStringList defs;
        for (const QVariantList &c : columns) {
            QString def = quoteIdentifier(c[0].toString()) + QLatin1Char(' ') + c[1].toString();
            if (rowidKey && c[2].toInt() == 1 && c[1].toString() == QLatin1String("INTEGER"))
                def += QStringLiteral(" PRIMARY KEY");
            else if (c[1].toString() == QLatin1String("TEXT"))
                def += QStringLiteral(" COLLATE NOCASE");
            defs << def;
        }
        db->exec(QStringLiteral("CREATE TABLE plain_copy (%1)").arg(defs.join(QStringLiteral(", "))));
        db->exec(QStringLiteral("INSERT INTO plain_copy SELECT * FROM %1").arg(quoteIdentifier(name)));
        db->exec(QStringLiteral("DROP TABLE %1").arg(quoteIdentifier(name)));
        db->exec(QStringLiteral("ALTER TABLE plain_copy RENAME TO %1").arg(quoteIdentifier(name)));
    }
    t.commit();
}

} // namespace ht::bench
