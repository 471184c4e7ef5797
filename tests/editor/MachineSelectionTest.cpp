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
    const struct {
        const char *typed, *message;
    } cases[] = {
        {"FL220", "A machine named \"FL220\" already exists."},
        {"fl220", "A machine named \"fl220\" already exists."},
        {"  ", "No new name entered, action cancelled!"},
        {"0", "The name \"0\" marks free rows and cannot name a machine."},
        {"../CT", "The name \"../CT\" cannot name a machine: its help pages are kept in a folder of that name."}};
    for (const auto &c : cases) {
        w.t.ui.shown.clear();
        w.t.ui.push(QString(c.typed));
        dialog.CommandRename_Click();
        ASSERT_EQ(w.t.ui.messageTexts(), QStringList{c.message}) << c.typed;
    }
    EXPECT_EQ(count("AlarmDefinition", "CT400"), "256");
}

TEST_F(Machines, RenameChangesEveryDefinitionTableOrNone)
{
    dialog.Form_Load();
    // A failure in the last table leaves the first two as they were.
    w.exec(
        "CREATE TRIGGER refuse BEFORE UPDATE ON MaterialChangeDefinition BEGIN SELECT RAISE(ABORT, 'disk full'); END");
    w.t.ui.push(QString("Cartoner"));
    w.t.ui.push(Answer::Yes);
    dialog.CommandRename_Click();
    EXPECT_TRUE(w.t.ui.messageTexts().last().contains("disk full"));
    EXPECT_EQ(count("AlarmDefinition", "Cartoner"), "0");
    EXPECT_EQ(editor.machine, "CT400");

    w.exec("DROP TRIGGER refuse");
    w.t.ui.push(QString("Cartoner"));
    w.t.ui.push(Answer::Yes);
    dialog.CommandRename_Click();
    EXPECT_EQ(w.t.ui.shown.back().text, "OK to rename \"CT400\" to \"Cartoner\"?");
    for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"})
        EXPECT_EQ(count(table, "CT400"), "0") << table;
    EXPECT_EQ(count("MaterialChangeDefinition", "Cartoner"), "1000");
    EXPECT_EQ(editor.machine, "Cartoner");
    EXPECT_EQ(view.machines, QStringList({"Cartoner", "FL220"}));
}

} // namespace
} // namespace ht
