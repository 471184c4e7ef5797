// check and report as a script runs them, on the demo database.
#include "review/ReviewCommands.h"
#include "common/ConsoleCommand.h"
#include "database/Database.h"
#include "support/DemoFiles.h"
#include "support/TestSupport.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

struct Commands : ::testing::Test {
    TestContext t;
    QString db = t.path("Helptext.sqlite");
    void SetUp() override { makeDemoHelpTextDB(db); }
    int run(QStringList args)
    {
        int code = -1;
        EXPECT_TRUE(runConsoleCommand(t.ctx, reviewCommands(), args, code));
        return code;
    }
};

} // namespace

TEST_F(Commands, ExitCodesSayWhetherAnythingWasFound)
{
    const struct {
        QStringList args;
        int code;
    } cases[] = {
        {{"check", "--database", db, "--language", "Greek"}, 1},                               // missing texts
        {{"check", "--database", db, "--language", "Deutsch", "--only", "blanks,numbers"}, 0}, // none of these
        {{"check", "--database", db, "--language", "Deutsch", "--machine", "CT400", "--kind", "alarms"}, 0},
        {{"check", "--database", db, "--language", "Klingon"}, 2},
        {{"check", "--database", db, "--language", "Greek", "--source", "Klingon"}, 2},
        {{"check", "--database", db, "--language", "Greek", "--machine", "XY1"}, 2},
        {{"check", "--database", db, "--language", "Greek", "--kind", "alarm"}, 2},
        {{"check", "--database", db, "--language", "Greek", "--only", "missing,speling"}, 2},
        {{"check", "--database", db, "--language", "Greek", "--format", "xml"}, 2},
        {{"check", "--database", t.path("none.sqlite"), "--language", "Greek"}, 2},
        {{"check", "--language", "Greek"}, 2},
        {{"report", "--database", db, "--format", "pdf"}, 2},
        {{"report", "--database", db, "--format", "csv", "--out", t.path("r.csv")}, 0},
    };
    for (const auto &c : cases)
        EXPECT_EQ(run(c.args), c.code) << c.args.join(' ').toStdString();
}

TEST_F(Commands, ReportCountsEachCellAndWritesTheHtmlPage)
{
    ASSERT_EQ(run({"report", "--database", db, "--format", "csv", "--out", t.path("r.csv")}), 0);
    const QString csv = QString::fromUtf8(readFileBytes(t.path("r.csv")));
    EXPECT_TRUE(csv.startsWith("machine,kind,language,items,translated,missing,with findings,needs review\n"));
    EXPECT_TRUE(csv.contains("\nCT400,alarms,Greek,2,1,1,0,0\n")) << csv.toStdString();
    EXPECT_TRUE(csv.contains("\nCT400,alarms,Deutsch,2,2,0,0,0\n"));
    EXPECT_FALSE(csv.contains(",English,")); // the source is no destination

    ASSERT_EQ(run({"report", "--database", db, "--format", "html", "--out", t.path("r.html")}), 0);
    const QString html = QString::fromUtf8(readFileBytes(t.path("r.html")));
    EXPECT_TRUE(html.contains("<style>"));
    EXPECT_FALSE(html.contains("<link")); // nothing the page needs lies elsewhere
    EXPECT_TRUE(html.contains(db.toHtmlEscaped()));
    EXPECT_TRUE(html.contains("<tr class=\"total\"><td>Total</td>"));
}

TEST_F(Commands, ReviewedClearsTheMarkOfAChangedSource)
{
    const QStringList check{"check", "--database", db, "--language", "Greek", "--only", "review"};
    const auto reviewed = [&](const char *item) {
        return run({"reviewed", "--database", db, "--language", "Greek", "--machine", "CT400", "--kind", "alarms",
                    "--item", item});
    };
    ASSERT_EQ(reviewed("1"), 0);
    EXPECT_EQ(run(check), 0);
    Database::open(db)->exec("UPDATE AlarmText SET Result = 'Machine stops at once' WHERE Alarm_ID = 1 AND "
                             "Language = 1033");
    EXPECT_EQ(run(check), 1);
    EXPECT_EQ(reviewed("1"), 0);
    EXPECT_EQ(run(check), 0);
    EXPECT_EQ(reviewed("9999"), 2);
}
