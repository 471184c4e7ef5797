// The language-definition database: checking it, look-ups, font specifications
// and the copy of font settings into the help-text database.
#include "database/HelpTextFixture.h"
#include "database/LanguageLookup.h"

#include <QtEndian>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;
using namespace Qt::StringLiterals;

namespace
{

const std::vector<LookupRow> kLanguages = {
    {1031, u"GERMAN"_s, u"Arial 10 400"_s, u"00000407"_s, 1252},
    {1033, u"ENGLISH"_s, u"Arial 10 400"_s, u"00000409"_s, 1252},
    {1041, u"JAPANESE"_s, u"MS Gothic 10 400 128"_s, u"00000411"_s, 932},
    {1049, u"Русский \"RU\""_s, u"Times New Roman 12 700 204"_s, u"00000419"_s, 1251},
};

struct LookupTest : ::testing::Test {
    DbTestContext t;
    void SetUp() override
    {
        t.ctx.state.langLookupDB = t.path(u"Languages.mdb"_s);
        makeLookupDb(t.ctx.state.langLookupDB, kLanguages);
    }
};

} // namespace

TEST(GetFontSpecs, SplitsNameAndNumbers)
{
    // Expected without the padding to eight elements.
    const std::pair<const char *, QStringList> cases[] = {
        {"Arial 10 400", {"Arial", "10", "400"}},
        {"Times New Roman 12 700 0", {"Times New Roman", "12", "700", "0"}},
        {"  Arial   9.5\t400  ", {"Arial", "9.5", "400"}},
        {"Arial", {"Arial"}},
        {"SimSun 1 2 3 4 5 6 7", {"SimSun", "1", "2", "3", "4", "5", "6", "7"}},
        {"SimSun 1 2 3 4 5 6 7 8", {"-1"}},
        {"Arial 10 bold", {"-1"}},
        {"Arial 10 400 x 1", {"-1"}},
        {"10 400", {"-1"}},
        {"", {"-1"}},
        {"   ", {"-1"}}};
    for (auto [written, expected] : cases) {
        expected.resize(8);
        EXPECT_EQ(GetFontSpecs(QString::fromUtf8(written)), expected) << written;
    }
}

TEST(CheckLanguageLookup, OldVersionIsAcceptedAndReportedOnlyOnTheMachinePc)
{
    for (const bool substBy : {true, false}) {
        for (const bool machinePc : {false, true}) {
            DbTestContext t;
            const QString path = t.path(u"Languages.mdb"_s);
            makeLookupDb(path, kLanguages, substBy);
            t.ctx.state.runningOnMachinePC = machinePc;
            t.ctx.state.langLookupHasSubstBy = !substBy;

            EXPECT_EQ(CheckLanguageLookup(t.ctx, path), path);
            EXPECT_EQ(t.ctx.state.langLookupDB, path);
            EXPECT_EQ(t.ctx.state.langLookupHasSubstBy, substBy);
            const bool reported = !substBy && machinePc;
            const QString text = u"Language-definition database \""_s + path + u"\": Old Version!"_s;
            EXPECT_EQ(t.ui.messageTexts(), reported ? QStringList{text} : QStringList());
            EXPECT_EQ(t.errorLog(), reported ? text + u"\r\n"_s : QString());
        }
    }
}

TEST_F(LookupTest, AFileThatIsNoLanguageDatabaseLeavesTheActiveOne)
{
    const QString good = t.ctx.state.langLookupDB;
    t.ctx.state.langLookupHasSubstBy = true;
    const QString helpText = t.newHelpDb(false), junk = writeIn(t.dir, u"junk.mdb"_s, "junk");
    // Every value reads, but the file fails SQLite's check: it has a page nothing uses.
    const QString damaged = t.path(u"damaged.mdb"_s);
    makeLookupDb(damaged, kLanguages);
    QByteArray bytes = readFileBytes(damaged);
    const quint16 pageSize = qFromBigEndian<quint16>(bytes.constData() + 16);
    bytes.append(QByteArray(pageSize, '\0'));
    qToBigEndian<quint32>(quint32(bytes.size() / pageSize), bytes.data() + 28); // the page count
    writeFileBytes(damaged, bytes);
    for (const QString &bad : {helpText, junk, damaged, t.path(u"missing.mdb"_s)}) {
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
    const QString longFont = u"A Font Name Of Exactly Fifty-Two Characters Here 10"_s;
    {
        auto d = openRW(db);
        // An older database: Font only 50 wide, one language up to date, one stale, one unknown.
        d->changeColumnType(u"Language"_s, u"Font"_s, u"VARCHAR(50)"_s);
        d->exec(u"INSERT INTO Language VALUES (1031, 'GERMAN', 'Arial 10 400', '00000407')"_s);
        d->exec(u"INSERT INTO Language VALUES (1041, 'JAPANESE', 'Arial 8', NULL)"_s);
        d->exec(u"INSERT INTO Language VALUES (2000, 'OWN', ?, 'x')"_s, {longFont});
        d->execScript(u"CREATE TABLE Rewrites (Language); CREATE TRIGGER CountRewrites AFTER UPDATE ON "
                      "Language BEGIN INSERT INTO Rewrites VALUES (NEW.Language); END;"_s);
    }

    UpdateLangFontSettings(t.ctx);

    EXPECT_EQ(columnType(*openRW(db), u"Language"_s, u"Font"_s), u"VARCHAR(255)"_s);
    EXPECT_EQ(dump(db, u"SELECT Language, Name, Font, KBLayout FROM Language ORDER BY Language"_s),
              (QStringList{u"1031|GERMAN|Arial 10 400|00000407"_s, u"1041|JAPANESE|MS Gothic 10 400 128|00000411"_s,
                           u"2000|OWN|"_s + longFont + u"|x"_s}));
    EXPECT_EQ(dump(db, u"SELECT Language FROM Rewrites"_s), QStringList{u"1041"_s});
    EXPECT_TRUE(t.ui.shown.empty());

    addLanguage(db, 1049, u"Русский"_s);
    QStringList existing;
    for (const ExistingLanguage &l : GetExistingLanguages(t.ctx))
        existing << l.number + u' ' + l.name;
    EXPECT_EQ(existing, (QStringList{"1031 GERMAN", "1041 JAPANESE", "1049 Русский", "2000 OWN"}));
}
