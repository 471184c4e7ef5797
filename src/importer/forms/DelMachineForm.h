#pragma once
// The dialog dlgDelMachine: its logic is DelMachineDialog.

#include "importer/DelMachine.h"

#include <QDialog>

class QComboBox;

namespace ht
{

class DelMachineForm : public QDialog, public DelMachineView
{
    Q_OBJECT
  public:
    DelMachineForm(Context &ctx, QWidget *parent);
    DelMachineDialog &logic() { return m_logic; }

    void setMachines(const QStringList &names) override;
    QString machineText() const override;
    void closeDialog() override;

  protected:
    void reject() override;

  private:
    DelMachineDialog m_logic;
    QComboBox *m_machines;
};

} // namespace ht
