#include "StartupTestSupport.h"

#include "database/Database.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace ht::test
{
namespace
{

// A SQLite database from scripts below the repository root; fails the current test when one fails.
void makeDatabase(const QString &path, const QStringList &scripts)
{
    QFile::remove(path);
    try {
        auto db = Database::create(path);
        Database::Transaction t(*db);
        for (const QString &script : scripts) {
            const QByteArray sql = readFileBytes(sourceDir() + QLatin1Char('/') + script);
            ASSERT_FALSE(sql.isEmpty()) << qPrintable(script);
            db->execScript(QString::fromUtf8(sql));
        }
        t.commit();
    } catch (const std::exception &e) {
        FAIL() << "making " << qPrintable(path) << ": " << e.what();
    }
}

} // namespace

void makeDemoLanguageDB(const QString &path)
{
    makeDatabase(path, {"src/database/schema/languages.sql", "samples/demo/languages_demo.sql"});
}

void makeMachineTree(const QString &root)
{
    const QString program = root + QStringLiteral("/Program/");
    QDir().mkpath(program + "Tools");
    QDir().mkpath(program + "Help");
    makeDatabase(program + "Helptext.mdb",
                 {"src/database/schema/helptext.sql", "src/database/schema/helptext_materialchange.sql",
                  "samples/demo/helptext_demo.sql"});
    makeDatabase(program + "Scopia.mdb", {"src/database/schema/indextext.sql", "samples/demo/indextext_demo.sql"});
    makeDemoLanguageDB(program + "Tools/Languages.mdb");
    for (const QString name : {"Source_Alarms.html", "Source_Warnings.html", "Source_MaterialChange.html"})
        copyFile(sourceDir() + "/samples/templates/" + name, program + "Help/" + name);
}

void writeText(const QString &path, const QString &text)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    writeFileBytes(path, text.toUtf8());
}

void copyFile(const QString &from, const QString &to)
{
    QFile::remove(to);
    ASSERT_TRUE(QFile::copy(from, to)) << qPrintable(from) << " -> " << qPrintable(to);
}

} // namespace ht::test
