// The language-definition database: checking it, look-ups, font specifications
// and the copy of font settings into the help-text database.
#include "database/HelpTextFixture.h"
#include "database/LanguageLookup.h"

#include <QtEndian>
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

struct FontCase {
    const char *fontSpec;
    QStringList expected; // without the padding to eight elements
};

void PrintTo(const FontCase &c, std::ostream *os)
{
    *os << '"' << c.fontSpec << '"';
}

class FontSpecs : public ::testing::TestWithParam<FontCase>
{
};

struct LookupTest : ::testing::Test {
    DbTestContext t;
    void SetUp() override
    {
        t.ctx.state.langLookupDB = t.path(QStringLiteral("Languages.mdb"));
        makeLookupDb(t.ctx.state.langLookupDB, kLanguages);
    }
};

} // namespace

TEST_P(FontSpecs, SplitsNameAndNumbers)
{
    QStringList expected = GetParam().expected;
    expected.resize(8);
    EXPECT_EQ(GetFontSpecs(QString::fromUtf8(GetParam().fontSpec)), expected) << GetParam().fontSpec;
}

INSTANTIATE_TEST_SUITE_P(
    FontCases, FontSpecs,
    ::testing::Values(FontCase{"Arial 10 400", {"Arial", "10", "400"}},
                      FontCase{"Times New Roman 12 700 0", {"Times New Roman", "12", "700", "0"}},
                      FontCase{"  Arial   9.5\t400  ", {"Arial", "9.5", "400"}}, FontCase{"Arial", {"Arial"}},
                      FontCase{"SimSun 1 2 3 4 5 6 7", {"SimSun", "1", "2", "3", "4", "5", "6", "7"}},
                      FontCase{"SimSun 1 2 3 4 5 6 7 8", {"-1"}}, FontCase{"Arial 10 bold", {"-1"}},
                      FontCase{"Arial 10 400 x 1", {"-1"}}, FontCase{"10 400", {"-1"}}, FontCase{"", {"-1"}},
                      FontCase{"   ", {"-1"}}));

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
            const bool reported = !substBy && machinePc;
            const QString text =
                QStringLiteral("Language-definition database \"") + path + QStringLiteral("\": Old Version!");
            EXPECT_EQ(t.ui.messageTexts(), reported ? QStringList{text} : QStringList());
            EXPECT_EQ(t.errorLog(), reported ? text + QStringLiteral("\r\n") : QString());
        }
    }
}

TEST_F(LookupTest, AFileThatIsNoLanguageDatabaseLeavesTheActiveOne)
{
    const QString good = t.ctx.state.langLookupDB;
    t.ctx.state.langLookupHasSubstBy = true;
    const QString helpText = t.newHelpDb(false), junk = writeIn(t.dir, QStringLiteral("junk.mdb"), "junk");
    // Every value reads, but the file fails SQLite's check: it has a page nothing uses.
    const QString damaged = t.path(QStringLiteral("damaged.mdb"));
    makeLookupDb(damaged, kLanguages);
    QByteArray bytes = readFileBytes(damaged);
    const quint16 pageSize = qFromBigEndian<quint16>(bytes.constData() + 16);
    bytes.append(QByteArray(pageSize, '\0'));
    qToBigEndian<quint32>(quint32(bytes.size() / pageSize), bytes.data() + 28); // the page count
    writeFileBytes(damaged, bytes);
    for (const QString &bad : {helpText, junk, damaged, t.path(QStringLiteral("missing.mdb"))}) {
        EXPECT_EQ(CheckLanguageLookup(t.ctx, bad), QString()) << qPrintable(bad);
        EXPECT_EQ(t.ctx.state.langLookupDB, good);
        EXPECT_TRUE(t.ctx.state.langLookupHasSubstBy);
    }
}

TEST_F(LookupTest, CodePageByCaselessNameAndIdByNumber)
{
    const std::pair<const char *, const char *> codePages[] = {
        {"GERMAN", "1252"}, {"japanese", "932"}, {"русский \"ru\"", "1251"},
        {"KLINGON", "-1"},  {" GERMAN", "-1"},   {"GERMAN\" OR \"1\"=\"1", "-1"}};
    for (const auto &[name, expected] : codePages)
        EXPECT_EQ(GetCodePage(t.ctx, QString::fromUtf8(name)), QLatin1String(expected)) << name;
    const std::pair<const char *, const char *> ids[] = {
        {"1041", "1041"}, {" 1033 ", "1033"}, {"9999", "-1"}, {"1031 OR 1=1", "-1"}, {"", "-1"}};
    for (const auto &[number, expected] : ids)
        EXPECT_EQ(GetLanguageID(t.ctx, QLatin1String(number)), QLatin1String(expected)) << number;
    EXPECT_TRUE(t.ui.shown.empty());
}

TEST_F(LookupTest, UpdateFontSettingsWidensFontAndCopiesOnlyWhatDiffers)
{
    const QString db = t.ctx.state.helpTextDB = t.newHelpDb(false);
    const QString longFont = QStringLiteral("A Font Name Of Exactly Fifty-Two Characters Here 10");
    {
        auto d = openRW(db);
        // An older database: Font only 50 wide, one language up to date, one stale, one unknown.
        d->changeColumnType(QStringLiteral("Language"), QStringLiteral("Font"), QStringLiteral("VARCHAR(50)"));
        d->exec(QStringLiteral("INSERT INTO Language VALUES (1031, 'GERMAN', 'Arial 10 400', '00000407')"));
        d->exec(QStringLiteral("INSERT INTO Language VALUES (1041, 'JAPANESE', 'Arial 8', NULL)"));
        d->exec(QStringLiteral("INSERT INTO Language VALUES (2000, 'OWN', ?, 'x')"), {longFont});
        d->execScript(QStringLiteral("CREATE TABLE Rewrites (Language); CREATE TRIGGER CountRewrites AFTER UPDATE ON "
                                     "Language BEGIN INSERT INTO Rewrites VALUES (NEW.Language); END;"));
    }

    UpdateLangFontSettings(t.ctx);

    EXPECT_EQ(columnType(*openRW(db), QStringLiteral("Language"), QStringLiteral("Font")),
              QStringLiteral("VARCHAR(255)"));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Language, Name, Font, KBLayout FROM Language ORDER BY Language")),
              (QStringList{QStringLiteral("1031|GERMAN|Arial 10 400|00000407"),
                           QStringLiteral("1041|JAPANESE|MS Gothic 10 400 128|00000411"),
                           QStringLiteral("2000|OWN|") + longFont + QStringLiteral("|x")}));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Language FROM Rewrites")), QStringList{QStringLiteral("1041")});
    EXPECT_TRUE(t.ui.shown.empty());

    addLanguage(db, 1049, QStringLiteral("Русский"));
    QStringList existing;
    for (const ExistingLanguage &l : GetExistingLanguages(t.ctx))
        existing << l.number + u' ' + l.name;
    EXPECT_EQ(existing, (QStringList{"1031 GERMAN", "1041 JAPANESE", "1049 Русский", "2000 OWN"}));
}
