#include "editor/MachineSelection.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "editor/EditorForm.h"
#include "html/SafePathName.h"

namespace ht
{

namespace
{

const QString Q = QStringLiteral("\"");

QStringList definitionTables(const Context &ctx)
{
    QStringList tables{QStringLiteral("Alarm"), QStringLiteral("Warning")};
    if (ctx.state.materialChangePresent)
        tables << QStringLiteral("MaterialChange");
    return tables;
}

// An older help-text database keeps machine types in a number column.
bool onlyNumbersAllowed(Database &db, const QStringList &tables)
{
    for (const QString &t : tables) {
        for (const ColumnInfo &c : db.columns(t + QStringLiteral("Definition"))) {
            if (c.name.compare(QLatin1String("MachineType"), Qt::CaseInsensitive) != 0)
                continue;
            for (const char *numeric : {"INT", "REAL", "FLOA", "DOUB", "NUM", "DEC"})
                if (c.type.contains(QLatin1String(numeric)))
                    return true;
        }
    }
    return false;
}

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
        if (showMessage(ctx,
                        QStringLiteral("OK to rename ") + Q + oldName + Q + QStringLiteral(" to ") + Q + newName + Q +
                            QStringLiteral("?"),
                        Buttons::YesNo, Icon::Question, QStringLiteral("Rename machine")) != Answer::Yes)
            return;
        rename(oldName, newName);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandRename_Click"), e);
    }
}

bool MachineSelectionDialog::renameRefused(const QString &oldName, const QString &newName)
{
    QString refusal;
    QStringList machines;
    GetMachineList(ctx, machines);
    if (newName.isEmpty()) {
        refusal = QStringLiteral("No new name entered, action cancelled!");
    } else if (newName == QLatin1String("0")) {
        refusal = QStringLiteral("The name \"0\" marks free rows and cannot name a machine.");
    } else if (!isSafePathName(newName)) {
        refusal = QStringLiteral("The name ") + Q + newName + Q +
                  QStringLiteral(" cannot name a machine: its help pages are kept in a folder of that name.");
    } else {
        // Machine names are compared without case, as the database does: "ct400"
        // would be the same machine as "CT400". Only the machine itself may change its case.
        for (const QString &m : machines)
            if (m.compare(newName, Qt::CaseInsensitive) == 0 && m.compare(oldName, Qt::CaseInsensitive) != 0)
                refusal = QStringLiteral("A machine named ") + Q + newName + Q + QStringLiteral(" already exists.");
    }
    if (refusal.isEmpty())
        return false;
    showMessage(ctx, refusal, Buttons::OK, Icon::Exclamation, QStringLiteral("Rename machine"));
    return true;
}

// All definition tables in one transaction: the machine is renamed
// everywhere or nowhere.
void MachineSelectionDialog::rename(const QString &oldName, const QString &newName)
{
    const QStringList tables = definitionTables(ctx);
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        bool numbersOnly = false;
        bool isNumber = false;
        newName.toLongLong(&isNumber);
        numbersOnly = !isNumber && onlyNumbersAllowed(*db, tables);
        if (numbersOnly) {
            showMessage(ctx,
                        QStringLiteral("Due to your version of Helptext-database, only numbers are allowed in "
                                       "Machinenames!"),
                        Buttons::OK, Icon::Exclamation, QStringLiteral("Rename machine"));
            return;
        }
        Database::Transaction transaction(*db);
        for (const QString &t : tables) {
            db->exec(QStringLiteral("UPDATE %1Definition SET MachineType = ? WHERE (((%1Definition.MachineType)=?));")
                         .arg(t),
                     {newName, oldName});
            if (ctx.processEvents)
                ctx.processEvents();
        }
        transaction.commit();
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
