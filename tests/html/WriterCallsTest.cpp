// The page writer's call checks, its abort, and the help-directory and
// screen-width settings it depends on.

#include "HtmlTestSupport.h"
#include "common/IniFile.h"
#include "common/StatusDisplay.h"
#include "html/HelpDirectory.h"
#include "html/HtmlTextFile.h"
#include "html/HtmlWriter.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace ht;
using namespace ht::test;

namespace
{

const QString kCallError = u"Could not create HTML \n\rError calling module WriteHTMLPage!"_qs;

// Machine M1 with alarms 1-3 in English and German, the sample templates in
// the help directory.
class Writer : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        AppState &st = tc.ctx.state;
        st.helpTextDB = tc.path(u"helptext.sqlite"_qs);
        createDatabaseFromScripts(st.helpTextDB, helpTextSchema());
        runSqlScript(st.helpTextDB, u"INSERT INTO Language VALUES (1, 'English', 'Arial 10 400', ''), "
                                    u"(2, 'German', 'Arial 10 400', '');\n"
                                    u"INSERT OR REPLACE INTO AlarmDefinition VALUES (1, 'M1', 1, '', '', '', ''), "
                                    u"(2, 'M1', 2, '', '', '', ''), (3, 'M1', 3, '', '', '', '');\n"
                                    u"INSERT INTO AlarmText SELECT AlarmID, L, 'D', 'R', 'Text ' || AlarmNo "
                                    u"FROM AlarmDefinition, (SELECT 1 AS L UNION SELECT 2);\n"_qs);
        st.langLookupDB = tc.path(u"languages.sqlite"_qs);
        createDatabaseFromScripts(st.langLookupDB, languagesSchemaAndData());
        st.indexTextDB = tc.path(u"index.sqlite"_qs);
        createDatabaseFromScripts(st.indexTextDB, {schemaFile(u"indextext.sql"_qs)});
        QDir().mkpath(help);
        for (const QString kind : {u"Alarms"_qs, u"Warnings"_qs, u"MaterialChange"_qs})
            QFile::copy(sourceDir() + u"/samples/templates/Source_"_qs + kind + u".html"_qs,
                        help + u"Source_"_qs + kind + u".html"_qs);
        st.helpMainDir = help;
        st.iniPath = tc.path(u"helptext.ini"_qs);
        st.screenResolution = u"1024"_qs;
    }

    void write(bool alarms, bool warnings, bool materialChange, const QString &machine = QString(),
               const QString &language = QString(), long number = 0, StatusTarget *status = nullptr)
    {
        WriteHTMLPage(tc.ctx, status, alarms, warnings, materialChange, machine, language, number);
    }

    int pageCount() const
    {
        int n = 0;
        for (QDirIterator it(help, {u"*.html"_qs}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
            n += !it.next().contains(u"/Source_"_qs);
        return n;
    }

    TestContext tc;
    QString help = tc.path(u"help/"_qs);
};

TEST_F(Writer, CallsAreCheckedBeforeAnythingIsWritten)
{
    struct Call {
        const char *name;
        bool a, w, m;
        QString machine, language;
        long number;
        bool wrong;
        int pages;
    };
    const Call calls[] = {{"NoKind", false, false, false, u"M1"_qs, u"English"_qs, 1, false, 0},
                          {"OneItem", true, false, false, u"M1"_qs, u"English"_qs, 2, false, 1},
                          {"OneKindBulk", true, false, false, QString(), QString(), 0, false, 6},
                          {"AllKindsBulk", true, true, true, QString(), QString(), 0, false, 6},
                          {"NumberMissing", true, false, false, u"M1"_qs, u"English"_qs, 0, true, 0},
                          {"LanguageMissing", false, true, false, u"M1"_qs, QString(), 4, true, 0},
                          {"OnlyNumber", false, false, true, QString(), QString(), 4, true, 0},
                          {"TwoKindsOneItem", true, true, false, u"M1"_qs, u"English"_qs, 1, true, 0},
                          {"TwoKindsAndMachine", true, false, true, u"M1"_qs, QString(), 0, true, 0}};
    tc.ctx.state.unattended = true;
    for (const Call &c : calls) {
        SCOPED_TRACE(c.name);
        const QString logBefore = tc.errorLog();
        write(c.a, c.w, c.m, c.machine, c.language, c.number);
        EXPECT_EQ(tc.errorLog().mid(logBefore.size()), c.wrong ? kCallError + u"\r\n"_qs : QString());
        EXPECT_EQ(pageCount(), c.pages);
        EXPECT_EQ(QDir(help + u"M1"_qs).exists(), !c.wrong && (c.a || c.w || c.m));
        QDir(help + u"M1"_qs).removeRecursively();
    }

    // Attended, the wrong call is shown in a critical box.
    tc.ctx.state.unattended = false;
    write(true, true, false, u"M1"_qs);
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].text, kCallError);
    EXPECT_EQ(tc.ui.shown[0].icon, Icon::Critical);
}

TEST_F(Writer, RunWithoutDatabaseOrHelpDirectoryWritesNothing)
{
    tc.ctx.state.unattended = true;
    const QString noDir = tc.path(u"no/such/parents/"_qs);
    const std::tuple<QString, QString, QString> cases[] = {
        {QString(), help, u"Helptext-Database not set\r\n"_qs},
        {tc.ctx.state.helpTextDB, noDir, u"Error creating directory \""_qs + noDir + u"\" !\r\n"_qs}};
    for (const auto &[db, dir, log] : cases) {
        tc.ctx.state.helpTextDB = db;
        tc.ctx.state.helpMainDir = dir;
        const QString logBefore = tc.errorLog();
        write(true, false, false);
        EXPECT_EQ(tc.errorLog().mid(logBefore.size()), log);
        EXPECT_FALSE(tc.ctx.state.writingHtml);
        EXPECT_EQ(pageCount(), 0);
        EXPECT_FALSE(QDir(help + u"M1"_qs).exists());
    }
}

// Each run rewrites the existing pages with the current texts, laid out for the current resolution.
TEST_F(Writer, EveryRunRewritesThePagesInPlace)
{
    HeadlessStatus status;
    for (const auto &[resolution, size, function] : {std::tuple{u"1280"_qs, u"18pt"_qs, u"D"_qs},
                                                     {u"800"_qs, u"10pt"_qs, u"Neu"_qs},
                                                     {u"1024"_qs, u"10pt"_qs, u"Alt"_qs}}) {
        runSqlScript(tc.ctx.state.helpTextDB,
                     u"UPDATE AlarmText SET \"Function\" = '"_qs + function + u"' WHERE Language = 2;"_qs);
        tc.ctx.state.screenResolution = resolution;
        write(true, false, false, QString(), QString(), 0, &status);
        const QString page = pageText(readFileBytes(help + u"M1/Alarms/German/3.html"_qs));
        EXPECT_TRUE(page.contains(u"\n"_qs + function + u"<br>\r"_qs)) << function.toStdString();
        EXPECT_TRUE(page.contains(u"font-size: "_qs + size)) << resolution.toStdString();
        EXPECT_EQ(pageCount(), 6);
    }
    EXPECT_EQ(status.text, QString()) << "status display ended";
    EXPECT_FALSE(status.visible);
    EXPECT_EQ(status.panel, u"   Generating Help-HTML - press ESC to cancel "_qs);
}

// Whatever a template holds, the page is the template's lines with the
// placeholders filled: garbage without placeholders comes out as it went in.
TEST_F(Writer, GarbageAndHugeTemplatesArePassedThrough)
{
    runSqlScript(tc.ctx.state.helpTextDB,
                 u"INSERT OR REPLACE INTO WarningDefinition VALUES (1, 'M1', 1), (2, 'M1', 2);\n"
                 u"INSERT INTO WarningText VALUES (1, 1, 'Oil'), (2, 1, 'Low');\n"_qs);
    QByteArray garbage;
    for (quint32 seed = 7; garbage.size() < 70000;) {
        seed = seed * 1103515245u + 12345u;
        if (const char c = char(seed >> 24); c != '#')
            garbage.append(c);
    }
    writeFileBytes(help + u"Source_Warnings.html"_qs, garbage);
    write(false, true, false, u"M1"_qs, u"English"_qs, 1);
    EXPECT_EQ(readFileBytes(help + u"M1/Warnings/English/1.html"_qs),
              pageBytes(splitTextLines(decodeTextFileBytes(garbage))));

    const QString xs(200000, u'x');
    writeFileBytes(
        help + u"Source_Warnings.html"_qs,
        (u"<TITLE>Harko & Co</TITLE>\n"_qs + xs + u"###FUNCTION###"_qs + xs + u"\n###FUNCTION######"_qs).toUtf8());
    write(false, true, false, u"M1"_qs, u"English"_qs, 2);
    EXPECT_EQ(readFileBytes(help + u"M1/Warnings/English/2.html"_qs),
              pageBytes({u"<TITLE>Harko & Co</TITLE>"_qs, xs + u"Low<br>"_qs, xs, QString(), u"Low<br>"_qs, u"###"_qs,
                         QString()}));
}

// Nothing outside the help directory is written through a link, an old page
// survives a write that fails half-way, and a FIFO template never hangs a run.
TEST_F(Writer, LinksFifosAndFailedWritesLoseNothing)
{
    tc.ctx.state.unattended = true;
    const QString english = help + u"M1/Alarms/English/"_qs;
    const QByteArray oldPage = pageBytes({u"<TITLE>Alarm - Harko & Co</TITLE>"_qs, u"old text"_qs});
    QDir().mkpath(english);
    writeFileBytes(english + u"2.html"_qs, oldPage);

    // A disk that takes no more than 1000 bytes per file: every page write fails.
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1000, before.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_THROW(write(true, false, false), ProgramEnded) << "unattended, a failed write ends the run";
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, SIG_DFL);
    EXPECT_TRUE(tc.errorLog().contains(u"Cannot write "_qs)) << tc.errorLog().toStdString();
    EXPECT_TRUE(tc.errorLog().contains(u"File too large"_qs)) << "the system's reason";
    EXPECT_EQ(readFileBytes(english + u"2.html"_qs), oldPage);
    EXPECT_EQ(QDir(english).entryList(QDir::Files | QDir::Hidden), QStringList{u"2.html"_qs}) << "no temporary left";

    // A page that is a link, and a language folder that is one, lead outside.
    const QString outside = tc.path(u"outside/"_qs);
    QDir().mkpath(outside);
    writeFileBytes(outside + u"victim.html"_qs, "precious");
    QFile::remove(english + u"1.html"_qs);
    ASSERT_TRUE(QFile::link(outside + u"victim.html"_qs, english + u"1.html"_qs));
    QDir(help + u"M1/Alarms/German"_qs).removeRecursively();
    ASSERT_TRUE(QFile::link(outside, help + u"M1/Alarms/German"_qs));
    QFile::remove(help + u"Source_Warnings.html"_qs);
    ASSERT_EQ(mkfifo(QFile::encodeName(help + u"Source_Warnings.html"_qs).constData(), 0600), 0);
    const QString logBefore = tc.errorLog();
    write(true, true, false);
    EXPECT_TRUE(tc.ctx.state.htmlRunFailed);
    EXPECT_EQ(readFileBytes(outside + u"victim.html"_qs), "precious");
    EXPECT_EQ(QDir(outside).entryList(QDir::Files | QDir::Hidden), QStringList{u"victim.html"_qs});
    EXPECT_TRUE(QFileInfo(english + u"1.html"_qs).isSymLink());
    EXPECT_NE(readFileBytes(english + u"2.html"_qs), oldPage) << "the old generated page is replaced now";
    const QString log = tc.errorLog().mid(logBefore.size());
    EXPECT_TRUE(log.contains(u"M1/Alarms/German\": the folder is a link that leads out of the help directory."_qs))
        << log.toStdString();
    EXPECT_TRUE(log.contains(u"Unable to create HTML-files for Alarms."_qs)) << "the FIFO template is refused";
}

TEST_F(Writer, EscAbortStopsBeforeTheNextPage)
{
    Context &ctx = tc.ctx;
    // ESC arrives while the first page of alarm 2 is under way, which is
    // still written; the run stops before the next one.
    HeadlessStatus status;
    bool asked = false;
    tc.ui.push(Answer::Yes);
    setHtmlEventInterval(0);
    ctx.processEvents = [&] {
        if (!asked && status.text.contains(u"(M1/2)"_qs)) {
            asked = true;
            EXPECT_TRUE(ctx.state.writingHtml);
            EXPECT_EQ(Abort_WriteHTML(ctx), 1);
        }
    };
    write(true, false, false, QString(), QString(), 0, &status);
    setHtmlEventInterval(20);
    EXPECT_EQ(pageCount(), 3);
    EXPECT_TRUE(ctx.state.htmlRunFailed) << "a run cut short did not write every page";
    EXPECT_FALSE(ctx.state.abortHtml);
    EXPECT_FALSE(ctx.state.writingHtml);
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].text, u"Abort writing HTML-files?\n\rSome HTML files may not correspond to database"_qs);
    EXPECT_EQ(tc.ui.shown[0].buttons, Buttons::YesNo);

    tc.ui.push(Answer::No); // "No" lets the run go on
    EXPECT_EQ(Abort_WriteHTML(ctx), 0);
    EXPECT_FALSE(ctx.state.abortHtml);
}

TEST(HelpMainDir, AskedWhenNotStoredOrSelectingAndProgramEndedWhenGone)
{
    TestContext tc;
    Context &ctx = tc.ctx;
    ctx.state.iniPath = tc.path(u"helptext.ini"_qs);
    QDir().mkpath(tc.path(u"pages"_qs));
    bool check = false, select = false;
    const auto stored = [&] { return LoadIniString(ctx, u"Setup"_qs, u"HelpMainDir"_qs, ctx.state.iniPath); };

    tc.ui.push(tc.path(u"pages"_qs));
    const QString chosen = GetHelpMainDir(ctx, check, select);
    EXPECT_EQ(chosen, tc.path(u"pages/"_qs));
    EXPECT_EQ(stored(), chosen);

    // Stored: no dialog. Selecting and cancelling keeps the stored directory.
    EXPECT_EQ(GetHelpMainDir(ctx, check, select), chosen);
    EXPECT_EQ(tc.ui.shown.size(), 1u);
    select = true;
    EXPECT_EQ(GetHelpMainDir(ctx, check, select), chosen);
    ASSERT_EQ(tc.ui.shown.size(), 2u);
    EXPECT_EQ(tc.ui.shown[1].text, chosen) << "dialog preset with the stored directory";

    // A chosen directory that does not exist is returned but not stored.
    tc.ui.push(tc.path(u"missing"_qs));
    EXPECT_EQ(GetHelpMainDir(ctx, check, select), tc.path(u"missing/"_qs));
    EXPECT_EQ(stored(), chosen);

    // Checking only: a directory that exists is taken, a missing one ends the program.
    check = true;
    ctx.state.helpMainDir = chosen;
    EXPECT_EQ(GetHelpMainDir(ctx, check, select), chosen);
    ctx.state.helpMainDir = tc.path(u"gone/"_qs);
    EXPECT_THROW(GetHelpMainDir(ctx, check, select), ProgramEnded);
    EXPECT_EQ(tc.errorLog(), u"Critical Error: Machine Helpdirectory not found.\n\rApplication closing down.\r\n"_qs);
}

TEST(ScreenResolution, StoredAskedOrDefaulted)
{
    TestContext tc;
    AppState &st = tc.ctx.state;
    st.iniPath = tc.path(u"helptext.ini"_qs);

    st.unattended = true;
    GetScopiaResolution(tc.ctx);
    EXPECT_EQ(st.screenResolution, u"1024"_qs);
    EXPECT_TRUE(tc.errorLog().contains(u"pages laid out for 1024"_qs)) << tc.errorLog().toStdString();
    EXPECT_TRUE(tc.ui.shown.empty());

    st.unattended = false;
    tc.ui.push(1280);
    GetScopiaResolution(tc.ctx);
    EXPECT_EQ(st.screenResolution, u"1280"_qs);
    ASSERT_EQ(tc.ui.shown.size(), 1u);

    st.screenResolution.clear();
    GetScopiaResolution(tc.ctx); // stored now: not asked again
    EXPECT_EQ(st.screenResolution, u"1280"_qs);

    st.runningOnMachinePC = true;
    GetScopiaResolution(tc.ctx);
    EXPECT_GT(st.screenResolution.toInt(), 0);
    EXPECT_EQ(tc.ui.shown.size(), 1u);
}

} // namespace
