#include "support/DemoFiles.h"

#include "database/Database.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace ht::test
{

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

void makeDemoHelpTextDB(const QString &path)
{
    makeDatabase(path, {"src/database/schema/helptext.sql", "src/database/schema/helptext_materialchange.sql",
                        "samples/demo/helptext_demo.sql"});
}

void makeDemoLanguageDB(const QString &path)
{
    makeDatabase(path, {"src/database/schema/languages.sql", "samples/demo/languages_demo.sql"});
}

void makeDemoIndexTextDB(const QString &path)
{
    makeDatabase(path, {"src/database/schema/indextext.sql", "samples/demo/indextext_demo.sql"});
}

void copyTemplates(const QString &helpDir)
{
    QDir().mkpath(helpDir);
    for (const QString name : {"Source_Alarms.html", "Source_Warnings.html", "Source_MaterialChange.html"})
        copyFile(sourceDir() + "/samples/templates/" + name, helpDir + QLatin1Char('/') + name);
}

void makeMachineTree(const QString &root)
{
    const QString program = root + QStringLiteral("/Program/");
    QDir().mkpath(program + "Tools");
    // Access files, as a machine has them, made from the demo's SQLite scripts.
    const auto access = [](const QString &path, void (*make)(const QString &)) {
        const QString source = path + QStringLiteral(".sqlite");
        make(source);
        QFile::remove(path);
        makeAccessCopy(source, path);
        QFile::remove(source);
    };
    access(program + "Helptext.mdb", makeDemoHelpTextDB);
    access(program + "Scopia.mdb", makeDemoIndexTextDB);
    access(program + "Tools/Languages.mdb", makeDemoLanguageDB);
    copyTemplates(program + "Help");
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
