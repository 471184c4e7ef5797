#pragma once
// The dialog dlgMachineSelection: its logic is MachineSelectionDialog.

#include "editor/MachineSelection.h"

#include <QDialog>

class QComboBox;

namespace ht
{

class MachineSelectionForm : public QDialog, public MachineSelectionView
{
    Q_OBJECT
  public:
    MachineSelectionForm(Context &ctx, EditorSelection &editor, QWidget *parent);

    MachineSelectionDialog &logic() { return m_logic; }

    void setMachines(const QStringList &names) override;
    QString machineText() const override;
    void setMachineText(const QString &name) override;
    void closeDialog() override;

  protected:
    void reject() override;

  private:
    MachineSelectionDialog m_logic;
    QComboBox *m_machines;
};

} // namespace ht
