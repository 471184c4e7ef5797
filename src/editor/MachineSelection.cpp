#include "editor/MachineSelection.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/Machines.h"
#include "editor/EditorForm.h"

namespace ht
{

namespace
{

const QString Q = QStringLiteral("\"");

} // namespace

MachineSelectionDialog::MachineSelectionDialog(Context &c, MachineSelectionView &v, EditorSelection &e)
    : ctx(c), view(v), editor(e)
{
}

void MachineSelectionDialog::Form_Load()
{
    try {
        ComboExistingMachines_Act();
        view.setMachineText(editor.machine);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Load"), e);
    }
}

void MachineSelectionDialog::ComboExistingMachines_Act()
{
    try {
        view.setMachines({});
        if (ctx.state.helpTextDB.isEmpty())
            return;
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        QStringList names;
        // "0" marks the free rows: it is never a machine.
        for (const QVariantList &row :
             db->query(QStringLiteral("SELECT AlarmDefinition.MachineType FROM AlarmDefinition  WHERE "
                                      "(AlarmDefinition.MachineType)<>? GROUP BY AlarmDefinition.MachineType;"),
                       {QStringLiteral("0")})
                 .rows())
            names << row[0].toString();
        view.setMachines(names);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ComboExistingMachines_Act"), e);
    }
}

void MachineSelectionDialog::CommandOK_Click()
{
    try {
        const QString chosen = view.machineText();
        editor.machine = chosen.isEmpty() ? QStringLiteral("-1") : chosen;
        if (!chosen.isEmpty())
            GetMachineFirstIndex();
        view.closeDialog();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandOK_Click"), e);
    }
}

void MachineSelectionDialog::CommandCancel_Click()
{
    view.closeDialog();
}

void MachineSelectionDialog::GetMachineFirstIndex()
{
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        const Recordset rs = db->query(
            QStringLiteral("SELECT AlarmDefinition.AlarmID, AlarmDefinition.MachineType, AlarmDefinition.AlarmNo, "
                           "AlarmDefinition.Sensor From AlarmDefinition WHERE (((AlarmDefinition.MachineType)= ?)) "
                           "ORDER BY AlarmDefinition.AlarmID;"),
            {editor.machine});
        if (rs.recordCount() > 0)
            editor.firstItemID = rs.value(0).toLongLong();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetMachineFirstIndex"), e);
    }
}

void MachineSelectionDialog::CommandRename_Click()
{
    try {
        const QString oldName = view.machineText();
        if (oldName.isEmpty() || !ctx.ui)
            return;
        const std::optional<QString> answer =
            ctx.ui->inputBox(QStringLiteral("Enter new name for machine ") + oldName + QStringLiteral("!"),
                             QStringLiteral("Rename machine"), QString());
        if (!answer)
            return; // cancelled
        // Blanks around a name would make a folder name nobody can tell apart.
        const QString newName = answer->trimmed();
        if (renameRefused(oldName, newName))
            return;
        // The pages made by hand live in the machine's help folder: the question says where they go.
        const HelpFolderRename folder = planHelpFolderRename(ctx.state.helpMainDir, oldName, newName);
        const QString note = folder.note();
        if (showMessage(ctx,
                        QStringLiteral("OK to rename ") + Q + oldName + Q + QStringLiteral(" to ") + Q + newName + Q +
                            QStringLiteral("?") + (note.isEmpty() ? QString() : LFCR + note),
                        Buttons::YesNo, Icon::Question, QStringLiteral("Rename machine")) != Answer::Yes)
            return;
        rename(oldName, newName, folder);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandRename_Click"), e);
    }
}

bool MachineSelectionDialog::renameRefused(const QString &oldName, const QString &newName)
{
    QStringList machines;
    GetMachineList(ctx, machines);
    QString refusal;
    if (newName == oldName) {
        showMessage(ctx,
                    QStringLiteral("The machine is named ") + Q + oldName + Q +
                        QStringLiteral(" already: there is nothing to do."),
                    Buttons::OK, Icon::Information, QStringLiteral("Rename machine"));
        return true;
    }
    switch (machineNameProblem(newName, machines, oldName)) {
    case MachineNameProblem::None:
        return false;
    case MachineNameProblem::Empty:
        refusal = QStringLiteral("No new name entered, action cancelled!");
        break;
    case MachineNameProblem::FreeRowsMark:
        refusal = QStringLiteral("The name \"0\" marks free rows and cannot name a machine.");
        break;
    case MachineNameProblem::NotAFolderName:
        refusal = QStringLiteral("The name ") + Q + newName + Q +
                  QStringLiteral(" cannot name a machine: its help pages are kept in a folder of that name, which "
                                 "Windows must accept too (no \" * ? < > |, no dot or blank at the end, no device "
                                 "name such as CON or COM1).");
        break;
    case MachineNameProblem::Exists:
        refusal = QStringLiteral("A machine named ") + Q + newName + Q + QStringLiteral(" already exists.");
        break;
    }
    showMessage(ctx, refusal, Buttons::OK, Icon::Exclamation, QStringLiteral("Rename machine"));
    return true;
}

// All definition tables in one transaction: the machine is renamed
// everywhere or nowhere.
void MachineSelectionDialog::rename(const QString &oldName, const QString &newName, const HelpFolderRename &folder)
{
    const bool materialChange = ctx.state.materialChangePresent;
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        bool isNumber = false;
        newName.toLongLong(&isNumber);
        if (!isNumber && machineTypesAreNumbers(*db, materialChange)) {
            showMessage(ctx,
                        QStringLiteral("Due to your version of Helptext-database, only numbers are allowed in "
                                       "Machinenames!"),
                        Buttons::OK, Icon::Exclamation, QStringLiteral("Rename machine"));
            return;
        }
        renameMachineWithHelpFolder(*db, oldName, newName, materialChange, folder, ctx.processEvents);
    } catch (const std::exception &e) {
        showMessage(ctx,
                    QStringLiteral("The machine ") + Q + oldName + Q + QStringLiteral(" could not be renamed:") + LFCR +
                        QString::fromUtf8(e.what()) + LFCR + QStringLiteral("Nothing has been changed."),
                    Buttons::OK, Icon::Critical, QStringLiteral("Rename machine"));
        return;
    }
    if (editor.machine == oldName)
        editor.machine = newName;
    ComboExistingMachines_Act();
    view.setMachineText(newName);
}

} // namespace ht
