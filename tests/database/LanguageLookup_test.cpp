// The language-definition database: checking it, look-ups, font specifications
// and the copy of font settings into the help-text database.
#include "database/HelpTextFixture.h"
#include "database/LanguageLookup.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

const std::vector<LookupRow> kLanguages = {
    {1031, QStringLiteral("GERMAN"), QStringLiteral("Arial 10 400"), QStringLiteral("00000407"), 1252},
    {1033, QStringLiteral("ENGLISH"), QStringLiteral("Arial 10 400"), QStringLiteral("00000409"), 1252},
    {1041, QStringLiteral("JAPANESE"), QStringLiteral("MS Gothic 10 400 128"), QStringLiteral("00000411"), 932},
    {1049, QStringLiteral("Русский \"RU\""), QStringLiteral("Times New Roman 12 700 204"), QStringLiteral("00000419"),
     1251},
};

} // namespace

struct FontCase {
    const char *spec;
    QStringList expected; // without the padding to eight elements
};

void PrintTo(const FontCase &c, std::ostream *os)
{
    *os << '"' << c.spec << '"';
}

class FontSpecs : public ::testing::TestWithParam<FontCase>
{
};

TEST_P(FontSpecs, SplitsNameAndNumbers)
{
    QStringList expected = GetParam().expected;
    while (expected.size() < 8)
        expected << QString();
    EXPECT_EQ(GetFontSpecs(QString::fromUtf8(GetParam().spec)), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Specs, FontSpecs,
    ::testing::Values(FontCase{"Arial 10 400", {"Arial", "10", "400"}},
                      FontCase{"Times New Roman 12 700 0", {"Times New Roman", "12", "700", "0"}},
                      FontCase{"MS Gothic 10 400 128", {"MS Gothic", "10", "400", "128"}},
                      FontCase{"  Arial   9.5\t400  ", {"Arial", "9.5", "400"}}, FontCase{"Arial", {"Arial"}},
                      FontCase{"SimSun 1 2 3 4 5 6 7", {"SimSun", "1", "2", "3", "4", "5", "6", "7"}},
                      FontCase{"SimSun 1 2 3 4 5 6 7 8", {"-1"}}, FontCase{"Arial 10 bold", {"-1"}},
                      FontCase{"Arial 10 400 x 1", {"-1"}}, FontCase{"10 400", {"-1"}}, FontCase{"", {"-1"}},
                      FontCase{"   ", {"-1"}}));

class LookupTest : public ::testing::Test
{
  protected:
    DbTestContext t;
    QString lookup = t.path(QStringLiteral("Languages.mdb"));
    void SetUp() override
    {
        makeLookupDb(lookup, kLanguages);
        t.ctx.state.langLookupDB = lookup;
    }
};

TEST(CheckLanguageLookup, OldVersionIsAcceptedAndReportedOnlyOnTheMachinePc)
{
    for (const bool substBy : {true, false}) {
        for (const bool machinePc : {false, true}) {
            DbTestContext t;
            const QString path = t.path(QStringLiteral("Languages.mdb"));
            makeLookupDb(path, kLanguages, substBy);
            t.ctx.state.runningOnMachinePC = machinePc;
            t.ctx.state.langLookupHasSubstBy = !substBy;

            EXPECT_EQ(CheckLanguageLookup(t.ctx, path), path);
            EXPECT_EQ(t.ctx.state.langLookupDB, path);
            EXPECT_EQ(t.ctx.state.langLookupHasSubstBy, substBy);
            const QString text =
                QStringLiteral("Language-definition database \"") + path + QStringLiteral("\": Old Version!");
            if (!substBy && machinePc) {
                EXPECT_EQ(t.ui.messageTexts(), QStringList{text});
                EXPECT_EQ(t.errorLog(), text + QStringLiteral("\r\n"));
            } else {
                EXPECT_TRUE(t.ui.shown.empty());
                EXPECT_EQ(t.errorLog(), QString());
            }
        }
    }
}

TEST(CheckLanguageLookup, AFileThatIsNoLanguageDatabaseLeavesTheActiveOne)
{
    DbTestContext t;
    const QString good = t.path(QStringLiteral("Languages.mdb"));
    makeLookupDb(good, kLanguages);
    const QString helpText = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(helpText, false);
    const QString junk = t.path(QStringLiteral("junk.mdb"));
    writeFileBytes(junk, "junk");
    t.ctx.state.langLookupDB = good;
    t.ctx.state.langLookupHasSubstBy = true;

    for (const QString &bad : {helpText, junk, t.path(QStringLiteral("missing.mdb"))}) {
        EXPECT_EQ(CheckLanguageLookup(t.ctx, bad), QString()) << qPrintable(bad);
        EXPECT_EQ(t.ctx.state.langLookupDB, good);
        EXPECT_TRUE(t.ctx.state.langLookupHasSubstBy);
    }
}

TEST(ConnectToLookup, ChecksTheChosenFile)
{
    DbTestContext t;
    const QString good = t.path(QStringLiteral("Languages.mdb"));
    makeLookupDb(good, kLanguages);
    t.ui.push(QString(good));
    t.ui.push(QString(t.path(QStringLiteral("Help.mdb")))); // no such file
    t.ui.push(std::monostate{});

    EXPECT_EQ(ConnectToLookup(t.ctx), good);
    EXPECT_EQ(t.ctx.state.langLookupDB, good);
    EXPECT_EQ(ConnectToLookup(t.ctx), QString());
    EXPECT_EQ(ConnectToLookup(t.ctx), QString());
    EXPECT_EQ(t.ctx.state.langLookupDB, good);
    ASSERT_EQ(t.ui.shown.size(), 3u);
    EXPECT_EQ(t.ui.shown[0].title, QStringLiteral("Looking for language definition database"));
    EXPECT_TRUE(t.ui.shown[0].text.startsWith(QStringLiteral("MS Access *.mdb|*.mdb")));
}

TEST_F(LookupTest, CodePageByNameWithoutRegardToCase)
{
    EXPECT_EQ(GetCodePage(t.ctx, QStringLiteral("GERMAN")), QStringLiteral("1252"));
    EXPECT_EQ(GetCodePage(t.ctx, QStringLiteral("japanese")), QStringLiteral("932"));
    EXPECT_EQ(GetCodePage(t.ctx, QStringLiteral("русский \"ru\"")), QStringLiteral("1251"));
    EXPECT_EQ(GetCodePage(t.ctx, QStringLiteral("KLINGON")), QStringLiteral("-1"));
    EXPECT_EQ(GetCodePage(t.ctx, QStringLiteral("GERMAN\" OR \"1\"=\"1")), QStringLiteral("-1"));
    EXPECT_EQ(GetCodePage(t.ctx, QStringLiteral(" GERMAN")), QStringLiteral("-1"));
    EXPECT_TRUE(t.ui.shown.empty());
}

TEST_F(LookupTest, LanguageIdByNumber)
{
    EXPECT_EQ(GetLanguageID(t.ctx, QStringLiteral("1041")), QStringLiteral("1041"));
    EXPECT_EQ(GetLanguageID(t.ctx, QStringLiteral(" 1033 ")), QStringLiteral("1033"));
    EXPECT_EQ(GetLanguageID(t.ctx, QStringLiteral("9999")), QStringLiteral("-1"));
    EXPECT_EQ(GetLanguageID(t.ctx, QStringLiteral("1031 OR 1=1")), QStringLiteral("-1"));
    EXPECT_EQ(GetLanguageID(t.ctx, QString()), QStringLiteral("-1"));
    EXPECT_TRUE(t.ui.shown.empty());
}

TEST_F(LookupTest, UpdateFontSettingsWidensFontAndCopiesOnlyWhatDiffers)
{
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, false);
    const QString longFont = QStringLiteral("A Font Name Of Exactly Fifty-Two Characters Here 10");
    {
        auto d = openRW(db);
        // An older database: Font only 50 wide, one language up to date, one stale, one unknown.
        d->changeColumnType(QStringLiteral("Language"), QStringLiteral("Font"), QStringLiteral("VARCHAR(50)"));
        d->exec(QStringLiteral("INSERT INTO Language VALUES (1031, 'GERMAN', 'Arial 10 400', '00000407')"));
        d->exec(QStringLiteral("INSERT INTO Language VALUES (1041, 'JAPANESE', 'Arial 8', NULL)"));
        d->exec(QStringLiteral("INSERT INTO Language VALUES (2000, 'OWN', ?, 'x')"), {longFont});
        d->exec(QStringLiteral("CREATE TABLE Rewrites (Language)"));
        d->exec(QStringLiteral("CREATE TRIGGER CountRewrites AFTER UPDATE ON Language BEGIN "
                               "INSERT INTO Rewrites VALUES (NEW.Language); END"));
    }
    t.ctx.state.helpTextDB = db;

    UpdateLangFontSettings(t.ctx);

    auto d = Database::open(db, Database::Mode::ReadOnly);
    QString fontType;
    for (const ColumnInfo &c : d->columns(QStringLiteral("Language")))
        if (c.name == QLatin1String("Font"))
            fontType = c.type;
    EXPECT_EQ(fontType, QStringLiteral("VARCHAR(255)"));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Language, Name, Font, KBLayout FROM Language ORDER BY Language")),
              (QStringList{QStringLiteral("1031|GERMAN|Arial 10 400|00000407"),
                           QStringLiteral("1041|JAPANESE|MS Gothic 10 400 128|00000411"),
                           QStringLiteral("2000|OWN|") + longFont + QStringLiteral("|x")}));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Language FROM Rewrites")), QStringList{QStringLiteral("1041")});
    EXPECT_TRUE(t.ui.shown.empty());
}

TEST_F(LookupTest, ExistingLanguagesInRecordOrder)
{
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, false);
    addLanguage(db, 1049, QStringLiteral("Русский"));
    addLanguage(db, 1031, QStringLiteral("GERMAN"));
    t.ctx.state.helpTextDB = db;
    const QList<ExistingLanguage> languages = GetExistingLanguages(t.ctx);
    ASSERT_EQ(languages.size(), 2);
    EXPECT_EQ(languages[0].number, QStringLiteral("1031"));
    EXPECT_EQ(languages[0].name, QStringLiteral("GERMAN"));
    EXPECT_EQ(languages[1].number, QStringLiteral("1049"));
    EXPECT_EQ(languages[1].name, QStringLiteral("Русский"));
}
