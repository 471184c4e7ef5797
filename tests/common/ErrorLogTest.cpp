#include "common/ErrorLog.h"
#include "QtPrinters.h"
#include "common/Messages.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <stdexcept>

using namespace ht;
using ht::test::TestContext;

namespace
{

TEST(LogError, AppendsExactlyTheTextAndCrLf)
{
    TestContext tc;
    LogError(tc.ctx, "first");
    LogError(tc.ctx, QString::fromUtf8("zweite Zeile: Gerät\tmit Tab"));
    LogError(tc.ctx, "");
    EXPECT_EQ(ht::test::readFileBytes(tc.path("helptextError.log")),
              QByteArray("first\r\nzweite Zeile: Ger\xc3\xa4t\tmit Tab\r\n\r\n"));
}

TEST(LogError, UnwritableLogIsReportedOnlyToAUser)
{
    // A log that cannot be opened, and one on a full disk that fails only when written out.
    for (const bool fullDisk : {false, true}) {
        TestContext tc;
        ASSERT_TRUE(fullDisk ? QFile::link("/dev/full", tc.path("helptextError.log"))
                             : QDir(tc.dir.path()).mkdir("helptextError.log"));
        tc.ui.push(Answer::Yes);
        EXPECT_NO_THROW(LogError(tc.ctx, "lost"));
        ASSERT_EQ(tc.ui.shown.size(), 1u) << fullDisk;
        EXPECT_TRUE(tc.ui.shown[0].text.startsWith("Unexpected error!\n\rNo: 75\n\rSource: LogError\n\r"));
        EXPECT_EQ(tc.ui.shown[0].text.contains("No space left on device"), fullDisk);
    }
    TestContext tc;
    ASSERT_TRUE(QDir(tc.dir.path()).mkdir("helptextError.log"));
    tc.ui.push(Answer::No);
    EXPECT_THROW(LogError(tc.ctx, "lost"), ProgramEnded);
    // An unexpected error whose log line fails: one report for the log, then the error's own question.
    tc.ui.shown.clear();
    tc.ui.push(Answer::Yes);
    tc.ui.push(Answer::No);
    EXPECT_EQ(ShowUnexpectedError(tc.ctx, 5, "x", "Invalid procedure call", "SaveIni"), 1);
    ASSERT_EQ(tc.ui.shown.size(), 2u);
    EXPECT_TRUE(tc.ui.shown[1].text.contains("Source: SaveIni"));

    // Nobody to tell on the machine PC or in a batch run: the run goes on.
    tc.ui.shown.clear();
    tc.ctx.state.unattended = true;
    EXPECT_NO_THROW(LogError(tc.ctx, "lost"));
    tc.ctx.state.unattended = false;
    tc.ctx.state.runningOnMachinePC = true;
    EXPECT_EQ(ShowUnexpectedError(tc.ctx, 5, "x", "Invalid procedure call", "SaveIni"), 1);
    tc.ctx.programDir = tc.path("no/such/dir");
    EXPECT_NO_THROW(LogError(tc.ctx, "lost too"));
    EXPECT_TRUE(tc.ui.shown.empty());
}

TEST(ShowUnexpectedError, LogsAndAsksByMode)
{
    const struct {
        bool machinePC, unattended;
        Answer answer;
        int expected; // 2 goes on, 1 stops
        bool boxShown;
    } cases[] = {{false, false, Answer::Yes, 2, true},
                 {false, false, Answer::No, 1, true},
                 {false, true, Answer::Yes, 1, false},
                 {true, false, Answer::Yes, 1, false}};
    // The machine PC's log takes tabs, the workstation's the LF-CR breaks of its message box.
    const QString workstation = "Unexpected error!\n\rNo: 13\n\rSource: SaveIni\n\rType mismatch";
    const QString machine = "Unexpected error!\tNo: 13\tSource: SaveIni\tType mismatch";
    for (const auto &c : cases) {
        TestContext tc;
        tc.ctx.state.runningOnMachinePC = c.machinePC;
        tc.ctx.state.unattended = c.unattended;
        tc.ui.push(c.answer);
        EXPECT_EQ(ShowUnexpectedError(tc.ctx, 13, "VBA", "Type mismatch", "SaveIni"), c.expected);
        EXPECT_EQ(tc.errorLog(), (c.machinePC ? machine : workstation) + "\r\n");
        ASSERT_EQ(tc.ui.shown.size(), c.boxShown ? 1u : 0u);
        if (c.boxShown) {
            EXPECT_EQ(tc.ui.shown[0].text, workstation + "\n\rContinue?");
            EXPECT_EQ(tc.ui.shown[0].title, "Unexpected error");
            EXPECT_EQ(tc.ui.shown[0].buttons, Buttons::YesNo);
            EXPECT_EQ(tc.ui.shown[0].icon, Icon::Critical);
        }
    }
}

TEST(ReportUnexpected, EndsOnlyWhenTheAnswerIsStop)
{
    TestContext tc;
    const std::runtime_error failure("disk on fire");
    tc.ui.push(Answer::Yes);
    EXPECT_NO_THROW(reportUnexpected(tc.ctx, "WriteHTMLPage", failure));
    EXPECT_FALSE(tc.ctx.state.programEnding);
    EXPECT_TRUE(tc.errorLog().contains("Source: WriteHTMLPage\n\rdisk on fire\r\n"));

    tc.ui.push(Answer::No);
    EXPECT_THROW(reportUnexpected(tc.ctx, "WriteHTMLPage", failure), ProgramEnded);
    EXPECT_TRUE(tc.ctx.state.programEnding);

    tc.ctx.endProgram = nullptr; // ends even without a handler, with the given code
    try {
        EndProgram(tc.ctx, 3);
        FAIL() << "EndProgram returned";
    } catch (const ProgramEnded &e) {
        EXPECT_EQ(e.exitCode, 3);
    }
}

TEST(ShowMessage, ErrorTextAndUnattendedSafeAnswers)
{
    TestContext tc;
    ShowErrorMessage(tc.ctx, "CommandImport_Click", 3021, "No current record.");
    EXPECT_EQ(tc.ui.messageTexts(),
              QStringList{"An error has occurred in CommandImport_Click!\n\rNo.: 3021 , No current record."});

    tc.ui.shown.clear();
    tc.ctx.state.unattended = true;
    tc.ui.push(Answer::Yes);
    EXPECT_EQ(showMessage(tc.ctx, "Delete?", Buttons::YesNo, Icon::Question), Answer::No);
    EXPECT_EQ(showMessage(tc.ctx, "Retry?", Buttons::RetryCancel), Answer::Cancel);
    EXPECT_TRUE(tc.ui.shown.empty());
    EXPECT_EQ(tc.errorLog(), "Delete?\r\nRetry?\r\n");
}

} // namespace
