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
    std::unique_ptr<Database> db;
    void SetUp() override
    {
        db = Database::create(dir.filePath(QStringLiteral("values.db")));
        db->exec(QStringLiteral("CREATE TABLE Item (ItemID INTEGER PRIMARY KEY, Name TEXT COLLATE NOCASE, Num REAL)"));
    }
};

} // namespace

TEST_F(DatabaseValues, AwkwardTextsRoundTripAndMatchThemselves)
{
    const QStringList texts = {
        QStringLiteral("He said \"stop\""),
        QStringLiteral("it's"),
        QStringLiteral("100% sure_or_not"),
        QStringLiteral("a/b / c/ "),
        QStringLiteral("C:\\Scopia\\Program\\"),
        QStringLiteral("  leading and trailing  "),
        QStringLiteral("\"; DROP TABLE Item; --"),
        QStringLiteral("Ελληνικά κείμενα"),
        QStringLiteral("Кириллица"),
        QStringLiteral("中文说明 😀"),
        QStringLiteral("line\r\nbreak\n\r"),
        QStringLiteral(""),
        QString(70000, QChar(0x00E4)), // longer than any page
    };
    for (const QString &text : texts) {
        db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {text});
        const QVariant id = db->lastInsertId();
        Recordset rs = db->query(QStringLiteral("SELECT ItemID, Name FROM Item WHERE Name = ?"), {text});
        ASSERT_EQ(rs.recordCount(), 1) << text.left(40).toStdString();
        EXPECT_EQ(rs.text(QStringLiteral("name")), text);
        EXPECT_EQ(rs.value(QStringLiteral("ItemID")), id);
        // LIKE's own wildcards inside a bound value stay literal when compared with =.
        EXPECT_EQ(db->query(QStringLiteral("SELECT 1 FROM Item WHERE Name = ? || 'x'"), {text}).recordCount(), 0);
    }
    EXPECT_TRUE(db->hasTable(QStringLiteral("item")));
}

TEST_F(DatabaseValues, NullAndNumbersKeepTheirKind)
{
    db->exec(QStringLiteral("INSERT INTO Item (Name, Num) VALUES (?, ?)"), {QVariant(), 2.5});
    Recordset rs = db->query(QStringLiteral("SELECT Name, Num FROM Item"));
    ASSERT_EQ(rs.recordCount(), 1);
    EXPECT_TRUE(rs.value(0).isNull());
    EXPECT_EQ(rs.text(QStringLiteral("Name")), QString());
    EXPECT_DOUBLE_EQ(rs.value(1).toDouble(), 2.5);
}

TEST_F(DatabaseValues, CaselessEqualityAndGroupingInEveryScript)
{
    struct Pair {
        const char *stored, *probe;
    };
    const Pair same[] = {
        {"MachineA", "machinea"}, {"ÄÖÜ Straße", "äöü STRAßE"}, {"Ελλάδα", "ΕΛΛΆΔΑ"},
        {"Москва", "МОСКВА"},     {"ÉCRAN", "écran"},           {"Łódź", "łÓDŹ"},
    };
    for (const Pair &p : same) {
        const QString stored = QString::fromUtf8(p.stored), probe = QString::fromUtf8(p.probe);
        db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {stored});
        db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {probe});
        EXPECT_EQ(db->query(QStringLiteral("SELECT 1 FROM Item WHERE Name = ?"), {probe}).recordCount(), 2) << p.stored;
    }
    // Different letters stay apart.
    db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {QStringLiteral("Ä")});
    db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {QStringLiteral("A")});
    const Recordset groups =
        db->query(QStringLiteral("SELECT Name, count(*) AS N FROM Item GROUP BY Name ORDER BY Name"));
    EXPECT_EQ(groups.recordCount(), int(std::size(same)) + 2);
    for (const QVariantList &row : groups.rows()) {
        const bool single = row[0].toString() == QStringLiteral("Ä") || row[0].toString() == QStringLiteral("A");
        EXPECT_EQ(row[1].toInt(), single ? 1 : 2) << row[0].toString().toStdString();
    }
}

TEST_F(DatabaseValues, IndexedCaselessLookupsFindEveryRow)
{
    // An index orders by the collation; lookups through it must agree with the table scan.
    db->exec(QStringLiteral("CREATE INDEX ItemName ON Item (Name)"));
    const QStringList bases = {QStringLiteral("äb"),    QStringLiteral("Äa"), QStringLiteral("zeta"),
                               QStringLiteral("Ωmega"), QStringLiteral("ωa"), QStringLiteral("Яблоко"),
                               QStringLiteral("_x"),    QStringLiteral("a")};
    Database::Transaction tx(*db);
    for (int i = 0; i < 400; ++i)
        db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"),
                 {bases[i % bases.size()] + QString::number(i % 37)});
    tx.commit();
    for (int i = 0; i < 400; i += 7) {
        const QString probe = (bases[i % bases.size()] + QString::number(i % 37)).toUpper();
        const int viaIndex = db->query(QStringLiteral("SELECT 1 FROM Item WHERE Name = ?"), {probe}).recordCount();
        const int viaScan =
            db->query(QStringLiteral("SELECT 1 FROM Item NOT INDEXED WHERE Name = ?"), {probe}).recordCount();
        EXPECT_GT(viaIndex, 0) << probe.toStdString();
        EXPECT_EQ(viaIndex, viaScan) << probe.toStdString();
    }
    EXPECT_EQ(db->query(QStringLiteral("PRAGMA integrity_check")).rows().front()[0].toString(), QStringLiteral("ok"));
}

TEST_F(DatabaseValues, UpperAndLowerKnowEveryScript)
{
    const Recordset rs = db->query(QStringLiteral("SELECT upper(?), lower(?), upper(NULL)"),
                                   {QStringLiteral("äöü ωмега"), QStringLiteral("ÄÖÜ ΩМЕГА")});
    EXPECT_EQ(rs.value(0).toString(), QStringLiteral("ÄÖÜ ΩМЕГА"));
    EXPECT_EQ(rs.value(1).toString(), QStringLiteral("äöü ωмега"));
    EXPECT_TRUE(rs.value(2).isNull());
}

TEST_F(DatabaseValues, CaselessnessSurvivesReopening)
{
    db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {QStringLiteral("Übersicht")});
    const QString path = db->path();
    db.reset();
    auto again = Database::open(path, Database::Mode::ReadOnly);
    EXPECT_EQ(
        again->query(QStringLiteral("SELECT 1 FROM Item WHERE Name = ?"), {QStringLiteral("üBERSICHT")}).recordCount(),
        1);
}

TEST_F(DatabaseValues, RecordsetNavigatesLikeARecordset)
{
    for (int i = 1; i <= 3; ++i)
        db->exec(QStringLiteral("INSERT INTO Item (Name) VALUES (?)"), {QString::number(i)});
    Recordset rs = db->query(QStringLiteral("SELECT Name FROM Item ORDER BY ItemID"));
    EXPECT_EQ(rs.recordCount(), 3);
    rs.moveLast();
    EXPECT_EQ(rs.absolutePosition(), 2);
    EXPECT_EQ(rs.text(QStringLiteral("NAME")), QStringLiteral("3"));
    rs.moveNext();
    EXPECT_TRUE(rs.eof());
    EXPECT_THROW(rs.value(0), DbError);
    rs.moveFirst();
    EXPECT_EQ(rs.text(QStringLiteral("Name")), QStringLiteral("1"));
    EXPECT_THROW(rs.value(QStringLiteral("Missing")), DbError);
    EXPECT_FALSE(rs.hasField(QStringLiteral("Missing")));

    Recordset empty = db->query(QStringLiteral("SELECT Name FROM Item WHERE 0"));
    EXPECT_TRUE(empty.eof());
    EXPECT_EQ(empty.fields(), QStringList{QStringLiteral("Name")});
}

TEST_F(DatabaseValues, FailingStatementsThrow)
{
    EXPECT_THROW(db->query(QStringLiteral("SELECT * FROM NoSuchTable")), DbError);
    EXPECT_THROW(db->exec(QStringLiteral("INSERT INTO Item (Nope) VALUES (?)"), {1}), DbError);
    EXPECT_THROW(db->query(QStringLiteral("SELEC nonsense")), DbError);
}

TEST(CaselessOrder, IsATotalOrderAcrossAsciiAndOtherScripts)
{
    // Pure ASCII takes a fast path; its order must agree with the Unicode path, or indexes break.
    const char *samples[] = {"",   "a",  "A",  "[", "_", "z", "Z", "ä",  "Ä", "äa", "Äb", "ab", "AB",    "zä",
                             "Zz", "_ä", "[ä", "ω", "Ω", "Я", "я", "中", "~", "0",  "é",  "E",  "ÉCRAN", "ecran"};
    auto cmp = [](const char *a, const char *b) {
        return compareCaseless(a, int(std::strlen(a)), b, int(std::strlen(b)));
    };
    for (const char *a : samples) {
        EXPECT_EQ(cmp(a, a), 0);
        for (const char *b : samples) {
            EXPECT_EQ(cmp(a, b), -cmp(b, a)) << a << " " << b;
            for (const char *c : samples)
                if (cmp(a, b) <= 0 && cmp(b, c) <= 0)
                    EXPECT_LE(cmp(a, c), 0) << a << " " << b << " " << c;
        }
    }
    EXPECT_EQ(cmp("ÄÖÜ", "äöü"), 0);
    EXPECT_LT(cmp("a", "ä"), 0);
}
