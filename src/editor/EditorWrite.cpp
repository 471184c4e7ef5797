// Writing an item: a changed box is stored when it is left, and the item's
// help page is written again when the kind's setting asks for it.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/StringUtils.h"
#include "database/Database.h"
#include "editor/EditorKinds.h"
#include "editor/LoadingGuard.h"
#include "html/HtmlWriter.h"
#include "review/ReviewMarks.h"

#include <QFileInfo>

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
        refreshFindings();
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
        if (result == 1) {
            InitHTML_Write();
            // After the page run, whose progress texts would wipe it out.
            setStatus(QStringLiteral("Stored: ") + pendingWhat());
        }
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

// The boxes are stored under the item they were filled for (m_shownItem), never
// under what the item number box or the lists show by now.
void EditorForm::DataBase_Write(int &result)
{
    result = -1;
    m_writeFailed = false;
    const ItemAddress &item = m_shownItem;
    if (!m_destinationEditable || item.number == 0 || item.languageNumber.isEmpty())
        return;
    bool adding = false;
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        Database::Transaction transaction(*db);
        const TextQuery q = textQuery(item.kind, item.id, item.languageNumber);
        adding = db->query(q.sql, q.params).recordCount() < 1;
        const EditorKind &k = editorKind(item.kind);
        // Device and Result are stored on one line; the long text keeps its line breaks.
        QVariantList values;
        for (qsizetype i = 0; i < k.textFields.size(); ++i) {
            const int box = k.textBoxes[i];
            values << (box == 3 ? boxText(box) : ht::SingleLineToMultiLine(ctx, boxText(box)));
        }
        const QVariant id = QVariant::fromValue(qlonglong(item.id));
        const QVariant language = QVariant::fromValue(item.languageNumber.toLongLong());
        QStringList columns;
        for (const QString &field : k.textFields)
            columns << field + QStringLiteral(" = ?");
        if (!adding) {
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
            writeDefinition(*db, item.id);
        const TranslatedFrom from = translatedFrom(*db, item);
        transaction.commit();
        result = 1;
        keepTranslatedFrom(from);
        refreshFindings(true); // the item list's line tells what is stored now
        if (onStored)
            onStored(item);
    } catch (const std::exception &e) {
        reportWriteFailure(QStringLiteral("DataBase_Write"), e);
    }
}

// The source texts the destination was just saved against, read in the save's transaction.
EditorForm::TranslatedFrom EditorForm::translatedFrom(Database &db, const ItemAddress &item) const
{
    TranslatedFrom from;
    const Recordset language =
        db.query(QStringLiteral("SELECT Language FROM Language WHERE Name = ?"), {view.text(Ctl::ComboLanguageSource)});
    if (language.recordCount() == 0)
        return from;
    from.sourceLanguage = QString::number(language.value(QStringLiteral("Language")).toLongLong());
    const TextQuery q = textQuery(item.kind, item.id, from.sourceLanguage);
    const Recordset texts = db.query(q.sql, q.params);
    for (const QString &field : editorKind(item.kind).textFields)
        from.sources.push_back({field, texts.recordCount() > 0 ? texts.text(field) : QString()});
    return from;
}

// Review marks are a help beside the texts: a companion file that cannot be
// written costs the mark, never the stored text, and the error log says why.
void EditorForm::keepTranslatedFrom(const TranslatedFrom &from)
{
    if (from.sourceLanguage.isEmpty() || from.sourceLanguage == m_shownItem.languageNumber)
        return;
    try {
        ht::keepTranslatedFrom(ctx.state.helpTextDB, m_shownItem.kind, m_shownItem.id, m_shownItem.languageNumber,
                               from.sourceLanguage, from.sources);
        // Saved against the source as it stands: no longer in need of review.
        if (from.sourceLanguage == m_sourceLanguageNumber)
            for (const KeptSource &s : from.sources)
                m_keptSource.insert(s.field, s.text);
    } catch (const std::exception &e) {
        LogError(ctx, QStringLiteral("DataBase_Write: the review mark of ") + pendingWhat() +
                          QStringLiteral(" could not be kept: ") + QString::fromUtf8(e.what()));
    }
}

// Only the values the translator changed are written, so that a value
// another editor changed meanwhile is not set back.
void EditorForm::writeDefinition(Database &db, long itemId)
{
    const QVariant id = QVariant::fromValue(qlonglong(itemId));
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
        if (editorKind(m_shownItem.kind).definitions && m_shownItem.number > 0) {
            auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
            Database::Transaction transaction(*db);
            writeDefinition(*db, m_shownItem.id);
            transaction.commit();
        }
    } catch (const std::exception &e) {
        reportWriteFailure(QStringLiteral("Definition_Write"), e);
    }
}

// "alarm 1": the item a pending text belongs to.
QString EditorForm::pendingItem() const
{
    static const char *const singular[] = {"alarm", "warning", "material change"};
    const int k = m_shownItem.kind >= KindAlarms && m_shownItem.kind <= KindMaterialChange ? m_shownItem.kind : 1;
    return QLatin1String(singular[k - 1]) + QLatin1Char(' ') + QString::number(m_shownItem.number);
}

// "the Greek text of alarm 1": what a failed save concerns.
QString EditorForm::pendingWhat() const
{
    return QStringLiteral("the ") + m_shownItem.language + QStringLiteral(" text of ") + pendingItem();
}

// The translator is told in one sentence what happened and what to do; the
// driver's words and the SQL go to the error log only.
void EditorForm::reportWriteFailure(const QString &procedure, const std::exception &e)
{
    m_writeFailed = true;
    const QString &path = ctx.state.helpTextDB;
    QString remedy;
    if (dynamic_cast<const DbBusy *>(&e)) {
        m_failureReason = QStringLiteral("another program is using the database");
        remedy = QStringLiteral("leave the box again once that program is done with it");
    } else if (!fileExists(path)) {
        m_failureReason = QStringLiteral("the database file cannot be found");
        remedy = QStringLiteral("bring the file back, then leave the box again");
    } else if (!QFileInfo(path).isWritable()) {
        m_failureReason = QStringLiteral("the database file is read-only");
        remedy = QStringLiteral("make the file writable, then leave the box again");
    } else {
        m_failureReason = QStringLiteral("the database refused it (the error log has the details)");
        remedy = QStringLiteral("leave the box again to try once more");
    }
    QString what = pendingWhat();
    LogError(ctx, procedure + QStringLiteral(": ") + what + QStringLiteral(" could not be stored in ") + path +
                      QStringLiteral(": ") + QString::fromUtf8(e.what()));
    if (m_quietFailures)
        return;
    what[0] = what[0].toUpper();
    showMessage(ctx,
                what + QStringLiteral(" could not be stored because ") + m_failureReason +
                    QStringLiteral("; it stays in its box: ") + remedy + QLatin1Char('.'),
                Buttons::OK, Icon::Critical, QStringLiteral("Text not stored"));
}

void EditorForm::InitHTML_Write()
{
    try {
        const AppState &s = ctx.state;
        const int k = m_shownItem.kind;
        const bool wanted = k == KindAlarms     ? s.generateAfterEditAlarm
                            : k == KindWarnings ? s.generateAfterEditWarnings
                                                : s.generateAfterEditMaterialChange;
        // The page of the item just stored, which need not be the one shown by now.
        const ItemAddress item = m_shownItem;
        if (!wanted || s.helpMainDir.isEmpty() || item.machine.isEmpty() || item.language.isEmpty() || item.number == 0)
            return;
        bool alarms = k == KindAlarms, warnings = k == KindWarnings, materialChange = k == KindMaterialChange;
        // One page is quick: the form takes no events meanwhile, rather than
        // being closed to them with the focus taken from the box it is in.
        runPages(false, [&] {
            WriteHTMLPage(ctx, view.statusTarget(), alarms, warnings, materialChange, item.machine, item.language,
                          item.number);
        });
        refreshStatus();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("InitHTML_Write"), e);
    }
}

} // namespace ht
