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
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

const QString kCallError = u"Could not create HTML \n\rError calling module WriteHTMLPage!"_qs;

// A help-text database with one machine, two languages and three alarms, and
// the sample templates in the help directory.
class Writer : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        Context &ctx = tc.ctx;
        ctx.state.helpTextDB = tc.path(u"helptext.sqlite"_qs);
        createDatabaseFromScripts(ctx.state.helpTextDB, helpTextSchema());
        runSqlScript(ctx.state.helpTextDB,
                     u"INSERT INTO Language VALUES (1, 'English', 'Arial 10 400', '');\n"
                     u"INSERT INTO Language VALUES (2, 'German', 'Arial 10 400', '');\n"
                     u"INSERT OR REPLACE INTO AlarmDefinition VALUES (1, 'M1', 1, '', '', '', '');\n"
                     u"INSERT OR REPLACE INTO AlarmDefinition VALUES (2, 'M1', 2, '', '', '', '');\n"
                     u"INSERT OR REPLACE INTO AlarmDefinition VALUES (3, 'M1', 3, '', '', '', '');\n"
                     u"INSERT INTO AlarmText SELECT AlarmID, 1, 'D', 'R', 'Text ' || AlarmNo "
                     u"FROM AlarmDefinition;\n"
                     u"INSERT INTO AlarmText SELECT AlarmID, 2, 'D', 'R', 'Text ' || AlarmNo "
                     u"FROM AlarmDefinition;\n"_qs);
        ctx.state.langLookupDB = tc.path(u"languages.sqlite"_qs);
        createDatabaseFromScripts(ctx.state.langLookupDB, languagesSchemaAndData());
        ctx.state.indexTextDB = tc.path(u"index.sqlite"_qs);
        createDatabaseFromScripts(ctx.state.indexTextDB, {indexTextSchema()});
        help = tc.path(u"help"_qs) + u"/"_qs;
        QDir().mkpath(help);
        for (const QString &name :
             {u"Source_Alarms.html"_qs, u"Source_Warnings.html"_qs, u"Source_MaterialChange.html"_qs})
            QFile::copy(sourceDir() + u"/samples/templates/"_qs + name, help + name);
        ctx.state.helpMainDir = help;
        ctx.state.iniPath = tc.path(u"helptext.ini"_qs);
        ctx.state.screenResolution = u"1024"_qs;
    }

    int pageCount() const
    {
        int n = 0;
        QDirIterator it(help, {u"*.html"_qs}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            if (!it.fileName().startsWith(u"Source_"_qs))
                ++n;
        }
        return n;
    }

    TestContext tc;
    QString help;
};

struct CallCase {
    const char *name;
    bool alarms, warnings, materialChange;
    QString machine, language;
    long number;
    bool wrong;
    int pages;
};

class WriterCalls : public Writer, public ::testing::WithParamInterface<CallCase>
{
};

TEST_P(WriterCalls, AreCheckedBeforeAnythingIsWritten)
{
    const CallCase &c = GetParam();
    tc.ctx.state.unattended = true;
    bool a = c.alarms, w = c.warnings, m = c.materialChange;
    WriteHTMLPage(tc.ctx, nullptr, a, w, m, c.machine, c.language, c.number);
    EXPECT_EQ(tc.errorLog(), c.wrong ? kCallError + u"\r\n"_qs : QString());
    EXPECT_EQ(pageCount(), c.pages);
    EXPECT_EQ(QDir(help + u"M1"_qs).exists(), !c.wrong && (a || w || m));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WriterCalls,
    ::testing::Values(CallCase{"NoKind", false, false, false, u"M1"_qs, u"English"_qs, 1, false, 0},
                      CallCase{"OneItem", true, false, false, u"M1"_qs, u"English"_qs, 2, false, 1},
                      CallCase{"OneKindBulk", true, false, false, QString(), QString(), 0, false, 6},
                      CallCase{"AllKindsBulk", true, true, true, QString(), QString(), 0, false, 6},
                      CallCase{"NumberMissing", true, false, false, u"M1"_qs, u"English"_qs, 0, true, 0},
                      CallCase{"LanguageMissing", false, true, false, u"M1"_qs, QString(), 4, true, 0},
                      CallCase{"OnlyNumber", false, false, true, QString(), QString(), 4, true, 0},
                      CallCase{"TwoKindsOneItem", true, true, false, u"M1"_qs, u"English"_qs, 1, true, 0},
                      CallCase{"TwoKindsAndMachine", true, false, true, u"M1"_qs, QString(), 0, true, 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(Writer, WrongCallIsShownInACriticalBoxWhenAttended)
{
    bool a = true, w = true, m = false;
    WriteHTMLPage(tc.ctx, nullptr, a, w, m, u"M1"_qs, QString(), 0);
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].text, kCallError);
    EXPECT_EQ(tc.ui.shown[0].icon, Icon::Critical);
}

TEST_F(Writer, NoDatabaseNoPages)
{
    tc.ctx.state.helpTextDB.clear();
    bool a = true, w = false, m = false;
    WriteHTMLPage(tc.ctx, nullptr, a, w, m, QString(), QString(), 0);
    EXPECT_EQ(tc.errorLog(), u"Helptext-Database not set\r\n"_qs);
    EXPECT_FALSE(QDir(help + u"M1"_qs).exists());
}

TEST_F(Writer, SecondRunReplacesPagesInPlace)
{
    bool a = true, w = false, m = false;
    HeadlessStatus status;
    WriteHTMLPage(tc.ctx, &status, a, w, m, QString(), QString(), 0);
    const QString page = help + u"M1/Alarms/German/3.html"_qs;
    const QByteArray first = readFileBytes(page);
    ASSERT_FALSE(first.isEmpty());
    runSqlScript(tc.ctx.state.helpTextDB, u"UPDATE AlarmText SET \"Function\" = 'Neu' WHERE Language = 2;"_qs);
    WriteHTMLPage(tc.ctx, &status, a, w, m, QString(), QString(), 0);
    const QByteArray second = readFileBytes(page);
    EXPECT_NE(first, second);
    EXPECT_TRUE(QString::fromUtf16(reinterpret_cast<const char16_t *>(second.constData()), second.size() / 2)
                    .contains(u"\nNeu<br>\r"_qs));
    EXPECT_EQ(pageCount(), 6);
    EXPECT_EQ(status.text, QString()) << "status display ended";
    EXPECT_FALSE(status.visible);
    EXPECT_EQ(status.panel, u"   Generating Help-HTML - press ESC to cancel "_qs);
}

TEST_F(Writer, EscAbortStopsBeforeTheNextPage)
{
    Context &ctx = tc.ctx;
    // ESC arrives once the third page (alarm 2, English) is written; the user
    // confirms while the fourth is under way, which is still written.
    bool asked = false;
    tc.ui.push(Answer::Yes);
    setHtmlEventInterval(0);
    ctx.processEvents = [&] {
        if (!asked && QFile::exists(help + u"M1/Alarms/English/2.html"_qs)) {
            asked = true;
            EXPECT_TRUE(ctx.state.writingHtml);
            EXPECT_EQ(Abort_WriteHTML(ctx), 1);
        }
    };
    bool a = true, w = false, m = false;
    WriteHTMLPage(ctx, nullptr, a, w, m, QString(), QString(), 0);
    setHtmlEventInterval(20);
    const int written = pageCount();
    EXPECT_EQ(written, 4);
    EXPECT_FALSE(ctx.state.abortHtml);
    EXPECT_FALSE(ctx.state.writingHtml);
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].text, u"Abort writing HTML-files?\n\rSome HTML files may not correspond to database"_qs);
    EXPECT_EQ(tc.ui.shown[0].buttons, Buttons::YesNo);
}

TEST(AbortWriteHtml, NoLetsTheRunGoOn)
{
    TestContext tc;
    tc.ui.push(Answer::No);
    EXPECT_EQ(Abort_WriteHTML(tc.ctx), 0);
    EXPECT_FALSE(tc.ctx.state.abortHtml);
    tc.ui.push(Answer::Yes);
    EXPECT_EQ(Abort_WriteHTML(tc.ctx), 1);
    EXPECT_TRUE(tc.ctx.state.abortHtml);
}

TEST(HelpMainDir, CheckOnlyEndsTheProgramWhenTheDirectoryIsGone)
{
    TestContext tc;
    tc.ctx.state.helpMainDir = tc.path(u"gone/"_qs);
    bool check = true, select = false;
    EXPECT_THROW(GetHelpMainDir(tc.ctx, check, select), ProgramEnded);
    EXPECT_EQ(tc.errorLog(), u"Critical Error: Machine Helpdirectory not found.\n\rApplication closing down.\r\n"_qs);

    tc.ctx.state.helpMainDir = tc.path(QString()) + u"/"_qs;
    EXPECT_EQ(GetHelpMainDir(tc.ctx, check, select), tc.ctx.state.helpMainDir);
}

TEST(HelpMainDir, AskedWhenNotStoredOrWhenSelecting)
{
    TestContext tc;
    Context &ctx = tc.ctx;
    ctx.state.iniPath = tc.path(u"helptext.ini"_qs);
    QDir().mkpath(tc.path(u"pages"_qs));
    bool check = false, select = false;

    tc.ui.push(tc.path(u"pages"_qs));
    const QString chosen = GetHelpMainDir(ctx, check, select);
    EXPECT_EQ(chosen, tc.path(u"pages"_qs) + u"/"_qs);
    EXPECT_EQ(LoadIniString(ctx, u"Setup"_qs, u"HelpMainDir"_qs, ctx.state.iniPath), chosen);

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
    EXPECT_EQ(LoadIniString(ctx, u"Setup"_qs, u"HelpMainDir"_qs, ctx.state.iniPath), chosen);
}

TEST(ScreenResolution, StoredAskedOrDefaulted)
{
    TestContext tc;
    Context &ctx = tc.ctx;
    ctx.state.iniPath = tc.path(u"helptext.ini"_qs);

    ctx.state.unattended = true;
    GetScopiaResolution(ctx);
    EXPECT_EQ(ctx.state.screenResolution, u"1024"_qs);
    EXPECT_TRUE(tc.errorLog().contains(u"pages laid out for 1024"_qs)) << tc.errorLog().toStdString();
    EXPECT_TRUE(tc.ui.shown.empty());

    ctx.state.unattended = false;
    tc.ui.push(1280);
    GetScopiaResolution(ctx);
    EXPECT_EQ(ctx.state.screenResolution, u"1280"_qs);
    ASSERT_EQ(tc.ui.shown.size(), 1u);

    ctx.state.screenResolution.clear();
    GetScopiaResolution(ctx); // stored now: not asked again
    EXPECT_EQ(ctx.state.screenResolution, u"1280"_qs);
    EXPECT_EQ(tc.ui.shown.size(), 1u);

    ctx.state.runningOnMachinePC = true;
    GetScopiaResolution(ctx);
    EXPECT_GT(ctx.state.screenResolution.toInt(), 0);
    EXPECT_EQ(tc.ui.shown.size(), 1u);
}

TEST_F(Writer, FontSizeFollowsTheResolution)
{
    bool a = true, w = false, m = false;
    for (const auto &[resolution, size] :
         {std::pair{u"1280"_qs, u"18pt"_qs}, std::pair{u"800"_qs, u"10pt"_qs}, std::pair{u"1024"_qs, u"10pt"_qs}}) {
        tc.ctx.state.screenResolution = resolution;
        WriteHTMLPage(tc.ctx, nullptr, a, w, m, u"M1"_qs, u"English"_qs, 1);
        const QByteArray bytes = readFileBytes(help + u"M1/Alarms/English/1.html"_qs);
        const QString page =
            QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2);
        EXPECT_TRUE(page.contains(u"font-size: "_qs + size)) << resolution.toStdString();
    }
}

} // namespace

namespace
{

TEST_F(Writer, HelpDirectoryThatCannotBeMadeEndsTheRun)
{
    tc.ctx.state.unattended = true;
    tc.ctx.state.helpMainDir = tc.path(u"no/such/parents/"_qs);
    bool a = true, w = false, m = false;
    WriteHTMLPage(tc.ctx, nullptr, a, w, m, QString(), QString(), 0);
    EXPECT_EQ(tc.errorLog(), u"Error creating directory \""_qs + tc.ctx.state.helpMainDir + u"\" !\r\n"_qs);
    EXPECT_FALSE(tc.ctx.state.writingHtml);
    EXPECT_EQ(pageCount(), 0);
}

} // namespace

namespace
{

// Whatever a template holds, the page is the template's lines with the
// placeholders filled: garbage without placeholders comes out as it went in.
TEST_F(Writer, GarbageAndHugeTemplatesArePassedThrough)
{
    runSqlScript(tc.ctx.state.helpTextDB, u"INSERT OR REPLACE INTO WarningDefinition VALUES (1, 'M1', 1);\n"
                                          u"INSERT INTO WarningText VALUES (1, 1, 'Oil');\n"
                                          u"INSERT OR REPLACE INTO WarningDefinition VALUES (2, 'M1', 2);\n"
                                          u"INSERT INTO WarningText VALUES (2, 1, 'Low');\n"_qs);
    QByteArray garbage;
    quint32 seed = 7;
    while (garbage.size() < 50000) {
        seed = seed * 1103515245u + 12345u;
        const char c = char(seed >> 24);
        if (c != '#')
            garbage.append(c);
    }
    writeFileBytes(help + u"Source_Warnings.html"_qs, garbage);
    bool a = false, w = true, m = false;
    WriteHTMLPage(tc.ctx, nullptr, a, w, m, u"M1"_qs, u"English"_qs, 1);
    EXPECT_EQ(readFileBytes(help + u"M1/Warnings/English/1.html"_qs),
              pageBytes(splitTextLines(decodeTextFileBytes(garbage))));

    const QString xs(200000, u'x');
    writeFileBytes(
        help + u"Source_Warnings.html"_qs,
        (u"<TITLE>Harko & Co</TITLE>\n"_qs + xs + u"###FUNCTION###"_qs + xs + u"\n###FUNCTION######"_qs).toUtf8());
    WriteHTMLPage(tc.ctx, nullptr, a, w, m, u"M1"_qs, u"English"_qs, 2);
    EXPECT_EQ(readFileBytes(help + u"M1/Warnings/English/2.html"_qs),
              pageBytes({u"<TITLE>Harko & Co</TITLE>"_qs, xs + u"Low<br>"_qs, xs, QString(), u"Low<br>"_qs, u"###"_qs,
                         QString()}));
}

} // namespace
