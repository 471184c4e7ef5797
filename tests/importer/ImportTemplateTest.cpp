// New help-text databases from the Access templates: the new-database command as
// a script runs it, and an import into a database it made.
#include "ImportTestSupport.h"

#include "common/ConsoleUserInterface.h"
#include "common/StatusDisplay.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetImage.h"
#include "importer/ImportCommands.h"
#include "importer/Importer.h"
#include "importer/NewDatabase.h"

#include <QDir>
#include <cstdio>
#include <cstdlib>

namespace ht
{
namespace
{

struct NewDatabaseCommand : ::testing::Test {
    test::TestContext t;
    QString err;

    int run(const QStringList &args)
    {
        char *bytes = nullptr;
        size_t size = 0;
        FILE *out = open_memstream(&bytes, &size);
        ConsoleUserInterface console(out);
        t.ctx.ui = &console;
        t.ctx.programDir = test::binDir(); // where the build puts the templates
        int code = -1;
        EXPECT_TRUE(runConsoleCommand(t.ctx, importerCommands(), QStringList{"new-database"} + args, code));
        std::fclose(out);
        err = QString::fromLocal8Bit(bytes, qsizetype(size));
        std::free(bytes);
        t.ctx.ui = &t.ui;
        return code;
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
        const char *what;
        QStringList args;
        int code;
        DbFormat format; // of the file made; Missing when none is left
        const char *tables, *perMachine;
    } cases[] = {
        {"an Access file by default", {"--to", t.path("A.mdb")}, 0, DbFormat::Jet, "9", "256"},
        {"without material change",
         {"--to", t.path("B.mdb"), "--without-material-change"},
         0,
         DbFormat::Jet,
         "7",
         "256"},
        {"SQLite when asked", {"--to", t.path("C.sqlite"), "--format", "sqlite"}, 0, DbFormat::SQLite, "9", "256"},
        {"SQLite with 3 added",
         {"--to", t.path("D.sqlite"), "--format", "sqlite", "--added", "3"},
         0,
         DbFormat::SQLite,
         "9",
         "259"},
        {"no --to", {"--format", "access"}, 2, DbFormat::Missing, "", ""},
        {"an unknown format", {"--to", t.path("E.mdb"), "--format", "xls"}, 2, DbFormat::Missing, "", ""},
        {"--added not a number", {"--to", t.path("F.mdb"), "--added", "many"}, 2, DbFormat::Missing, "", ""},
        {"a folder that is not there", {"--to", t.path("none/G.mdb")}, 1, DbFormat::Missing, "", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(run(c.args), c.code) << qPrintable(err);
        const QString made = c.args.value(int(c.args.indexOf("--to")) + 1);
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
    test::TestContext t;
    const QString db = t.path("Help.mdb");
    ASSERT_EQ(makeNewDatabase(test::binDir() + u'/' + templateFileName(true), {db, true, 0, false}), QString());
    test::makeDemoLanguageDB(t.path("Languages.mdb"));
    t.ctx.state.mode = QStringLiteral("IMPORT");
    t.ctx.state.iniPath = t.path("helptext.ini");
    t.ctx.state.anzFehler = 0;
    ASSERT_FALSE(CheckLanguageLookup(t.ctx, t.path("Languages.mdb")).isEmpty());
    ASSERT_EQ(CheckConnection(t.ctx, db), db);
    const QByteArray before = test::readFileBytes(db);

    HeadlessStatus status;
    Importer importer(t.ctx, &status,
                      [](const QString &, const QString &, const QString &) { return AnswerReplaceAll; });
    ImportRequest request;
    request.machine = QStringLiteral("P100");
    request.language = QStringLiteral("Greek");
    request.source = {test::workbook(QStringLiteral("layout-plain.xlsx")), 2, 1, QStringLiteral("0")};
    const bool imported = importer.MainProc(request);
    const QString said = t.ui.messageTexts().join(u'\n');
    if (!imported && said.contains(QStringLiteral("cannot be done in an Access database yet"))) {
        // The template holds no language, so the first import creates one: that
        // must then leave the file as it was, and say so.
        EXPECT_EQ(test::readFileBytes(db), before);
        GTEST_SKIP() << "creating a language in an Access file is not done yet: " << qPrintable(said);
    }
    ASSERT_TRUE(imported) << qPrintable(said);
    EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(db), db)), QStringList());
    auto d = Database::open(db, Database::Mode::ReadOnly);
    EXPECT_EQ(d->query("SELECT Device FROM AlarmText WHERE Alarm_ID = 5 AND Language = 1032").value(0).toString(),
              QStringLiteral("Συσκευή 5"));
    EXPECT_EQ(d->query("SELECT COUNT(*) FROM AlarmDefinition WHERE MachineType = 'P100'").value(0).toInt(), 256);
}

} // namespace
} // namespace ht
