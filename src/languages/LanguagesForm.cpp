#include "languages/LanguagesForm.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "languages/LanguageJobRun.h"
#include "languages/LanguageJobs.h"

namespace ht
{

namespace
{
const QString kSetup = QStringLiteral("Setup");
const QString kLookupKey = QStringLiteral("StandardLangLookupDB");
const QString kHelpTextKey = QStringLiteral("StandardHelpTextDB");
} // namespace

LanguagesForm::LanguagesForm(Context &c, LanguagesView &v) : ctx(c), view(v) {}

void LanguagesForm::Form_Load()
{
    try {
        if (!connectLookup()) {
            showMessage(ctx, QStringLiteral("Cannot find languagedefinition"), Buttons::OK, Icon::Critical);
            EndProgram(ctx, 1);
        }
        fillPossLanguages();
        if (!connectHelpText()) {
            showMessage(ctx, QStringLiteral("Need database...exiting"), Buttons::OK, Icon::Critical);
            EndProgram(ctx, 1);
        }
        DeleteLanguageCombo_Fill();
        showConnection();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Import_Click"), e);
    }
}

// The active language-definition database (checked at start-up), else the
// one of the settings; on a workstation the user may pick one.
bool LanguagesForm::connectLookup()
{
    AppState &s = ctx.state;
    const QString path = s.langLookupDB.isEmpty() ? LoadIniString(ctx, kSetup, kLookupKey, s.iniPath) : s.langLookupDB;
    if (!path.isEmpty() && !CheckLanguageLookup(ctx, path).isEmpty())
        return true;
    return !s.runningOnMachinePC && !ConnectToLookup(ctx).isEmpty();
}

bool LanguagesForm::connectHelpText()
{
    AppState &s = ctx.state;
    if (!s.helpTextDB.isEmpty())
        return true; // checked when it was chosen
    const QString stored = LoadIniString(ctx, kSetup, kHelpTextKey, s.iniPath);
    if (!stored.isEmpty() && fileExists(stored) && !CheckConnection(ctx, stored).isEmpty())
        return true;
    if (s.runningOnMachinePC)
        return false;
    const QString picked = ConnectToDB_Helptext(ctx);
    return !picked.isEmpty() && !CheckConnection(ctx, picked).isEmpty();
}

void LanguagesForm::fillPossLanguages()
{
    fillList(Ctl::PossLanguages, QStringLiteral("Import_Click"), QStringLiteral("language-definition database"),
             [this] { return offeredLanguages(ctx); });
    PossLanguages_Click();
}

// A list of languages from a database that cannot be read stays empty, and the user is told.
void LanguagesForm::fillList(Ctl list, const QString &procedure, const QString &database,
                             const std::function<QStringList()> &read)
{
    QStringList names;
    try {
        names = read();
    } catch (const DbError &e) {
        tellJobFailure(ctx, procedure,
                       QStringLiteral("The languages of the ") + database + QStringLiteral(" cannot be read:"), e,
                       QStringLiteral("Choose another ") + database + QStringLiteral(" in the File menu."));
    }
    view.setItems(list, names);
}

// The caption and the menus for the databases in use and the program's variant.
void LanguagesForm::showConnection()
{
    const AppState &s = ctx.state;
    view.setCaption(QStringLiteral("Helptext editor Languages - connected to ") + s.helpTextDB);
    // The form leads back to the variant's own main form.
    const bool editor = s.mode != QLatin1String("IMPORT");
    for (Ctl menu : {Ctl::MenuAlarms, Ctl::MenuWarnings, Ctl::MenuMaterialChange})
        view.setVisible(menu, editor);
    view.setVisible(Ctl::MenuImport, !editor);
    view.setEnabled(Ctl::MenuMaterialChange, s.materialChangePresent);
    view.setEnabled(Ctl::MenuChangeDatabase, !s.runningOnMachinePC);
    view.setEnabled(Ctl::MenuLanguageDefinitionDB, !s.runningOnMachinePC);
}

void LanguagesForm::Form_Terminate()
{
    try {
        const AppState &s = ctx.state;
        // The machine PC's settings name its standard paths; they are never rewritten.
        if (s.runningOnMachinePC)
            return;
        if (!s.helpTextDB.isEmpty())
            SaveIni(ctx, s.helpTextDB, kSetup, kHelpTextKey, s.iniPath);
        if (!s.langLookupDB.isEmpty())
            SaveIni(ctx, s.langLookupDB, kSetup, kLookupKey, s.iniPath);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Terminate"), e);
    }
}

void LanguagesForm::PossLanguages_Click()
{
    try {
        const QString name = view.text(Ctl::PossLanguages);
        std::optional<LanguageDefinition> found;
        try {
            if (!name.isEmpty())
                found = lookupLanguage(ctx, name);
        } catch (const DbError &e) {
            tellJobFailure(ctx, QStringLiteral("PossLanguages_Click"),
                           QStringLiteral("The language-definition database cannot be read:"), e,
                           QStringLiteral("Choose another one in the File menu."));
        }
        view.setText(Ctl::LCode, found ? found->number : QString());
        view.setText(Ctl::LFont, found ? found->font : QString());
        view.setText(Ctl::LKeybd, found ? found->layout : QString());
        view.setEnabled(Ctl::CreateLanguage, found.has_value());
        view.setEnabled(Ctl::CommandUpdateLanguageSettings, found.has_value());
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("PossLanguages_Click"), e);
    }
}

LanguageDefinition LanguagesForm::chosen() const
{
    return {view.text(Ctl::LCode), view.text(Ctl::PossLanguages), view.text(Ctl::LFont), view.text(Ctl::LKeybd)};
}

void LanguagesForm::CreateLanguage_Click()
{
    whileBusy([this] {
        const LanguageDefinition language = chosen();
        const std::optional<LanguageCreated> created = createLanguage(ctx, view.statusTarget(), language);
        if (!created)
            return;
        DeleteLanguageCombo_Fill();
        const long rows = created->alarms + created->warnings + created->materialChanges + created->descriptions;
        setStatus(language.name + QStringLiteral(" is complete: %1 text rows added, existing texts kept.").arg(rows));
    });
}

void LanguagesForm::CommandUpdateLanguageSettings_Click()
{
    const LanguageDefinition language = chosen();
    if (updateLanguageSettings(ctx, language))
        setStatus(QStringLiteral("Font and keyboard layout of ") + language.name + QStringLiteral(" stored."));
}

void LanguagesForm::DeleteLanguageCombo_Fill()
{
    fillList(Ctl::DeleteLanguageCombo, QStringLiteral("DeleteLanguageCombo_Fill"), QStringLiteral("help-text database"),
             [this] { return deletableLanguages(ctx); });
    DeleteLanguageCombo_Click();
}

void LanguagesForm::DeleteLanguageCombo_Click()
{
    view.setEnabled(Ctl::DeleteLanguageButton, !view.text(Ctl::DeleteLanguageCombo).isEmpty());
}

void LanguagesForm::DeleteLanguageButton_Click()
{
    whileBusy([this] {
        const QString name = view.text(Ctl::DeleteLanguageCombo);
        const int option = view.text(Ctl::DeleteLangOption).toInt();
        const std::optional<LanguageDeleted> deleted = deleteLanguage(ctx, view.statusTarget(), name, option);
        if (!deleted)
            return;
        DeleteLanguageCombo_Fill();
        const long rows = deleted->alarms + deleted->warnings + deleted->materialChanges;
        setStatus(
            name + QStringLiteral(": %1 text rows deleted").arg(rows) +
            (option == DeleteWithConfiguration ? QStringLiteral(", and its configuration.") : QStringLiteral(".")));
    });
}

void LanguagesForm::whileBusy(const std::function<void()> &job)
{
    m_busy = true;
    view.setBusy(true);
    struct Done {
        LanguagesForm &f;
        ~Done()
        {
            f.m_busy = false;
            f.view.setBusy(false);
        }
    } done{*this};
    job();
}

void LanguagesForm::MenuAlarms_Click()
{
    goToEditor(KindAlarms);
}

void LanguagesForm::MenuWarnings_Click()
{
    goToEditor(KindWarnings);
}

void LanguagesForm::MenuMaterialChange_Click()
{
    if (ctx.state.materialChangePresent)
        goToEditor(KindMaterialChange);
}

void LanguagesForm::goToEditor(int kind)
{
    try {
        AppState &s = ctx.state;
        s.currentKind = kind;
        // The editor takes its kind from the position it stored last.
        if (!s.runningOnMachinePC)
            SaveIni(ctx, kind, QStringLiteral("Defaults"), QStringLiteral("Item"), s.iniPath);
        switchTo(FormId::Edit);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuAlarms_Click"), e);
    }
}

void LanguagesForm::MenuImport_Click()
{
    try {
        switchTo(FormId::Import);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuImport_Click"), e);
    }
}

void LanguagesForm::switchTo(FormId form)
{
    if (ctx.forms && ctx.forms->available(form)) {
        SwitchForm(ctx, FormId::Languages, form);
        return;
    }
    showMessage(ctx, QStringLiteral("This version of the program does not have that form yet."), Buttons::OK,
                Icon::Information, QStringLiteral("Languages"));
}

void LanguagesForm::MenuChangeDatabase_Click()
{
    try {
        const QString picked = ConnectToDB_Helptext(ctx);
        // A database that fails its check leaves the one in use as it was.
        if (picked.isEmpty() || CheckConnection(ctx, picked).isEmpty())
            return;
        DeleteLanguageCombo_Fill();
        showConnection();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuChangeDatabase_Click"), e);
    }
}

void LanguagesForm::MenuLanguageDefinitionDB_Click()
{
    try {
        if (!ConnectToLookup(ctx).isEmpty())
            fillPossLanguages();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("MenuLanguageDefinitionDB_Click"), e);
    }
}

void LanguagesForm::MenuExit_Click()
{
    view.closeForm();
}

void LanguagesForm::setStatus(const QString &text)
{
    if (StatusTarget *status = view.statusTarget())
        status->setStatusText(text);
}

} // namespace ht
