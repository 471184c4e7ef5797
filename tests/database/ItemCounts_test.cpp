// Item counts in DBSys, the check of the tables against them and the rebuild of
// a too-short kind, on real SQLite files.
#include "database/HelpTextFixture.h"
#include "database/ItemCounts.h"
#include "database/jet/JetCheck.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

using Counts = std::array<long, 4>; // indexed by kind, [0] unused

QString rows(const QString &db, const char *table)
{
    return dump(db, QStringLiteral("SELECT COUNT(*) FROM ") + QLatin1String(table)).value(0);
}

// A database whose DBSys was changed by `sql` (several statements allowed).
struct CountCase {
    const char *name;
    const char *sql;
    Counts expected;
    bool import = false; // the importer, with 12 alarms or warnings added
};

using GetDBSysMaxLenItemsTest = ::testing::TestWithParam<CountCase>;

} // namespace

TEST_P(GetDBSysMaxLenItemsTest, ReadsCountsAndAddsWhatIsMissingWithItsDefault)
{
    DbTestContext t;
    const QString db = t.newHelpDb();
    openRW(db)->execScript(QString::fromLatin1(GetParam().sql));
    if (GetParam().import) {
        t.ctx.state.mode = QStringLiteral("IMPORT");
        t.ctx.state.anzFehler = 12;
    }
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    const Counts &c = GetParam().expected;
    EXPECT_EQ(t.ctx.state.maxItems, c);
    if (!GetParam().import)
        EXPECT_EQ(dump(db, QStringLiteral("SELECT Item, Data FROM DBSys ORDER BY Item")),
                  (QStringList{QStringLiteral("MaxLenAlarm|%1").arg(c[1]),
                               QStringLiteral("MaxLenMaterialChange|%1").arg(c[3]),
                               QStringLiteral("MaxLenWarning|%1").arg(c[2])}));
}

#define SET(item, n) "UPDATE DBSys SET Data = '" #n "' WHERE Item = 'MaxLen" #item "';"
#define DROP(item) "DELETE FROM DBSys WHERE Item = 'MaxLen" #item "';"
#define ALL_SET SET(Alarm, 300) SET(Warning, 310) SET(MaterialChange, 1200)
INSTANTIATE_TEST_SUITE_P(Cases, GetDBSysMaxLenItemsTest,
                         ::testing::Values(CountCase{"NoTable", "DROP TABLE DBSys", {0, 256, 256, 1000}},
                                           CountCase{"NoAlarm", ALL_SET DROP(Alarm), {0, 256, 310, 1200}},
                                           CountCase{"NoWarning", ALL_SET DROP(Warning), {0, 300, 256, 1200}},
                                           CountCase{
                                               "NoMaterialChange", ALL_SET DROP(MaterialChange), {0, 300, 310, 1000}},
                                           CountCase{"Importer", ALL_SET, {0, 268, 268, 1200}, true}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(GetDBSysMaxLenItems, FailuresAreReportedAndAJetFileOnlyRead)
{
    DbTestContext t;
    const QString db = t.newHelpDb();
    openRW(db)->exec(QStringLiteral(SET(Warning, many)));
    t.continueAfterErrors();
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, db)) << "DBSys was found";
    EXPECT_TRUE(t.errorLog().contains(QStringLiteral("Source: GetDBSysMaxLenItems")));
    t.continueAfterErrors();
    EXPECT_FALSE(GetDBSysMaxLenItems(t.ctx, t.path(QStringLiteral("missing.mdb"))));

    const QString jet = t.path(QStringLiteral("Old.mdb"));
    ASSERT_TRUE(QFile::copy(jetTestFile(QStringLiteral("test2V2000")), jet));
    const QByteArray before = readFileBytes(jet);
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, jet));
    EXPECT_EQ(t.ctx.state.maxItems, (Counts{0, 256, 256, 1000}));
    EXPECT_EQ(readFileBytes(jet), before);
}

// A keyed Access file gets the count rows it lacks (DBSys.Item is a text key).
TEST(GetDBSysMaxLenItems, AnAccessFileGetsTheRowsItLacks)
{
    DbTestContext t;
    const QString mdb = t.path(QStringLiteral("Keys.mdb"));
    ASSERT_TRUE(QFile::copy(jetTestFile(QStringLiteral("helptext_keys")), mdb));
    QFile::setPermissions(mdb, QFile::ReadOwner | QFile::WriteOwner);
    openRW(mdb)->exec(QStringLiteral("DELETE FROM DBSys WHERE Item <> 'MaxLenAlarm'"));
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, mdb));
    EXPECT_EQ(t.ctx.state.maxItems[KindWarnings], 256);
    EXPECT_EQ(jet::checkStructure(jet::Image(readFileBytes(mdb), mdb)), QStringList());
    EXPECT_EQ(Database::open(mdb, Database::Mode::ReadOnly)
                  ->query(QStringLiteral("SELECT Data FROM DBSys WHERE Item = 'MaxLenMaterialChange'"))
                  .text(QStringLiteral("Data")),
              QStringLiteral("1000"));
}

// CorrectDBLength on a template database with one language, its counts changed by `sql`.
struct LengthCase {
    const char *name;
    const char *sql;
    bool materialChange;
    Counts expected;
    const char *rowsAfter; // alarm, alarm text, warning, material-change definitions
};

using CorrectDBLengthTest = ::testing::TestWithParam<LengthCase>;

TEST_P(CorrectDBLengthTest, RebuildsOnlyTooShortTablesAfterOneBackup)
{
    const LengthCase &c = GetParam();
    DbTestContext t;
    const QString db = t.ctx.state.helpTextDB = t.newHelpDb(c.materialChange);
    addLanguage(db, 1031, QStringLiteral("GERMAN"));
    openRW(db)->execScript(QString::fromLatin1(c.sql));
    const QByteArray before = readFileBytes(db);
    ASSERT_TRUE(GetDBSysMaxLenItems(t.ctx, db));

    EXPECT_EQ(CorrectDBLength(t.ctx, db), 0);

    EXPECT_EQ(t.ctx.state.maxItems, c.expected);
    const QString rowCounts = rows(db, "AlarmDefinition") + u' ' + rows(db, "AlarmText") + u' ' +
                              rows(db, "WarningDefinition") + u' ' +
                              (c.materialChange ? rows(db, "MaterialChangeDefinition") : QStringLiteral("-"));
    EXPECT_EQ(rowCounts, QLatin1String(c.rowsAfter));
    const bool rebuilt = c.expected[1] > 256 || c.expected[2] > 256;
    EXPECT_EQ(readFileBytes(t.path(QStringLiteral("Help_BACKUP.sav"))), rebuilt ? before : QByteArray());
    EXPECT_FALSE(QFile::exists(t.path(QStringLiteral("Help_BACKUP1.sav"))));
    if (c.sql[0] == 0)
        EXPECT_EQ(readFileBytes(db), before) << "tables that fit are left alone";
    EXPECT_TRUE(t.ui.shown.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CorrectDBLengthTest,
    ::testing::Values(
        LengthCase{"AllFit", "", true, {0, 256, 256, 1000}, "1280 1280 1280 5000"},
        LengthCase{"WithoutMaterialChange", "", false, {0, 256, 256, 1000}, "1280 1280 1280 -"},
        LengthCase{"ZeroTakesTheBlockLength", SET(Warning, 0), true, {0, 256, 256, 1000}, "1280 1280 1280 5000"},
        LengthCase{"TooShort", SET(Alarm, 300) SET(Warning, 260), true, {0, 300, 260, 1000}, "1500 1500 1300 5000"}),
    [](const auto &info) { return std::string(info.param.name); });

// --- CorrectItemLenth: one kind rebuilt to five longer blocks ------------------

struct KindCase {
    const char *word, *definition, *id, *text, *textId;
    long oldCount; // rows per block in the template
    long newCount;
};

using Rebuild = ::testing::TestWithParam<KindCase>;

TEST_P(Rebuild, BlocksGrowWithRowsAndTextsInPlace)
{
    const KindCase &k = GetParam();
    const QString def = QLatin1String(k.definition), id = QLatin1String(k.id), text = QLatin1String(k.text),
                  textId = QLatin1String(k.textId);
    const long oldCount = k.oldCount, newCount = k.newCount;
    DbTestContext t;
    const QString db = t.ctx.state.helpTextDB = t.newHelpDb();
    addLanguage(db, 1031, QStringLiteral("GERMAN"));
    addLanguage(db, 1041, QStringLiteral("JAPANESE"));
    const QString machines[] = {QStringLiteral("M 1 \"a\""), QStringLiteral("0"), QStringLiteral("機械3"),
                                QStringLiteral("0"), QStringLiteral("0")};
    {
        auto d = openRW(db);
        for (long b : {0, 2}) // machines in blocks 1 and 3
            d->exec(QStringLiteral("UPDATE %1 SET MachineType = ? WHERE %2 BETWEEN ? AND ?").arg(def, id),
                    {machines[b], qlonglong(b * oldCount + 1), qlonglong((b + 1) * oldCount)});
        // A text row missing, and one belonging to no item.
        d->exec(QStringLiteral("DELETE FROM %1 WHERE %2 = 5 AND Language = 1041").arg(text, textId));
        d->exec(QStringLiteral("INSERT INTO %1 (%2, Language) VALUES (99999, 1031)").arg(text, textId));
    }
    const QStringList defBefore = dump(db, QStringLiteral("SELECT * FROM %1 ORDER BY %2").arg(def, id));
    const QStringList textBefore =
        dump(db, QStringLiteral("SELECT * FROM %1 WHERE %2 <> 99999 ORDER BY %2, Language").arg(text, textId));

    long count = newCount;
    ASSERT_EQ(CorrectItemLenth(t.ctx, QLatin1String(k.word), count), newCount);
    EXPECT_EQ(count, newCount);

    // Contiguous IDs; old rows keep their values in their block, new rows are free rows of the block's machine.
    const QStringList defAfter = dump(db, QStringLiteral("SELECT * FROM %1 ORDER BY %2").arg(def, id));
    ASSERT_EQ(defAfter.size(), 5 * newCount);
    for (long b = 0; b < 5; ++b) {
        for (long q = 0; q < newCount; ++q) {
            QStringList after = defAfter[b * newCount + q].split(u'|');
            ASSERT_EQ(after.takeFirst(), QString::number(b * newCount + q + 1));
            QStringList expected = q < oldCount ? defBefore[b * oldCount + q].split(u'|').mid(1)
                                                : QStringList(after.size(), QStringLiteral("<null>"));
            if (q >= oldCount)
                expected[0] = machines[b];
            ASSERT_EQ(after, expected) << "block " << b << " row " << q;
        }
    }

    // Exactly one text row per item and language; the saved ones moved with their item.
    EXPECT_EQ(dump(db, QStringLiteral("SELECT COUNT(*), COUNT(DISTINCT %2 || '/' || Language), MAX(%2) FROM %1")
                           .arg(text, textId)),
              QStringList{QStringLiteral("%1|%1|%2").arg(2 * 5 * newCount).arg(5 * newCount)});
    QStringList expectedSaved;
    for (const QString &line : textBefore) {
        QStringList v = line.split(u'|');
        const long old = v[0].toLong(), b = (old - 1) / oldCount;
        v[0] = QString::number(b * newCount + (old - b * oldCount));
        expectedSaved << v.join(u'|');
    }
    // The row deleted before the rebuild is back, empty; the rest kept their texts.
    expectedSaved << QStringLiteral("5|1041") +
                         QStringLiteral("|<null>").repeated(text == QLatin1String("AlarmText") ? 3 : 1);
    expectedSaved.sort();
    QStringList savedAfter = dump(db, QStringLiteral("SELECT * FROM %1 WHERE (%2 - 1) % %3 < %4")
                                          .arg(text, textId, QString::number(newCount), QString::number(oldCount)));
    savedAfter.sort();
    EXPECT_EQ(savedAfter, expectedSaved);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Rebuild,
    ::testing::Values(KindCase{"Alarm", "AlarmDefinition", "AlarmID", "AlarmText", "Alarm_ID", 256, 300},
                      KindCase{"Warning", "WarningDefinition", "WarningID", "WarningText", "Warning_ID", 256, 257},
                      KindCase{"MaterialChange", "MaterialChangeDefinition", "MaterialChangeID", "MaterialChangeText",
                               "MaterialChange_ID", 1000, 1003}),
    [](const auto &info) { return std::string(info.param.word); });

// A rebuild that fails half-way leaves the file exactly as it was.
struct FailureCase {
    const char *name;
    const char *spoil; // SQL run before the rebuild
    long count;
};

using RebuildFailure = ::testing::TestWithParam<FailureCase>;

TEST_P(RebuildFailure, LeavesTheDatabaseUnchanged)
{
    DbTestContext t;
    const QString db = t.ctx.state.helpTextDB = t.newHelpDb();
    addLanguage(db, 1031, QStringLiteral("GERMAN"));
    addLanguage(db, 1033, QStringLiteral("ENGLISH"));
    openRW(db)->exec(QString::fromUtf8(GetParam().spoil));
    const QByteArray before = readFileBytes(db);
    const QStringList filesBefore = filesIn(t.dir.path());
    t.continueAfterErrors();

    long count = GetParam().count;
    EXPECT_EQ(CorrectItemLenth(t.ctx, QStringLiteral("Alarm"), count), -1);

    EXPECT_EQ(readFileBytes(db), before);
    EXPECT_EQ(filesIn(t.dir.path()), filesBefore + QStringList{QStringLiteral("helptextError.log")});
    EXPECT_TRUE(t.errorLog().contains(QStringLiteral("Source: CorrectItemLenth")));
}

INSTANTIATE_TEST_SUITE_P(Cases, RebuildFailure,
                         ::testing::Values(
                             // The text rows of the new items are added last: fail in the middle of them.
                             FailureCase{"TextInsert",
                                         "CREATE TRIGGER Boom BEFORE INSERT ON AlarmText "
                                         "WHEN (SELECT COUNT(*) FROM AlarmText) >= 2600 "
                                         "BEGIN SELECT RAISE(ABORT, 'disk full'); END",
                                         300},
                             FailureCase{"DefinitionInsert",
                                         "CREATE TRIGGER Boom BEFORE INSERT ON AlarmDefinition "
                                         "WHEN NEW.AlarmID > 800 BEGIN SELECT RAISE(ABORT, 'disk full'); END",
                                         300},
                             // Four rows more than five blocks hold: the last block would not fit 257.
                             FailureCase{"BlockTooFull",
                                         "INSERT INTO AlarmDefinition (AlarmID, MachineType) "
                                         "VALUES (1281, '0'), (1282, '0'), (1283, '0'), (1284, '0')",
                                         257}),
                         [](const auto &info) { return std::string(info.param.name); });
