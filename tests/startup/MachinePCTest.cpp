#include "startup/MachinePC.h"

#include "support/TestSupport.h"

#include <QDir>
#include <gtest/gtest.h>

namespace ht
{
namespace
{

struct MachinePCCase {
    const char *relativeProgramDir; // below the machine root
    bool upperCase;
    bool machinePC;
};

void PrintTo(const MachinePCCase &c, std::ostream *os)
{
    *os << c.relativeProgramDir << (c.upperCase ? " (upper-cased)" : "");
}

class MachinePCTest : public ::testing::TestWithParam<MachinePCCase>
{
  protected:
    void SetUp() override
    {
        QDir().mkpath(root.filePath(QStringLiteral("Program/Tools/sub")));
        qputenv("HELPTEXT_MACHINE_ROOT", root.path().toUtf8());
    }
    void TearDown() override { qunsetenv("HELPTEXT_MACHINE_ROOT"); }
    QTemporaryDir root;
};

TEST_P(MachinePCTest, ComparesTheProgramDirectoryWithTheToolsDirectory)
{
    test::TestContext t;
    QString dir = root.path() + QLatin1Char('/') + QLatin1String(GetParam().relativeProgramDir);
    if (GetParam().upperCase)
        dir = dir.toUpper();
    t.ctx.programDir = dir;
    EXPECT_EQ(GetAppRunningOnMachinePC(t.ctx), GetParam().machinePC) << qPrintable(dir);
}

INSTANTIATE_TEST_SUITE_P(
    Directories, MachinePCTest,
    ::testing::Values(MachinePCCase{"Program/Tools", false, true}, MachinePCCase{"Program/Tools/", false, true},
                      MachinePCCase{"Program/Tools", true, true}, MachinePCCase{"Program/./Tools", false, true},
                      MachinePCCase{"Program", false, false}, MachinePCCase{"Program/Tools/sub", false, false},
                      MachinePCCase{"Program/Tool", false, false}));

} // namespace
} // namespace ht
