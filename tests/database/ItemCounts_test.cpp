// Item counts in DBSys, the check of the tables against them and the rebuild of
// a too-short kind, on real SQLite files.
#include "database/HelpTextFixture.h"
#include "database/ItemCounts.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

void setCount(const QString &db, const QString &item, const QString &data)
{
    openRW(db)->exec(QStringLiteral("UPDATE DBSys SET Data = ? WHERE Item = ?"), {data, item});
}

std::array<long, 4> counts(const Context &ctx)
{
    return ctx.state.maxItems;
}

} // namespace

TEST(GetDBSysMaxLenItems, CreatesAMissingTableWithTheDefaults)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    openRW(db)->exec(QStringLiteral("DROP TABLE DBSys"));

    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    EXPECT_EQ(counts(t.ctx), (std::array<long, 4>{0, 256, 256, 1000}));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Item, Data FROM DBSys ORDER BY rowid")),
              (QStringList{QStringLiteral("MaxLenAlarm|256"), QStringLiteral("MaxLenWarning|256"),
                           QStringLiteral("MaxLenMaterialChange|1000")}));
}

class MissingCountItem : public ::testing::TestWithParam<int>
{
};

TEST_P(MissingCountItem, IsAddedWithItsDefaultAndTheOthersKept)
{
    const QString items[] = {QStringLiteral("MaxLenAlarm"), QStringLiteral("MaxLenWarning"),
                             QStringLiteral("MaxLenMaterialChange")};
    const long stored[] = {300, 310, 1200};
    const long defaults[] = {256, 256, 1000};
    const int missing = GetParam();
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    for (int i = 0; i < 3; ++i)
        setCount(db, items[i], QString::number(stored[i]));
    openRW(db)->exec(QStringLiteral("DELETE FROM DBSys WHERE Item = ?"), {items[missing]});

    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    for (int i = 0; i < 3; ++i) {
        const long expected = i == missing ? defaults[i] : stored[i];
        EXPECT_EQ(t.ctx.state.maxItems[i + 1], expected) << qPrintable(items[i]);
        EXPECT_EQ(dump(db, QStringLiteral("SELECT Data FROM DBSys WHERE Item = '") + items[i] + QStringLiteral("'")),
                  QStringList{QString::number(expected)});
    }
}

INSTANTIATE_TEST_SUITE_P(EachItem, MissingCountItem, ::testing::Values(0, 1, 2));

TEST(GetDBSysMaxLenItems, TheImporterCountsItsAddedItems)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    setCount(db, QStringLiteral("MaxLenMaterialChange"), QStringLiteral("1200"));
    t.ctx.state.mode = QStringLiteral("IMPORT");
    t.ctx.state.anzFehler = 12;
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    EXPECT_EQ(counts(t.ctx), (std::array<long, 4>{0, 268, 268, 1200}));
}

TEST(GetDBSysMaxLenItems, AnUnreadableCountIsReportedButTheTableWasFound)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    setCount(db, QStringLiteral("MaxLenWarning"), QStringLiteral("many"));
    t.continueAfterErrors();
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    EXPECT_TRUE(t.errorLog().contains(QStringLiteral("Source: GetDBSysMaxLenItems")));

    DbTestContext u;
    u.continueAfterErrors();
    EXPECT_FALSE(GetDBSysMaxLenItems(u.ctx, u.path(QStringLiteral("missing.mdb"))));
}

TEST(GetDBSysMaxLenItems, AJetFileIsOnlyRead)
{
    DbTestContext t;
    const QString jet = t.path(QStringLiteral("Old.mdb"));
    ASSERT_TRUE(QFile::copy(sharedTestData() + QStringLiteral("/jet/test2V2000.mdb"), jet));
    const QByteArray before = readFileBytes(jet);
    EXPECT_TRUE(GetDBSysMaxLenItems(t.ctx, jet));
    EXPECT_EQ(counts(t.ctx), (std::array<long, 4>{0, 256, 256, 1000}));
    EXPECT_EQ(readFileBytes(jet), before);
}

// --- CorrectDBLength -------------------------------------------------------

class CorrectDBLengthTest : public ::testing::Test
{
  protected:
    DbTestContext t;
    QString db = t.path(QStringLiteral("Help.mdb"));
    void SetUp() override
    {
        makeHelpTextDb(db);
        addLanguage(db, 1031, QStringLiteral("GERMAN"));
        t.ctx.state.helpTextDB = db;
    }
    long long rows(const QString &table)
    {
        return Database::open(db, Database::Mode::ReadOnly)
            ->query(QStringLiteral("SELECT COUNT(*) FROM ") + table)
            .value(0)
            .toLongLong();
    }
};

TEST_F(CorrectDBLengthTest, TablesThatFitAreLeftAlone)
{
    const QByteArray before = readFileBytes(db);
    ASSERT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    EXPECT_EQ(CorrectDBLength(t.ctx, db), 0);
    EXPECT_EQ(readFileBytes(db), before);
    EXPECT_FALSE(QFile::exists(t.path(QStringLiteral("Help_BACKUP.sav"))));
}

TEST_F(CorrectDBLengthTest, AZeroCountTakesTheBlockLength)
{
    setCount(db, QStringLiteral("MaxLenWarning"), QStringLiteral("0"));
    ASSERT_TRUE(GetDBSysMaxLenItems(t.ctx, db));
    EXPECT_EQ(t.ctx.state.maxItems[KindWarnings], 0);
    EXPECT_EQ(CorrectDBLength(t.ctx, db), 0);
    EXPECT_EQ(t.ctx.state.maxItems[KindWarnings], 256);
    EXPECT_EQ(rows(QStringLiteral("WarningDefinition")), 1280);
}

TEST_F(CorrectDBLengthTest, TooShortTablesAreRebuiltAfterOneBackup)
{
    setCount(db, QStringLiteral("MaxLenAlarm"), QStringLiteral("300"));
    setCount(db, QStringLiteral("MaxLenWarning"), QStringLiteral("260"));
    const QByteArray before = readFileBytes(db);
    ASSERT_TRUE(GetDBSysMaxLenItems(t.ctx, db));

    EXPECT_EQ(CorrectDBLength(t.ctx, db), 0);

    EXPECT_EQ(rows(QStringLiteral("AlarmDefinition")), 1500);
    EXPECT_EQ(rows(QStringLiteral("AlarmText")), 1500);
    EXPECT_EQ(rows(QStringLiteral("WarningDefinition")), 1300);
    EXPECT_EQ(rows(QStringLiteral("MaterialChangeDefinition")), 5000);
    EXPECT_EQ(counts(t.ctx), (std::array<long, 4>{0, 300, 260, 1000}));
    EXPECT_EQ(readFileBytes(t.path(QStringLiteral("Help_BACKUP.sav"))), before);
    EXPECT_FALSE(QFile::exists(t.path(QStringLiteral("Help_BACKUP1.sav"))));
}

TEST(CorrectDBLength, ADatabaseWithoutMaterialChangeIsChecked)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, false);
    t.ctx.state.helpTextDB = db;
    t.ctx.state.maxItems = {0, 256, 256, 1000};
    EXPECT_EQ(CorrectDBLength(t.ctx, db), 0);
    EXPECT_TRUE(t.ui.shown.empty());
}

// --- CorrectItemLenth --------------------------------------------------------

struct KindCase {
    const char *word;
    const char *definition;
    const char *id;
    const char *text;
    const char *textId;
    long oldCount; // rows per block in the template
    long newCount;
};

void PrintTo(const KindCase &c, std::ostream *os)
{
    *os << c.word;
}

class Rebuild : public ::testing::TestWithParam<KindCase>
{
  protected:
    DbTestContext t;
    QString db = t.path(QStringLiteral("Help.mdb"));
    QString def, id, text, textId;

    void SetUp() override
    {
        const KindCase &k = GetParam();
        def = QString::fromLatin1(k.definition);
        id = QString::fromLatin1(k.id);
        text = QString::fromLatin1(k.text);
        textId = QString::fromLatin1(k.textId);
        makeHelpTextDb(db);
        addLanguage(db, 1031, QStringLiteral("GERMAN"));
        addLanguage(db, 1041, QStringLiteral("JAPANESE"));
        auto d = openRW(db);
        const long n = k.oldCount;
        // Machines in blocks 1 and 3; block 2, 4 and 5 free.
        d->exec(QStringLiteral("UPDATE %1 SET MachineType = ? WHERE %2 BETWEEN ? AND ?").arg(def, id),
                {QStringLiteral("M 1 \"a\""), 1, qlonglong(n)});
        d->exec(QStringLiteral("UPDATE %1 SET MachineType = ? WHERE %2 BETWEEN ? AND ?").arg(def, id),
                {QStringLiteral("機械3"), qlonglong(2 * n + 1), qlonglong(3 * n)});
        // A text row missing, and one belonging to no item.
        d->exec(QStringLiteral("DELETE FROM %1 WHERE %2 = 5 AND Language = 1041").arg(text, textId));
        d->exec(QStringLiteral("INSERT INTO %1 (%2, Language) VALUES (99999, 1031)").arg(text, textId));
        t.ctx.state.helpTextDB = db;
    }
};

TEST_P(Rebuild, BlocksGrowWithRowsAndTextsInPlace)
{
    const KindCase &k = GetParam();
    const long oldCount = k.oldCount, newCount = k.newCount;
    const QStringList defBefore = dump(db, QStringLiteral("SELECT * FROM %1 ORDER BY %2").arg(def, id));
    const QStringList textBefore =
        dump(db, QStringLiteral("SELECT * FROM %1 WHERE %2 <> 99999 ORDER BY %2, Language").arg(text, textId));

    long count = newCount;
    ASSERT_EQ(CorrectItemLenth(t.ctx, QString::fromLatin1(k.word), count), newCount);
    EXPECT_EQ(count, newCount);

    const QStringList defAfter = dump(db, QStringLiteral("SELECT * FROM %1 ORDER BY %2").arg(def, id));
    ASSERT_EQ(defAfter.size(), 5 * newCount);
    const QString machines[] = {QStringLiteral("M 1 \"a\""), QStringLiteral("0"), QStringLiteral("機械3"),
                                QStringLiteral("0"), QStringLiteral("0")};
    for (long b = 0; b < 5; ++b) {
        for (long q = 0; q < newCount; ++q) {
            QStringList after = defAfter[b * newCount + q].split(u'|');
            ASSERT_EQ(after.takeFirst(), QString::number(b * newCount + q + 1)); // contiguous IDs
            if (q < oldCount) {
                QStringList saved = defBefore[b * oldCount + q].split(u'|');
                saved.removeFirst();
                ASSERT_EQ(after, saved) << "block " << b << " row " << q;
            } else {
                ASSERT_EQ(after.takeFirst(), machines[b]) << "block " << b << " row " << q;
                for (const QString &v : after)
                    ASSERT_EQ(v, QStringLiteral("<null>"));
            }
        }
    }

    // Exactly one text row per item and language; the saved ones moved with their item.
    EXPECT_EQ(
        dump(db, QStringLiteral("SELECT COUNT(*), COUNT(DISTINCT %2 || '/' || Language) FROM %1").arg(text, textId)),
        QStringList{QStringLiteral("%1|%1").arg(2 * 5 * newCount)});
    QStringList expectedSaved;
    for (const QString &line : textBefore) {
        QStringList v = line.split(u'|');
        const long old = v[0].toLong();
        const long b = (old - 1) / oldCount;
        v[0] = QString::number(b * newCount + (old - b * oldCount));
        expectedSaved << v.join(u'|');
    }
    expectedSaved.sort();
    QStringList savedAfter = dump(db, QStringLiteral("SELECT * FROM %1 WHERE (%2 - 1) % %3 < %4")
                                          .arg(text, textId, QString::number(newCount), QString::number(oldCount)));
    savedAfter.sort();
    // The row deleted before the rebuild is back, empty; the rest kept their texts.
    const QString refilled = QStringLiteral("5|1041|");
    const qsizetype refilledRows = savedAfter.removeIf([&](const QString &s) {
        return s == refilled + QStringLiteral("<null>|<null>|<null>") || s == refilled + QStringLiteral("<null>");
    });
    EXPECT_EQ(refilledRows, 1);
    EXPECT_EQ(savedAfter, expectedSaved);
    EXPECT_EQ(dump(db, QStringLiteral("SELECT COUNT(*) FROM %1 WHERE %2 > %3").arg(text, textId).arg(5 * newCount)),
              QStringList{QStringLiteral("0")})
        << "the text of no item is left over";
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Rebuild,
    ::testing::Values(KindCase{"Alarm", "AlarmDefinition", "AlarmID", "AlarmText", "Alarm_ID", 256, 300},
                      KindCase{"Warning", "WarningDefinition", "WarningID", "WarningText", "Warning_ID", 256, 257},
                      KindCase{"MaterialChange", "MaterialChangeDefinition", "MaterialChangeID", "MaterialChangeText",
                               "MaterialChange_ID", 1000, 1003}),
    [](const ::testing::TestParamInfo<KindCase> &info) { return std::string(info.param.word); });

// A rebuild that fails half-way leaves the file exactly as it was.
struct FailureCase {
    const char *name;
    const char *spoil; // SQL run before the rebuild
    long count;
};

void PrintTo(const FailureCase &c, std::ostream *os)
{
    *os << c.name;
}

class RebuildFailure : public ::testing::TestWithParam<FailureCase>
{
};

TEST_P(RebuildFailure, LeavesTheDatabaseUnchanged)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    addLanguage(db, 1031, QStringLiteral("GERMAN"));
    addLanguage(db, 1033, QStringLiteral("ENGLISH"));
    openRW(db)->exec(QString::fromUtf8(GetParam().spoil));
    t.ctx.state.helpTextDB = db;
    const QByteArray before = readFileBytes(db);
    const QStringList filesBefore = QDir(t.dir.path()).entryList(QDir::Files);
    t.continueAfterErrors();

    long count = GetParam().count;
    EXPECT_EQ(CorrectItemLenth(t.ctx, QStringLiteral("Alarm"), count), -1);

    EXPECT_EQ(readFileBytes(db), before);
    QStringList filesAfter = QDir(t.dir.path()).entryList(QDir::Files);
    filesAfter.removeAll(QStringLiteral("helptextError.log"));
    EXPECT_EQ(filesAfter, filesBefore);
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
                         [](const ::testing::TestParamInfo<FailureCase> &info) {
                             return std::string(info.param.name);
                         });
