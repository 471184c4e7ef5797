#pragma once
// The logic of the start-up dialog dlgStartup: program variant, settings file,
// standard paths and start-up checks, the settings list, the 3-second
// countdown, the batch page generation and the hand-over to the main form.
// The same dialog comes back, modally, as the main forms' Info box.

#include <QString>
#include <QStringList>

class QObject;

namespace ht
{

struct Context;
class StartupView;

// Exit codes: 0 all done; 1 something failed or was left undone (the error
// log says what); 2 the program was started in a way it cannot work (a batch
// run without a kind, a window without a display).
constexpr int kExitFailed = 1;
constexpr int kExitWrongStart = 2;

// Start-up values that outlive one dialog instance.
struct StartupSession {
    QString compileOption;         // the build's constant, see GetCompileOption
    QString commandLine;           // the program's arguments joined by blanks (ProgramCommandLine)
    QObject *infoCaller = nullptr; // the main form that shows the dialog as its Info box
    // Set when a dialog has been unloaded: from then on the dialog treats the
    // program as ending (the Info box leaves the current kind alone and never
    // asks to abort a page run). Kept apart from AppState::programEnding so
    // that the main forms' own unload questions are not switched off.
    bool dialogUnloaded = false;
};

class StartupDialog
{
  public:
    StartupDialog(Context &ctx, StartupSession &session, StartupView &view);

    void Form_Load();
    void Form_Activate();
    void Form_Unload(bool &cancel);
    void Form_Resize();
    void Timer_Timer();
    void CommandOK_Click();
    void CommandShowSettings_Click();
    void LabelVersion_Click();
    void LabelTitle_Click();
    void PictureLogo_Click();
    void ContinuePrg();

    bool continueArmed() const { return m_continueArmed; }

  private:
    void checkLanguageLookup();
    void checkHelpTextDatabase();
    void runBatch();
    void fillSettingsList();

    Context &ctx;
    StartupSession &session;
    StartupView &view;
    bool m_firstActivation = false;
    bool m_continueArmed = false;
};

// "EDIT" or "IMPORT"; anything else shows "CompileOption not set" and ends the program.
QString ValidateCompileOption(Context &ctx, const QString &option);
// "Version 2.3.15  (c) 2002 by Harko & Co" with the copyright sign.
QString VersionLabelText();
// "NT" for an index-text database ending in .mdb, "XP" for .vws, else "".
QString ScopiaVersionLabel(const QString &indexTextDB);
// The lines of ListSettings for the current state.
QStringList SettingsListLines(const Context &ctx);

} // namespace ht
