// convert-to-sqlite and the reading of Access files: an empty text stays
// empty and a NULL stays NULL, and the copy carries the Access file's keys.
#include "common/FileIo.h"
#include "database/HelpTextFixture.h"
#include "database/JetFile.h"
#include "database/jet/JetImage.h"
#include "database/jet/JetTable.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

// A text read as a null QString stands for NULL, as the SQLite layer binds it.
bool isNullValue(const QVariant &v)
{
    return v.isNull() || (v.typeId() == QMetaType::QString && v.toString().isNull());
}

} // namespace

TEST(JetConvert, EmptyAndNullTextsStayApartInEveryReading)
{
    QTemporaryDir dir;
    const QString jetPath =
        writeIn(dir, QStringLiteral("keys.mdb"), readFileBytes(jetTestFile(QStringLiteral("helptext_keys"))));
    const struct {
        int alarm;
        QVariant device;
    } cases[] = {{1, QStringLiteral("")}, {2, QVariant()}, {3, QStringLiteral("B7")}};
    {
        auto db = Database::open(jetPath);
        Database::Transaction t(*db);
        for (const auto &c : cases)
            db->exec(QStringLiteral("UPDATE AlarmText SET Device = ? WHERE Alarm_ID = ?"), {c.device, c.alarm});
        t.commit();
    }
    const QString sqlitePath = dir.filePath(QStringLiteral("converted.sqlite"));
    convertJetToSqlite(jetPath, sqlitePath);

    // What libmdb reads (Access files of other versions go that way).
    std::map<int, QVariant> libmdb;
    int id = -1, device = -1;
    JetFile::open(jetPath)->readTable(
        QStringLiteral("AlarmText"),
        [&](const std::vector<JetColumn> &columns) {
            for (int i = 0; i < int(columns.size()); ++i) {
                id = columns[size_t(i)].name == QLatin1String("Alarm_ID") ? i : id;
                device = columns[size_t(i)].name == QLatin1String("Device") ? i : device;
            }
        },
        [&](const QVariantList &row) { libmdb[row[id].toInt()] = row[device]; });

    for (const QString &path : {jetPath, sqlitePath}) {
        auto db = Database::open(path, Database::Mode::ReadOnly);
        for (const auto &c : cases) {
            const Recordset rs = db->query(
                QStringLiteral("SELECT Device IS NULL, Device FROM AlarmText WHERE Alarm_ID = ? AND Language = 1031"),
                {c.alarm});
            ASSERT_EQ(rs.recordCount(), 1);
            EXPECT_EQ(rs.value(0).toBool(), c.device.isNull()) << path.toStdString() << " alarm " << c.alarm;
            EXPECT_EQ(rs.value(1).toString(), c.device.toString()) << path.toStdString() << " alarm " << c.alarm;
            EXPECT_EQ(isNullValue(libmdb[c.alarm]), c.device.isNull()) << "libmdb, alarm " << c.alarm;
            EXPECT_EQ(libmdb[c.alarm].toString(), c.device.toString()) << "libmdb, alarm " << c.alarm;
        }
    }
}

namespace
{

// The keys of a table in the SQLite copy: "columns|unique|origin" per index, the
// INTEGER PRIMARY KEY (a rowid alias, in no index list) as "column|1|pk".
QStringList sqliteKeys(Database &db, const QString &table)
{
    QStringList keys;
    const Recordset rowid =
        db.query(QStringLiteral("SELECT name FROM pragma_table_info(?) WHERE pk > 0 AND type = 'INTEGER' AND "
                                "(SELECT count(*) FROM pragma_table_info(?) WHERE pk > 0) = 1"),
                 {table, table});
    if (rowid.recordCount() == 1)
        keys << rowid.value(0).toString() + QStringLiteral("|1|pk");
    for (const QVariantList &index :
         db.query(QStringLiteral("SELECT name, \"unique\", origin FROM pragma_index_list(?)"), {table}).rows()) {
        QStringList columns;
        for (const QVariantList &c :
             db.query(QStringLiteral("SELECT name FROM pragma_index_info(?) ORDER BY seqno"), {index[0]}).rows())
            columns << c[0].toString();
        keys << columns.join(u',') + QLatin1Char('|') + index[1].toString() + QLatin1Char('|') + index[2].toString();
    }
    keys.sort();
    return keys;
}

} // namespace

TEST(JetConvert, TheCopyOfAKeyedAccessFileHasItsKeys)
{
    QTemporaryDir dir;
    const QString sqlitePath = dir.filePath(QStringLiteral("converted.sqlite"));
    convertJetToSqlite(jetTestFile(QStringLiteral("helptext_keys")), sqlitePath);
    auto db = Database::open(sqlitePath, Database::Mode::ReadOnly);
    // As the file was keyed in Access (tests/data/README.md); "c" is an index of its own.
    const struct {
        const char *table;
        QStringList keys;
    } expected[] = {
        {"Language", {"Language|1|pk"}},
        {"AlarmDefinition", {"AlarmID|1|pk", "MachineType|0|c"}},
        {"AlarmText", {"Alarm_ID,Language|1|pk"}},
        {"WarningDefinition", {"WarningID|1|pk"}},
        {"WarningText", {"Warning_ID,Language|1|pk"}},
        {"MaterialChangeDefinition", {"MaterialChangeID|1|pk"}},
        {"MaterialChangeText", {"MaterialChange_ID,Language|1|pk"}},
        {"Discription", {"DiscriptionID,Language|1|pk"}},
        {"DBSys", {"Item|1|pk"}},
    };
    for (const auto &e : expected)
        EXPECT_EQ(sqliteKeys(*db, QLatin1String(e.table)), e.keys) << e.table;
    EXPECT_EQ(db->tables().size(), std::size(expected));
}
