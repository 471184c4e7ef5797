// The start-up dialog's logic, driven through a headless window with scripted answers.
#include "StartupTestSupport.h"

#include "common/IniFile.h"
#include "common/QtPrinters.h"
#include "startup/StartupDialog.h"
#include "support/TestSupport.h"

#include <QDir>
#include <optional>

namespace ht
{
namespace
{

// A program called "helptext" either in <root>/Program/Tools (the machine PC)
// or in a workstation directory with its settings under <root>/config.
class Startup : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        qputenv("HELPTEXT_MACHINE_ROOT", root.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", root.filePath("config").toUtf8());
        qunsetenv("SystemRoot");
        QDir().mkpath(program("Tools"));
    }
    void TearDown() override
    {
        qunsetenv("HELPTEXT_MACHINE_ROOT");
        qunsetenv("XDG_CONFIG_HOME");
    }

    QString program(const QString &name) const { return root.filePath("Program/" + name); }
    QString userIni() const { return root.filePath("config/helptext.ini"); }
    void onMachinePC(bool withTree = true)
    {
        t.ctx.programDir = program("Tools");
        if (withTree)
            test::makeMachineTree(root.path());
    }

    // Runs load and first activation; returns the exit code when the program ended.
    std::optional<int> start(StartupDialog &d)
    {
        try {
            d.Form_Load();
            d.Form_Activate();
        } catch (const ProgramEnded &e) {
            return e.exitCode;
        }
        return std::nullopt;
    }
    std::optional<int> start() { return start(dialog); }

    QTemporaryDir root;
    test::TestContext t;
    StartupSession session{.compileOption = "EDIT"};
    test::HeadlessView view;
    StartupDialog dialog{t.ctx, session, view};
};

TEST_F(Startup, BuildWithoutVariantIsRefused)
{
    for (const char *option : {"", "edit", "EXPORT"}) {
        t.ui.shown.clear();
        session.compileOption = option;
        EXPECT_THROW(dialog.Form_Load(), ProgramEnded) << option;
        ASSERT_EQ(t.ui.shown.size(), 1u);
        EXPECT_EQ(t.ui.shown[0].text, "CompileOption not set");
        EXPECT_EQ(t.ui.shown[0].icon, Icon::Critical);
    }
}

// Machine PC: which standard paths are taken, or what ends the program.
struct PathCase {
    const char *name;
    QString files;             // created below <root>/Program, blank-separated ("Help/" makes the directory)
    const char *iniLine;       // in [Setup] of the program's own settings file; %R = root
    const char *expectedIndex; // below <root>/Program; "" when the run must end
    const char *expectedLog;   // in the error log; %R = root
};
void PrintTo(const PathCase &c, std::ostream *os)
{
    *os << c.name;
}
class MachinePCPaths : public Startup, public ::testing::WithParamInterface<PathCase>
{
};

TEST_P(MachinePCPaths, FallBackToTheConstantPaths)
{
    const PathCase &c = GetParam();
    onMachinePC(false);
    for (const QString &f : c.files.split(' ', Qt::SkipEmptyParts))
        f.endsWith('/') ? void(QDir().mkpath(program(f))) : test::writeText(program(f), "x");
    test::writeText(program("Tools/helptext.ini"), QString("[Setup]\n%1\n").arg(c.iniLine).replace("%R", root.path()));

    const bool ended = [&] {
        try {
            dialog.Form_Load();
            return false;
        } catch (const ProgramEnded &) {
            return true;
        }
    }();
    EXPECT_TRUE(t.errorLog().contains(QString(c.expectedLog).replace("%R", root.path()))) << qPrintable(t.errorLog());
    EXPECT_EQ(ended, *c.expectedIndex == 0);
    if (ended)
        return;
    EXPECT_TRUE(t.ctx.state.unattended);
    EXPECT_EQ(t.ctx.state.standardIndexTextDB, QDir::cleanPath(program(c.expectedIndex)));
    EXPECT_EQ(t.ctx.state.indexTextDB, t.ctx.state.standardIndexTextDB);
    EXPECT_EQ(view.scopiaVersion, QString(c.expectedIndex).endsWith('b') ? "NT" : "XP");
    EXPECT_TRUE(t.ctx.state.standardHelpDir.endsWith('/'));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MachinePCPaths,
    ::testing::Values(
        PathCase{"Nothing", "", "", "", "File not found: %R/Program/Helptext.mdb"},
        PathCase{"MdbPreferred", "Helptext.mdb Scopia.mdb Scopia.vws Tools/Languages.mdb Help/", "", "Scopia.mdb", ""},
        PathCase{"VwsWhenNoMdb", "Helptext.mdb Scopia.vws Tools/Languages.mdb Help/", "", "Scopia.vws", ""},
        PathCase{"NoIndexText", "Helptext.mdb Tools/Languages.mdb Help/", "", "",
                 "File not found: %R/Program/Scopia.vws"},
        PathCase{"NoLanguages", "Helptext.mdb Scopia.mdb Help/", "", "",
                 "File not found: %R/Program/Tools/Languages.mdb"},
        PathCase{"NoHelpDir", "Helptext.mdb Scopia.mdb Tools/Languages.mdb", "", "",
                 "Directory not found: %R/Program/Help/"},
        PathCase{"SettingNamesMissingFile", "Helptext.mdb Scopia.mdb Tools/Languages.mdb Help/",
                 "StandardIndexTextDB=%R/elsewhere/Gone.vws", "Scopia.mdb", ""},
        PathCase{"SettingNamesExistingFile", "Helptext.mdb Tools/Languages.mdb Help/ ../elsewhere/Other.vws",
                 "StandardIndexTextDB=%R/elsewhere/Other.vws", "../elsewhere/Other.vws", ""}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(Startup, MachinePCSettingsListCountdownAndInfoBox)
{
    onMachinePC();
    ASSERT_EQ(start(), std::nullopt) << qPrintable(t.errorLog());
    const auto q = [](const QString &s) { return '"' + s + '"'; };
    EXPECT_EQ(view.settings, QStringList({"User-ini-file :", q(program("Tools/helptext.ini")),
                                          "Helptext-Database :", q(t.ctx.state.helpTextDB),
                                          "Language-Database :", q(program("Tools/Languages.mdb")),
                                          "Helptext-Directory :", q(program("Help/")), "Materialchange present",
                                          "Application running on Machine-PC"}));
    EXPECT_FALSE(t.ctx.state.helpTextDB.isEmpty());
    EXPECT_EQ(t.ctx.state.helpMainDir, program("Help/"));
    EXPECT_EQ(view.timerInterval, 3000);
    EXPECT_TRUE(dialog.continueArmed() && t.ctx.state.startupChecksDone);
    EXPECT_FALSE(view.showSettingsEnabled);
    EXPECT_TRUE(t.ui.shown.empty());

    // The start-up checks only logged; the main form is watched.
    EXPECT_TRUE(t.ctx.state.unattended);
    dialog.CommandOK_Click();
    EXPECT_FALSE(t.ctx.state.unattended);
    // Shown again as the Info box after the hand-over, the dialog keeps the
    // current kind and checks no database again, even one that went bad meanwhile.
    test::writeText(program("Helptext.mdb"), "not a database any more");
    bool cancel = true;
    dialog.Form_Unload(cancel);
    EXPECT_FALSE(cancel);
    t.ctx.state.currentKind = KindWarnings;

    QObject editor;
    session.infoCaller = &editor;
    test::HeadlessView infoView;
    StartupDialog info(t.ctx, session, infoView);
    ASSERT_EQ(start(info), std::nullopt);
    EXPECT_EQ(t.ctx.state.currentKind, KindWarnings);
    EXPECT_TRUE(infoView.showSettingsEnabled);
    info.CommandShowSettings_Click();
    EXPECT_TRUE(infoView.settingsVisible);
    EXPECT_FALSE(t.ctx.state.unattended);
    EXPECT_TRUE(t.ui.shown.empty());
    info.LabelTitle_Click();
    EXPECT_EQ(infoView.events, QStringList{"unload"});
}

TEST_F(Startup, MachinePCWithBrokenHelpTextDatabaseEndsSilently)
{
    onMachinePC();
    test::writeText(program("Helptext.mdb"), "not a database");
    EXPECT_EQ(start(), 1);
    EXPECT_TRUE(t.errorLog().contains("Helptext database \"" + program("Helptext.mdb") + "\" not found or incorrect."))
        << qPrintable(t.errorLog());
    EXPECT_TRUE(t.ui.shown.empty());
}

// Workstation: the language-definition database is asked for until given or refused.
TEST_F(Startup, WorkstationAsksForTheLanguageDatabase)
{
    {
        test::TestContext refused;
        StartupSession s{.compileOption = "EDIT"};
        test::HeadlessView v;
        StartupDialog d(refused.ctx, s, v);
        refused.ui.push(std::monostate{});
        refused.ui.push(Answer::Cancel);
        EXPECT_EQ(start(d), 1);
        EXPECT_EQ(v.timerInterval, 0);
    }
    const QString languages = root.filePath("Languages.mdb");
    test::makeDemoLanguageDB(languages);
    test::writeText(program("Helptext.mdb"), "x");
    test::writeText(userIni(), "[Setup]\nHelpMainDir=" + root.path() + "/\nStandardHelpTextDB=" +
                                   program("Helptext.mdb") + "\nGenerateHTMLAfterEditAlarm=TRUE\n");
    t.ui.push(std::monostate{}); // file dialog cancelled
    t.ui.push(Answer::Retry);
    t.ui.push(OpenFileChoice{languages, false});
    ASSERT_EQ(start(), std::nullopt) << qPrintable(t.errorLog());
    EXPECT_EQ(t.ui.messageTexts(), QStringList{"Language-definition database not found or incorrect!"});
    EXPECT_EQ(t.ctx.state.langLookupDB, languages);
    EXPECT_EQ(LoadIniString(t.ctx, "Setup", "StandardLangLookupDB", userIni()), languages);
    EXPECT_EQ(t.ctx.state.helpMainDir, root.path() + '/');
    EXPECT_TRUE(t.ctx.state.helpTextDB.isEmpty()); // the main form connects it
    // No standard path is read on a workstation; the generate flags are kept and all three written back.
    EXPECT_FALSE(t.ctx.state.runningOnMachinePC || t.ctx.state.unattended);
    EXPECT_EQ(t.ctx.state.iniPath, userIni());
    EXPECT_TRUE(t.ctx.state.standardHelpTextDB.isEmpty() && view.scopiaVersion.isEmpty());
    EXPECT_TRUE(t.ctx.state.generateAfterEditAlarm);
    EXPECT_FALSE(t.ctx.state.generateAfterEditWarnings);
    const QString ini = QString::fromUtf8(test::readFileBytes(userIni()));
    for (const char *line : {"GenerateHTMLAfterEditAlarm=true", "GenerateHTMLAfterEditWarnings=false",
                             "GenerateHTMLAfterEditMaterialChange=false"})
        EXPECT_TRUE(ini.contains(line)) << qPrintable(ini);
}

// ContinuePrg: what is shown and unloaded, by variant and Info caller.
TEST_F(Startup, ContinuePrgHandsOverOrCloses)
{
    const struct {
        const char *mode;
        bool infoBox, armed;
        QStringList events;
        bool callerKept;
    } cases[] = {{"EDIT", false, true, {"show:EDIT", "unload"}, false},
                 {"EDIT", true, true, {"unload"}, false},
                 {"IMPORT", false, true, {"unload", "show:IMPORT", "unload"}, false},
                 {"IMPORT", true, true, {"unload", "show:IMPORT", "unload"}, true},
                 {"EDIT", false, false, {"show:EDIT", "unload"}, false}};
    test::makeDemoLanguageDB(root.filePath("Languages.mdb"));
    test::writeText(userIni(),
                    QString("[Setup]\nStandardLangLookupDB=%1/Languages.mdb\nHelpMainDir=%1/\n").arg(root.path()));
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.mode) + (c.infoBox ? " info box" : "") + (c.armed ? " armed" : ""));
        test::TestContext tc;
        QObject caller;
        StartupSession s{.compileOption = c.mode, .infoCaller = c.infoBox ? &caller : nullptr};
        test::HeadlessView v;
        StartupDialog d(tc.ctx, s, v);
        if (c.armed)
            ASSERT_EQ(start(d), std::nullopt) << qPrintable(tc.errorLog());
        else
            d.Form_Load();
        EXPECT_EQ(d.continueArmed(), c.armed);
        d.Timer_Timer();
        EXPECT_EQ(v.events, c.events);
        EXPECT_EQ(s.infoCaller != nullptr, c.callerKept);
        if (c.armed)
            EXPECT_EQ(v.showSettingsEnabled, c.infoBox);
    }
}

TEST_F(Startup, UnloadDuringPageWritingAsksToAbort)
{
    t.ctx.state.writingHtml = true;
    t.ui.push(Answer::No);
    bool cancel = false;
    dialog.Form_Unload(cancel);
    EXPECT_TRUE(cancel);
    EXPECT_FALSE(session.dialogUnloaded);
    t.ui.push(Answer::Yes);
    dialog.Form_Unload(cancel);
    EXPECT_FALSE(cancel);
    EXPECT_TRUE(t.ctx.state.abortHtml && session.dialogUnloaded);
    EXPECT_EQ(t.ui.messageTexts().size(), 2);
}

} // namespace
} // namespace ht
