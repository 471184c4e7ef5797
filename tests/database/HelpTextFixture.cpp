#include "database/HelpTextFixture.h"

#include "common/UserInterface.h"

#include <QFile>
#include <gtest/gtest.h>

namespace ht::test
{

QString schemaScript(const QString &name)
{
    QFile f(sourceDir() + QStringLiteral("/src/database/schema/") + name);
    if (!f.open(QIODevice::ReadOnly))
        throw DbError(("missing schema script " + name).toStdString());
    return QString::fromUtf8(f.readAll());
}

void makeHelpTextDb(const QString &path, bool materialChange)
{
    auto db = Database::create(path);
    Database::Transaction t(*db);
    db->execScript(schemaScript(QStringLiteral("helptext.sql")));
    if (materialChange)
        db->execScript(schemaScript(QStringLiteral("helptext_materialchange.sql")));
    t.commit();
}

void makeLookupDb(const QString &path, const std::vector<LookupRow> &rows, bool withSubstBy)
{
    auto db = Database::create(path);
    Database::Transaction t(*db);
    db->execScript(schemaScript(QStringLiteral("languages.sql")));
    if (!withSubstBy)
        db->dropColumn(QStringLiteral("LookupLanguages"), QStringLiteral("SubstBy"));
    for (const LookupRow &r : rows)
        db->exec(QStringLiteral("INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, CodePage) "
                                "VALUES (?, ?, ?, ?, ?)"),
                 {r.number, r.name, r.font, r.layout, r.codePage});
    t.commit();
}

void addLanguage(const QString &path, int number, const QString &name, const QString &font)
{
    auto db = openRW(path);
    Database::Transaction t(*db);
    db->exec(QStringLiteral("INSERT INTO Language (Language, Name, Font, KBLayout) VALUES (?, ?, ?, ?)"),
             {number, name, font.isNull() ? QVariant() : QVariant(font), QVariant()});
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

QStringList dump(const QString &path, const QString &sql)
{
    auto db = Database::open(path, Database::Mode::ReadOnly);
    QStringList lines;
    for (const QVariantList &row : db->query(sql).rows()) {
        QStringList values;
        for (const QVariant &v : row)
            values << (v.isNull() ? QStringLiteral("<null>") : v.toString());
        lines << values.join(u'|');
    }
    return lines;
}

DbTestContext::DbTestContext()
{
    ctx.state.iniPath = ini();
}

void DbTestContext::continueAfterErrors(int times)
{
    for (int i = 0; i < times; ++i)
        ui.push(Answer::Yes);
}

} // namespace ht::test
