#include "editor/forms/MachineSelectionForm.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ht
{

MachineSelectionForm::MachineSelectionForm(Context &ctx, EditorSelection &editor, QWidget *parent)
    : QDialog(parent), m_logic(ctx, *this, editor)
{
    setObjectName(QStringLiteral("dlgMachineSelection"));
    setWindowTitle(QStringLiteral("Machine selection"));
    m_machines = new QComboBox(this);
    m_machines->setObjectName(QStringLiteral("ComboExistingMachines"));
    m_machines->setAccessibleName(QStringLiteral("Machines"));
    auto *label = new QLabel(QStringLiteral("&Machine:"), this);
    label->setBuddy(m_machines);

    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("CommandOK"));
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CommandCancel"));
    auto *rename = new QPushButton(QStringLiteral("&Rename..."), this);
    rename->setObjectName(QStringLiteral("CommandRename"));
    connect(ok, &QPushButton::clicked, this, [this] { m_logic.CommandOK_Click(); });
    connect(cancel, &QPushButton::clicked, this, [this] { m_logic.CommandCancel_Click(); });
    connect(rename, &QPushButton::clicked, this, [this] { m_logic.CommandRename_Click(); });

    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(m_machines, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(rename);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addLayout(buttons);
    setMinimumWidth(360);

    m_logic.Form_Load();
}

void MachineSelectionForm::setMachines(const QStringList &names)
{
    m_machines->clear();
    m_machines->addItems(names);
}

QString MachineSelectionForm::machineText() const
{
    return m_machines->currentText();
}

void MachineSelectionForm::setMachineText(const QString &name)
{
    const int at = m_machines->findText(name, Qt::MatchExactly);
    if (at >= 0)
        m_machines->setCurrentIndex(at);
}

void MachineSelectionForm::closeDialog()
{
    done(QDialog::Accepted);
}

void MachineSelectionForm::reject()
{
    m_logic.CommandCancel_Click(); // Esc and the close box cancel
}

} // namespace ht
