// dlgMachineSelection's logic: choosing and renaming machines.
#include "EditorTestSupport.h"

#include "editor/EditorForm.h"
#include "editor/MachineSelection.h"

namespace ht
{
namespace
{

struct HeadlessMachines : MachineSelectionView {
    QStringList machines;
    QString chosen;
    bool closed = false;
    void setMachines(const QStringList &names) override { machines = names; }
    QString machineText() const override { return chosen; }
    void setMachineText(const QString &name) override { chosen = machines.contains(name) ? name : chosen; }
    void closeDialog() override { closed = true; }
};

class Machines : public ::testing::Test
{
  protected:
    test::EditorWorkspace w;
    EditorSelection editor{"CT400", 1};
    HeadlessMachines view;
    MachineSelectionDialog dialog{w.t.ctx, view, editor};

    QString count(const char *table, const char *machine)
    {
        return w.value(QString("SELECT count(*) FROM %1 WHERE MachineType = ?").arg(table), {machine});
    }
};

TEST_F(Machines, ChoosingSetsTheMachineAndItsFirstItem)
{
    w.exec("UPDATE AlarmDefinition SET MachineType = '0' WHERE AlarmID = 600");
    dialog.Form_Load();
    EXPECT_EQ(view.machines, QStringList({"CT400", "FL220"})); // the free rows' "0" is no machine
    EXPECT_EQ(view.chosen, "CT400");
    view.chosen = "FL220";
    dialog.CommandOK_Click();
    EXPECT_TRUE(view.closed);
    EXPECT_EQ(editor.machine, "FL220");
    EXPECT_EQ(editor.firstItemID, 257);
}

TEST_F(Machines, RenameRefusesNamesThatCannotBeAMachine)
{
    dialog.Form_Load();
    const QString folderRule = "cannot name a machine: its help pages are kept in a folder of that name, which "
                               "Windows must accept too (no \" * ? < > |, no dot or blank at the end, no device "
                               "name such as CON or COM1).";
    const struct {
        const char *typed;
        QString message; // the end of the one message shown
    } cases[] = {{"FL220", "A machine named \"FL220\" already exists."},
                 {"fl220", "A machine named \"fl220\" already exists."},
                 {"  ", "No new name entered, action cancelled!"},
                 {"0", "The name \"0\" marks free rows and cannot name a machine."},
                 {"CT400", "The machine is named \"CT400\" already: there is nothing to do."},
                 {"../CT", folderRule},
                 {"CON", folderRule},
                 {"com1.txt", folderRule},
                 {"a?b", folderRule},
                 {"Line 3.", folderRule}};
    for (const auto &c : cases) {
        w.t.ui.shown.clear();
        w.t.ui.push(QString(c.typed));
        dialog.CommandRename_Click();
        ASSERT_EQ(w.t.ui.messageTexts().size(), 1) << c.typed;
        EXPECT_TRUE(w.t.ui.messageTexts()[0].endsWith(c.message)) << c.typed;
    }
    EXPECT_EQ(count("AlarmDefinition", "CT400"), "256");
}

// The help folder, with the pages made by hand in it, goes with the name.
TEST_F(Machines, RenameChangesEveryDefinitionTableOrNone)
{
    dialog.Form_Load();
    test::writeText(w.page("CT400/Alarms/Greek/1.html"), "made by hand");
    // A failure in the last table leaves the first two as they were.
    w.exec(
        "CREATE TRIGGER refuse BEFORE UPDATE ON MaterialChangeDefinition BEGIN SELECT RAISE(ABORT, 'disk full'); END");
    w.t.ui.push(QString("Cartoner"));
    w.t.ui.push(Answer::Yes);
    dialog.CommandRename_Click();
    EXPECT_TRUE(w.t.ui.messageTexts().last().contains("disk full"));
    EXPECT_EQ(count("AlarmDefinition", "Cartoner"), "0");
    EXPECT_EQ(editor.machine, "CT400");
    EXPECT_TRUE(QFile::exists(w.page("CT400/Alarms/Greek/1.html")));

    w.exec("DROP TRIGGER refuse");
    w.t.ui.push(QString("Cartoner"));
    w.t.ui.push(Answer::Yes);
    dialog.CommandRename_Click();
    EXPECT_EQ(w.t.ui.shown.back().text, "OK to rename \"CT400\" to \"Cartoner\"?\n\rIts help folder \"" +
                                            QDir::cleanPath(w.page("CT400")) + "\" moves with it to \"" +
                                            QDir::cleanPath(w.page("Cartoner")) + "\".");
    EXPECT_EQ(test::readFileBytes(w.page("Cartoner/Alarms/Greek/1.html")), "made by hand");
    EXPECT_FALSE(QFile::exists(w.page("CT400")));
    for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"})
        EXPECT_EQ(count(table, "CT400"), "0") << table;
    EXPECT_EQ(count("MaterialChangeDefinition", "Cartoner"), "1000");
    EXPECT_EQ(editor.machine, "Cartoner");
    EXPECT_EQ(view.machines, QStringList({"Cartoner", "FL220"}));

    // Where the new name's folder exists, the question says what stays behind.
    test::writeText(w.page("FL220/Alarms/Greek/1.html"), "FL220's own");
    test::writeText(w.page("Filler/Alarms/Greek/1.html"), "another page");
    view.chosen = "FL220";
    w.t.ui.push(QString("Filler"));
    w.t.ui.push(Answer::Yes);
    dialog.CommandRename_Click();
    EXPECT_TRUE(w.t.ui.shown.back().text.endsWith("\" stays where it is, with the pages in it (those made by hand "
                                                  "too), because \"" +
                                                  QDir::cleanPath(w.page("Filler")) + "\" exists already."))
        << qPrintable(w.t.ui.shown.back().text);
    EXPECT_EQ(count("AlarmDefinition", "Filler"), "256");
    EXPECT_EQ(test::readFileBytes(w.page("FL220/Alarms/Greek/1.html")), "FL220's own");
}

} // namespace
} // namespace ht
