// Index-text addresses in alarm templates.

#include "html/IndexText.h"
#include "HtmlTestSupport.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

TEST(IndexText, AddressIsCutOutOfTheLine)
{
    const std::pair<QString, QString> cases[] = {
        {u"<td>###DIREKT:Feeder.Motor.Speed###</td>"_qs, u"Feeder.Motor.Speed"_qs},
        {u"###DIREKT:A.B###"_qs, u"A.B"_qs},
        {u"###DIREKT:A.B### ###DIREKT:C.D###"_qs, u"A.B"_qs},
        {u"x ###DIREKT:abcdef"_qs, u"abc"_qs}, // unclosed
        {u"###DIREKT:ab"_qs, u""_qs},
        {u"###DIREKT:###"_qs, u""_qs},
        {u"###FONT###"_qs, u""_qs}};
    for (const auto &[line, address] : cases)
        EXPECT_EQ(GetHTMLDirectIndexTextAddress(line).toStdString(), address.toStdString()) << line.toStdString();
}

// Feeder > Motor > Speed, Pump > Speed and Feeder > Name.
class IndexTexts : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        createDatabaseFromScripts(db, {schemaFile(u"indextext.sql"_qs)});
        runSqlScript(db, u"INSERT INTO TidxGroups VALUES (1, 0, 'Feeder'), (2, 1, 'Motor'), (3, 0, 'Pump');\n"
                         u"INSERT INTO TidxTexts (ID, ParentID, Name, L1, L2, L3) VALUES "
                         u"(1, 2, 'Speed', 'Belt speed', 'Bandgeschwindigkeit', NULL), "
                         u"(2, 3, 'Speed', 'Top speed', 'Hoechstgeschwindigkeit', NULL), "
                         u"(3, 1, 'Name', 'Feeder \"A\"', 'Zufuehrung', NULL);"_qs);
        tc.ctx.state.indexTextDB = db;
    }
    TestContext tc;
    QString db = tc.path(u"index.sqlite"_qs);
};

TEST_F(IndexTexts, LookUpFollowsTheGroupChainWithValuesNeverInTheSql)
{
    const std::tuple<QString, QString, int, QString> cases[] = {
        {u"1"_qs, u"Feeder.Motor.Speed"_qs, 1, u"Belt speed"_qs},
        {u"2"_qs, u"Feeder.Motor.Speed"_qs, 1, u"Bandgeschwindigkeit"_qs},
        {u"1"_qs, u"Pump.Speed"_qs, 1, u"Top speed"_qs},
        {u"1"_qs, u"Motor.Speed"_qs, 1, u"Belt speed"_qs}, // the outermost group need not be at the top
        {u"1"_qs, u"feeder.NAME"_qs, 1, u"Feeder \"A\""_qs},
        {u"1"_qs, u"Speed"_qs, 1, u"-1"_qs},
        {u"1"_qs, u"Feeder.Speed"_qs, 1, u"-1"_qs},
        {u"1"_qs, u"Feeder.Motor.Speed"_qs, 2, u"-1"_qs},
        {u"1 FROM TidxTexts; --"_qs, u"Feeder.Motor.Speed"_qs, 1, u"-1"_qs},
        {u"11"_qs, u"Feeder.Motor.Speed"_qs, 1, u"-1"_qs}, // no column L11
        {u"1"_qs, u"Feeder.x' OR '1'='1"_qs, 1, u"-1"_qs},
        // Deeper than the database can join: simply not found.
        {u"1"_qs, QStringList(65, u"Feeder"_qs).join(u'.'), 1, u"-1"_qs}};
    for (const auto &[language, address, project, text] : cases)
        EXPECT_EQ(GetScopiaIndexText(tc.ctx, db, language, address, project), text) << address.toStdString();
    EXPECT_EQ(GetScopiaIndexText(tc.ctx, QString(), u"1"_qs, u"Feeder.Motor.Speed"_qs, 1), u"-1"_qs);
    // Unknown addresses are no error; only language columns that do not exist are logged.
    for (const QString &line : tc.errorLog().split(u"\r\n"_qs, Qt::SkipEmptyParts))
        EXPECT_TRUE(line.startsWith(u"GetScopiaIndexText: no column"_qs)) << line.toStdString();
}

TEST_F(IndexTexts, EachAddressIsReadOncePerLanguage)
{
    IndexTextCache cache;
    const QString line = u"<p>###DIREKT:Feeder.Motor.Speed### / ###DIREKT:Nowhere.Text### / "
                         u"###DIREKT:Feeder.Motor.Speed###</p>"_qs;
    const std::tuple<QString, QString, int> runs[] = {
        {u"1"_qs, u"<p>Belt speed /  / Belt speed</p>"_qs, 2},
        {u"1"_qs, u"<p>Belt speed /  / Belt speed</p>"_qs, 2},
        {u"2"_qs, u"<p>Bandgeschwindigkeit /  / Bandgeschwindigkeit</p>"_qs, 4}};
    for (const auto &[language, result, lookups] : runs) {
        EXPECT_EQ(ExchangeDirectAdress_IndexText(tc.ctx, line, language, cache), result);
        EXPECT_EQ(cache.databaseLookups, lookups);
    }
    const QString unclosed = u"a ###DIREKT:Feeder.Motor.Speed"_qs;
    EXPECT_EQ(ExchangeDirectAdress_IndexText(tc.ctx, unclosed, u"1"_qs, cache), unclosed);
    // However many markers a line holds, every one is replaced.
    EXPECT_EQ(ExchangeDirectAdress_IndexText(tc.ctx, u"###DIREKT:Pump.Speed###;"_qs.repeated(5000), u"1"_qs, cache),
              u"Top speed;"_qs.repeated(5000));
    EXPECT_EQ(tc.errorLog(), QString());
}

TEST_F(IndexTexts, MissingDatabaseIsAskedForOrLogged)
{
    Context &ctx = tc.ctx;
    ctx.state.indexTextDB = tc.path(u"gone.mdb"_qs);
    IndexTextCache cache;
    tc.ui.push(OpenFileChoice{db, false}); // the user picks the database
    EXPECT_EQ(ExchangeDirectAdress_IndexText(ctx, u"###DIREKT:Pump.Speed###"_qs, u"1"_qs, cache), u"Top speed"_qs);
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].title, u"Bitte Indextextdatenbank auswählen!"_qs);
    EXPECT_EQ(ctx.state.indexTextDB, db);

    // Unattended: logged, the path stays empty and the marker goes.
    ctx.state.unattended = true;
    ctx.state.indexTextDB = tc.path(u"gone.mdb"_qs);
    IndexTextCache fresh;
    EXPECT_EQ(ExchangeDirectAdress_IndexText(ctx, u"[###DIREKT:Motor.Speed###]"_qs, u"1"_qs, fresh), u"[]"_qs);
    EXPECT_TRUE(ctx.state.indexTextDB.isEmpty());
    EXPECT_EQ(tc.errorLog(), u"Couldn't connect to "_qs + tc.path(u"gone.mdb"_qs) + u"\r\n"_qs);
}

} // namespace
