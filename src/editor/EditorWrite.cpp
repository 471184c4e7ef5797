// Writing an item: a changed box is stored when it is left, and the item's
// help page is written again when the kind's setting asks for it.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/StringUtils.h"
#include "database/Database.h"
#include "editor/EditorKinds.h"
#include "editor/LoadingGuard.h"
#include "html/HtmlWriter.h"

namespace ht
{

namespace
{
constexpr int kRejectsBox = 4;

bool isNumeric(const QString &text)
{
    bool ok = false;
    text.trimmed().toDouble(&ok);
    return ok;
}
} // namespace

void EditorForm::TextDestination_Change(int index)
{
    try {
        if (m_loading || !view.hasFocus(Ctl::TextDestination, index))
            return; // filled by the program, not typed
        m_dirty = true;
        m_pendingFocus = index;
        // The one-line boxes show a typed "/" as the line break it stands for.
        if (index == 1 || index == 2)
            SingleLineToMultiLine(Ctl::TextDestination, index);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextDestination_Change"), e);
    }
}

void EditorForm::TextDestination_LostFocus(int index)
{
    try {
        (void)index;
        if (!m_dirty)
            return;
        int result = -1;
        DataBase_Write(result);
        // Text that could not be stored stays pending: it is tried again, never dropped.
        if (!m_writeFailed) {
            m_dirty = false;
            m_pendingFocus = 0;
        }
        if (result == 1)
            InitHTML_Write();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextDestination_LostFocus"), e);
    }
}

void EditorForm::TextDefinition_Change(int index)
{
    try {
        if (m_loading || !view.hasFocus(Ctl::TextDefinition, index))
            return;
        m_dirty = true;
        m_pendingFocus = 3 + index;
        const QString text = view.text(Ctl::TextDefinition, index);
        if (index == kRejectsBox && !text.isEmpty() && !isNumeric(text)) {
            LoadingGuard loading(*this);
            view.setText(Ctl::TextDefinition, index, m_definitionRead[kRejectsBox - 1]);
            setStatus(QStringLiteral("Rejects: numbers only"));
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextDestination_Change"), e);
    }
}

void EditorForm::TextDefinition_LostFocus(int index)
{
    try {
        TextDestination_LostFocus(index);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("AlarmSource_LostFocus"), e);
    }
}

// The text of a destination box as it is stored: its line breaks as CR LF.
QString EditorForm::boxText(int index) const
{
    return view.text(Ctl::TextDestination, index);
}

void EditorForm::DataBase_Write(int &result)
{
    result = -1;
    m_writeFailed = false;
    const QString destination = view.text(Ctl::ComboLanguageDestination);
    if (!m_destinationEditable || destination.isEmpty() || m_destinationNumber.isEmpty() || itemNumber() == 0)
        return;
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        Database::Transaction transaction(*db);
        const TextQuery q = GetSQLForTextTable(m_destinationNumber);
        const bool exists = db->query(q.sql, q.params).recordCount() >= 1;
        const EditorKind &k = kind();
        // Device and Result are stored on one line; the long text keeps its line breaks.
        QVariantList values;
        for (qsizetype i = 0; i < k.textFields.size(); ++i) {
            const int box = k.textBoxes[i];
            values << (box == 3 ? boxText(box) : ht::SingleLineToMultiLine(ctx, boxText(box)));
        }
        const QVariant id = QVariant::fromValue(qlonglong(itemID()));
        const QVariant language = QVariant::fromValue(m_destinationNumber.toLongLong());
        QStringList columns;
        for (const QString &field : k.textFields)
            columns << field + QStringLiteral(" = ?");
        if (exists) {
            db->exec(QStringLiteral("UPDATE %1 SET %2 WHERE %3 = ? AND Language = ?")
                         .arg(k.textTable, columns.join(QStringLiteral(", ")), k.textId),
                     values + QVariantList{id, language});
        } else {
            db->exec(QStringLiteral("INSERT INTO %1 (%2, Language, %3) VALUES (?, ?%4)")
                         .arg(k.textTable, k.textId, k.textFields.join(QStringLiteral(", ")),
                              QStringLiteral(", ?").repeated(k.textFields.size())),
                     QVariantList{id, language} + values);
        }
        if (k.definitions)
            writeDefinition(*db);
        transaction.commit();
        result = 1;
    } catch (const std::exception &e) {
        reportWriteFailure(QStringLiteral("DataBase_Write"), QString::fromUtf8(e.what()));
    }
}

// Only the values the translator changed are written, so that a value
// another editor changed meanwhile is not set back.
void EditorForm::writeDefinition(Database &db)
{
    const QVariant id = QVariant::fromValue(qlonglong(itemID()));
    const Recordset rs = db.query(
        QStringLiteral("SELECT AlarmDefinition.AlarmID, AlarmDefinition.MachineType, AlarmDefinition.AlarmNo, "
                       "AlarmDefinition.Sensor, AlarmDefinition.Cam, AlarmDefinition.CPU, AlarmDefinition.Rejects "
                       "From AlarmDefinition WHERE (AlarmDefinition.AlarmID= ?);"),
        {id});
    if (rs.recordCount() == 0)
        db.exec(QStringLiteral("INSERT INTO AlarmDefinition (AlarmID) VALUES (?)"), {id});
    const char *fields[] = {"Sensor", "Cam", "CPU", "Rejects"};
    std::array<QString, 4> values;
    for (int i = 0; i < 4; ++i) {
        values[i] = ht::SingleLineToMultiLine(ctx, view.text(Ctl::TextDefinition, i + 1));
        if (values[i] != m_definitionRead[i] || rs.recordCount() == 0)
            db.exec(QStringLiteral("UPDATE AlarmDefinition SET %1 = ? WHERE AlarmID = ?").arg(QLatin1String(fields[i])),
                    {values[i], id});
    }
    m_definitionRead = values;
}

void EditorForm::Definition_Write()
{
    try {
        if (kind().definitions && itemNumber() > 0) {
            auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
            Database::Transaction transaction(*db);
            writeDefinition(*db);
            transaction.commit();
        }
    } catch (const std::exception &e) {
        reportWriteFailure(QStringLiteral("Definition_Write"), QString::fromUtf8(e.what()));
    }
}

// The translator hears of it at once, and the text stays in its box.
void EditorForm::reportWriteFailure(const QString &procedure, const QString &reason)
{
    m_writeFailed = true;
    const QString what = view.text(Ctl::ComboLanguageDestination) + QStringLiteral(" text of ") + kind().word +
                         QLatin1Char(' ') + QString::number(itemNumber());
    LogError(ctx, procedure + QStringLiteral(": the ") + what + QStringLiteral(" could not be stored: ") + reason);
    showMessage(ctx,
                QStringLiteral("The ") + what + QStringLiteral(" could not be stored:") + LFCR + reason + LFCR + LFCR +
                    QStringLiteral("It is still in its box and is stored when you leave the box again."),
                Buttons::OK, Icon::Critical, QStringLiteral("Text not stored"));
}

void EditorForm::InitHTML_Write()
{
    try {
        const AppState &s = ctx.state;
        const int k = s.currentKind;
        const bool wanted = k == KindAlarms     ? s.generateAfterEditAlarm
                            : k == KindWarnings ? s.generateAfterEditWarnings
                                                : s.generateAfterEditMaterialChange;
        const QString machine = view.text(Ctl::LabelMachine);
        const QString language = view.text(Ctl::ComboLanguageDestination);
        if (!wanted || s.helpMainDir.isEmpty() || machine != m_selection.machine || language.isEmpty() ||
            itemNumber() == 0)
            return;
        bool alarms = k == KindAlarms, warnings = k == KindWarnings, materialChange = k == KindMaterialChange;
        // One page is quick: the form takes no events meanwhile, rather than
        // being closed to them with the focus taken from the box it is in.
        runPages(false, [&] {
            WriteHTMLPage(ctx, view.statusTarget(), alarms, warnings, materialChange, machine, language, itemNumber());
        });
        refreshStatus();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("InitHTML_Write"), e);
    }
}

} // namespace ht
