// The settings file follows the private-profile rules: these tests feed
// hand-written files and compare values and the file's bytes afterwards.

#include "common/IniFile.h"
#include "QtPrinters.h"
#include "common/Messages.h"
#include "support/TestSupport.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <sys/stat.h>

using namespace ht;
using ht::test::readFileBytes;
using ht::test::TestContext;
using ht::test::writeFileBytes;

namespace
{

TEST(IniFile, ReadFindsValueByProfileRules)
{
    const struct {
        const char *name;
        QByteArray file;
        const char *section, *key;
        QString expected;
    } cases[] = {{"CaseInsensitiveNames", "[setup]\r\nstandardhelptextdb=C:\\x.mdb\r\n", "SETUP", "StandardHelpTextDB",
                  "C:\\x.mdb"},
                 {"FirstKeyWins", "[S]\r\nK=1\r\nk=2\r\n", "S", "K", "1"},
                 {"FirstSectionWins", "[S]\nK=1\n[s]\nK=2\n", "s", "k", "1"},
                 {"LaterDuplicateSectionNotSearched", "[S]\nA=1\n[S]\nB=2\n", "S", "B", ""},
                 {"KeyOfOtherSection", "[A]\nK=1\n[B]\nX=2\n", "B", "K", ""},
                 {"KeysBeforeFirstSection", "K=1\n[S]\n", "S", "K", ""},
                 {"BlanksAroundNameAndValue", "  [S]  \n \t K \t=   v a l \t \r\n", "S", "K", "v a l"},
                 {"EqualsInValue", "[S]\nK=a=b\n", "S", "K", "a=b"},
                 {"QuotedValue", "[S]\nK=\" spaced \"\n", "S", "K", " spaced "},
                 {"UnmatchedQuotesKept", "[S]\nK='abc\"\n", "S", "K", "'abc\""},
                 {"LineWithoutEqualsIgnored", "[S]\nK\nK=2\n", "S", "K", "2"},
                 {"LineWithoutEqualsIsNoKey", "[S]\nnoequals\n", "S", "noequals", ""},
                 {"EmptyValue", "[S]\nK=\nK=2\n", "S", "K", ""},
                 {"TextAfterSectionBracket", "[S] ; old\nK=v\n", "S", "K", "v"},
                 {"NoLineBreakAtEnd", "[S]\nK=last", "S", "K", "last"},
                 {"Utf8Value", "[S]\nK=\xce\x95\xce\xbb\xce\xbb\xce\xac\xce\xb4\xce\xb1\n", "S", "K",
                  QString::fromUtf8("Ελλάδα")},
                 {"AnsiValue", "[S]\nK=C:\\M\xfcller\\\x80.mdb\n", "S", "K", QString::fromUtf8("C:\\Müller\\€.mdb")},
                 {"BrokenBytesElsewhere", "\xff\xfe[\xc3\n[S\xff]\nK=x\n[S]\nK=ok\n", "S", "K", "ok"},
                 {"Utf8ByteOrderMark", "\xef\xbb\xbf[S]\r\nK=bom\r\n", "S", "K", "bom"},
                 // The value is cut to the 255-character buffer with its terminating NUL.
                 {"LongValueCut", "[S]\r\nK=" + QByteArray(300, 'x') + "\r\n", "S", "K", QString(254, 'x')},
                 {"LongestValue", "[S]\r\nK=" + QByteArray(254, 'y'), "S", "K", QString(254, 'y')}};
    TestContext tc;
    for (const auto &c : cases) {
        writeFileBytes(tc.path("t.ini"), c.file);
        EXPECT_EQ(LoadIniString(tc.ctx, c.section, c.key, tc.path("t.ini")), c.expected) << c.name;
    }
    EXPECT_TRUE(tc.ui.shown.empty());
}

TEST(IniFile, MissingEntryReadsAsMissingAndIsReportedOnlyWhenAsked)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", ini), QString());
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", tc.dir.path()), QString());
    EXPECT_EQ(LoadIniInteger(tc.ctx, "S", "K", ini), -1);
    EXPECT_FALSE(LoadIniBoolean(tc.ctx, "S", "K", ini));
    EXPECT_FALSE(QFile::exists(ini));

    writeFileBytes(ini, "[Setup]\r\nThere=1\r\n");
    LoadIniString(tc.ctx, "Setup", "There", ini, true, true);
    EXPECT_TRUE(tc.ui.shown.empty());
    LoadIniString(tc.ctx, "Setup", "Missing", ini, false, true);
    const QString notFound = "File '" + ini + "' or Section [Setup] or Entry 'Missing' not found";
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].text, notFound);
    EXPECT_EQ(tc.ui.shown[0].buttons, Buttons::OK);
    EXPECT_EQ(tc.ui.shown[0].icon, Icon::None);

    tc.ctx.state.unattended = true;
    LoadIniString(tc.ctx, "Setup", "Missing", ini, false, true);
    EXPECT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.errorLog(), notFound + "\r\n");
}

TEST(IniFile, BooleanOnlyTrueIntegerLeadingDigits)
{
    // One line of [Setup] read as both; an empty line means the key is missing.
    const struct {
        QByteArray line;
        bool boolean;
        int integer;
        bool boolMessage, intMessage; // "not found" shown
    } cases[] = {{"N=true", true, 0, false, false},   {"n = TRuE ", true, 0, false, false},
                 {"N=FALSE", false, 0, false, false}, {"N=  42  ", false, 42, true, false},
                 {"N=-12", false, -12, true, false},  {"N=+5", false, 5, true, false},
                 {"N=12abc", false, 12, true, false}, {"N=-1", false, -1, true, true},
                 {"N=", false, -1, true, true},       {"", false, -1, true, true}};
    for (const auto &c : cases) {
        TestContext tc;
        const QString ini = tc.path("t.ini");
        writeFileBytes(ini, "[Setup]\r\n" + c.line + "\r\n");
        EXPECT_EQ(LoadIniBoolean(tc.ctx, "Setup", "N", ini, false, true), c.boolean) << c.line.data();
        EXPECT_EQ(tc.ui.shown.size(), c.boolMessage ? 1u : 0u) << c.line.data();
        tc.ui.shown.clear();
        EXPECT_EQ(LoadIniInteger(tc.ctx, "Setup", "N", ini, false, true), c.integer) << c.line.data();
        EXPECT_EQ(tc.ui.shown.size(), c.intMessage ? 1u : 0u) << c.line.data();
    }
}

TEST(IniFile, IntegerBeyondSixteenBitsIsAnOverflow)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[Setup]\r\nN=40000\r\n");
    tc.ui.push(Answer::Yes); // go on
    EXPECT_EQ(LoadIniInteger(tc.ctx, "Setup", "N", ini), -1);
    EXPECT_TRUE(tc.errorLog().contains("Source: LoadIniInteger"));
    tc.ui.push(Answer::No);
    EXPECT_THROW(LoadIniInteger(tc.ctx, "Setup", "N", ini), ProgramEnded);
}

TEST(IniFile, WriteChangesOnlyWhatItMust)
{
    const QByteArray longLine = "; " + QByteArray(5000, 'z') + "\xe4\xff\r\n";
    const struct {
        const char *name;
        QByteArray before;
        const char *section, *key;
        QString value;
        QByteArray after;
    } cases[] = {{"ReplacesFirstMatchingKeyOnly",
                  "; comment \xff\r\n[setup]\r\nKey = old  \r\nkey=second\r\n[Other]\r\nKey=x\r\n", "SETUP", "KEY",
                  "new", "; comment \xff\r\n[setup]\r\nKey = new\r\nkey=second\r\n[Other]\r\nKey=x\r\n"},
                 {"KeepsLongAndBrokenLines", "[A]\r\n" + longLine + "k=1\r\n" + longLine, "A", "k", "2",
                  "[A]\r\n" + longLine + "k=2\r\n" + longLine},
                 {"AddsKeyBeforeBlankSeparator", "[A]\r\nx=1\r\n\r\n[B]\r\ny=2\r\n", "A", "z", "3",
                  "[A]\r\nx=1\r\nz=3\r\n\r\n[B]\r\ny=2\r\n"},
                 {"AddsKeyToFirstDuplicateSection", "[A]\nx=1\n[a]\nz=9\n", "a", "z", "3", "[A]\nx=1\nz=3\n[a]\nz=9\n"},
                 {"AddsKeyToSectionAtEndWithoutBreak", "[A]\r\nx=1", "A", "y", "2", "[A]\r\nx=1\r\ny=2\r\n"},
                 {"AppendsSection", "[A]\nx=1", "B", "k", "v", "[A]\nx=1\n[B]\nk=v\n"},
                 {"KeepsByteOrderMark", "\xef\xbb\xbf[S]\r\nK=1\r\n", "s", "k", "2", "\xef\xbb\xbf[S]\r\nK=2\r\n"},
                 {"EmptiesValue", "[A]\nx=1\n", "A", "x", "", "[A]\nx=\n"},
                 {"FillsEmptyValue", "[A]\nx=\n", "A", "x", "5", "[A]\nx=5\n"},
                 {"Utf8Value", "[A]\nx=1\n", "A", "x", QString::fromUtf8("Données"),
                  "[A]\nx=Donn\xc3\xa9"
                  "es\n"},
                 {"ValueCannotAddLines", "[A]\nx=1\n", "A", "x", "a\r\n[evil]\r\nx=2", "[A]\nx=a\n"}};
    TestContext tc;
    const QString ini = tc.path("t.ini");
    for (const auto &c : cases) {
        writeFileBytes(ini, c.before);
        EXPECT_NE(SaveIni(tc.ctx, c.value, c.section, c.key, ini), 0) << c.name;
        EXPECT_EQ(readFileBytes(ini), c.after) << c.name;
        EXPECT_EQ(LoadIniString(tc.ctx, c.section, c.key, ini), c.value.section('\r', 0, 0)) << c.name;
    }
}

TEST(IniFile, FirstWriteCreatesFileWithValueByType)
{
    const struct {
        QVariant value;
        QByteArray written;
    } cases[] = {{-7, "-7"},
                 {4000000000u, "4000000000"},
                 {1234567890123LL, "1234567890123"},
                 {1.5, "1.5"},
                 {0.25f, "0.25"},
                 {QVariant::fromValue<uchar>(200), "200"},
                 {" C:\\a.mdb ", " C:\\a.mdb "},
                 {true, "true"},
                 {false, "false"},
                 {QDate(2002, 5, 1), ""},
                 {QVariant(), ""}};
    for (const auto &c : cases) {
        TestContext tc;
        const QString ini = tc.path("new.ini");
        EXPECT_EQ(SaveIni(tc.ctx, c.value, "Setup", "K", ini), 1);
        EXPECT_EQ(readFileBytes(ini), "[Setup]\r\nK=" + c.written + "\r\n");
        // Types without a text form are written as empty after a message.
        const bool wrongType = c.written.isEmpty();
        EXPECT_EQ(tc.ui.messageTexts(), wrongType ? QStringList{"Ini Save:  wrong data type"} : QStringList());
    }
}

TEST(IniFile, FailedWriteChangesNothingWriteKeepsPermissions)
{
    TestContext tc;
    // The settings file in a directory that cannot exist: its "parent" is a file.
    writeFileBytes(tc.path("plain"), "x");
    EXPECT_EQ(SaveIni(tc.ctx, 1, "S", "K", tc.path("plain/t.ini")), 0);
    EXPECT_EQ(readFileBytes(tc.path("plain")), "x");

    // A read-only file refuses the write, even for an administrator.
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[S]\r\nK=1\r\n");
    QFile::setPermissions(ini, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    EXPECT_EQ(SaveIni(tc.ctx, 2, "S", "K", ini), 0);
    EXPECT_EQ(SaveIni(tc.ctx, 2, "S", "New", ini), 0);
    EXPECT_EQ(readFileBytes(ini), "[S]\r\nK=1\r\n");
    EXPECT_TRUE(tc.ui.shown.empty());

    // A written file is changed in place, keeping its permissions.
    const auto perms = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser | QFile::ReadGroup;
    QFile::setPermissions(ini, perms);
    ASSERT_EQ(SaveIni(tc.ctx, 2, "S", "K", ini), 1);
    EXPECT_EQ(QFile::permissions(ini), perms);
}

TEST(IniFile, OnlyARegularFileOfBoundedSizeIsReadOrWritten)
{
    TestContext tc;
    const QString fifo = tc.path("fifo.ini"), big = tc.path("big.ini");
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0); // a read would wait for a writer
    const QByteArray bigBytes = "[S]\r\nK=1\r\n" + QByteArray(16 << 20, ';');
    writeFileBytes(big, bigBytes);
    for (const QString &ini : {fifo, big}) {
        EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", ini), QString()) << ini.toStdString();
        EXPECT_EQ(SaveIni(tc.ctx, 2, "S", "K", ini), 0) << ini.toStdString();
    }
    EXPECT_EQ(readFileBytes(big), bigBytes);
}

// The parse of a file is kept between reads, so a change must always be seen: here
// one that keeps the size, the inode and the modification time of the file.
TEST(IniFile, EveryChangeIsReadAgain)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    const QDateTime longAgo = QDateTime::currentDateTime().addSecs(-3600);
    for (const char *value : {"1", "2"}) {
        writeFileBytes(ini, QByteArray("[S]\r\nK=") + value + "\r\n");
        QFile f(ini);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite) && f.setFileTime(longAgo, QFileDevice::FileModificationTime));
        f.close();
        EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", ini), value);
    }
    ASSERT_EQ(SaveIni(tc.ctx, 3, "S", "K", ini), 1);
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", ini), "3");
}

TEST(IniFile, StandardPaths)
{
    TestContext tc;
    EXPECT_EQ(GetStandardApplicationIni(tc.ctx), tc.path("helptext.ini"));
    const QByteArray systemRoot = qgetenv("SystemRoot"), configHome = qgetenv("XDG_CONFIG_HOME");
    qputenv("SystemRoot", tc.path("win").toUtf8()); // Windows's own directory comes first
    qputenv("XDG_CONFIG_HOME", tc.path("cfg").toUtf8());
    EXPECT_EQ(GetStandardUserIni(tc.ctx), tc.path("win/helptext.ini"));
    qunsetenv("SystemRoot");
    EXPECT_EQ(GetStandardUserIni(tc.ctx), tc.path("cfg/helptext.ini"));
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(GetStandardUserIni(tc.ctx), QDir::homePath() + "/.config/helptext.ini");
    EXPECT_FALSE(QFile::exists(tc.path("cfg")));
    for (const auto &[name, value] : {std::pair{"SystemRoot", systemRoot}, std::pair{"XDG_CONFIG_HOME", configHome}})
        value.isEmpty() ? qunsetenv(name) : qputenv(name, value);
}

} // namespace
