#include "importer/DelMachine.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "common/UserInterface.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/Machines.h"

namespace ht
{

namespace
{
const QString kTitle = QStringLiteral("Machines");

bool failed(Context &ctx, const QString &what, const std::exception &e)
{
    showMessage(ctx, what + LFCR + QString::fromUtf8(e.what()) + LFCR + QStringLiteral("Nothing has been changed."),
                Buttons::OK, Icon::Critical, kTitle);
    return false;
}

// A failure the database layer explains (a write-protected or busy file) is
// logged as it is; only what nobody expected is logged as an unexpected error.
void logFailure(Context &ctx, const QString &procedure, const std::exception &e)
{
    const QString why = QString::fromUtf8(e.what());
    LogError(ctx, dynamic_cast<const DbError *>(&e) ? procedure + QStringLiteral(": ") + why
                                                    : unexpectedErrorLogLine(0, procedure, why));
}
} // namespace

bool deleteMachineNamed(Context &ctx, const QString &name)
{
    QStringList machines;
    GetMachineList(ctx, machines);
    const QString machine = storedMachineName(machines, name);
    if (machine.isEmpty()) {
        showMessage(ctx, QStringLiteral("There is no machine ") + name + QLatin1Char('.'), Buttons::OK,
                    Icon::Exclamation, kTitle);
        return false;
    }
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        Database::Transaction transaction(*db);
        deleteMachine(*db, machine, ctx.state.materialChangePresent);
        transaction.commit();
    } catch (const std::exception &e) {
        logFailure(ctx, QStringLiteral("CommandDelete_Click"), e);
        return failed(ctx, QStringLiteral("The machine ") + machine + QStringLiteral(" could not be deleted:"), e);
    }
    showMessage(ctx, machine + QStringLiteral(" deleted"), Buttons::OK, Icon::Information, kTitle);
    return true;
}

QString helpDirForRename(Context &ctx)
{
    if (!ctx.state.helpMainDir.isEmpty())
        return ctx.state.helpMainDir;
    return LoadIniString(ctx, QStringLiteral("Setup"), QStringLiteral("HelpMainDir"), ctx.state.iniPath, false, false);
}

QString renameRefusal(Context &ctx, const QString &machine, const QString &newName, QString &stored)
{
    QStringList machines;
    GetMachineList(ctx, machines);
    stored = storedMachineName(machines, machine);
    if (stored.isEmpty())
        return QStringLiteral("There is no machine ") + machine + QLatin1Char('.');
    if (newName == stored)
        return QStringLiteral("The machine is named ") + stored + QStringLiteral(" already: there is nothing to do.");
    switch (machineNameProblem(newName, machines, stored)) {
    case MachineNameProblem::None:
        return {};
    case MachineNameProblem::Empty:
        return QStringLiteral("No new name entered, action cancelled!");
    case MachineNameProblem::Exists:
        return QStringLiteral("A machine named ") + newName + QStringLiteral(" already exists.");
    case MachineNameProblem::FreeRowsMark:
    case MachineNameProblem::NotAFolderName:
        break;
    }
    return QStringLiteral("The name ") + newName +
           QStringLiteral(" cannot name a machine: \"0\" marks free rows, and the machine's help pages are kept in a "
                          "folder of its name, which Windows must accept too (no \" * ? < > |, no dot or blank at "
                          "the end, no device name such as CON or COM1).");
}

bool renameMachineNamed(Context &ctx, const QString &machine, const QString &newName)
{
    QString stored;
    if (const QString refusal = renameRefusal(ctx, machine, newName, stored); !refusal.isEmpty()) {
        showMessage(ctx, refusal, Buttons::OK, Icon::Exclamation, kTitle);
        return false;
    }
    const HelpFolderRename folder = planHelpFolderRename(helpDirForRename(ctx), stored, newName);
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        bool isNumber = false;
        newName.toLongLong(&isNumber);
        if (!isNumber && machineTypesAreNumbers(*db, ctx.state.materialChangePresent)) {
            showMessage(ctx,
                        QStringLiteral("Due to your version of Helptext-database, only numbers are allowed in "
                                       "Machinenames!"),
                        Buttons::OK, Icon::Exclamation, kTitle);
            return false;
        }
        renameMachineWithHelpFolder(*db, stored, newName, ctx.state.materialChangePresent, folder, ctx.processEvents);
    } catch (const std::exception &e) {
        logFailure(ctx, QStringLiteral("CommandRename_Click"), e);
        return failed(ctx, QStringLiteral("The machine ") + stored + QStringLiteral(" could not be renamed:"), e);
    }
    const QString note = folder.note();
    showMessage(ctx,
                stored + QStringLiteral(" renamed to ") + newName + QLatin1Char('.') +
                    (note.isEmpty() ? QString() : QLatin1Char(' ') + note),
                Buttons::OK, Icon::Information, kTitle);
    return true;
}

void DelMachineDialog::ComboExistingMachines_Act()
{
    try {
        QStringList machines;
        if (!ctx.state.helpTextDB.isEmpty())
            GetMachineList(ctx, machines);
        view.setMachines(machines);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ComboExistingMachines_Act"), e);
    }
}

void DelMachineDialog::CommandDelete_Click()
{
    try {
        const QString machine = view.machineText();
        if (machine.isEmpty()) {
            showMessage(ctx, QStringLiteral("No machine selected!"), Buttons::OK, Icon::Exclamation, kTitle);
            return;
        }
        // The texts of every language go with it: asked first.
        if (showMessage(ctx,
                        QStringLiteral("OK to delete machine ") + machine +
                            QStringLiteral("? Its texts in every language are cleared and its rows freed."),
                        Buttons::YesNo, Icon::Exclamation, kTitle) != Answer::Yes)
            return;
        if (deleteMachineNamed(ctx, machine))
            ComboExistingMachines_Act();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandDelete_Click"), e);
    }
}

void DelMachineDialog::CommandRename_Click()
{
    try {
        const QString machine = view.machineText();
        if (machine.isEmpty() || !ctx.ui)
            return;
        const std::optional<QString> answer =
            ctx.ui->inputBox(QStringLiteral("Enter new name for machine ") + machine + QStringLiteral("!"),
                             QStringLiteral("Rename machine"), QString());
        if (!answer)
            return;
        const QString newName = answer->trimmed();
        QString stored;
        if (renameRefusal(ctx, machine, newName, stored).isEmpty()) {
            const QString note = planHelpFolderRename(helpDirForRename(ctx), stored, newName).note();
            if (showMessage(ctx,
                            QStringLiteral("OK to rename ") + machine + QStringLiteral(" to ") + newName +
                                QStringLiteral("?") + (note.isEmpty() ? QString() : LFCR + note),
                            Buttons::YesNo, Icon::Question, QStringLiteral("Rename machine")) != Answer::Yes)
                return;
        }
        if (renameMachineNamed(ctx, machine, newName))
            ComboExistingMachines_Act();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandRename_Click"), e);
    }
}

void DelMachineDialog::CommandCancel_Click()
{
    view.closeDialog();
}

} // namespace ht
