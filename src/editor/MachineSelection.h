#pragma once
// The logic of dlgMachineSelection: choosing the machine the editor works on,
// and renaming a machine in every definition table.

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;
struct EditorSelection;
struct HelpFolderRename;

// What the dialog's window offers to its logic; tests use a headless one.
class MachineSelectionView
{
  public:
    virtual ~MachineSelectionView() = default;
    virtual void setMachines(const QStringList &names) = 0; // ComboExistingMachines' entries
    virtual QString machineText() const = 0;                // the machine chosen, "" for none
    virtual void setMachineText(const QString &name) = 0;
    virtual void closeDialog() = 0;
};

class MachineSelectionDialog
{
  public:
    MachineSelectionDialog(Context &ctx, MachineSelectionView &view, EditorSelection &editor);

    void Form_Load();
    void ComboExistingMachines_Act();
    void CommandOK_Click();
    void CommandCancel_Click();
    void CommandRename_Click();
    void GetMachineFirstIndex();

  private:
    bool renameRefused(const QString &oldName, const QString &newName);
    void rename(const QString &oldName, const QString &newName, const HelpFolderRename &folder);

    Context &ctx;
    MachineSelectionView &view;
    EditorSelection &editor;
};

} // namespace ht
