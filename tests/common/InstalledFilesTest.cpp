#include "common/InstalledFiles.h"
#include "common/ErrorLog.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using ht::test::TestContext;

namespace
{

// The program in <dir>/<prefix>/bin, installed when <prefix>/share/helptext exists.
TEST(InstalledFiles, ErrorLogGoesToTheStateFolderUnlessBesideTheProgramIsRight)
{
    const struct {
        const char *name;
        bool installed, programDirExists, machinePC, stateHomeSet;
        bool besideProgram;
    } cases[] = {
        {"a copy in a folder of its own", false, true, false, true, true},
        {"installed", true, true, false, true, false},
        {"installed, no XDG_STATE_HOME", true, true, false, false, false},
        {"a folder that takes no files", false, false, false, true, false},
        {"installed on the machine PC", true, true, true, true, true},
    };
    const QByteArray realHome = qgetenv("HOME");
    for (const auto &c : cases) {
        TestContext tc;
        const QString bin = tc.path("usr/bin");
        if (c.programDirExists)
            ASSERT_TRUE(QDir().mkpath(bin));
        if (c.installed)
            ASSERT_TRUE(QDir().mkpath(tc.path("usr/share/helptext")));
        tc.ctx.programDir = bin;
        tc.ctx.state.runningOnMachinePC = c.machinePC;
        const QString home = tc.path("home");
        qputenv("HOME", home.toLocal8Bit());
        if (c.stateHomeSet)
            qputenv("XDG_STATE_HOME", tc.path("state").toLocal8Bit());
        else
            qunsetenv("XDG_STATE_HOME");
        const QString expected = c.besideProgram  ? bin + "/helptextError.log"
                                 : c.stateHomeSet ? tc.path("state/helptext/helptextError.log")
                                                  : home + "/.local/state/helptext/helptextError.log";
        EXPECT_EQ(errorLogPath(tc.ctx), expected) << c.name;
        LogError(tc.ctx, "logged");
        // Written where it belongs, its folder made; nobody asked about a log that failed.
        EXPECT_EQ(test::readFileBytes(expected), QByteArray("logged\r\n")) << c.name;
        EXPECT_TRUE(tc.ui.shown.empty()) << c.name;
    }
    qunsetenv("XDG_STATE_HOME");
    qputenv("HOME", realHome);
}

TEST(InstalledFiles, DataFileBesideTheProgramElseInTheInstalledFolder)
{
    TestContext tc;
    tc.ctx.programDir = tc.path("usr/bin");
    ASSERT_TRUE(QDir().mkpath(tc.path("usr/bin")));
    const QString beside = tc.path("usr/bin/T.mdb"), installed = tc.path("usr/share/helptext/T.mdb");
    EXPECT_EQ(installedDataDir(tc.ctx), QString());
    EXPECT_EQ(programDataFile(tc.ctx, "T.mdb"), beside); // missing everywhere: named beside the program
    ASSERT_TRUE(QDir().mkpath(tc.path("usr/share/helptext")));
    EXPECT_EQ(programDataFile(tc.ctx, "T.mdb"), beside);
    test::writeFileBytes(installed, "x");
    EXPECT_EQ(programDataFile(tc.ctx, "T.mdb"), installed);
    test::writeFileBytes(beside, "x");
    EXPECT_EQ(programDataFile(tc.ctx, "T.mdb"), beside);
}

} // namespace
