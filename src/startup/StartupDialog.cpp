#include "startup/StartupDialog.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "common/StatusDisplay.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "html/HelpDirectory.h"
#include "html/HtmlWriter.h"
#include "startup/CommandLine.h"
#include "startup/MachinePC.h"
#include "startup/StandardPaths.h"
#include "startup/StartupView.h"

#include <exception>

namespace ht
{

namespace
{
const QString kSetup = QStringLiteral("Setup");
const QString kEdit = QStringLiteral("EDIT");
const QString kImport = QStringLiteral("IMPORT");
constexpr int kCountdownMs = 3000;

QString quoted(const QString &value)
{
    return QLatin1Char('"') + value + QLatin1Char('"');
}
} // namespace

StartupDialog::StartupDialog(Context &c, StartupSession &s, StartupView &v) : ctx(c), session(s), view(v) {}

void StartupDialog::Form_Load()
{
    try {
        AppState &s = ctx.state;
        s.importerFlag = true;
        s.mode = ValidateCompileOption(ctx, session.compileOption);
        m_firstActivation = true;

        s.runningOnMachinePC = GetAppRunningOnMachinePC(ctx);
        // The machine PC's start-up checks only log; the main form, once
        // shown, is watched (ContinuePrg).
        if (s.runningOnMachinePC && !s.startupChecksDone)
            s.unattended = true;
        s.iniPath = s.runningOnMachinePC ? GetStandardApplicationIni(ctx) : GetStandardUserIni(ctx);
        if (s.runningOnMachinePC) {
            ReadStandardPaths(ctx);
            s.indexTextDB = s.standardIndexTextDB;
        }
        s.pathsRead = true;

        view.setTimerInterval(0);
        if (!s.programEnding && !session.dialogUnloaded)
            s.currentKind = KindAlarms;
        s.commandLine = ReadCommandLine(session.commandLine);

        if (s.mode == kImport) {
            view.setCaption(QStringLiteral("Helptext Importer "));
            view.setTitle(QStringLiteral("Helptext Importer for Harko-machines"));
        } else {
            const auto readAndKeep = [&](const QString &key) {
                const bool value = LoadIniBoolean(ctx, kSetup, key, s.iniPath, false, false);
                // Written straight back so that the user's settings file always holds the key.
                if (!s.runningOnMachinePC)
                    SaveIni(ctx, QVariant(value), kSetup, key, s.iniPath);
                return value;
            };
            s.generateAfterEditAlarm = readAndKeep(QStringLiteral("GenerateHTMLAfterEditAlarm"));
            s.generateAfterEditWarnings = readAndKeep(QStringLiteral("GenerateHTMLAfterEditWarnings"));
            s.generateAfterEditMaterialChange = readAndKeep(QStringLiteral("GenerateHTMLAfterEditMaterialChange"));
            view.setCaption(QStringLiteral("Helptext Editor "));
            view.setTitle(QStringLiteral("Helptext Editor for Harko-machines"));
        }
        view.setVersionText(VersionLabelText());
        view.setScopiaVersion(ScopiaVersionLabel(s.standardIndexTextDB));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Load"), e);
    }
}

void StartupDialog::Form_Activate()
{
    try {
        AppState &s = ctx.state;
        if (m_firstActivation) {
            m_firstActivation = false;
            view.refresh();
            view.setCaption(s.mode == kImport ? QStringLiteral("Helptext Importer")
                                              : QStringLiteral("Helptext Editor "));
            view.setTitle(s.mode == kImport ? QStringLiteral("Helptext Importer for Harko-machines")
                                            : QStringLiteral("Helptext Editor for Harko-machines"));
            checkLanguageLookup();
            // As the Info box the dialog must not check again: a database
            // found wanting now would end the program under the open editor.
            if (s.runningOnMachinePC && !s.startupChecksDone)
                checkHelpTextDatabase();
            if (s.mode == kEdit) {
                if (s.runningOnMachinePC) {
                    s.helpMainDir = s.standardHelpDir;
                } else if (s.helpMainDir.isEmpty()) {
                    bool checkOnly = false, select = false;
                    s.helpMainDir = GetHelpMainDir(ctx, checkOnly, select);
                }
                if (s.helpTextDB.isEmpty() && s.runningOnMachinePC)
                    EndProgram(ctx, 1);
            }
            if (s.xlAlarmsWarnings.isEmpty())
                s.xlAlarmsWarnings = LoadIniString(ctx, kSetup, QStringLiteral("XLAlarmsWarnings"), s.iniPath);
            if (s.xlMaterialChange.isEmpty())
                s.xlMaterialChange = LoadIniString(ctx, kSetup, QStringLiteral("XLMaterialChange"), s.iniPath);

            if (FindCommandLineParameter(ctx, QStringLiteral("html")))
                runBatch(); // never returns: the batch run ends the program
            m_continueArmed = true;
            view.setTimerInterval(kCountdownMs);
        }
        if (session.infoCaller)
            view.setShowSettingsEnabled(true);
        fillSettingsList();
        s.startupChecksDone = true;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Activate"), e);
    }
}

void StartupDialog::checkLanguageLookup()
{
    AppState &s = ctx.state;
    if (s.runningOnMachinePC) {
        s.langLookupDB = s.standardLangLookupDB;
        if (!s.startupChecksDone)
            s.langLookupDB = CheckLanguageLookup(ctx, s.standardLangLookupDB);
        if (s.langLookupDB.isEmpty()) {
            LogError(ctx, QStringLiteral("Language-definition database ") + quoted(s.standardLangLookupDB) +
                              QStringLiteral(" not found or incorrect."));
            EndProgram(ctx, 1);
        }
        return;
    }
    if (s.langLookupDB.isEmpty()) {
        QString path = LoadIniString(ctx, kSetup, QStringLiteral("StandardLangLookupDB"), s.iniPath, false, false);
        if (!path.isEmpty() && !s.startupChecksDone)
            path = CheckLanguageLookup(ctx, path);
        s.langLookupDB = path;
    }
    while (s.langLookupDB.isEmpty()) {
        const QString picked = ConnectToLookup(ctx);
        if (!picked.isEmpty()) {
            SaveIni(ctx, QVariant(picked), kSetup, QStringLiteral("StandardLangLookupDB"), s.iniPath);
            s.langLookupDB = picked;
        } else if (showMessage(ctx, QStringLiteral("Language-definition database not found or incorrect!"),
                               Buttons::RetryCancel, Icon::Critical) != Answer::Retry) {
            EndProgram(ctx, 1);
        }
    }
}

void StartupDialog::checkHelpTextDatabase()
{
    AppState &s = ctx.state;
    // A batch page generation only reads: the database is then used as it is,
    // nothing repaired, and an earlier SQLite conversion of an Access file is not taken.
    const bool batch = FindCommandLineParameter(ctx, QStringLiteral("html"));
    s.helpTextDB = CheckConnection(ctx, s.standardHelpTextDB, batch ? ConnectFor::Reading : ConnectFor::Editing);
    if (s.helpTextDB.isEmpty()) {
        LogError(ctx, QStringLiteral("Helptext database ") + quoted(s.standardHelpTextDB) +
                          QStringLiteral(" not found or incorrect."));
        EndProgram(ctx, 1);
    }
}

void StartupDialog::runBatch()
{
    ctx.state.unattended = true; // nobody watches a batch run, display or not
    view.setOkEnabled(false);
    view.setTimerInterval(0);
    bool alarms = FindCommandLineParameter(ctx, QStringLiteral("Alarms"));
    bool warnings = FindCommandLineParameter(ctx, QStringLiteral("Warnings"));
    bool materialChange = FindCommandLineParameter(ctx, QStringLiteral("MaterialChange"));
    if (!alarms && !warnings && !materialChange) {
        LogError(ctx, QStringLiteral("Missing second parameter in commandline"));
        EndProgram(ctx, kExitWrongStart);
    }
    WriteHTMLPage(ctx, view.statusTarget(), alarms, warnings, materialChange, QString(), QString(), 0);
    // A script that runs the generation learns whether every page was written.
    EndProgram(ctx, ctx.state.htmlRunFailed ? kExitFailed : 0);
}

void StartupDialog::fillSettingsList()
{
    view.setSettingsList(SettingsListLines(ctx));
}

void StartupDialog::Form_Unload(bool &cancel)
{
    try {
        cancel = false;
        if (!ctx.state.programEnding && !session.dialogUnloaded && ctx.state.writingHtml && Abort_WriteHTML(ctx) != 1) {
            cancel = true;
            return;
        }
        session.dialogUnloaded = true;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Unload"), e);
    }
}

void StartupDialog::Form_Resize()
{
    try {
        if (ctx.state.pathsRead)
            StatusAndProgessBarReloc(ctx, view.statusTarget(), 300);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Form_Resize"), e);
    }
}

void StartupDialog::ContinuePrg()
{
    try {
        const QString &mode = ctx.state.mode;
        if (m_continueArmed) {
            if (mode == kEdit && session.infoCaller) {
                // The dialog was the Info box over the open editor.
                session.infoCaller = nullptr;
                view.unload();
                return;
            }
            if (mode != kEdit)
                view.unload();
        }
        if (mode == kImport || mode == kEdit) {
            // Somebody works with the main form: its questions are asked, on
            // the machine PC too, unless there is no display to ask on.
            ctx.state.unattended = ctx.state.noDisplay;
            view.showMainForm(mode);
        }
        view.unload();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ContinuePrg"), e);
    }
}

// Every click on the dialog and the timer's tick lead on to the main form.
void StartupDialog::Timer_Timer()
{
    ContinuePrg();
}
void StartupDialog::CommandOK_Click()
{
    ContinuePrg();
}
void StartupDialog::LabelVersion_Click()
{
    ContinuePrg();
}
void StartupDialog::LabelTitle_Click()
{
    ContinuePrg();
}
void StartupDialog::PictureLogo_Click()
{
    ContinuePrg();
}

void StartupDialog::CommandShowSettings_Click()
{
    try {
        view.showSettingsList();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CommandShowSettings_Click"), e);
    }
}

} // namespace ht
