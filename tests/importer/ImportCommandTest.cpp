// The import and machine commands as a script runs them: what they refuse
// (exit 1, one line on stderr, every byte of the database as it was) and what
// they keep of a machine's rows and names.
#include "ImportTestSupport.h"

#include "common/ConsoleUserInterface.h"
#include "importer/ImportCommands.h"

#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace ht
{
namespace
{

class ImportCommand : public ::testing::Test
{
  public:
    std::unique_ptr<test::ImportWorkspace> w = std::make_unique<test::ImportWorkspace>();
    QString err;

    // Runs one command in a console of its own; `err` gets what it wrote.
    int run(QStringList args)
    {
        args.insert(1, "--database");
        args.insert(2, w->db());
        char *bytes = nullptr;
        size_t size = 0;
        FILE *out = open_memstream(&bytes, &size);
        ConsoleUserInterface console(out);
        w->t.ctx.ui = &console;
        int code = -1;
        EXPECT_TRUE(runConsoleCommand(w->t.ctx, importerCommands(), args, code));
        std::fclose(out);
        err = QString::fromLocal8Bit(bytes, qsizetype(size));
        std::free(bytes);
        w->t.ctx.ui = &w->t.ui;
        return code;
    }
    // An import of layout.xls (3 added rows, Greek in language column 2) or another workbook.
    int import(const QString &machine, const QStringList &more = {}, const QString &file = "layout.xls")
    {
        return run(QStringList{"import", "--machine", machine, "--language", "Greek", "--column", "2", "--workbook",
                               file.contains('/') ? file : test::workbook(file), "--languages",
                               w->t.path("Languages.mdb")} +
                   more);
    }
    // The lines of stderr that are not progress.
    QStringList said() const
    {
        QStringList lines;
        for (const QString &l : err.split('\n', Qt::SkipEmptyParts))
            if (!l.startsWith("Reading source") && !l.startsWith("Importing") && !l.startsWith("Binding") &&
                !l.startsWith("Creating") && !l.startsWith("Stored definition"))
                lines << l;
        return lines;
    }
};

TEST_F(ImportCommand, RefusalsChangeNotOneByte)
{
    const QString cut = w->t.path("cut.xls");
    const QByteArray whole = test::readFileBytes(test::workbook("layout.xls"));
    test::writeFileBytes(cut, whole.left(whole.size() * 6 / 10));
    const struct {
        const char *name;
        std::function<void(ImportCommand &)> before;
        std::function<int(ImportCommand &)> job;
        const char *says;
    } cases[] = {
        {"a workbook cut short, with added rows the tables lack",
         {},
         [&](ImportCommand &c) {
             return c.import("M1", {"--added", "3"}, cut);
         },
         "cut.xls"},
        {"more added rows than the workbook has",
         {},
         [](ImportCommand &c) {
             return c.import("M1", {"--added", "12"});
         },
         "has 3 added alarms and 3 added warnings (numbered from 257 in column B), but the import is for 12 added "
         "alarms and warnings"},
        {"fewer added rows than the machines' blocks",
         [](ImportCommand &c) {
             c.import("M1", {"--added", "3"});
         },
         [](ImportCommand &c) {
             return c.import("M2", {"--added", "0"}, "layout-plain.xlsx");
         },
         "The database's blocks hold 259 alarms and warnings per machine (256 + 3 added rows); with 0 added rows the "
         "blocks of the machines there (M1) would move"},
        {"more added rows than the machines' blocks",
         [](ImportCommand &c) {
             c.import("M1", {"--added", "0"}, "layout-plain.xlsx");
         },
         [](ImportCommand &c) {
             return c.import("M2", {"--added", "3"});
         },
         "would move"},
        {"a device name",
         {},
         [](ImportCommand &c) { return c.import("CON"); },
         "The machine name \"CON\" cannot be used"},
        {"a character Windows refuses", {}, [](ImportCommand &c) { return c.import("M|1"); }, "cannot be used"},
        {"a trailing dot", {}, [](ImportCommand &c) { return c.import("M1."); }, "cannot be used"},
        {"a language numbered otherwise than in the definitions",
         [](ImportCommand &c) { c.w->exec("INSERT INTO Language (Language, Name) VALUES (3, 'greek')"); },
         [](ImportCommand &c) { return c.import("M1"); },
         "The language \"greek\" has the number 3 in the help-text database but 1032 in the language-definition "
         "database"},
        {"a material-change list without material-change tables",
         [](ImportCommand &c) { c.w = std::make_unique<test::ImportWorkspace>(false); },
         [](ImportCommand &c) {
             return c.import("M1", {"--material-change", test::workbook("material-change.xls"), "--position", "3"});
         },
         "has no material-change tables"},
        {"deleting a machine that is not there",
         {},
         [](ImportCommand &c) {
             return c.run({"delete-machine", "--machine", "M9"});
         },
         "There is no machine M9."},
        {"renaming a machine to its own name",
         [](ImportCommand &c) {
             c.import("M1", {"--added", "3"});
         },
         [](ImportCommand &c) {
             return c.run({"rename-machine", "--machine", "m1", "--to", "M1"});
         },
         "The machine is named M1 already: there is nothing to do."},
        {"renaming to a device name",
         [](ImportCommand &c) {
             c.import("M1", {"--added", "3"});
         },
         [](ImportCommand &c) {
             return c.run({"rename-machine", "--machine", "M1", "--to", "lpt3"});
         },
         "The name lpt3 cannot name a machine"},
    };
    for (const auto &c : cases) {
        w = std::make_unique<test::ImportWorkspace>();
        if (c.before)
            c.before(*this);
        const QByteArray before = test::readFileBytes(w->db());
        const QStringList backups = QDir(w->t.path("")).entryList({"*.sav"});
        EXPECT_EQ(c.job(*this), kCommandFailed) << c.name << '\n' << qPrintable(err);
        EXPECT_EQ(said().size(), 1) << c.name << '\n' << qPrintable(err);
        EXPECT_TRUE(said().value(0).contains(c.says)) << c.name << '\n' << qPrintable(err);
        EXPECT_TRUE(test::readFileBytes(w->db()) == before) << c.name;
        EXPECT_EQ(QDir(w->t.path("")).entryList({"*.sav"}), backups) << c.name << ": no backup";
    }
}

// A machine's own definitions are kept under "never", even one holding only its
// number; names keep the database's spelling; the material-change list alone.
TEST_F(ImportCommand, KeepsWhatTheMachineHas)
{
    ASSERT_EQ(
        import("M1", {"--added", "3", "--material-change", test::workbook("material-change.xls"), "--position", "3"}),
        kCommandDone)
        << qPrintable(err);
    EXPECT_TRUE(said().value(0).contains("Not imported, as the last entry of its list: alarm 259")) << qPrintable(err);
    w->exec("UPDATE AlarmDefinition SET Sensor = '', Cam = '', CPU = '', Rejects = '' WHERE AlarmID = 1");
    w->exec("UPDATE AlarmDefinition SET Sensor = 'X' WHERE AlarmID = 2");
    const QString definitions = "SELECT group_concat(coalesce(Sensor, '') || '/' || coalesce(Rejects, ''), ';') FROM "
                                "AlarmDefinition WHERE AlarmID <= 2";
    const struct {
        const char *machine, *replace, *definitions;
    } cases[] = {{"m1", "never", "/;X/2"}, {"M1", "all", "B1/1;B2/2"}};
    for (const auto &c : cases) {
        ASSERT_EQ(import(c.machine, {"--replace", c.replace}), kCommandDone) << qPrintable(err);
        EXPECT_EQ(w->value(definitions), c.definitions) << c.replace;
        EXPECT_EQ(w->value("SELECT count(*) FROM AlarmDefinition WHERE MachineType = 'M1' COLLATE BINARY"), "259");
    }
    // The material-change list alone, without --workbook (and --added from the database).
    w->exec("UPDATE MaterialChangeText SET Text = ''");
    ASSERT_EQ(run({"import", "--machine", "m1", "--language", "GREEK", "--material-change",
                   test::workbook("material-change.xls"), "--position", "3"}),
              kCommandDone)
        << qPrintable(err);
    EXPECT_EQ(w->value("SELECT Text FROM MaterialChangeText WHERE MaterialChange_ID = 112 AND Language = 1032"),
              "Αλλαγή 112");
    EXPECT_EQ(w->value("SELECT count(*) FROM AlarmDefinition WHERE MachineType = 'M1'"), "259");

    // Deleting and renaming find the machine whatever the case.
    test::writeText(w->t.path("help/M1/Alarms/Greek/1.html"), "made by hand");
    ASSERT_EQ(run({"rename-machine", "--machine", "m1", "--to", "Line 1", "--help-dir", w->t.path("help")}),
              kCommandDone)
        << qPrintable(err);
    EXPECT_EQ(test::readFileBytes(w->t.path("help/Line 1/Alarms/Greek/1.html")), "made by hand");
    EXPECT_TRUE(said().value(0).contains("moves with it")) << qPrintable(err);
    ASSERT_EQ(run({"delete-machine", "--machine", "LINE 1"}), kCommandDone) << qPrintable(err);
    EXPECT_EQ(w->value("SELECT count(*) FROM AlarmDefinition WHERE MachineType <> '0'"), "0");
}

} // namespace
} // namespace ht
