// The Jet reader against Access files made by Access itself: every table, every row and
// every value equals what the independent reader mdb-reader found in the same file
// (data/jet/*.json, written by data/jet/dump-jet.mjs).
#include "database/HelpTextFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;
using namespace Qt::StringLiterals;

namespace
{

// One value read by our layer against mdb-reader's JSON form of it.
void expectSameValue(const QVariant &ours, const QJsonValue &theirs, const QString &type, const std::string &where)
{
    const QJsonObject tagged = theirs.toObject();
    if (theirs.isNull()) // text too: a NULL stays NULL
        EXPECT_TRUE(ours.isNull()) << where;
    else if (theirs.isBool())
        EXPECT_EQ(ours.toLongLong(), theirs.toBool() ? -1 : 0) << where;
    else if (theirs.isDouble())
        EXPECT_DOUBLE_EQ(ours.toDouble(), theirs.toDouble()) << where;
    else if (theirs.isString() && (type == QLatin1String("currency") || type == QLatin1String("numeric")))
        EXPECT_DOUBLE_EQ(ours.toDouble(), theirs.toString().toDouble()) << where;
    else if (theirs.isString())
        EXPECT_EQ(ours.toString(), theirs.toString()) << where;
    else if (tagged.contains(u"date"_s))
        EXPECT_EQ(ours.toString(), tagged.value(u"date"_s).toString()) << where;
    else if (tagged.contains(u"hex"_s))
        EXPECT_EQ(ours.toByteArray().toHex(), tagged.value(u"hex"_s).toString().toLatin1()) << where;
    else
        ADD_FAILURE() << "unexpected JSON value at " << where;
}

class JetReaderFile : public ::testing::TestWithParam<const char *>
{
};

} // namespace

TEST_P(JetReaderFile, EveryTableRowAndValueMatchesTheIndependentReader)
{
    const QString name = QString::fromLatin1(GetParam());
    const QJsonObject tables =
        QJsonDocument::fromJson(readFileBytes(sourceDir() + u"/tests/database/data/jet/"_s + name + u".json"_s))
            .object()
            .value(u"tables"_s)
            .toObject();
    ASSERT_FALSE(tables.isEmpty());
    auto db = Database::open(jetTestFile(name), Database::Mode::ReadOnly);
    EXPECT_EQ(db->format(), DbFormat::Jet);
    QStringList ours = db->tables();
    ours.sort();
    EXPECT_EQ(ours, tables.keys());

    for (const QString &table : tables.keys()) {
        const QJsonArray columns = tables.value(table).toObject().value(u"columns"_s).toArray();
        const QJsonArray rows = tables.value(table).toObject().value(u"rows"_s).toArray();
        const Recordset rs = db->query(u"SELECT * FROM %1"_s.arg(quoteIdentifier(table)));
        ASSERT_EQ(rs.fields().size(), columns.size()) << table.toStdString();
        ASSERT_EQ(rs.recordCount(), rows.size()) << table.toStdString();
        for (int c = 0; c < columns.size(); ++c) {
            const QJsonObject column = columns[c].toObject();
            EXPECT_EQ(rs.fields()[c], column.value(u"name"_s).toString());
            for (int r = 0; r < rows.size(); ++r)
                expectSameValue(rs.rows()[r][c], rows[r].toArray()[c], column.value(u"type"_s).toString(),
                                u"%1 row %2 column %3"_s.arg(table).arg(r).arg(c).toStdString());
        }
    }
}

TEST_P(JetReaderFile, ConvertedSqliteFileHoldsTheSameData)
{
    const QString jetPath = jetTestFile(QString::fromLatin1(GetParam()));
    QTemporaryDir dir;
    const QString target = dir.filePath(u"converted.sqlite"_s);
    convertJetToSqlite(jetPath, target);
    auto jet = Database::open(jetPath, Database::Mode::ReadOnly);
    auto sqlite = Database::open(target, Database::Mode::ReadWrite);
    EXPECT_EQ(sqlite->tables(), jet->tables());
    for (const QString &table : jet->tables()) {
        const QString sql = u"SELECT * FROM %1"_s.arg(quoteIdentifier(table));
        EXPECT_EQ(sqlite->query(sql).rows(), jet->query(sql).rows()) << table.toStdString();
        for (const ColumnInfo &c : jet->columns(table))
            EXPECT_EQ(columnType(*sqlite, table, c.name), c.type) << table.toStdString() << "." << c.name.toStdString();
    }
    EXPECT_THROW(convertJetToSqlite(jetPath, target), DbError) << "an existing target is never overwritten";
    EXPECT_EQ(filesIn(dir.path()), QStringList{u"converted.sqlite"_s});
}

INSTANTIATE_TEST_SUITE_P(AccessFiles, JetReaderFile, ::testing::Values("test2V2000", "testUnicodeCompV2003"));

TEST(JetReader, TextComparesCaseless)
{
    const QString path = jetTestFile(u"testUnicodeCompV2003"_s);
    auto db = Database::open(path, Database::Mode::ReadOnly);
    const std::pair<const char *, int> cases[] = {
        {"МИР", 3}, {"ÄÄKKÖSIÄ", 2}, {"ÜMLAUT", 7}, {"ONLY ASCII CHARS", 1}, {"漢字仮名交じり文", 5}};
    for (const auto &[probe, id] : cases) {
        const Recordset rs = db->query(u"SELECT ID FROM [table] WHERE Unicode = ?"_s, {QString::fromUtf8(probe)});
        ASSERT_EQ(rs.recordCount(), 1) << probe;
        EXPECT_EQ(rs.value(0).toInt(), id);
    }
    EXPECT_TRUE(db->hasColumn(u"TABLE"_s, u"unicode"_s));
    EXPECT_FALSE(db->hasTable(u"MSysObjects"_s)); // system tables are not offered
    EXPECT_THROW(db->exec(u"DELETE FROM [Table]"_s), DbError);
    EXPECT_THROW(db->addColumn(u"Table"_s, u"x"_s, u"TEXT"_s), DbError);
    EXPECT_EQ(db->query(u"SELECT * FROM [Table]"_s).recordCount(), 8);
}
