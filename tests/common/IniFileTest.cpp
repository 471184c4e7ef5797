// The settings file follows the private-profile rules: these tests feed
// hand-written files and compare values and the file's bytes afterwards.

#include "common/IniFile.h"
#include "QtPrinters.h"
#include "common/Messages.h"
#include "support/TestSupport.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace ht;
using ht::test::readFileBytes;
using ht::test::TestContext;
using ht::test::writeFileBytes;

namespace
{

struct ReadCase {
    const char *name;
    QByteArray file;
    const char *section;
    const char *key;
    QString expected;
};

class IniRead : public ::testing::TestWithParam<ReadCase>
{
};

TEST_P(IniRead, FindsValueByProfileRules)
{
    TestContext tc;
    const ReadCase &c = GetParam();
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, c.file);
    EXPECT_EQ(LoadIniString(tc.ctx, c.section, c.key, ini), c.expected);
    EXPECT_TRUE(tc.ui.shown.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Profile, IniRead,
    ::testing::Values(ReadCase{"CaseInsensitiveNames", "[setup]\r\nstandardhelptextdb=C:\\x.mdb\r\n", "SETUP",
                               "StandardHelpTextDB", "C:\\x.mdb"},
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
                               QString::fromUtf8("\xce\x95\xce\xbb\xce\xbb\xce\xac\xce\xb4\xce\xb1")},
                      ReadCase{"AnsiValue", "[S]\nK=C:\\M\xfcller\\\x80.mdb\n", "S", "K",
                               QString::fromUtf8("C:\\Müller\\€.mdb")},
                      ReadCase{"BrokenBytesElsewhere", "\xff\xfe[\xc3\n[S\xff]\nK=x\n[S]\nK=ok\n", "S", "K", "ok"},
                      ReadCase{"Utf8ByteOrderMark", "\xef\xbb\xbf[S]\r\nK=bom\r\n", "S", "K", "bom"},
                      ReadCase{"EmptyFile", "", "S", "K", ""}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(IniFile, ValueIsCutToTheBuffer)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    const QByteArray longValue(300, 'x');
    writeFileBytes(ini, "[S]\r\nLong=" + longValue + "\r\nShort=" + QByteArray(254, 'y') + "\r\n");
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "Long", ini), QString(254, QLatin1Char('x')));
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "Short", ini), QString(254, QLatin1Char('y')));
}

TEST(IniFile, MissingFileOrDirectoryReadsAsMissing)
{
    TestContext tc;
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", tc.path("none.ini")), QString());
    EXPECT_EQ(LoadIniString(tc.ctx, "S", "K", tc.dir.path()), QString());
    EXPECT_EQ(LoadIniInteger(tc.ctx, "S", "K", tc.path("none.ini")), -1);
    EXPECT_FALSE(LoadIniBoolean(tc.ctx, "S", "K", tc.path("none.ini")));
    EXPECT_FALSE(QFile::exists(tc.path("none.ini")));
}

TEST(IniFile, NotFoundMessageOnlyWhenAsked)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[Setup]\r\nThere=1\r\n");
    LoadIniString(tc.ctx, "Setup", "Missing", ini, false, false);
    EXPECT_TRUE(tc.ui.shown.empty());
    LoadIniString(tc.ctx, "Setup", "There", ini, true, true);
    EXPECT_TRUE(tc.ui.shown.empty());

    LoadIniString(tc.ctx, "Setup", "Missing", ini, false, true);
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].text, "File '" + ini + "' or Section [Setup] or Entry 'Missing' not found");
    EXPECT_EQ(tc.ui.shown[0].buttons, Buttons::OK);
    EXPECT_EQ(tc.ui.shown[0].icon, Icon::None);
}

TEST(IniFile, NotFoundMessageGoesToLogWhenUnattended)
{
    TestContext tc;
    tc.ctx.state.unattended = true;
    LoadIniString(tc.ctx, "Setup", "Missing", tc.path("t.ini"), false, true);
    EXPECT_TRUE(tc.ui.shown.empty());
    EXPECT_EQ(tc.errorLog(), "File '" + tc.path("t.ini") + "' or Section [Setup] or Entry 'Missing' not found\r\n");
}

struct BoolCase {
    const char *name;
    QByteArray line; // empty: key missing
    bool expected;
    bool message;
};

class IniBoolean : public ::testing::TestWithParam<BoolCase>
{
};

TEST_P(IniBoolean, OnlyTrueInAnyCaseIsTrue)
{
    TestContext tc;
    const BoolCase &c = GetParam();
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[Setup]\r\n" + c.line + "\r\n");
    EXPECT_EQ(LoadIniBoolean(tc.ctx, "Setup", "Flag", ini, false, true), c.expected);
    EXPECT_EQ(tc.ui.shown.size(), c.message ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Profile, IniBoolean,
    ::testing::Values(BoolCase{"lower", "Flag=true", true, false}, BoolCase{"upper", "Flag=TRUE", true, false},
                      BoolCase{"mixed", "flag = True ", true, false}, BoolCase{"false", "Flag=false", false, false},
                      BoolCase{"FALSE", "Flag=FALSE", false, false}, BoolCase{"one", "Flag=1", false, true},
                      BoolCase{"yes", "Flag=yes", false, true}, BoolCase{"empty", "Flag=", false, true},
                      BoolCase{"missing", "", false, true}),
    [](const auto &info) { return std::string(info.param.name); });

struct IntCase {
    const char *name;
    QByteArray line;
    int expected;
    bool message;
};

class IniInteger : public ::testing::TestWithParam<IntCase>
{
};

TEST_P(IniInteger, LeadingDigitsCount)
{
    TestContext tc;
    const IntCase &c = GetParam();
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[Setup]\r\n" + c.line + "\r\n");
    EXPECT_EQ(LoadIniInteger(tc.ctx, "Setup", "glb_AnzFehler", ini, false, true), c.expected);
    EXPECT_EQ(tc.ui.shown.size(), c.message ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Profile, IniInteger,
                         ::testing::Values(IntCase{"plain", "glb_AnzFehler=42", 42, false},
                                           IntCase{"blanks", "glb_AnzFehler=  7  ", 7, false},
                                           IntCase{"plus", "glb_AnzFehler=+5", 5, false},
                                           IntCase{"negative", "glb_AnzFehler=-12", -12, false},
                                           IntCase{"digitsThenText", "glb_AnzFehler=12abc", 12, false},
                                           IntCase{"noDigits", "glb_AnzFehler=abc", 0, false},
                                           IntCase{"storedMinusOne", "glb_AnzFehler=-1", -1, true},
                                           IntCase{"empty", "glb_AnzFehler=", -1, true},
                                           IntCase{"missing", "", -1, true}),
                         [](const auto &info) { return std::string(info.param.name); });

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
    const char *section;
    const char *key;
    QString value;
    QByteArray after;
};

class IniWrite : public ::testing::TestWithParam<WriteCase>
{
};

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
        WriteCase{"AddsKeyToEmptySection", "[A]\r\n", "A", "k", "v", "[A]\r\nk=v\r\n"},
        WriteCase{"AppendsSection", "[A]\nx=1", "B", "k", "v", "[A]\nx=1\n[B]\nk=v\n"},
        WriteCase{"KeepsByteOrderMark", "\xef\xbb\xbf[S]\r\nK=1\r\n", "s", "k", "2", "\xef\xbb\xbf[S]\r\nK=2\r\n"},
        WriteCase{"CreatesFileContent", "", "Setup", "K", "V", "[Setup]\r\nK=V\r\n"},
        WriteCase{"EmptiesValue", "[A]\nx=1\n", "A", "x", "", "[A]\nx=\n"},
        WriteCase{"FillsEmptyValue", "[A]\nx=\n", "A", "x", "5", "[A]\nx=5\n"},
        WriteCase{"Utf8Value", "[A]\nx=1\n", "A", "x", QString::fromUtf8("C:\\Données"),
                  "[A]\nx=C:\\Donn\xc3\xa9"
                  "es\n"},
        WriteCase{"ValueCannotAddLines", "[A]\nx=1\n", "A", "x", "a\r\n[evil]\r\nx=2", "[A]\nx=a\n"}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(IniFile, FirstWriteCreatesTheFile)
{
    TestContext tc;
    const QString ini = tc.path("new.ini");
    ASSERT_FALSE(QFile::exists(ini));
    EXPECT_EQ(SaveIni(tc.ctx, QStringLiteral("C:\\a.mdb"), "Setup", "StandardHelpTextDB", ini), 1);
    EXPECT_EQ(readFileBytes(ini), "[Setup]\r\nStandardHelpTextDB=C:\\a.mdb\r\n");
}

TEST(IniFile, FailedWriteChangesNothing)
{
    TestContext tc;
    // The settings file in a directory that cannot exist: its "parent" is a file.
    writeFileBytes(tc.path("plain"), "x");
    EXPECT_EQ(SaveIni(tc.ctx, 1, "S", "K", tc.path("plain/t.ini")), 0);
    EXPECT_EQ(readFileBytes(tc.path("plain")), "x");

    // A read-only file refuses the write, even for an administrator.
    const QString ini = tc.path("ro.ini");
    const QByteArray before = "[S]\r\nK=1\r\n";
    writeFileBytes(ini, before);
    QFile::setPermissions(ini, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    EXPECT_EQ(SaveIni(tc.ctx, 2, "S", "K", ini), 0);
    EXPECT_EQ(SaveIni(tc.ctx, 2, "S", "New", ini), 0);
    EXPECT_EQ(readFileBytes(ini), before);
    EXPECT_TRUE(tc.ui.shown.empty());
}

TEST(IniFile, ReadOnlyDirectoryTakesNoNewFile)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "an administrator may write into a read-only directory";
    TestContext tc;
    QDir(tc.dir.path()).mkdir("ro");
    const QString dir = tc.path("ro");
    writeFileBytes(dir + "/old.ini", "[S]\nK=1\n");
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(SaveIni(tc.ctx, 1, "S", "K", dir + "/t.ini"), 0);
    EXPECT_FALSE(QFile::exists(dir + "/t.ini"));
    // A writable file in it is still written, in place.
    EXPECT_EQ(SaveIni(tc.ctx, 2, "S", "K", dir + "/old.ini"), 1);
    EXPECT_EQ(readFileBytes(dir + "/old.ini"), "[S]\nK=2\n");
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST(IniFile, WriteKeepsFilePermissions)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    writeFileBytes(ini, "[S]\nK=1\n");
    const auto perms = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser | QFile::ReadGroup;
    QFile::setPermissions(ini, perms);
    ASSERT_EQ(SaveIni(tc.ctx, 2, "S", "K", ini), 1);
    EXPECT_EQ(QFile::permissions(ini), perms);
}

struct SaveCase {
    const char *name;
    QVariant value;
    QByteArray written;
};

class IniSave : public ::testing::TestWithParam<SaveCase>
{
};

TEST_P(IniSave, WritesValueByType)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    EXPECT_EQ(SaveIni(tc.ctx, GetParam().value, "S", "K", ini), 1);
    EXPECT_EQ(readFileBytes(ini), "[S]\r\nK=" + GetParam().written + "\r\n");
    EXPECT_TRUE(tc.ui.shown.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Types, IniSave,
    ::testing::Values(SaveCase{"int", QVariant(42), "42"}, SaveCase{"short", QVariant::fromValue<short>(-7), "-7"},
                      SaveCase{"uint", QVariant(4000000000u), "4000000000"},
                      SaveCase{"longlong", QVariant(1234567890123LL), "1234567890123"},
                      SaveCase{"double", QVariant(1.5), "1.5"}, SaveCase{"float", QVariant(0.25f), "0.25"},
                      SaveCase{"byte", QVariant::fromValue<uchar>(200), "200"},
                      SaveCase{"string", QVariant(QStringLiteral(" a b ")), " a b "},
                      SaveCase{"true", QVariant(true), "true"}, SaveCase{"false", QVariant(false), "false"}),
    [](const auto &info) { return std::string(info.param.name); });

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

TEST(IniFile, SavedBooleanReadsBack)
{
    TestContext tc;
    const QString ini = tc.path("t.ini");
    SaveIni(tc.ctx, true, "Setup", "GenerateHTMLAfterEditAlarm", ini);
    SaveIni(tc.ctx, false, "Setup", "GenerateHTMLAfterEditWarnings", ini);
    EXPECT_TRUE(LoadIniBoolean(tc.ctx, "setup", "generatehtmlaftereditalarm", ini));
    EXPECT_FALSE(LoadIniBoolean(tc.ctx, "Setup", "GenerateHTMLAfterEditWarnings", ini));
    SaveIni(tc.ctx, -1, "Setup", "glb_AnzFehler", ini);
    EXPECT_EQ(LoadIniInteger(tc.ctx, "Setup", "glb_AnzFehler", ini), -1);
}

// Sets or clears an environment variable for one test and restores it after.
class EnvVar
{
  public:
    EnvVar(const char *name, const QString &value) : name_(name), had_(qEnvironmentVariableIsSet(name))
    {
        old_ = qgetenv(name);
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value.toUtf8());
    }
    ~EnvVar()
    {
        if (had_)
            qputenv(name_, old_);
        else
            qunsetenv(name_);
    }

  private:
    const char *name_;
    bool had_;
    QByteArray old_;
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
    EXPECT_TRUE(tc.ui.shown.empty());
}

} // namespace
