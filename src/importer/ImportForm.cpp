#include "importer/ImportForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/FileIo.h"
#include "common/IniFile.h"
#include "common/InstalledFiles.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/UserInterface.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "importer/Importer.h"
#include "importer/NewDatabase.h"
#include "startup/FormSwitch.h"

#include <QFileInfo>

namespace ht
{

namespace
{

const QString kSetup = QStringLiteral("Setup");
constexpr int kWorkbookLanguages = 10; // language numbers offered in ComboNrLangXL
const ImportCtl kInputs[] = {
    ImportCtl::TextXLFile,           ImportCtl::ComboNrLangXL,      ImportCtl::TextPosLangXL,
    ImportCtl::ComboLanguage,        ImportCtl::TextMachineID,      ImportCtl::TextAnzahlFehler,
    ImportCtl::OptionMaterialChange, ImportCtl::CommandImport,      ImportCtl::CommandNeueVorlage,
    ImportCtl::CommandDeleteMachine, ImportCtl::MenuAlarmsWarnings, ImportCtl::MenuMaterialChange,
    ImportCtl::MenuChangeDatabase,   ImportCtl::MenuLanguage};

bool digitsOnly(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

} // namespace

ImportForm::ImportForm(Context &c, ImportView &v) : ctx(c), view(v) {}

void ImportForm::Form_Load()
{
    try {
        AppState &s = ctx.state;
        const int added = LoadIniInteger(ctx, kSetup, QStringLiteral("glb_AnzFehler"), s.iniPath);
        m_lastAnzFehler = QString::number(std::max(0, added));
        m_templateAnzFehler = m_lastAnzFehler;
        view.setText(ImportCtl::TextAnzahlFehler, m_lastAnzFehler);
        view.setChecked(ImportCtl::OptionMaterialChange,
                        LoadIniBoolean(ctx, kSetup, QStringLiteral("glb_MitMaterialChange"), s.iniPath));
        m_workbooks[1] = s.xlAlarmsWarnings;
        m_workbooks[2] = s.xlMaterialChange;
        QStringList numbers;
        for (int n = 1; n <= kWorkbookLanguages; ++n)
            numbers << QString::number(n);
        view.setItems(ImportCtl::ComboNrLangXL, numbers);
        view.setText(ImportCtl::ComboNrLangXL, QStringLiteral("1"));
        view.setText(ImportCtl::TextPosLangXL, QStringLiteral("1"));

        if (s.langLookupDB.isEmpty()) {
            const QString stored = LoadIniString(ctx, kSetup, QStringLiteral("StandardLangLookupDB"), s.iniPath);
            if (!stored.isEmpty())
                CheckLanguageLookup(ctx, stored);
        }
        if (s.langLookupDB.isEmpty()) {
            showMessage(ctx, QStringLiteral("Cannot find languagedefinition ... exiting"), Buttons::OK, Icon::Critical);
            EndProgram(ctx, 1);
        }
        s.anzFehler = added < 0 ? 0 : added;
        QString database = s.helpTextDB;
        if (database.isEmpty())
            database = LoadIniString(ctx, kSetup, QStringLiteral("StandardHelpTextDB"), s.iniPath);
        if (!database.isEmpty() && fileExists(database)) {
            if (!connect(database))
                showMessage(ctx, QStringLiteral("Wrong Database!"), Buttons::OK, Icon::Critical,
                            QStringLiteral("Fatal Error"));
        } else
            connect(QString());
        m_mode = 1;
        showMode();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Load"), e);
    }
}

bool ImportForm::connect(const QString &path)
{
    AppState &s = ctx.state;
    // keeps the database in use when it fails
    const bool connected = path.isEmpty() || !CheckConnection(ctx, path).isEmpty();
    view.setText(ImportCtl::TextConnectedDatabase, s.helpTextDB);
    view.setCaption(s.helpTextDB.isEmpty() ? QStringLiteral("Helptext Importer - not connected")
                                           : QStringLiteral("Helptext Importer - connected to ") + s.helpTextDB);
    fillLanguages();
    return connected;
}

void ImportForm::fillLanguages()
{
    QStringList names;
    if (!ctx.state.helpTextDB.isEmpty()) {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        for (const QVariantList &row :
             db->query(QStringLiteral("SELECT Language.Language, Language.Name, Language.Font, Language.KBLayout FROM "
                                      "Language Order by Language.Name ;"))
                 .rows())
            names << row[1].toString();
    }
    // A database made from a template holds no language yet: the import
    // creates the one chosen, with the language definitions' number.
    if (!ctx.state.helpTextDB.isEmpty() && !ctx.state.langLookupDB.isEmpty()) {
        auto lookup = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
        const Recordset rs =
            lookup->query(QStringLiteral("SELECT * FROM LookupLanguages Order by LookupLanguages.Name ;"));
        const int name = rs.fieldIndex(QStringLiteral("Name")), font = rs.fieldIndex(QStringLiteral("Font"));
        const int substBy = ctx.state.langLookupHasSubstBy ? rs.fieldIndex(QStringLiteral("SubstBy")) : -1;
        for (const QVariantList &row : rs.rows())
            if (row[font].toString().trimmed() != QLatin1String("0") && (substBy < 0 || row[substBy].isNull()) &&
                !names.contains(row[name].toString(), Qt::CaseInsensitive))
                names << row[name].toString();
        names.sort(Qt::CaseInsensitive);
    }
    QString chosen = view.text(ImportCtl::ComboLanguage);
    if (!names.contains(chosen)) {
        // German first, as the lists are written in German.
        chosen = names.value(0);
        for (const QString &n : names)
            if (n.compare(QLatin1String("GERMAN"), Qt::CaseInsensitive) == 0 ||
                n.compare(QLatin1String("Deutsch"), Qt::CaseInsensitive) == 0)
                chosen = n;
    }
    view.setItems(ImportCtl::ComboLanguage, names);
    view.setText(ImportCtl::ComboLanguage, chosen);
    EnableButtonImport();
}

void ImportForm::rememberWorkbook()
{
    m_workbooks[m_mode] = view.text(ImportCtl::TextXLFile);
    if (m_mode == 1)
        ctx.state.xlAlarmsWarnings = m_workbooks[1];
    else
        ctx.state.xlMaterialChange = m_workbooks[2];
}

void ImportForm::showMode()
{
    const bool alarms = m_mode == 1;
    view.setText(ImportCtl::LabelImportMode, alarms ? QStringLiteral("IMPORT HELPTEXTS: ALARMS and WARNINGS")
                                                    : QStringLiteral("IMPORT HELPTEXTS: MaterialChange"));
    view.setText(ImportCtl::LabelXLFile, alarms
                                             ? QStringLiteral("Excelfile containing Helptexts - ALARMS and WARNINGS:")
                                             : QStringLiteral("Excelfile containing Helptexts - MaterialChange:"));
    view.setText(ImportCtl::LabelLanguagePosition,
                 alarms ? QStringLiteral("Language position in Excelfile:") : QStringLiteral("Column Excelfile"));
    view.setVisible(ImportCtl::ComboNrLangXL, alarms);
    view.setVisible(ImportCtl::TextPosLangXL, !alarms);
    view.setText(ImportCtl::TextXLFile, m_workbooks[m_mode]);
    view.setEnabled(ImportCtl::MenuAlarmsWarnings, !alarms);
    view.setEnabled(ImportCtl::MenuMaterialChange, alarms);
    EnableButtonImport();
}

void ImportForm::MenuGotoItem_Click(int mode)
{
    try {
        if (mode != 1 && mode != 2)
            return;
        rememberWorkbook();
        m_mode = mode;
        showMode();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuGotoItem_Click"), e);
    }
}

void ImportForm::EnableButtonImport()
{
    bool ok = false;
    const double nrLang = view.text(ImportCtl::ComboNrLangXL).toDouble(&ok);
    const bool position = m_mode == 1 ? ok && nrLang >= 1 : view.text(ImportCtl::TextPosLangXL).toInt() >= 1;
    const bool ready = !m_busy && fileExists(view.text(ImportCtl::TextXLFile)) &&
                       !view.text(ImportCtl::TextMachineID).trimmed().isEmpty() &&
                       !view.text(ImportCtl::ComboLanguage).isEmpty() && !ctx.state.helpTextDB.isEmpty() && position;
    view.setEnabled(ImportCtl::CommandImport, ready);
}

void ImportForm::F_Enable()
{
    for (ImportCtl c : kInputs)
        view.setEnabled(c, true);
    showMode();
}

void ImportForm::F_Disable()
{
    for (ImportCtl c : kInputs)
        view.setEnabled(c, false);
}

void ImportForm::TextXLFile_DblClick()
{
    try {
        if (!ctx.ui)
            return;
        const auto chosen =
            ctx.ui->openFile(QStringLiteral("Looking for Troubleshooting-List"),
                             QStringLiteral("MS Excel *.xls, *.xlsx|*.xls;*.xlsx|MS Excel *.xls|*.xls|MS Excel *.xlsx|"
                                            "*.xlsx"),
                             view.text(ImportCtl::TextXLFile));
        if (chosen && !chosen->path.isEmpty()) {
            view.setText(ImportCtl::TextXLFile, chosen->path);
            rememberWorkbook();
        }
        EnableButtonImport();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextXLFile_DblClick"), e);
    }
}

void ImportForm::TextAnzahlFehler_Change()
{
    const QString text = view.text(ImportCtl::TextAnzahlFehler);
    QString refusal;
    if (!digitsOnly(text))
        refusal = QStringLiteral("Nur Zahlen erlaubt");
    else if (text.size() > 3)
        refusal = QStringLiteral("nur dreistellig erlaubt");
    if (refusal.isEmpty()) {
        m_lastAnzFehler = text;
    } else {
        view.setText(ImportCtl::TextAnzahlFehler, m_lastAnzFehler);
        showMessage(ctx, refusal, Buttons::OK, Icon::Exclamation);
    }
    EnableButtonImport();
}

void ImportForm::OptionMaterialChange_Click()
{
    m_templateNeeded = true;
}

ImportRequest ImportForm::request() const
{
    ImportRequest r;
    r.mode = m_mode == 2 ? ImportRequest::MaterialChange : ImportRequest::AlarmsAndWarnings;
    r.machine = view.text(ImportCtl::TextMachineID).trimmed();
    r.language = view.text(ImportCtl::ComboLanguage);
    r.source.path = view.text(ImportCtl::TextXLFile);
    r.source.nrLang = view.text(ImportCtl::ComboNrLangXL).toDouble();
    r.source.posLang = view.text(ImportCtl::TextPosLangXL).toInt();
    r.source.anzFehler = view.text(ImportCtl::TextAnzahlFehler);
    return r;
}

void ImportForm::CommandImport_Click()
{
    try {
        rememberWorkbook();
        const QString added = view.text(ImportCtl::TextAnzahlFehler);
        if (m_templateNeeded || added != m_templateAnzFehler) {
            const Answer a = showMessage(ctx,
                                         QStringLiteral("Es wurde noch keine Vorlage geladen. Oder die Änderungen "
                                                        "(z.B. MaterialChange / Anzahl Fehler) erfordern eine neue "
                                                        "Vorlage.\r\n  Soll der Import trotzdem durchgeführt werden?"),
                                         Buttons::YesNo, Icon::Question);
            if (a != Answer::Yes)
                return;
        }
        m_templateAnzFehler = added;
        m_busy = true;
        F_Disable();
        Importer importer(ctx, view.statusTarget(), [this](const QString &kind, const QString &o, const QString &n) {
            return view.askOverwrite(kind, o, n);
        });
        importer.MainProc(request());
        m_busy = false;
        F_Enable();
        fillLanguages(); // the import may have added the language
    } catch (const std::exception &e) {
        m_busy = false;
        F_Enable();
        reportUnexpected(ctx, QStringLiteral("CommandImport_Click"), e);
    }
}

bool ImportForm::DBKopieren(const QString &target)
{
    try {
        if (fileExists(target)) {
            if (showMessage(ctx, QStringLiteral("Datei existiert schon, mit neuer Quelle überschreiben ?"),
                            Buttons::YesNo, Icon::Question) != Answer::Yes)
                return true; // the database there is kept and used
            // Replaced, but never lost: a copy of it stays beside it.
            if (!CreateDBBackup(ctx, target))
                return false;
        }
        // An Access file, as the operator panel reads it (made at build time with its keys).
        const QString source = programDataFile(ctx, templateFileName(view.checked(ImportCtl::OptionMaterialChange)));
        QByteArray bytes;
        QString why;
        if (readRegularFile(source, kMaxDatabaseBytes, true, bytes, &why) != FileRead::Ok ||
            !replaceFile(target, bytes.constData(), bytes.size(), &why)) {
            LogError(ctx, QStringLiteral("DBKopieren: ") + source + QStringLiteral(" -> ") + target +
                              QStringLiteral(": ") + why);
            showMessage(ctx, QStringLiteral("Datei konnte nicht kopiert werden"), Buttons::OK, Icon::Critical);
            m_templateNeeded = true;
            return false;
        }
        return true;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("DBKopieren"), e);
        return false;
    }
}

void ImportForm::CommandNeueVorlage_Click()
{
    try {
        if (!ctx.ui)
            return;
        const auto target =
            ctx.ui->saveFile(QStringLiteral("New helptext database from the template"),
                             QStringLiteral("MS Access *.mdb|*.mdb"), QFileInfo(ctx.state.helpTextDB).absolutePath());
        if (!target || !DBKopieren(*target))
            return;
        connect(*target);
        if (ctx.state.helpTextDB == *target) {
            m_templateNeeded = false;
            m_templateAnzFehler = view.text(ImportCtl::TextAnzahlFehler);
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandNeueVorlage_Click"), e);
    }
}

void ImportForm::CommandDeleteMachine_Click()
{
    try {
        if (!ctx.state.helpTextDB.isEmpty())
            view.showDeleteMachine();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandDeleteMachine_Click"), e);
    }
}

void ImportForm::MenuChangeDatabase_Click()
{
    try {
        const QString picked = ConnectToDB_Helptext(ctx);
        if (!picked.isEmpty())
            connect(picked);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuChangeDatabase_Click"), e);
    }
}

void ImportForm::MenuLanguage_Click()
{
    try {
        if (ctx.forms && ctx.forms->available(FormId::Languages)) {
            SwitchForm(ctx, FormId::Import, FormId::Languages);
            return;
        }
        showMessage(ctx,
                    QStringLiteral("Languages are created, repaired and deleted in the language form, which this "
                                   "version of the program does not have yet."),
                    Buttons::OK, Icon::Information, QStringLiteral("Languages"));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuLanguage_Click"), e);
    }
}

void ImportForm::MenuInfo_Click()
{
    view.showInfoBox();
}

void ImportForm::MenuExit_Click()
{
    view.closeForm();
}

void ImportForm::Form_Unload(bool &cancel)
{
    cancel = false;
    try {
        if (m_busy) {
            // The import's transaction must end first; leaving it half-way would lose nothing, but gain nothing.
            showMessage(ctx, QStringLiteral("An import is running. Close the window when it has ended."), Buttons::OK,
                        Icon::Information);
            cancel = true;
            return;
        }
        glb_ConnectDBHelptext();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Unload"), e);
    }
}

void ImportForm::glb_ConnectDBHelptext()
{
    try {
        rememberWorkbook();
        const AppState &s = ctx.state;
        SaveIni(ctx, view.text(ImportCtl::TextAnzahlFehler).toInt(), kSetup, QStringLiteral("glb_AnzFehler"),
                s.iniPath);
        SaveIni(ctx, view.checked(ImportCtl::OptionMaterialChange), kSetup, QStringLiteral("glb_MitMaterialChange"),
                s.iniPath);
        SaveIni(ctx, s.helpTextDB, kSetup, QStringLiteral("glb_ConnectDBHelptext"), s.iniPath);
        SaveIni(ctx, s.langLookupDB, kSetup, QStringLiteral("glb_ConnectDB_LLookup"), s.iniPath);
        SaveIni(ctx, s.xlAlarmsWarnings, kSetup, QStringLiteral("XLAlarmsWarnings"), s.iniPath);
        SaveIni(ctx, s.xlMaterialChange, kSetup, QStringLiteral("XLMaterialChange"), s.iniPath);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("glb_ConnectDBHelptext"), e);
    }
}

} // namespace ht
