// The start-up dialog's logic, driven through a headless window with scripted answers.
#include "StartupTestSupport.h"

#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "startup/StartupDialog.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>

namespace ht
{
namespace
{

using test::HeadlessView;

// A program called "helptext" either in <root>/Program/Tools (the machine PC)
// or in a workstation directory with its settings under <tmp>/config.
class StartupFixture : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        qputenv("HELPTEXT_MACHINE_ROOT", root.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", root.filePath(QStringLiteral("config")).toUtf8());
        qunsetenv("SystemRoot");
        QDir().mkpath(root.filePath(QStringLiteral("Program/Tools")));
        QDir().mkpath(root.filePath(QStringLiteral("config")));
        session.compileOption = QStringLiteral("EDIT");
    }
    void TearDown() override
    {
        qunsetenv("HELPTEXT_MACHINE_ROOT");
        qunsetenv("XDG_CONFIG_HOME");
    }

    QString program(const QString &name) const { return root.filePath(QStringLiteral("Program/") + name); }
    QString userIni() const { return root.filePath(QStringLiteral("config/helptext.ini")); }
    QString appIni() const { return program(QStringLiteral("Tools/helptext.ini")); }
    void onMachinePC() { t.ctx.programDir = program(QStringLiteral("Tools")); }
    QString log() const { return QString::fromUtf8(test::readFileBytes(errorLogPath(t.ctx))); }

    // Runs load and first activation; returns the exit code when the program ended.
    std::optional<int> start()
    {
        try {
            dialog.Form_Load();
            dialog.Form_Activate();
        } catch (const ProgramEnded &e) {
            return e.exitCode;
        }
        return std::nullopt;
    }

    QTemporaryDir root;
    test::TestContext t;
    StartupSession session;
    HeadlessView view;
    StartupDialog dialog{t.ctx, session, view};
};

TEST_F(StartupFixture, BuildWithoutVariantIsRefused)
{
    for (const char *option : {"", "edit", "EXPORT"}) {
        test::TestContext c;
        StartupSession s;
        s.compileOption = QString::fromLatin1(option);
        HeadlessView v;
        StartupDialog d(c.ctx, s, v);
        EXPECT_THROW(d.Form_Load(), ProgramEnded) << option;
        ASSERT_EQ(c.ui.shown.size(), 1u);
        EXPECT_EQ(c.ui.shown[0].text, QStringLiteral("CompileOption not set"));
        EXPECT_EQ(c.ui.shown[0].icon, Icon::Critical);
        EXPECT_EQ(c.ui.shown[0].buttons, Buttons::OK);
    }
}

// Machine PC: which standard paths are taken, or what ends the program.
struct PathCase {
    const char *name;
    QStringList files;         // created below <root>/Program ("Help/" makes the directory)
    QStringList iniLines;      // Setup section of the program's own settings file; %R = root
    const char *expectedIndex; // below <root>/Program; "" when the run must end
    const char *expectedLog;   // substring of the error log; %R = root
};

void PrintTo(const PathCase &c, std::ostream *os)
{
    *os << c.name;
}

class MachinePCPaths : public StartupFixture, public ::testing::WithParamInterface<PathCase>
{
};

TEST_P(MachinePCPaths, FallBackToTheConstantPaths)
{
    const PathCase &c = GetParam();
    onMachinePC();
    QDir().mkpath(root.filePath(QStringLiteral("elsewhere")));
    for (const QString &f : c.files) {
        if (f.endsWith(QLatin1Char('/')))
            QDir().mkpath(program(f));
        else
            test::writeText(program(f), QStringLiteral("x"));
    }
    QString ini = QStringLiteral("[Setup]\n");
    for (const QString &l : c.iniLines)
        ini += QString(l).replace(QLatin1String("%R"), root.path()) + QLatin1Char('\n');
    test::writeText(appIni(), ini);

    bool ended = false;
    try {
        dialog.Form_Load();
    } catch (const ProgramEnded &) {
        ended = true;
    }
    const QString expectedLog = QString::fromUtf8(c.expectedLog).replace(QLatin1String("%R"), root.path());
    if (!expectedLog.isEmpty())
        EXPECT_TRUE(log().contains(expectedLog)) << qPrintable(log());
    if (*c.expectedIndex == 0) {
        EXPECT_TRUE(ended);
        return;
    }
    ASSERT_FALSE(ended) << qPrintable(log());
    EXPECT_TRUE(t.ctx.state.unattended);
    EXPECT_EQ(t.ctx.state.standardIndexTextDB, QDir::cleanPath(program(QString::fromUtf8(c.expectedIndex))));
    EXPECT_EQ(t.ctx.state.indexTextDB, t.ctx.state.standardIndexTextDB);
    EXPECT_EQ(view.scopiaVersion,
              c.expectedIndex[std::strlen(c.expectedIndex) - 1] == 'b' ? QStringLiteral("NT") : QStringLiteral("XP"));
    EXPECT_TRUE(t.ctx.state.standardHelpDir.endsWith(QLatin1Char('/')));
}

const QStringList kAll{"Helptext.mdb", "Scopia.mdb", "Scopia.vws", "Tools/Languages.mdb", "Help/"};

INSTANTIATE_TEST_SUITE_P(
    Cases, MachinePCPaths,
    ::testing::Values(
        PathCase{"Nothing", {}, {}, "", "File not found: %R/Program/Helptext.mdb"},
        PathCase{"MdbPreferred", kAll, {}, "Scopia.mdb", ""},
        PathCase{"VwsWhenNoMdb", {"Helptext.mdb", "Scopia.vws", "Tools/Languages.mdb", "Help/"}, {}, "Scopia.vws", ""},
        PathCase{"NoIndexText",
                 {"Helptext.mdb", "Tools/Languages.mdb", "Help/"},
                 {},
                 "",
                 "File not found: %R/Program/Scopia.vws"},
        PathCase{"NoLanguages",
                 {"Helptext.mdb", "Scopia.mdb", "Help/"},
                 {},
                 "",
                 "File not found: %R/Program/Tools/Languages.mdb"},
        PathCase{"NoHelpDir",
                 {"Helptext.mdb", "Scopia.mdb", "Tools/Languages.mdb"},
                 {},
                 "",
                 "Directory not found: %R/Program/Help/"},
        PathCase{"SettingNamesMissingFile", kAll, {"StandardIndexTextDB=%R/elsewhere/Gone.vws"}, "Scopia.mdb", ""},
        PathCase{"SettingNamesExistingFile",
                 {"Helptext.mdb", "Tools/Languages.mdb", "Help/", "../elsewhere/Other.vws"},
                 {"StandardIndexTextDB=%R/elsewhere/Other.vws"},
                 "../elsewhere/Other.vws",
                 ""}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(StartupFixture, WorkstationReadsNoStandardPathAndKeepsTheGenerateFlags)
{
    test::writeText(userIni(), QStringLiteral("[Setup]\nStandardHelpTextDB=%1\nGenerateHTMLAfterEditAlarm=TRUE\n")
                                   .arg(program(QStringLiteral("Helptext.mdb"))));
    test::writeText(program(QStringLiteral("Helptext.mdb")), QStringLiteral("x"));
    dialog.Form_Load();
    EXPECT_FALSE(t.ctx.state.runningOnMachinePC);
    EXPECT_FALSE(t.ctx.state.unattended);
    EXPECT_EQ(t.ctx.state.iniPath, userIni());
    EXPECT_TRUE(t.ctx.state.standardHelpTextDB.isEmpty());
    EXPECT_TRUE(view.scopiaVersion.isEmpty());
    EXPECT_TRUE(t.ctx.state.generateAfterEditAlarm);
    EXPECT_FALSE(t.ctx.state.generateAfterEditWarnings);
    // All three keys are written back so that the user's file always holds them.
    const QString ini = QString::fromUtf8(test::readFileBytes(userIni()));
    EXPECT_TRUE(ini.contains(QLatin1String("GenerateHTMLAfterEditAlarm=true"))) << qPrintable(ini);
    EXPECT_TRUE(ini.contains(QLatin1String("GenerateHTMLAfterEditWarnings=false")));
    EXPECT_TRUE(ini.contains(QLatin1String("GenerateHTMLAfterEditMaterialChange=false")));
    EXPECT_EQ(view.title, QStringLiteral("Helptext Editor for Harko-machines"));
    EXPECT_TRUE(view.version.startsWith(QStringLiteral("Version 2.3.15  ") + QChar(169) + QStringLiteral(" 2002 by")));
}

TEST_F(StartupFixture, MachinePCSettingsListAndCountdown)
{
    onMachinePC();
    test::makeMachineTree(root.path());
    ASSERT_EQ(start(), std::nullopt) << qPrintable(log());
    const QString q = QStringLiteral("\"");
    EXPECT_EQ(
        view.settings,
        QStringList({QStringLiteral("User-ini-file :"), q + appIni() + q, QStringLiteral("Helptext-Database :"),
                     q + t.ctx.state.helpTextDB + q, QStringLiteral("Language-Database :"),
                     q + program(QStringLiteral("Tools/Languages.mdb")) + q, QStringLiteral("Helptext-Directory :"),
                     q + program(QStringLiteral("Help/")) + q, QStringLiteral("Materialchange present"),
                     QStringLiteral("Application running on Machine-PC")}));
    EXPECT_FALSE(t.ctx.state.helpTextDB.isEmpty());
    EXPECT_EQ(t.ctx.state.helpMainDir, program(QStringLiteral("Help/")));
    EXPECT_EQ(view.timerInterval, 3000);
    EXPECT_TRUE(dialog.continueArmed());
    EXPECT_TRUE(t.ctx.state.startupChecksDone);
    EXPECT_FALSE(view.showSettingsEnabled);
    EXPECT_TRUE(t.ui.shown.empty());
}

TEST_F(StartupFixture, MachinePCWithBrokenHelpTextDatabaseEnds)
{
    onMachinePC();
    test::makeMachineTree(root.path());
    test::writeText(program(QStringLiteral("Helptext.mdb")), QStringLiteral("not a database"));
    EXPECT_EQ(start(), 1);
    EXPECT_TRUE(log().contains(QStringLiteral("Helptext database \"") + program(QStringLiteral("Helptext.mdb")) +
                               QStringLiteral("\" not found or incorrect.")))
        << qPrintable(log());
    EXPECT_TRUE(t.ui.shown.empty()); // the machine PC shows nothing
}

TEST_F(StartupFixture, HtmlWithoutKindLogsAndEnds)
{
    onMachinePC();
    test::makeMachineTree(root.path());
    session.commandLine = QStringLiteral("/HTML");
    EXPECT_EQ(start(), 0);
    EXPECT_TRUE(log().contains(QStringLiteral("Missing second parameter in commandline\r\n"))) << qPrintable(log());
    EXPECT_FALSE(view.okEnabled);
    EXPECT_EQ(view.timerInterval, 0);
    EXPECT_TRUE(view.events.isEmpty());
}

// Workstation: the language-definition database is asked for until given or refused.
TEST_F(StartupFixture, WorkstationAsksForTheLanguageDatabase)
{
    const QString languages = root.filePath(QStringLiteral("Languages.mdb"));
    test::makeDemoLanguageDB(languages);
    test::writeText(userIni(), QStringLiteral("[Setup]\nHelpMainDir=%1/\n").arg(root.path()));
    t.ui.push(std::monostate{}); // file dialog cancelled
    t.ui.push(Answer::Retry);
    t.ui.push(OpenFileChoice{languages, false});
    ASSERT_EQ(start(), std::nullopt) << qPrintable(log());
    const QStringList texts = t.ui.messageTexts();
    ASSERT_EQ(texts.size(), 1);
    EXPECT_EQ(texts[0], QStringLiteral("Language-definition database not found or incorrect!"));
    EXPECT_EQ(t.ctx.state.langLookupDB, languages);
    EXPECT_EQ(LoadIniString(t.ctx, QStringLiteral("Setup"), QStringLiteral("StandardLangLookupDB"), userIni()),
              languages);
    EXPECT_EQ(t.ctx.state.helpMainDir, root.path() + QLatin1Char('/'));
    EXPECT_TRUE(t.ctx.state.helpTextDB.isEmpty()); // the main form connects it
}

TEST_F(StartupFixture, WorkstationCancellingTheLanguageDatabaseEnds)
{
    t.ui.push(std::monostate{});
    t.ui.push(Answer::Cancel);
    EXPECT_EQ(start(), 1);
    EXPECT_EQ(view.timerInterval, 0);
}

// ContinuePrg: what is shown and unloaded, by variant and Info caller.
struct ContinueCase {
    const char *mode;
    bool infoBox;
    bool armed;
    QStringList events;
    bool callerKept;
};

void PrintTo(const ContinueCase &c, std::ostream *os)
{
    *os << c.mode << (c.infoBox ? " as Info box" : "") << (c.armed ? ", armed" : ", not armed");
}

class ContinuePrgTest : public StartupFixture, public ::testing::WithParamInterface<ContinueCase>
{
};

TEST_P(ContinuePrgTest, HandsOverOrCloses)
{
    const ContinueCase &c = GetParam();
    const QString languages = root.filePath(QStringLiteral("Languages.mdb"));
    test::makeDemoLanguageDB(languages);
    test::writeText(userIni(),
                    QStringLiteral("[Setup]\nStandardLangLookupDB=%1\nHelpMainDir=%2/\n").arg(languages, root.path()));
    session.compileOption = QString::fromLatin1(c.mode);
    QObject caller;
    if (c.infoBox)
        session.infoCaller = &caller;
    if (c.armed)
        ASSERT_EQ(start(), std::nullopt) << qPrintable(log());
    else
        dialog.Form_Load();
    EXPECT_EQ(dialog.continueArmed(), c.armed);
    dialog.Timer_Timer();
    EXPECT_EQ(view.events, c.events);
    EXPECT_EQ(session.infoCaller != nullptr, c.callerKept);
    if (c.armed)
        EXPECT_EQ(view.showSettingsEnabled, c.infoBox);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ContinuePrgTest,
    ::testing::Values(ContinueCase{"EDIT", false, true, {"show:EDIT", "unload"}, false},
                      ContinueCase{"EDIT", true, true, {"unload"}, false},
                      ContinueCase{"IMPORT", false, true, {"unload", "show:IMPORT", "unload"}, false},
                      ContinueCase{"IMPORT", true, true, {"unload", "show:IMPORT", "unload"}, true},
                      ContinueCase{"EDIT", false, false, {"show:EDIT", "unload"}, false}));

TEST_F(StartupFixture, InfoBoxKeepsTheCurrentKindAfterHandOver)
{
    onMachinePC();
    test::makeMachineTree(root.path());
    ASSERT_EQ(start(), std::nullopt) << qPrintable(log());
    dialog.CommandOK_Click();
    bool cancel = true;
    dialog.Form_Unload(cancel);
    EXPECT_FALSE(cancel);
    t.ctx.state.currentKind = KindWarnings;

    QObject editor;
    session.infoCaller = &editor;
    HeadlessView infoView;
    StartupDialog info(t.ctx, session, infoView);
    info.Form_Load();
    info.Form_Activate();
    EXPECT_EQ(t.ctx.state.currentKind, KindWarnings);
    EXPECT_TRUE(infoView.showSettingsEnabled);
    info.CommandShowSettings_Click();
    EXPECT_TRUE(infoView.settingsVisible);
    info.LabelTitle_Click();
    EXPECT_EQ(infoView.events, QStringList{"unload"});
}

TEST_F(StartupFixture, UnloadDuringPageWritingAsksToAbort)
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
    EXPECT_TRUE(t.ctx.state.abortHtml);
    EXPECT_TRUE(session.dialogUnloaded);
    EXPECT_EQ(t.ui.messageTexts().size(), 2);
}

} // namespace
} // namespace ht
