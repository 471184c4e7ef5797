// The settings file follows the private-profile rules: these tests feed
// hand-written files and compare values and the file's bytes afterwards.

#include "common/IniFile.h"
#include "QtPrinters.h"
#include "common/Messages.h"
#include "support/TestSupport.h"

#include <QDate>
#include <QDir>
#include <QFile>

using namespace ht;
using ht::test::ByName;
using ht::test::readFileBytes;
using ht::test::Table;
using ht::test::TestContext;
using ht::test::writeFileBytes;

namespace
{

struct ReadCase {
    const char *name;
    QByteArray file;
    const char *section, *key;
    QString expected;
};
using IniRead = Table<ReadCase>;

TEST_P(IniRead, FindsValueByProfileRules)
{
    TestContext tc;
    const ReadCase &c = GetParam();
    writeFileBytes(tc.path("t.ini"), c.file);
    EXPECT_EQ(LoadIniString(tc.ctx, c.section, c.key, tc.path("t.ini")), c.expected);
    EXPECT_TRUE(tc.ui.shown.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Profile, IniRead,
    ::testing::Values(
        ReadCase{"CaseInsensitiveNames", "[setup]\r\nstandardhelptextdb=C:\\x.mdb\r\n", "SETUP", "StandardHelpTextDB",
                 "C:\\x.mdb"},
        ReadCase{"FirstKeyWins", "[S]\r\nK=1\r\nk=2\r\n", "S", "K", "1"},
        ReadCase{"FirstSectionWins", "[S]\nK=1\n[s]\nK=2\n", "s", "k", "1"},
        ReadCase{"LaterDuplicateSectionNotSearched", "[S]\nA=1\n[S]\nB=2\n", "S", "B", ""},
        ReadCase{"KeyOfOtherSection", "[A]\nK=1\n[B]\nX=2\n", "B", "K", ""},
        ReadCase{"KeysBeforeFirstSection", "K=1\n[S]\n", "S", "K", ""},
        ReadCase{"BlanksAroundNameAndValue", "  [S]  \n \t K \t=   v a l \t \r\n", "S", "K", "v a l"},
        ReadCase{"EqualsInValue", "[S]\nK=a=b\n", "S", "K", "a=b"},
        ReadCase{"QuotedValue", "[S]\nK=\" spaced \"\n", "S", "K", " spaced "},
        ReadCase{"UnmatchedQuotesKept", "[S]\nK='abc\"\n", "S", "K", "'abc\""},
        ReadCase{"LineWithoutEqualsIgnored", "[S]\nK\nK=2\n", "S", "K", "2"},
        ReadCase{"LineWithoutEqualsIsNoKey", "[S]\nnoequals\n", "S", "noequals", ""},
        ReadCase{"EmptyValue", "[S]\nK=\nK=2\n", "S", "K", ""},
        ReadCase{"TextAfterSectionBracket", "[S] ; old\nK=v\n", "S", "K", "v"},
        ReadCase{"NoLineBreakAtEnd", "[S]\nK=last", "S", "K", "last"},
        ReadCase{"Utf8Value", "[S]\nK=\xce\x95\xce\xbb\xce\xbb\xce\xac\xce\xb4\xce\xb1\n", "S", "K",
                 QString::fromUtf8("Ελλάδα")},
        ReadCase{"AnsiValue", "[S]\nK=C:\\M\xfcller\\\x80.mdb\n", "S", "K", QString::fromUtf8("C:\\Müller\\€.mdb")},
        ReadCase{"BrokenBytesElsewhere", "\xff\xfe[\xc3\n[S\xff]\nK=x\n[S]\nK=ok\n", "S", "K", "ok"},
        ReadCase{"Utf8ByteOrderMark", "\xef\xbb\xbf[S]\r\nK=bom\r\n", "S", "K", "bom"},
        // The value is cut to the 255-character buffer with its terminating NUL.
        ReadCase{"LongValueCut", "[S]\r\nK=" + QByteArray(300, 'x') + "\r\n", "S", "K", QString(254, QLatin1Char('x'))},
        ReadCase{"LongestValue", "[S]\r\nK=" + QByteArray(254, 'y'), "S", "K", QString(254, QLatin1Char('y'))}),
    ByName());

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

// One line of [Setup] read as a boolean and as an integer; an empty line means the key is missing.
struct NumberCase {
    const char *name;
    QByteArray line;
    bool boolean;
    int integer;
    bool boolMessage, intMessage; // "not found" shown
};
using IniNumber = Table<NumberCase>;

TEST_P(IniNumber, OnlyTrueIsTrueLeadingDigitsCount)
{
    TestContext tc;
    const NumberCase &c = GetParam();
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[Setup]\r\n" + c.line + "\r\n");
    EXPECT_EQ(LoadIniBoolean(tc.ctx, "Setup", "N", ini, false, true), c.boolean);
    EXPECT_EQ(tc.ui.shown.size(), c.boolMessage ? 1u : 0u);
    tc.ui.shown.clear();
    EXPECT_EQ(LoadIniInteger(tc.ctx, "Setup", "N", ini, false, true), c.integer);
    EXPECT_EQ(tc.ui.shown.size(), c.intMessage ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Profile, IniNumber,
                         ::testing::Values(NumberCase{"True", "N=true", true, 0, false, false},
                                           NumberCase{"TrueAnyCase", "n = TRuE ", true, 0, false, false},
                                           NumberCase{"False", "N=FALSE", false, 0, false, false},
                                           NumberCase{"Number", "N=  42  ", false, 42, true, false},
                                           NumberCase{"Signed", "N=-12", false, -12, true, false},
                                           NumberCase{"Plus", "N=+5", false, 5, true, false},
                                           NumberCase{"DigitsThenText", "N=12abc", false, 12, true, false},
                                           NumberCase{"StoredMinusOne", "N=-1", false, -1, true, true},
                                           NumberCase{"Empty", "N=", false, -1, true, true},
                                           NumberCase{"Missing", "", false, -1, true, true}),
                         ByName());

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

struct WriteCase {
    const char *name;
    QByteArray before;
    const char *section, *key;
    QString value;
    QByteArray after;
};
using IniWrite = Table<WriteCase>;

TEST_P(IniWrite, ChangesOnlyWhatItMust)
{
    TestContext tc;
    const WriteCase &c = GetParam();
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, c.before);
    EXPECT_NE(SaveIni(tc.ctx, c.value, c.section, c.key, ini), 0);
    EXPECT_EQ(readFileBytes(ini), c.after);
    EXPECT_EQ(LoadIniString(tc.ctx, c.section, c.key, ini), c.value.section(QLatin1Char('\r'), 0, 0));
}

const QByteArray kLongLine = "; " + QByteArray(5000, 'z') + "\xe4\xff\r\n";

INSTANTIATE_TEST_SUITE_P(
    Profile, IniWrite,
    ::testing::Values(
        WriteCase{"ReplacesFirstMatchingKeyOnly",
                  "; comment \xff\r\n[setup]\r\nKey = old  \r\nkey=second\r\n[Other]\r\nKey=x\r\n", "SETUP", "KEY",
                  "new", "; comment \xff\r\n[setup]\r\nKey = new\r\nkey=second\r\n[Other]\r\nKey=x\r\n"},
        WriteCase{"KeepsLongAndBrokenLines", "[A]\r\n" + kLongLine + "k=1\r\n" + kLongLine, "A", "k", "2",
                  "[A]\r\n" + kLongLine + "k=2\r\n" + kLongLine},
        WriteCase{"AddsKeyBeforeBlankSeparator", "[A]\r\nx=1\r\n\r\n[B]\r\ny=2\r\n", "A", "z", "3",
                  "[A]\r\nx=1\r\nz=3\r\n\r\n[B]\r\ny=2\r\n"},
        WriteCase{"AddsKeyToFirstDuplicateSection", "[A]\nx=1\n[a]\nz=9\n", "a", "z", "3", "[A]\nx=1\nz=3\n[a]\nz=9\n"},
        WriteCase{"AddsKeyToSectionAtEndWithoutBreak", "[A]\r\nx=1", "A", "y", "2", "[A]\r\nx=1\r\ny=2\r\n"},
        WriteCase{"AppendsSection", "[A]\nx=1", "B", "k", "v", "[A]\nx=1\n[B]\nk=v\n"},
        WriteCase{"KeepsByteOrderMark", "\xef\xbb\xbf[S]\r\nK=1\r\n", "s", "k", "2", "\xef\xbb\xbf[S]\r\nK=2\r\n"},
        WriteCase{"EmptiesValue", "[A]\nx=1\n", "A", "x", "", "[A]\nx=\n"},
        WriteCase{"FillsEmptyValue", "[A]\nx=\n", "A", "x", "5", "[A]\nx=5\n"},
        WriteCase{"Utf8Value", "[A]\nx=1\n", "A", "x", QString::fromUtf8("Données"),
                  "[A]\nx=Donn\xc3\xa9"
                  "es\n"},
        WriteCase{"ValueCannotAddLines", "[A]\nx=1\n", "A", "x", "a\r\n[evil]\r\nx=2", "[A]\nx=a\n"}),
    ByName());

// The first write creates the file; values are written by their type.
struct SaveCase {
    const char *name;
    QVariant value;
    QByteArray written;
};
using IniSave = Table<SaveCase>;

TEST_P(IniSave, CreatesFileWithValueByType)
{
    TestContext tc;
    const QString ini = tc.path("new.ini");
    EXPECT_EQ(SaveIni(tc.ctx, GetParam().value, "Setup", "K", ini), 1);
    EXPECT_EQ(readFileBytes(ini), "[Setup]\r\nK=" + GetParam().written + "\r\n");
    EXPECT_TRUE(tc.ui.shown.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Types, IniSave,
    ::testing::Values(SaveCase{"int", QVariant(-7), "-7"}, SaveCase{"uint", QVariant(4000000000u), "4000000000"},
                      SaveCase{"longlong", QVariant(1234567890123LL), "1234567890123"},
                      SaveCase{"double", QVariant(1.5), "1.5"}, SaveCase{"float", QVariant(0.25f), "0.25"},
                      SaveCase{"byte", QVariant::fromValue<uchar>(200), "200"},
                      SaveCase{"string", QVariant(QStringLiteral(" C:\\a.mdb ")), " C:\\a.mdb "},
                      SaveCase{"true", QVariant(true), "true"}, SaveCase{"false", QVariant(false), "false"}),
    ByName());

TEST(IniFile, UnsupportedTypeWritesEmptyValueAfterMessage)
{
    for (const QVariant &v : {QVariant(QDate(2002, 5, 1)), QVariant()}) {
        TestContext tc;
        const QString ini = tc.path("t.ini");
        writeFileBytes(ini, "[S]\r\nK=old\r\n");
        EXPECT_EQ(SaveIni(tc.ctx, v, "S", "K", ini), 1);
        EXPECT_EQ(tc.ui.messageTexts(), QStringList{"Ini Save:  wrong data type"});
        EXPECT_EQ(readFileBytes(ini), "[S]\r\nK=\r\n");
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

// Sets (or with a null value clears) an environment variable until the end of the scope.
struct EnvVar {
    const char *name;
    QByteArray old = qgetenv(name);
    bool had = qEnvironmentVariableIsSet(name);
    EnvVar(const char *n, const QString &value) : name(n)
    {
        value.isNull() ? qunsetenv(name) : qputenv(name, value.toUtf8());
    }
    ~EnvVar() { had ? qputenv(name, old) : qunsetenv(name); }
};

TEST(IniFile, StandardPaths)
{
    TestContext tc;
    EXPECT_EQ(GetStandardApplicationIni(tc.ctx), tc.path("helptext.ini"));
    {
        EnvVar root("SystemRoot", tc.path("win"));
        EXPECT_EQ(GetStandardUserIni(tc.ctx), tc.path("win/helptext.ini"));
    }
    EnvVar noRoot("SystemRoot", QString());
    {
        EnvVar xdg("XDG_CONFIG_HOME", tc.path("cfg"));
        EXPECT_EQ(GetStandardUserIni(tc.ctx), tc.path("cfg/helptext.ini"));
    }
    EnvVar noXdg("XDG_CONFIG_HOME", QString());
    EXPECT_EQ(GetStandardUserIni(tc.ctx), QDir::homePath() + "/.config/helptext.ini");
    EXPECT_FALSE(QFile::exists(tc.path("cfg")));
}

} // namespace
