// New help-text databases from the Access templates: the new-database command as
// a script runs it, and an import into a database it made.
#include "ImportTestSupport.h"

#include "common/ConsoleRun.h"
#include "common/StatusDisplay.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetImage.h"
#include "importer/ImportCommands.h"
#include "importer/Importer.h"
#include "importer/NewDatabase.h"

#include <QDir>

namespace ht
{
namespace
{

struct NewDatabaseCommand : ::testing::Test {
    test::TestContext t;
    QString err;

    int run(const QStringList &args)
    {
        t.ctx.programDir = test::binDir(); // where the build puts the templates
        return test::runCaptured(t.ctx, importerCommands(), QStringList{"new-database"} + args, err);
    }
    QString value(const QString &path, const QString &sql)
    {
        return Database::open(path, Database::Mode::ReadOnly)->query(sql).value(0).toString();
    }
};

TEST_F(NewDatabaseCommand, MakesAccessOrSqliteAndNeverReplacesAFile)
{
    const QString existing = t.path("Existing.mdb");
    test::writeFileBytes(existing, "not a database");
    const struct {
        const char *what, *to; // to: the file asked for, in the test's folder
        QStringList args;
        int code;
        DbFormat format; // of the file made; Missing when none is left
        const char *tables, *perMachine;
    } cases[] = {
        {"an Access file by default", "A.mdb", {}, 0, DbFormat::Jet, "9", "256"},
        {"without material change", "B.mdb", {"--without-material-change"}, 0, DbFormat::Jet, "7", "256"},
        {"SQLite when asked", "C.sqlite", {"--format", "sqlite"}, 0, DbFormat::SQLite, "9", "256"},
        {"SQLite with 3 added", "D.sqlite", {"--format", "sqlite", "--added", "3"}, 0, DbFormat::SQLite, "9", "259"},
        {"Access with 3 added", "D.mdb", {"--added", "3"}, 0, DbFormat::Jet, "9", "259"},
        {"no --to", nullptr, {"--format", "access"}, 2, DbFormat::Missing, "", ""},
        {"an unknown format", "E.mdb", {"--format", "xls"}, 2, DbFormat::Missing, "", ""},
        {"--added not a number", "F.mdb", {"--added", "many"}, 2, DbFormat::Missing, "", ""},
        {"a folder that is not there", "none/G.mdb", {}, 1, DbFormat::Missing, "", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const QString made = c.to ? t.path(c.to) : QString();
        ASSERT_EQ(run((c.to ? QStringList{"--to", made} : QStringList()) + c.args), c.code) << qPrintable(err);
        EXPECT_EQ(detectDatabaseFormat(made), c.format);
        if (c.format == DbFormat::Missing)
            continue;
        const QString tables = value(made, "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table'");
        if (c.format == DbFormat::Jet)
            EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(made), made)), QStringList());
        else
            EXPECT_EQ(tables, c.tables);
        EXPECT_EQ(value(made, "SELECT COUNT(*) / 5 FROM AlarmDefinition"), c.perMachine); // five machine blocks
        EXPECT_EQ(value(made, "SELECT Data FROM DBSys WHERE Item = 'MaxLenWarning'"), c.perMachine);
        EXPECT_EQ(value(made, "SELECT COUNT(*) FROM Language"), "0");
    }

    // An existing file is never replaced, whatever it holds.
    EXPECT_EQ(run({"--to", existing}), 1);
    EXPECT_TRUE(err.contains("exists already")) << qPrintable(err);
    EXPECT_EQ(test::readFileBytes(existing), "not a database");
    // Nothing but the files made is left in the folder (no half-written temporary).
    EXPECT_EQ(QDir(t.dir.path()).entryList(QDir::Files | QDir::Hidden).filter(".new"), QStringList());
}

TEST(ImportIntoNewAccessDatabase, TakesAMachineWithItsLanguageAndKeepsTheFileSound)
{
    test::ImportWorkspace w(true, [](const QString &db) {
        ASSERT_EQ(makeNewDatabase(test::binDir() + u'/' + templateFileName(true), {db, true, 0, false}), QString());
    });
    const QString db = w.db();
    HeadlessStatus status;
    Importer importer(w.t.ctx, &status,
                      [](const QString &, const QString &, const QString &) { return AnswerReplaceAll; });
    ImportRequest request;
    request.machine = "P100";
    request.language = "Greek";
    request.source = {test::workbook("layout-plain.xlsx"), 2, 1, "0"};
    const bool imported = importer.MainProc(request);
    const QString said = w.t.ui.messageTexts().join(u'\n');
    ASSERT_TRUE(imported) << qPrintable(said);
    EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(db), db)), QStringList());
    EXPECT_EQ(w.value("SELECT Device FROM AlarmText WHERE Alarm_ID = 5 AND Language = 1032"), "Συσκευή 5");
    EXPECT_EQ(w.value("SELECT COUNT(*) FROM AlarmDefinition WHERE MachineType = 'P100'"), "256");
}

} // namespace
} // namespace ht
