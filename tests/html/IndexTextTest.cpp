// Index-text addresses in alarm templates.

#include "html/IndexText.h"
#include "HtmlTestSupport.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

struct AddressCase {
    const char *name;
    QString line, address;
};

class Address : public ::testing::TestWithParam<AddressCase>
{
};

TEST_P(Address, IsCutOutOfTheLine)
{
    EXPECT_EQ(GetHTMLDirectIndexTextAddress(GetParam().line).toStdString(), GetParam().address.toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Address,
    ::testing::Values(AddressCase{"Plain", u"<td>###DIREKT:Feeder.Motor.Speed###</td>"_qs, u"Feeder.Motor.Speed"_qs},
                      AddressCase{"AtLineEnd", u"###DIREKT:A.B###"_qs, u"A.B"_qs},
                      AddressCase{"FirstOfTwo", u"###DIREKT:A.B### ###DIREKT:C.D###"_qs, u"A.B"_qs},
                      AddressCase{"Unclosed", u"x ###DIREKT:abcdef"_qs, u"abc"_qs},
                      AddressCase{"UnclosedShort", u"###DIREKT:ab"_qs, u""_qs},
                      AddressCase{"EmptyAddress", u"###DIREKT:###"_qs, u""_qs},
                      AddressCase{"NoMarker", u"###FONT###"_qs, u""_qs}),
    [](const auto &info) { return std::string(info.param.name); });

class IndexTexts : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        db = tc.path(u"index.sqlite"_qs);
        createDatabaseFromScripts(db, {indexTextSchema()});
        runSqlScript(
            db,
            u"INSERT INTO TidxGroups VALUES (1, 0, 'Feeder');\n"
            u"INSERT INTO TidxGroups VALUES (2, 1, 'Motor');\n"
            u"INSERT INTO TidxGroups VALUES (3, 0, 'Pump');\n"
            u"INSERT INTO TidxTexts (ID, ParentID, Name, L1, L2, L3) VALUES (1, 2, 'Speed', 'Belt speed', "
            u"'Bandgeschwindigkeit', NULL);\n"
            u"INSERT INTO TidxTexts (ID, ParentID, Name, L1, L2, L3) VALUES (2, 3, 'Speed', 'Top speed', "
            u"'Hoechstgeschwindigkeit', NULL);\n"
            u"INSERT INTO TidxTexts (ID, ParentID, Name, L1, L2, L3) VALUES (3, 1, 'Name', 'Feeder \"A\"', 'Zufuehrung', NULL);"_qs);
        tc.ctx.state.indexTextDB = db;
    }
    TestContext tc;
    QString db;
};

TEST_F(IndexTexts, LookUpFollowsTheGroupChain)
{
    Context &ctx = tc.ctx;
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Feeder.Motor.Speed"_qs, 1), u"Belt speed"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"2"_qs, u"Feeder.Motor.Speed"_qs, 1), u"Bandgeschwindigkeit"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Pump.Speed"_qs, 1), u"Top speed"_qs);
    // The outermost group named need not be at the top of the tree.
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Motor.Speed"_qs, 1), u"Belt speed"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"feeder.NAME"_qs, 1), u"Feeder \"A\""_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Speed"_qs, 1), u"-1"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Feeder.Speed"_qs, 1), u"-1"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Feeder.Motor.Speed"_qs, 2), u"-1"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, QString(), u"1"_qs, u"Feeder.Motor.Speed"_qs, 1), u"-1"_qs);
    EXPECT_EQ(tc.errorLog(), QString());
}

TEST_F(IndexTexts, ForeignLanguageNumbersNeverReachTheSql)
{
    Context &ctx = tc.ctx;
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1 FROM TidxTexts; --"_qs, u"Feeder.Motor.Speed"_qs, 1), u"-1"_qs);
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"11"_qs, u"Feeder.Motor.Speed"_qs, 1), u"-1"_qs); // no column L11
    EXPECT_EQ(GetScopiaIndexText(ctx, db, u"1"_qs, u"Feeder.x' OR '1'='1"_qs, 1), u"-1"_qs);
}

TEST_F(IndexTexts, EachAddressIsReadOncePerLanguage)
{
    Context &ctx = tc.ctx;
    IndexTextCache cache;
    const QString line = u"<p>###DIREKT:Feeder.Motor.Speed### / ###DIREKT:Nowhere.Text### / "
                         u"###DIREKT:Feeder.Motor.Speed###</p>"_qs;
    EXPECT_EQ(ExchangeDirectAdress_IndexText(ctx, line, u"1"_qs, cache), u"<p>Belt speed /  / Belt speed</p>"_qs);
    EXPECT_EQ(cache.databaseLookups, 2);
    EXPECT_EQ(ExchangeDirectAdress_IndexText(ctx, line, u"1"_qs, cache), u"<p>Belt speed /  / Belt speed</p>"_qs);
    EXPECT_EQ(cache.databaseLookups, 2);
    EXPECT_EQ(ExchangeDirectAdress_IndexText(ctx, line, u"2"_qs, cache),
              u"<p>Bandgeschwindigkeit /  / Bandgeschwindigkeit</p>"_qs);
    EXPECT_EQ(cache.databaseLookups, 4);
    EXPECT_EQ(tc.errorLog(), QString());
}

TEST_F(IndexTexts, UnclosedMarkerEndsTheReplacement)
{
    IndexTextCache cache;
    const QString line = u"a ###DIREKT:Feeder.Motor.Speed"_qs;
    EXPECT_EQ(ExchangeDirectAdress_IndexText(tc.ctx, line, u"1"_qs, cache), line);
}

TEST_F(IndexTexts, MissingDatabaseIsAskedForOrLogged)
{
    Context &ctx = tc.ctx;
    ctx.state.indexTextDB = tc.path(u"gone.mdb"_qs);
    IndexTextCache cache;
    // The user picks the database in the dialog.
    tc.ui.push(OpenFileChoice{db, false});
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
