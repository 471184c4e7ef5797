// The Jet reader against Access files made by Access itself: every table, every row and
// every value equals what the independent reader mdb-reader found in the same file
// (data/jet/*.json, written by data/jet/dump-jet.mjs).
#include "database/Database.h"
#include "support/TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

using namespace ht;

namespace
{

QString jetFile(const QString &name)
{
    return test::sharedTestData() + QStringLiteral("/jet/") + name + ".mdb";
}

QJsonObject expectedTables(const QString &name)
{
    const QByteArray json =
        test::readFileBytes(test::sourceDir() + QStringLiteral("/tests/database/data/jet/") + name + ".json");
    return QJsonDocument::fromJson(json).object().value(QStringLiteral("tables")).toObject();
}

// One value read by our layer against mdb-reader's JSON form of it.
void expectSameValue(const QVariant &ours, const QJsonValue &theirs, const QString &type, const std::string &where)
{
    if (theirs.isNull()) {
        if (type == QLatin1String("text") || type == QLatin1String("memo"))
            EXPECT_EQ(ours.toString(), QString()) << where; // Jet text: NULL and "" read alike
        else
            EXPECT_TRUE(ours.isNull()) << where;
    } else if (theirs.isBool()) {
        EXPECT_EQ(ours.toLongLong(), theirs.toBool() ? -1 : 0) << where;
    } else if (theirs.isDouble()) {
        EXPECT_DOUBLE_EQ(ours.toDouble(), theirs.toDouble()) << where;
    } else if (theirs.isString() && (type == QLatin1String("currency") || type == QLatin1String("numeric"))) {
        EXPECT_DOUBLE_EQ(ours.toDouble(), theirs.toString().toDouble()) << where;
    } else if (theirs.isString()) {
        EXPECT_EQ(ours.toString(), theirs.toString()) << where;
    } else if (theirs.toObject().contains(QStringLiteral("date"))) {
        EXPECT_EQ(ours.toString(), theirs.toObject().value(QStringLiteral("date")).toString()) << where;
    } else if (theirs.toObject().contains(QStringLiteral("hex"))) {
        EXPECT_EQ(ours.toByteArray().toHex(), theirs.toObject().value(QStringLiteral("hex")).toString().toLatin1())
            << where;
    } else {
        ADD_FAILURE() << "unexpected JSON value at " << where;
    }
}

class JetReaderFile : public ::testing::TestWithParam<const char *>
{
};

} // namespace

TEST_P(JetReaderFile, EveryTableRowAndValueMatchesTheIndependentReader)
{
    const QString name = QString::fromLatin1(GetParam());
    const QJsonObject tables = expectedTables(name);
    ASSERT_FALSE(tables.isEmpty());
    auto db = Database::open(jetFile(name), Database::Mode::ReadOnly);
    EXPECT_EQ(db->format(), DbFormat::Jet);
    QStringList ours = db->tables(), theirs = tables.keys();
    ours.sort();
    theirs.sort();
    EXPECT_EQ(ours, theirs);

    for (const QString &table : tables.keys()) {
        const QJsonObject expected = tables.value(table).toObject();
        const QJsonArray columns = expected.value(QStringLiteral("columns")).toArray();
        const QJsonArray rows = expected.value(QStringLiteral("rows")).toArray();
        const Recordset rs = db->query(QStringLiteral("SELECT * FROM %1").arg(quoteIdentifier(table)));
        ASSERT_EQ(rs.fields().size(), columns.size()) << table.toStdString();
        ASSERT_EQ(rs.recordCount(), rows.size()) << table.toStdString();
        for (int c = 0; c < columns.size(); ++c)
            EXPECT_EQ(rs.fields()[c], columns[c].toObject().value(QStringLiteral("name")).toString());
        for (int r = 0; r < rows.size(); ++r) {
            const QJsonArray row = rows[r].toArray();
            for (int c = 0; c < columns.size(); ++c) {
                const QString type = columns[c].toObject().value(QStringLiteral("type")).toString();
                expectSameValue(
                    rs.rows()[r][c], row[c], type,
                    QStringLiteral("%1 row %2 column %3").arg(table).arg(r).arg(rs.fields()[c]).toStdString());
            }
        }
    }
}

TEST_P(JetReaderFile, ConvertedSqliteFileHoldsTheSameData)
{
    const QString name = QString::fromLatin1(GetParam());
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("converted.sqlite"));
    convertJetToSqlite(jetFile(name), target);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("converted.sqlite")});
    auto jet = Database::open(jetFile(name), Database::Mode::ReadOnly);
    auto sqlite = Database::open(target, Database::Mode::ReadWrite);
    EXPECT_EQ(sqlite->format(), DbFormat::SQLite);
    EXPECT_EQ(sqlite->tables(), jet->tables());
    for (const QString &table : jet->tables()) {
        const QString sql = QStringLiteral("SELECT * FROM %1").arg(quoteIdentifier(table));
        EXPECT_EQ(sqlite->query(sql).rows(), jet->query(sql).rows()) << table.toStdString();
        std::vector<QString> jetTypes, sqliteTypes;
        for (const ColumnInfo &c : jet->columns(table))
            jetTypes.push_back(c.name + c.type);
        for (const ColumnInfo &c : sqlite->columns(table))
            sqliteTypes.push_back(c.name + c.type);
        EXPECT_EQ(sqliteTypes, jetTypes);
    }
    EXPECT_THROW(convertJetToSqlite(jetFile(name), target), DbError) << "an existing target is never overwritten";
}

INSTANTIATE_TEST_SUITE_P(SharedFiles, JetReaderFile, ::testing::Values("test2V2000", "testUnicodeCompV2003"));

TEST(JetReader, TextComparesCaselessAndTablesAreFoundInAnyCase)
{
    auto db = Database::open(jetFile(QStringLiteral("testUnicodeCompV2003")), Database::Mode::ReadOnly);
    const struct {
        const char *probe;
        int id;
    } cases[] = {{"МИР", 3}, {"ÄÄKKÖSIÄ", 2}, {"ÜMLAUT", 7}, {"ONLY ASCII CHARS", 1}, {"漢字仮名交じり文", 5}};
    for (const auto &c : cases) {
        const Recordset rs =
            db->query(QStringLiteral("SELECT ID FROM [table] WHERE Unicode = ?"), {QString::fromUtf8(c.probe)});
        ASSERT_EQ(rs.recordCount(), 1) << c.probe;
        EXPECT_EQ(rs.value(0).toInt(), c.id);
    }
    EXPECT_TRUE(db->hasTable(QStringLiteral("TABLE")));
    EXPECT_TRUE(db->hasColumn(QStringLiteral("table"), QStringLiteral("unicode")));
    EXPECT_FALSE(db->hasTable(QStringLiteral("MSysObjects"))); // system tables are not offered
    EXPECT_THROW(db->query(QStringLiteral("SELECT * FROM NoSuchTable")), DbError);
}

TEST(JetReader, JetFilesAreReadOnly)
{
    const QString path = jetFile(QStringLiteral("testUnicodeCompV2003"));
    EXPECT_THROW(Database::open(path, Database::Mode::ReadWrite), DbError);
    auto db = Database::open(path, Database::Mode::ReadOnly);
    EXPECT_THROW(db->exec(QStringLiteral("DELETE FROM [Table]")), DbError);
    EXPECT_THROW(db->exec(QStringLiteral("CREATE TABLE Extra (x)")), DbError);
    EXPECT_THROW(db->addColumn(QStringLiteral("Table"), QStringLiteral("x"), QStringLiteral("TEXT")), DbError);
    EXPECT_EQ(db->query(QStringLiteral("SELECT * FROM [Table]")).recordCount(), 8);
}
