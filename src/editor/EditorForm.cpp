// The editor form as a whole: what it loads, its lists and menus, moving
// between items, the remembered position and closing.
#include "editor/EditorForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/StatusDisplay.h"
#include "database/AccessSync.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "editor/EditorKinds.h"
#include "editor/EventsHeld.h"
#include "editor/LoadingGuard.h"
#include "html/HelpDirectory.h"
#include "startup/FormSwitch.h"

#include <cmath>
#include <utility>

namespace ht
{

namespace
{
const QString kSetup = QStringLiteral("Setup");
const QString kDefaults = QStringLiteral("Defaults");
constexpr int kEnter = 13;
constexpr int kEscape = 27;

// The item number a typed text stands for: letters and fractions are item 1,
// numbers past the count are the last item.
QString correctedItemNumber(const QString &text, long count)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value) || value != std::floor(value) || value < 1)
        return QStringLiteral("1");
    if (value > double(count))
        return QString::number(count);
    return text;
}
} // namespace

EditorForm::EditorForm(Context &c, EditorView &v) : ctx(c), view(v) {}

const EditorKind &EditorForm::kind() const
{
    return editorKind(ctx.state.currentKind);
}

int EditorForm::itemNumber() const
{
    bool ok = false;
    const int n = view.text(Ctl::ComboIndex).trimmed().toInt(&ok);
    return ok && n > 0 ? n : 0;
}

long EditorForm::itemID() const
{
    return itemNumber() + m_selection.firstItemID - 1;
}

void EditorForm::Form_Load()
{
    try {
        AppState &s = ctx.state;
        LoadingGuard loading(*this);
        view.setEnabled(Ctl::MenuChangeDatabase, !s.runningOnMachinePC);
        view.setEnabled(Ctl::MenuSelectHelptextdirectory, !s.runningOnMachinePC);
        const QString number = view.text(Ctl::ComboIndex);
        view.setItems(Ctl::ComboIndex, {});
        if (!s.runningOnMachinePC && s.helpTextDB.isEmpty())
            connectDatabase();
        view.setEnabled(Ctl::MenuConvertToSqlite,
                        !s.runningOnMachinePC && detectDatabaseFormat(s.helpTextDB) == DbFormat::Jet);
        takeIndexTextDatabaseFromSettings();

        m_machines.clear();
        if (!s.helpTextDB.isEmpty())
            GetMachineList(ctx, m_machines);
        FillLanguageList();
        // The remembered position may choose another kind: it comes before the item count.
        GetFormDefaults();
        if (s.currentKind == KindMaterialChange && !s.materialChangePresent)
            s.currentKind = KindAlarms;
        // The machine worked on last, else the first one the database has.
        if (!m_machines.contains(m_selection.machine))
            m_selection.machine = m_machines.value(0);
        fillItemNumbers();
        if (view.text(Ctl::ComboIndex).isEmpty())
            view.setText(Ctl::ComboIndex, number.isEmpty() ? QStringLiteral("1") : number);
        const long count = s.maxItems[s.currentKind];
        if (count > 0 && itemNumber() > count)
            view.setText(Ctl::ComboIndex, QString::number(count));
        else if (itemNumber() < 1)
            view.setText(Ctl::ComboIndex, QStringLiteral("1"));
        chooseLanguages();

        const bool noMachine = m_selection.machine.isEmpty() || m_selection.machine == QLatin1String("-1");
        view.setText(Ctl::LabelMachine, noMachine ? QStringLiteral("No machines") : m_selection.machine);
        SetMenuState();
        // Without a database only choosing one, the help directory, Info and Exit make sense.
        const bool connected = !s.helpTextDB.isEmpty();
        for (Ctl menu : {Ctl::MenuGenerateHelpHTML, Ctl::MenuMachineSelection, Ctl::MenuLanguage,
                         Ctl::MenuNextUntranslated, Ctl::MenuPreviousUntranslated, Ctl::MenuGoToItem})
            view.setEnabled(menu, connected);
        GetMachineFirstIndex();
        view.setCaption(QStringLiteral("Helptext editor ") + kind().word + QStringLiteral(" - connected to ") +
                        s.helpTextDB);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Load"), e);
    }
}

// Workstation: the database of the settings, else one the user picks.
bool EditorForm::connectDatabase()
{
    AppState &s = ctx.state;
    const QString stored = LoadIniString(ctx, kSetup, QStringLiteral("StandardHelpTextDB"), s.iniPath);
    if (!stored.isEmpty() && fileExists(stored) && !CheckConnection(ctx, stored).isEmpty())
        return true;
    // A stored database that failed its check is asked for again as well.
    const QString picked = ConnectToDB_Helptext(ctx);
    return !picked.isEmpty() && !CheckConnection(ctx, picked).isEmpty();
}

// Pages of alarms fill in index texts; on a workstation the settings may name
// the database for them, so that a page written after an edit asks nothing.
void EditorForm::takeIndexTextDatabaseFromSettings()
{
    AppState &s = ctx.state;
    if (s.runningOnMachinePC || !s.indexTextDB.isEmpty())
        return;
    const QString stored = LoadIniString(ctx, kSetup, QStringLiteral("StandardIndexTextDB"), s.iniPath);
    if (!stored.isEmpty() && fileExists(stored))
        s.indexTextDB = stored;
}

void EditorForm::fillItemNumbers()
{
    AppState &s = ctx.state;
    long count = 0;
    if (!s.helpTextDB.isEmpty()) {
        auto db = Database::open(s.helpTextDB, Database::Mode::ReadOnly);
        const Recordset rs =
            db->query(QStringLiteral("Select DBSys.Data, DBSys.Item FROM DBSys WHERE Item=?;"), {kind().maxLenItem});
        count = rs.recordCount() > 0 ? rs.value(QStringLiteral("Data")).toString().trimmed().toLong() : 0;
    }
    s.maxItems[s.currentKind] = count;
    QStringList numbers;
    numbers.reserve(count);
    for (long n = 1; n <= count; ++n)
        numbers << QString::number(n);
    const QString shown = view.text(Ctl::ComboIndex);
    view.setItems(Ctl::ComboIndex, numbers);
    view.setText(Ctl::ComboIndex, shown);
}

// The languages chosen before stay chosen; a new form reads from English.
void EditorForm::chooseLanguages()
{
    QString source = view.text(Ctl::ComboLanguageSource);
    if (!m_languages.contains(source))
        source = m_languages.contains(QStringLiteral("English")) ? QStringLiteral("English") : m_languages.value(0);
    view.setText(Ctl::ComboLanguageSource, source);
    if (!m_languages.contains(view.text(Ctl::ComboLanguageDestination)))
        view.setText(Ctl::ComboLanguageDestination, QString());
}

void EditorForm::SetMenuState()
{
    try {
        LoadingGuard loading(*this);
        const EditorKind &k = kind();
        const bool alarms = k.kind == KindAlarms;
        view.setVisible(Ctl::FrameDef, alarms);
        view.setVisible(Ctl::LabelDefinition, alarms);
        for (int i = 1; i <= 4; ++i) {
            view.setVisible(Ctl::TextDefinition, i, alarms);
            view.setText(Ctl::TextDefinition, i, QString());
        }
        for (int box = 1; box <= 3; ++box) {
            const bool used = k.textBoxes.contains(box);
            for (Ctl c : {Ctl::TextSource, Ctl::TextDestination, Ctl::LabelSource, Ctl::LabelDestination})
                view.setVisible(c, box, used);
            if (!used) {
                view.setText(Ctl::TextSource, box, QString());
                view.setText(Ctl::TextDestination, box, QString());
            }
        }
        if (alarms) {
            view.setText(Ctl::LabelSource, 1, QStringLiteral("Device"));
            view.setText(Ctl::LabelDestination, 1, QStringLiteral("Device"));
            view.setText(Ctl::LabelSource, 2, QStringLiteral("Result"));
            view.setText(Ctl::LabelDestination, 2, QStringLiteral("Result"));
        }
        view.setText(Ctl::LabelSource, 3, k.lastBoxCaption);
        view.setText(Ctl::LabelDestination, 3, k.lastBoxCaption);
        view.setText(Ctl::LabelItem, k.word);
        view.setEnabled(Ctl::MenuAlarms, k.kind != KindAlarms);
        view.setEnabled(Ctl::MenuWarnings, k.kind != KindWarnings);
        view.setEnabled(Ctl::MenuMaterialChange, k.kind != KindMaterialChange && ctx.state.materialChangePresent);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("SetMenuState"), e);
    }
}

void EditorForm::GetMachineFirstIndex()
{
    try {
        if (ctx.state.helpTextDB.isEmpty())
            return;
        const QString w = kind().firstIdTable;
        QString sql = QStringLiteral("SELECT %1Definition.%1ID, %1Definition.MachineType, %1Definition.%1No From "
                                     "%1Definition ")
                          .arg(w);
        QVariantList params;
        if (!m_selection.machine.isEmpty()) {
            sql += QStringLiteral("WHERE (((%1Definition.MachineType)= ?)) ").arg(w);
            params << m_selection.machine;
        }
        sql += QStringLiteral("ORDER BY %1Definition.%1ID;").arg(w);
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        const Recordset rs = db->query(sql, params);
        if (rs.recordCount() > 0)
            m_selection.firstItemID = rs.value(0).toLongLong();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetMachineFirstIndex"), e);
    }
}

void EditorForm::FillLanguageList()
{
    try {
        LoadingGuard loading(*this);
        const QString source = view.text(Ctl::ComboLanguageSource);
        const QString destination = view.text(Ctl::ComboLanguageDestination);
        m_languages.clear();
        if (!ctx.state.helpTextDB.isEmpty()) {
            auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
            for (const QVariantList &row :
                 db->query(QStringLiteral("SELECT Language.Language, Language.Name FROM Language;")).rows())
                m_languages << row[1].toString();
        }
        view.setItems(Ctl::ComboLanguageSource, m_languages);
        view.setItems(Ctl::ComboLanguageDestination, m_languages);
        view.setText(Ctl::ComboLanguageSource, m_languages.contains(source) ? source : QString());
        view.setText(Ctl::ComboLanguageDestination, m_languages.contains(destination) ? destination : QString());
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("FillLanguageList"), e);
    }
}

void EditorForm::GetFormDefaults()
{
    try {
        if (m_defaultsRead)
            return;
        m_defaultsRead = true;
        const QString &ini = ctx.state.iniPath;
        const QString item = LoadIniString(ctx, kDefaults, QStringLiteral("Item"), ini);
        const QString index = LoadIniString(ctx, kDefaults, QStringLiteral("Index"), ini);
        const QString machine = LoadIniString(ctx, kDefaults, QStringLiteral("Machine"), ini);
        const QString destination = LoadIniString(ctx, kDefaults, QStringLiteral("LanguageDestination"), ini);
        if (item.isEmpty() || index.isEmpty() || machine.isEmpty() || destination.isEmpty())
            return;
        // A position in a machine or language the database no longer has is left alone altogether.
        if (!m_machines.contains(machine) || !m_languages.contains(destination))
            return;
        const int kindNumber = item.toInt();
        if (kindNumber >= KindAlarms && kindNumber <= KindMaterialChange)
            ctx.state.currentKind = kindNumber;
        m_selection.machine = machine;
        view.setText(Ctl::ComboIndex, QString::number(index.toInt()));
        view.setText(Ctl::ComboLanguageDestination, destination);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetFormDefaults"), e);
    }
}

void EditorForm::SetFormDefaults()
{
    try {
        if (ctx.state.runningOnMachinePC)
            return;
        const QString &ini = ctx.state.iniPath;
        const QString item = QString::number(ctx.state.currentKind);
        SaveIni(ctx, item, kDefaults, QStringLiteral("Item"), ini);
        SaveIni(ctx, item, kDefaults, QStringLiteral("Item"), ini);
        // Closed while the box names no item: the item shown last.
        const QString index = itemNumber() > 0 ? view.text(Ctl::ComboIndex).trimmed() : m_shownNumber.trimmed();
        SaveIni(ctx, index, kDefaults, QStringLiteral("Index"), ini);
        SaveIni(ctx, m_selection.machine, kDefaults, QStringLiteral("Machine"), ini);
        SaveIni(ctx, view.text(Ctl::ComboLanguageDestination), kDefaults, QStringLiteral("LanguageDestination"), ini);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("SetFormDefaults"), e);
    }
}

void EditorForm::ComboIndex_KeyDown(int keyCode)
{
    try {
        const QString text = view.text(Ctl::ComboIndex);
        // Blanks alone are left standing, so that " 7" means 7; no item is shown meanwhile.
        if (keyCode != kEnter && !text.trimmed().isEmpty()) {
            const long count = ctx.state.maxItems[ctx.state.currentKind];
            if (count < 1)
                return;
            const QString corrected = correctedItemNumber(text, count);
            if (corrected != text)
                view.setText(Ctl::ComboIndex, corrected); // the caret goes behind the text
        }
        ComboIndex_Click();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ComboIndex_KeyDown"), e);
    }
}

void EditorForm::ComboIndex_Click()
{
    try {
        showItem();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ComboAlarmIndex_Click"), e);
    }
}

void EditorForm::ComboLanguageSource_Click()
{
    try {
        if (view.text(Ctl::ComboLanguageSource).isEmpty())
            return;
        if (!mayReplaceInput())
            return restoreShownSelection();
        Source_Read();
        m_shownSource = view.text(Ctl::ComboLanguageSource);
        refreshStatus();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ComboLanguageSource_Click"), e);
    }
}

void EditorForm::ComboLanguageDestination_Click()
{
    try {
        if (view.text(Ctl::ComboLanguageDestination).isEmpty())
            return;
        if (!mayReplaceInput())
            return restoreShownSelection();
        Destination_Read();
        m_shownDestination = view.text(Ctl::ComboLanguageDestination);
        refreshStatus();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ComboLanguageDestination_Click"), e);
    }
}

void EditorForm::ComboLanguageSource_KeyDown(int keyCode)
{
    if (keyCode == kEnter)
        ComboLanguageSource_Click();
}

void EditorForm::ComboLanguageDestination_KeyDown(int keyCode)
{
    if (keyCode == kEnter)
        ComboLanguageDestination_Click();
}

// Shows the item whose number stands in ComboIndex in both languages.
void EditorForm::showItem()
{
    if (!mayReplaceInput())
        return restoreShownSelection();
    if (itemNumber() == 0)
        return showNoItem();
    if (std::exchange(m_noItemHint, false))
        setStatus(QString());
    if (!view.text(Ctl::ComboLanguageSource).isEmpty())
        Source_Read();
    if (!view.text(Ctl::ComboLanguageDestination).isEmpty()) {
        Destination_Read();
    } else {
        // Nothing can be stored without a destination language: nothing can be typed.
        m_shownItem = {};
        lockDestination(true);
        Definition_Read();
    }
    m_shownNumber = view.text(Ctl::ComboIndex);
    m_shownSource = view.text(Ctl::ComboLanguageSource);
    m_shownDestination = view.text(Ctl::ComboLanguageDestination);
    refreshStatus();
}

// While the item number box names no item ("", "2.", "1e2") the boxes are
// empty and cannot be typed into: there is no item to store a text under.
void EditorForm::showNoItem()
{
    LoadingGuard loading(*this);
    m_shownItem = {};
    m_destinationEditable = false;
    lockDestination(true);
    for (int box = 1; box <= 3; ++box) {
        for (Ctl side : {Ctl::TextSource, Ctl::TextDestination}) {
            view.setText(side, box, QString());
            view.clearUndo(side, box);
        }
    }
    for (int box = 1; box <= 4; ++box)
        view.setText(Ctl::TextDefinition, box, QString());
    m_definitionRead = {};
    if (const long count = ctx.state.maxItems[ctx.state.currentKind]; count > 0) {
        setStatus(QStringLiteral("Type an item number from 1 to %1 to show an item").arg(count));
        m_noItemHint = true;
    }
}

// Stores what is pending; `quiet`: a failure is only logged, as a question follows.
bool EditorForm::storePending(bool quiet)
{
    const bool before = std::exchange(m_quietFailures, quiet);
    Menu_GotFocus();
    m_quietFailures = before;
    return !m_dirty;
}

// Typed text must not vanish under a newly read item: it is stored first,
// under the item it was typed for, and while that fails the translator decides.
bool EditorForm::mayReplaceInput()
{
    while (m_dirty && !storePending(true)) {
        QString what = pendingWhat();
        what[0] = what[0].toUpper();
        const Answer a =
            showMessage(ctx,
                        what + QStringLiteral(" is not stored yet because ") + m_failureReason + QLatin1Char('.') +
                            LFCR + QStringLiteral("Retry tries again, Discard gives the text up, Cancel stays with ") +
                            pendingItem() + QLatin1Char('.'),
                        Buttons::RetryDiscardCancel, Icon::Exclamation, QStringLiteral("Text not stored"));
        if (a == Answer::Discard) {
            m_dirty = false;
            m_pendingFocus = 0;
        } else if (a != Answer::Retry) {
            return false;
        }
    }
    return true;
}

void EditorForm::restoreShownSelection()
{
    LoadingGuard loading(*this);
    view.setText(Ctl::ComboIndex, m_shownNumber);
    view.setText(Ctl::ComboLanguageSource, m_shownSource);
    view.setText(Ctl::ComboLanguageDestination, m_shownDestination);
}

void EditorForm::Form_Activate()
{
    try {
        view.setVisible(Ctl::LabelTestVersion, false);
        const bool noMachine = m_selection.machine.isEmpty() || m_selection.machine == QLatin1String("-1");
        view.setText(Ctl::LabelMachine, noMachine ? QStringLiteral("No machines") : m_selection.machine);
        // Coming back to the window shows the item as it is now (a page
        // deleted meanwhile unlocks it), but never over unstored input.
        if (itemNumber() > 0 && !m_dirty && !ctx.state.writingHtml)
            ComboIndex_Click();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Activate"), e);
    }
}

void EditorForm::Menu_GotFocus()
{
    try {
        if (m_pendingFocus >= 1 && m_pendingFocus <= 3)
            TextDestination_LostFocus(m_pendingFocus);
        else if (m_pendingFocus >= 4 && m_pendingFocus <= 7)
            TextDefinition_LostFocus(m_pendingFocus - 3);
        if (!m_dirty)
            m_pendingFocus = 0;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Menu_GotFocus"), e);
    }
}

// The form built anew for another kind, machine or database, showing its item.
void EditorForm::rebuild()
{
    Form_Load();
    showItem();
}

void EditorForm::MenuAlarms_Click()
{
    try {
        if (!mayReplaceInput())
            return;
        ctx.state.currentKind = KindAlarms;
        rebuild();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuWarnings_Click"), e);
    }
}

void EditorForm::MenuWarnings_Click()
{
    try {
        if (!mayReplaceInput())
            return;
        ctx.state.currentKind = KindWarnings;
        rebuild();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuWarnings_Click"), e);
    }
}

void EditorForm::MenuMaterialChange_Click()
{
    try {
        if (!mayReplaceInput() || !ctx.state.materialChangePresent)
            return;
        ctx.state.currentKind = KindMaterialChange;
        rebuild();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuMaterialChange_Click"), e);
    }
}

void EditorForm::MenuMachineSelection_Click()
{
    try {
        if (!mayReplaceInput())
            return;
        view.showMachineSelection();
        rebuild();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuMachineSelection_Click"), e);
    }
}

void EditorForm::MenuChangeDatabase_Click()
{
    try {
        if (!mayReplaceInput())
            return;
        const QString picked = ConnectToDB_Helptext(ctx);
        // A database that fails its check leaves the one in use as it was.
        if (picked.isEmpty() || CheckConnection(ctx, picked).isEmpty())
            return;
        rebuild();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuChangeDatabase_Click"), e);
    }
}

// For a user who wants an SQLite copy of an Access file: from now on the copy is
// edited. A text the Access file could not take is stored into the copy.
void EditorForm::MenuConvertToSqlite_Click()
{
    try {
        // Opening the menu tried to store the text already: no second attempt into the Access file.
        const QString converted = ConvertAccessToSqlite(ctx, ctx.state.helpTextDB);
        if (converted.isEmpty() || CheckConnection(ctx, converted).isEmpty() || !mayReplaceInput())
            return;
        rebuild();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuConvertToSqlite_Click"), e);
    }
}

void EditorForm::MenuLanguage_Click()
{
    try {
        if (ctx.forms && ctx.forms->available(FormId::Languages)) {
            if (mayReplaceInput())
                SwitchForm(ctx, FormId::Edit, FormId::Languages);
            return;
        }
        Menu_GotFocus();
        showMessage(ctx,
                    QStringLiteral("Languages are created, repaired and deleted in the language form, which this "
                                   "version of the program does not have yet."),
                    Buttons::OK, Icon::Information, QStringLiteral("Languages"));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuLanguage_Click"), e);
    }
}

void EditorForm::MenuInfo_Click()
{
    try {
        Menu_GotFocus();
        view.showInfoBox();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuInfo_Click"), e);
    }
}

void EditorForm::MenuExit_Click()
{
    try {
        Menu_GotFocus();
        if (ctx.state.writingHtml) {
            if (Abort_WriteHTML(ctx) != 1)
                return;
            m_closeWhenRunEnds = true; // the run stops before its next page, then the form goes
            return;
        }
        view.closeForm(); // Form_Unload stores the position
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuExit_Click"), e);
    }
}

void EditorForm::Form_KeyDown(int keyCode)
{
    try {
        if (keyCode == kEscape && ctx.state.writingHtml)
            Abort_WriteHTML(ctx);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_KeyDown"), e);
    }
}

void EditorForm::Form_Unload(bool &cancel)
{
    cancel = false;
    try {
        if (ctx.state.programEnding || m_closing)
            return;
        if (ctx.state.writingHtml) {
            if (Abort_WriteHTML(ctx) != 1) {
                cancel = true;
                return;
            }
            // The run is still on its way out: the form goes once it has stopped.
            m_closeWhenRunEnds = true;
            cancel = true;
            return;
        }
        if (!mayReplaceInput()) {
            cancel = true;
            return;
        }
        SetFormDefaults();
        m_closing = true;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Unload"), e);
    }
}

// Runs page generation: whole kinds with the form closed to everything but
// Esc, a single page without taking window events at all. A close asked for
// meanwhile happens once the run is over.
void EditorForm::runPages(bool wholeKinds, const std::function<void()> &run)
{
    if (wholeKinds) {
        view.setBusy(true);
        run();
        view.setBusy(false);
    } else {
        EventsHeld held(ctx);
        run();
    }
    if (m_closeWhenRunEnds) {
        m_closeWhenRunEnds = false;
        view.closeForm();
    }
}

void EditorForm::setStatus(const QString &text)
{
    if (StatusTarget *status = view.statusTarget())
        status->setStatusText(text);
}

} // namespace ht
