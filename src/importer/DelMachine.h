#pragma once
// The logic of dlgDelMachine: deleting a machine (its rows freed for the next
// one) or renaming it. Each change is one transaction.

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;

class DelMachineView
{
  public:
    virtual ~DelMachineView() = default;
    virtual void setMachines(const QStringList &names) = 0; // ComboExistingMachines
    virtual QString machineText() const = 0;                // "" when none is chosen
    virtual void closeDialog() = 0;
};

class DelMachineDialog
{
  public:
    DelMachineDialog(Context &ctx, DelMachineView &view) : ctx(ctx), view(view) {}

    void Form_Load() { ComboExistingMachines_Act(); }
    void ComboExistingMachines_Act();
    void CommandDelete_Click();
    void CommandRename_Click();
    void CommandCancel_Click();

  private:
    Context &ctx;
    DelMachineView &view;
};

// The jobs behind the buttons, for the dialog and the command line: false,
// after telling the user why, when nothing was changed.
// Machine names compare without case, as the database does.
bool deleteMachineNamed(Context &ctx, const QString &machine);
bool renameMachineNamed(Context &ctx, const QString &machine, const QString &newName);
// Why the machine cannot be renamed to `newName` ("" when it can), with the
// machine as the database spells it.
QString renameRefusal(Context &ctx, const QString &machine, const QString &newName, QString &stored);
// The help main directory a rename moves the machine's folder in: the one in
// use, else the settings file's; "" when there is none.
QString helpDirForRename(Context &ctx);

} // namespace ht
