// Values bound as parameters come back unchanged; text compares without regard to case
// in every script, as Jet does.
#include "database/Collation.h"
#include "database/Database.h"

#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>

using namespace ht;
using namespace Qt::StringLiterals;

namespace
{

struct DatabaseValues : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db = Database::create(dir.filePath(u"values.db"_s));
    void SetUp() override
    {
        db->exec(u"CREATE TABLE Item (ItemID INTEGER PRIMARY KEY, Name TEXT COLLATE NOCASE, Num REAL)"_s);
    }
    void insert(const QString &name) { db->exec(u"INSERT INTO Item (Name) VALUES (?)"_s, {name}); }
    int matches(const QString &probe, const char *how = "")
    {
        return db->query(u"SELECT 1 FROM Item %1 WHERE Name = ?"_s.arg(QLatin1String(how)), {probe}).recordCount();
    }
};

} // namespace

TEST_F(DatabaseValues, AwkwardValuesRoundTripAndMatchThemselves)
{
    const QStringList texts = {
        u"He said \"stop\""_s,         u"it's"_s,
        u"100% sure_or_not"_s,         u"C:\\Scopia\\Program\\"_s,
        u"  leading and trailing  "_s, u"\"; DROP TABLE Item; --"_s,
        u"Ελληνικά κείμενα"_s,         u"中文说明 😀"_s,
        u"line\r\nbreak\n\r"_s,        u""_s,
        QString(70000, QChar(0x00E4)), // longer than any page
    };
    for (const QString &text : texts) {
        insert(text);
        const Recordset rs = db->query(u"SELECT Name FROM Item WHERE Name = ?"_s, {text});
        ASSERT_EQ(rs.recordCount(), 1) << text.left(40).toStdString();
        EXPECT_EQ(rs.text(u"name"_s), text);
    }
    db->exec(u"INSERT INTO Item (Name, Num) VALUES (?, ?)"_s, {QVariant(), 2.5});
    const Recordset rs = db->query(u"SELECT Name, Num FROM Item WHERE Name IS NULL"_s);
    ASSERT_EQ(rs.recordCount(), 1);
    EXPECT_DOUBLE_EQ(rs.value(1).toDouble(), 2.5);
    EXPECT_EQ(rs.text(u"Name"_s), QString());
}

TEST_F(DatabaseValues, CaselessEqualityAndGroupingInEveryScript)
{
    const std::pair<const char *, const char *> same[] = {
        {"MachineA", "machinea"}, {"ÄÖÜ Straße", "äöü STRAßE"}, {"Ελλάδα", "ΕΛΛΆΔΑ"},
        {"Москва", "МОСКВА"},     {"ÉCRAN", "écran"},           {"Łódź", "łÓDŹ"},
    };
    for (const auto &[stored, probe] : same) {
        insert(QString::fromUtf8(stored));
        insert(QString::fromUtf8(probe));
        EXPECT_EQ(matches(QString::fromUtf8(probe)), 2) << stored;
    }
    insert(u"Ä"_s); // different letters stay apart
    insert(u"A"_s);
    const Recordset groups = db->query(u"SELECT Name, count(*) FROM Item GROUP BY Name"_s);
    EXPECT_EQ(groups.recordCount(), int(std::size(same)) + 2);
    for (const QVariantList &row : groups.rows())
        EXPECT_EQ(row[1].toInt(), row[0].toString().size() == 1 ? 1 : 2) << row[0].toString().toStdString();
    const Recordset cased = db->query(u"SELECT upper(?), lower(?), upper(NULL)"_s, {u"äöü ωмега"_s, u"ÄÖÜ ΩМЕГА"_s});
    EXPECT_EQ(cased.value(0).toString() + cased.value(1).toString(), u"ÄÖÜ ΩМЕГАäöü ωмега"_s);
    EXPECT_TRUE(cased.value(2).isNull());
}

TEST_F(DatabaseValues, IndexedCaselessLookupsFindEveryRowAfterReopening)
{
    // An index orders by the collation; lookups through it must agree with the table scan.
    db->exec(u"CREATE INDEX ItemName ON Item (Name)"_s);
    const QStringList bases = {u"äb"_s, u"Äa"_s, u"zeta"_s, u"Ωmega"_s, u"ωa"_s, u"Яблоко"_s, u"_x"_s, u"a"_s};
    {
        Database::Transaction tx(*db);
        for (int i = 0; i < 400; ++i)
            insert(bases[i % bases.size()] + QString::number(i % 37));
        tx.commit();
    }
    db = Database::open(db->path(), Database::Mode::ReadOnly); // the collation comes with every connection
    for (int i = 0; i < 400; i += 7) {
        const QString probe = (bases[i % bases.size()] + QString::number(i % 37)).toUpper();
        EXPECT_GT(matches(probe), 0) << probe.toStdString();
        EXPECT_EQ(matches(probe), matches(probe, "NOT INDEXED")) << probe.toStdString();
    }
    EXPECT_EQ(db->query(u"PRAGMA integrity_check"_s).value(0).toString(), u"ok"_s);
}

TEST(CaselessOrder, IsATotalOrderAcrossAsciiAndOtherScripts)
{
    // Pure ASCII takes a fast path; its order must agree with the Unicode path, or indexes break.
    const char *samples[] = {"",   "a",  "A",  "[", "_", "z", "Z", "ä",  "Ä", "äa", "Äb", "ab", "AB",    "zä",
                             "Zz", "_ä", "[ä", "ω", "Ω", "Я", "я", "中", "~", "0",  "é",  "E",  "ÉCRAN", "ecran"};
    auto cmp = [](const char *a, const char *b) {
        return compareCaseless(a, int(std::strlen(a)), b, int(std::strlen(b)));
    };
    for (const char *a : samples)
        for (const char *b : samples) {
            EXPECT_EQ(cmp(a, b), -cmp(b, a)) << a << " " << b;
            for (const char *c : samples)
                if (cmp(a, b) <= 0 && cmp(b, c) <= 0)
                    EXPECT_LE(cmp(a, c), 0) << a << " " << b << " " << c;
        }
    EXPECT_EQ(cmp("ÄÖÜ", "äöü"), 0);
    EXPECT_LT(cmp("a", "ä"), 0);
}
