// Values bound as parameters come back unchanged; text compares without regard to case
// in every script, as Jet does.
#include "database/Collation.h"
#include "database/Database.h"

#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>

using namespace ht;

namespace
{

struct DatabaseValues : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db = Database::create(dir.filePath(QStringLiteral("values.db")));
    void SetUp() override
    {
        db->exec(QStringLiteral("CREATE TABLE Item (ItemID INTEGER PRIMARY KEY, Name TEXT COLLATE NOCASE, Num REAL)"));
    }
    void insert(const QString &name) { db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {name}); }
    int matches(const QString &probe, const char *how = "")
    {
        return db->query(QStringLiteral("SELECT 1 FROM Item %1 WHERE Name = ?").arg(QLatin1String(how)), {probe})
            .recordCount();
    }
};

} // namespace

TEST_F(DatabaseValues, AwkwardValuesRoundTripAndMatchThemselves)
{
    const QStringList texts = {
        QStringLiteral("He said \"stop\""),
        QStringLiteral("it's"),
        QStringLiteral("100% sure_or_not"),
        QStringLiteral("C:\\Scopia\\Program\\"),
        QStringLiteral("  leading and trailing  "),
        QStringLiteral("\"; DROP TABLE Item; --"),
        QStringLiteral("Ελληνικά κείμενα"),
        QStringLiteral("中文说明 😀"),
        QStringLiteral("line\r\nbreak\n\r"),
        QStringLiteral(""),
        QString(70000, QChar(0x00E4)), // longer than any page
    };
    for (const QString &text : texts) {
        insert(text);
        const Recordset rs = db->query(QStringLiteral("SELECT Name FROM Item WHERE Name = ?"), {text});
        ASSERT_EQ(rs.recordCount(), 1) << text.left(40).toStdString();
        EXPECT_EQ(rs.text(QStringLiteral("name")), text);
    }
    db->exec(QStringLiteral("INSERT INTO Item (Name, Num) VALUES (?, ?)"), {QVariant(), 2.5});
    const Recordset rs = db->query(QStringLiteral("SELECT Name, Num FROM Item WHERE Name IS NULL"));
    ASSERT_EQ(rs.recordCount(), 1);
    EXPECT_DOUBLE_EQ(rs.value(1).toDouble(), 2.5);
    EXPECT_EQ(rs.text(QStringLiteral("Name")), QString());
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
    insert(QStringLiteral("Ä")); // different letters stay apart
    insert(QStringLiteral("A"));
    const Recordset groups = db->query(QStringLiteral("SELECT Name, count(*) FROM Item GROUP BY Name"));
    EXPECT_EQ(groups.recordCount(), int(std::size(same)) + 2);
    for (const QVariantList &row : groups.rows())
        EXPECT_EQ(row[1].toInt(), row[0].toString().size() == 1 ? 1 : 2) << row[0].toString().toStdString();
    const Recordset cased = db->query(QStringLiteral("SELECT upper(?), lower(?), upper(NULL)"),
                                      {QStringLiteral("äöü ωмега"), QStringLiteral("ÄÖÜ ΩМЕГА")});
    EXPECT_EQ(cased.value(0).toString() + cased.value(1).toString(), QStringLiteral("ÄÖÜ ΩМЕГАäöü ωмега"));
    EXPECT_TRUE(cased.value(2).isNull());
}

TEST_F(DatabaseValues, IndexedCaselessLookupsFindEveryRowAfterReopening)
{
    // An index orders by the collation; lookups through it must agree with the table scan.
    db->exec(QStringLiteral("CREATE INDEX ItemName ON Item (Name)"));
    const QStringList bases = {QStringLiteral("äb"),    QStringLiteral("Äa"), QStringLiteral("zeta"),
                               QStringLiteral("Ωmega"), QStringLiteral("ωa"), QStringLiteral("Яблоко"),
                               QStringLiteral("_x"),    QStringLiteral("a")};
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
    EXPECT_EQ(db->query(QStringLiteral("PRAGMA integrity_check")).value(0).toString(), QStringLiteral("ok"));
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
