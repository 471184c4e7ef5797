#include "importer/forms/DelMachineForm.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ht
{

DelMachineForm::DelMachineForm(Context &ctx, QWidget *parent) : QDialog(parent), m_logic(ctx, *this)
{
    setObjectName(QStringLiteral("dlgDelMachine"));
    setWindowTitle(QStringLiteral("Delete or rename a machine"));
    m_machines = new QComboBox(this);
    m_machines->setObjectName(QStringLiteral("ComboExistingMachines"));
    m_machines->setAccessibleName(QStringLiteral("Machines"));
    auto *label = new QLabel(QStringLiteral("&Machine:"), this);
    label->setBuddy(m_machines);
    const struct {
        const char *name, *text;
        void (DelMachineDialog::*handler)();
    } commands[] = {{"CommandDelete", "&Delete", &DelMachineDialog::CommandDelete_Click},
                    {"CommandRename", "&Rename...", &DelMachineDialog::CommandRename_Click},
                    {"CommandCancel", "Close", &DelMachineDialog::CommandCancel_Click}};
    auto *buttons = new QHBoxLayout;
    for (const auto &c : commands) {
        auto *b = new QPushButton(QString::fromUtf8(c.text), this);
        b->setObjectName(QLatin1String(c.name));
        connect(b, &QPushButton::clicked, this, [this, h = c.handler] { (m_logic.*h)(); });
        buttons->addWidget(b);
    }
    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(m_machines, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addLayout(buttons);
    setMinimumWidth(380);
    m_logic.Form_Load();
}

void DelMachineForm::setMachines(const QStringList &names)
{
    m_machines->clear();
    m_machines->addItems(names);
}

QString DelMachineForm::machineText() const
{
    return m_machines->currentText();
}

void DelMachineForm::closeDialog()
{
    done(QDialog::Accepted);
}

void DelMachineForm::reject()
{
    m_logic.CommandCancel_Click();
}

} // namespace ht
