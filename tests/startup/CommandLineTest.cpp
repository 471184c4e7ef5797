// The command line and the machine-PC check, the two things start-up decides the run by.
#include "startup/CommandLine.h"
#include "startup/MachinePC.h"

#include "common/QtPrinters.h"
#include "support/TestSupport.h"

#include <QDir>

namespace ht
{
namespace
{

TEST(ReadCommandLine, SplitsAtTheFirstCharacter)
{
    const std::pair<const char *, QStringList> cases[] = {
        {"", {""}},
        {"   ", {""}},
        {"/html/Alarms", {"html", "Alarms"}},
        {"-html -Alarms", {"html", "Alarms"}},
        {"  /html/ Warnings /MaterialChange  ", {"html", "Warnings", "MaterialChange"}},
        {"/html", {"html"}},
        {"/html/", {"html", ""}},
        {"//html", {"", "html"}},
        {"html", {"tml"}}, // without a leading separator the first letter is taken as one
        {"x", {""}},
        {"#html#Alarms#Warnings", {"html", "Alarms", "Warnings"}}};
    for (const auto &[line, expected] : cases)
        EXPECT_EQ(ReadCommandLine(QString::fromUtf8(line)), expected) << line;
}

TEST(FindCommandLineParameter, MatchesWholeWordsWithoutCase)
{
    const std::tuple<const char *, const char *, bool> cases[] = {{"/HTML/alarms", "html", true},
                                                                  {"/HTML/alarms", "Alarms", true},
                                                                  {"/HTML/alarms", "Warnings", false},
                                                                  {"/htmlx/Alarms", "html", false},
                                                                  {"/html/MaterialChange", "Material", false},
                                                                  {"", "html", false},
                                                                  {"-html -materialchange", "MaterialChange", true}};
    for (const auto &[line, name, found] : cases) {
        test::TestContext t;
        t.ctx.state.commandLine = ReadCommandLine(QString::fromUtf8(line));
        EXPECT_EQ(FindCommandLineParameter(t.ctx, QString::fromUtf8(name)), found) << line << " " << name;
    }
}

TEST(GetAppRunningOnMachinePC, ProgramDirectoryIsTheToolsDirectory)
{
    QTemporaryDir root;
    QDir().mkpath(root.filePath("Program/Tools/sub"));
    qputenv("HELPTEXT_MACHINE_ROOT", root.path().toUtf8());
    const std::pair<QString, bool> cases[] = {{"Program/Tools", true},      {"Program/Tools/", true},
                                              {"Program/./Tools", true},    {"Program", false},
                                              {"Program/Tools/sub", false}, {"Program/Tool", false}};
    for (const auto &[relative, machinePC] : cases) {
        test::TestContext t;
        t.ctx.programDir = root.path() + '/' + relative;
        EXPECT_EQ(GetAppRunningOnMachinePC(t.ctx), machinePC) << qPrintable(relative);
        t.ctx.programDir = t.ctx.programDir.toUpper(); // the file system of the machine PC ignores case
        EXPECT_EQ(GetAppRunningOnMachinePC(t.ctx), machinePC) << qPrintable(relative);
    }
    qunsetenv("HELPTEXT_MACHINE_ROOT");
}

} // namespace
} // namespace ht
