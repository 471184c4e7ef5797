// Whole imports into a database made from the build's template.
#include "ImportTestSupport.h"

#include "common/ConsoleUserInterface.h"
#include "common/StatusDisplay.h"
#include "importer/DelMachine.h"
#include "importer/ImportCommands.h"
#include "importer/Importer.h"

#include <QDir>
#include <QTemporaryFile>
#include <cstdio>
#include <deque>
#include <unistd.h>

namespace ht
{
namespace
{

class Import : public ::testing::Test
{
  protected:
    test::ImportWorkspace w;
    HeadlessStatus status;
    std::deque<int> answers; // frmQuestOverwrite's, in turn; none left: "never replace"
    int asked = 0;
    Importer importer{w.t.ctx, &status, [this](const QString &, const QString &, const QString &) {
                          ++asked;
                          const int a = answers.empty() ? AnswerNeverReplace : answers.front();
                          if (!answers.empty())
                              answers.pop_front();
                          return a;
                      }};

    static ImportRequest request(const QString &machine = "M1", const QString &language = "Greek", double nrLang = 2,
                                 const QString &file = "layout.xlsx", const QString &added = "3")
    {
        ImportRequest r;
        r.machine = machine;
        r.language = language;
        r.source = {test::workbook(file), nrLang, 1, added};
        return r;
    }
    QString alarm(int id, const char *language = "1032")
    {
        return w.value("SELECT coalesce(t.Device, '') || '|' || coalesce(t.Result, '') || '|' || "
                       "coalesce(t.Function, '') || '#' || d.MachineType || '|' || coalesce(d.Sensor, '') || '|' || "
                       "coalesce(d.Rejects, '') FROM AlarmText t JOIN "
                       "AlarmDefinition d ON d.AlarmID = t.Alarm_ID WHERE t.Alarm_ID = ? AND t.Language = ?",
                       {id, language});
    }
    QString lastMessage() const { return w.t.ui.messageTexts().value(w.t.ui.messageTexts().size() - 1); }
};

TEST_F(Import, ANewMachineRowByRow)
{
    ASSERT_TRUE(importer.MainProc(request())) << qPrintable(lastMessage());
    EXPECT_EQ(w.rows("SELECT Item, Data FROM DBSys WHERE Item LIKE 'MaxLen%' ORDER BY Item"),
              QStringList({"MaxLenAlarm|259", "MaxLenMaterialChange|1000", "MaxLenWarning|259"}));
    // The block of five: 259 rows each, the first bound to the machine.
    EXPECT_EQ(w.value("SELECT count(*) || '|' || min(AlarmID) || '|' || max(AlarmID) FROM AlarmDefinition WHERE "
                      "MachineType = 'M1'"),
              "259|1|259");
    EXPECT_EQ(w.value("SELECT count(*) FROM AlarmDefinition"), "1295");
    EXPECT_EQ(alarm(1), "Συσκευή 1|Αποτέλεσμα 1|Λειτουργία 1#M1|B1|1");
    EXPECT_EQ(alarm(258), "Συσκευή 258|Αποτέλεσμα 258|Λειτουργία 258#M1|B258|0");
    EXPECT_EQ(alarm(12), "||#M1||");  // "12a" is no number: an empty row
    EXPECT_EQ(alarm(259), "||#M1||"); // the list's last entry is not imported, as ever
    EXPECT_EQ(w.value("SELECT Function FROM WarningText WHERE Warning_ID = 257 AND Language = 1032"),
              "Προειδοποίηση 257");
    EXPECT_EQ(w.value("SELECT count(*) FROM MaterialChangeDefinition WHERE MachineType = 'M1'"), "1000");
    // The language was made present: a row for every definition row, eight descriptions, no other language's text.
    EXPECT_EQ(
        w.value("SELECT (SELECT count(*) FROM AlarmText WHERE Language = 1032) || '|' || (SELECT count(*) FROM "
                "MaterialChangeText WHERE Language = 1032) || '|' || (SELECT count(*) FROM Discription) || '|' || "
                "(SELECT count(*) FROM AlarmText WHERE Language <> 1032 AND coalesce(Device, '') <> '')"),
        "1295|5000|8|0");
    EXPECT_EQ(importer.counts().alarms, 257);
    EXPECT_EQ(asked, 0); // free rows hold nothing to replace

    // English over it: line breaks stored as "/", the definitions asked for once and, never replaced, kept.
    ASSERT_TRUE(importer.MainProc(request("M1", "English", 1)));
    EXPECT_EQ(alarm(2, "1033"), "Device 2|Result 2|Function 2/second line#M1|B2|2");
    EXPECT_EQ(alarm(2), "Συσκευή 2|Αποτέλεσμα 2|Λειτουργία 2#M1|B2|2");
    EXPECT_EQ(asked, 1);
}

TEST_F(Import, TheOverwriteQuestionsAnswers)
{
    const struct {
        std::deque<int> answers;
        int asked;
        const char *first, *second, *last; // the Sensor of alarms 1, 2 and 258 afterwards
    } cases[] = {{{AnswerReplace, AnswerKeep, AnswerReplaceAll}, 3, "B1", "X", "B258"},
                 {{AnswerNeverReplace}, 1, "X", "X", "X"},
                 {{AnswerKeep, AnswerReplace}, 257, "X", "B2", "X"}};
    for (const auto &c : cases) {
        test::ImportWorkspace fresh;
        HeadlessStatus s;
        std::deque<int> queue = c.answers;
        int count = 0;
        Importer i(fresh.t.ctx, &s, [&](const QString &kind, const QString &, const QString &) {
            EXPECT_EQ(kind, "Alarms");
            ++count;
            const int a = queue.empty() ? AnswerKeep : queue.front();
            if (!queue.empty())
                queue.pop_front();
            return a;
        });
        ASSERT_TRUE(i.MainProc(request()));
        fresh.exec("UPDATE AlarmDefinition SET Sensor = 'X'");
        ASSERT_TRUE(i.MainProc(request()));
        EXPECT_EQ(count, c.asked);
        const auto sensor = [&](int id) {
            return fresh.value("SELECT Sensor FROM AlarmDefinition WHERE AlarmID = ?", {id});
        };
        EXPECT_EQ(sensor(1), c.first);
        EXPECT_EQ(sensor(2), c.second);
        EXPECT_EQ(sensor(258), c.last);
    }
}

TEST_F(Import, CancelledOrFailedHalfWayChangesNothing)
{
    ASSERT_TRUE(importer.MainProc(request()));
    w.exec("UPDATE AlarmDefinition SET Sensor = 'X'");
    const QByteArray before = w.fingerprint();
    answers = {AnswerReplace, AnswerCancel};
    EXPECT_FALSE(importer.MainProc(request("M1", "Greek", 2, "layout.xlsx", "3")));
    EXPECT_EQ(lastMessage(), "Import cancelled: nothing has been changed.");
    EXPECT_EQ(w.fingerprint(), before);

    w.exec("CREATE TRIGGER refuse BEFORE UPDATE ON WarningText WHEN NEW.Warning_ID = 400 "
           "BEGIN SELECT RAISE(ABORT, 'disk full'); END");
    const QByteArray withTrigger = w.fingerprint();
    EXPECT_FALSE(importer.MainProc(request("M2", "English", 1)));
    EXPECT_TRUE(lastMessage().startsWith("The import failed; nothing has been changed.")) << qPrintable(lastMessage());
    EXPECT_EQ(w.fingerprint(), withTrigger);
}

TEST_F(Import, WorkbooksThatAreNoListsChangeNothing)
{
    const QByteArray before = w.fingerprint();
    QStringList files;
    for (const QString &f : QDir(test::realWorkbook(QString())).entryList(QDir::Files))
        files << test::realWorkbook(f);
    test::writeFileBytes(w.t.path("empty.xls"), {});
    test::writeFileBytes(w.t.path("notes.xls"), "Alarm 1: the motor is hot");
    files << w.t.path("empty.xls") << w.t.path("notes.xls");
    for (const QString &file : files) {
        ImportRequest r = request("M1", "Greek", 1, QString(), "0");
        r.source.path = file;
        EXPECT_FALSE(importer.MainProc(r)) << qPrintable(file);
        EXPECT_TRUE(lastMessage().contains(file)) << qPrintable(lastMessage());
    }
    EXPECT_EQ(w.fingerprint(), before);
    for (const char *name : {"   ", "a/b", "0"}) {
        EXPECT_FALSE(importer.MainProc(request(name)));
        EXPECT_EQ(w.fingerprint(), before) << name;
    }
}

TEST_F(Import, FiveMachinesAtMostAndDeletingOneFreesItsBlock)
{
    w.exec("UPDATE AlarmDefinition SET MachineType = 'M' || ((AlarmID - 1) / 256 + 1)");
    const QByteArray before = w.fingerprint();
    EXPECT_FALSE(importer.MainProc(request("M6", "Greek", 2, "layout-plain.xlsx", "0")));
    EXPECT_EQ(lastMessage(),
              "There are already 5 machines defined!\r\nPlease delete a machine before creating a new one");
    EXPECT_EQ(w.fingerprint(), before);
    answers = {AnswerReplaceAll}; // M3's rows hold only their numbers: asked all the same
    ASSERT_TRUE(importer.MainProc(request("M3", "Greek", 2, "layout-plain.xlsx", "0")));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(alarm(513 + 4), "Συσκευή 5|Αποτέλεσμα 5|Λειτουργία 5#M3|B5|2");

    ASSERT_TRUE(deleteMachineNamed(w.t.ctx, "M3"));
    EXPECT_EQ(w.value("SELECT count(*) FROM AlarmDefinition"), "1280");
    EXPECT_EQ(w.value("SELECT MachineType || '|' || AlarmNo || '|' || Sensor || '|' || Rejects FROM AlarmDefinition "
                      "WHERE AlarmID = 517"),
              "0|5||0");
    EXPECT_EQ(alarm(517), "||#0||0");
    ASSERT_TRUE(importer.MainProc(request("M6", "Greek", 2, "layout-plain.xlsx", "0")));
    EXPECT_EQ(w.value("SELECT min(AlarmID) FROM AlarmDefinition WHERE MachineType = 'M6'"), "513");

    EXPECT_FALSE(renameMachineNamed(w.t.ctx, "M6", "m1"));
    EXPECT_EQ(lastMessage(), "A machine named m1 already exists.");
    ASSERT_TRUE(renameMachineNamed(w.t.ctx, "M6", "Line 6"));
    EXPECT_EQ(w.value("SELECT (SELECT count(*) FROM WarningDefinition WHERE MachineType = 'Line 6') || '|' || "
                      "(SELECT count(*) FROM MaterialChangeDefinition WHERE MachineType = 'Line 6')"),
              "256|1000");
}

TEST_F(Import, FromTheCommandLine)
{
    QTemporaryFile err;
    ASSERT_TRUE(err.open());
    FILE *out = fdopen(dup(err.handle()), "w");
    ConsoleUserInterface console(out);
    w.t.ctx.ui = &console;
    const auto run = [&](const QStringList &args) {
        int code = -1;
        EXPECT_TRUE(runConsoleCommand(w.t.ctx, importerCommands(), args, code));
        std::fflush(out);
        return code;
    };
    const QStringList base{"import", "--database", w.db(), "--machine", "M1", "--language", "Greek", "--column", "2"};
    EXPECT_EQ(run(base), kCommandUsage); // no workbook
    EXPECT_EQ(run(base + QStringList{"--workbook", test::realWorkbook("password.xls")}), kCommandFailed);
    EXPECT_EQ(run(base + QStringList{"--workbook", test::workbook("layout.xls"), "--added", "3", "--material-change",
                                     test::workbook("material-change.xls"), "--position", "3"}),
              kCommandDone);
    std::fclose(out);
    const QString printed = QString::fromUtf8(test::readFileBytes(err.fileName()));
    EXPECT_TRUE(printed.contains("password.xls\" is protected by a password")) << qPrintable(printed);
    EXPECT_EQ(w.value("SELECT Text FROM MaterialChangeText WHERE MaterialChange_ID = 112 AND Language = 1032"),
              "Αλλαγή 112");
    EXPECT_EQ(alarm(3), "Συσκευή 3|Αποτέλεσμα 3|Λειτουργία 3#M1|B3|0");
}

} // namespace
} // namespace ht
