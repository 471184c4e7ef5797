// Schema changes: a column changes its type by rebuilding the table, keeping values,
// keys, defaults, indexes and the caseless comparison.
#include "database/HelpTextFixture.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;
using namespace Qt::StringLiterals;

namespace
{

struct DatabaseSchema : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db = Database::create(dir.filePath(u"schema.db"_s));
    const QString table = u"AlarmDefinition"_s;
    void SetUp() override
    {
        db->execScript(u"CREATE TABLE AlarmDefinition (AlarmID INTEGER PRIMARY KEY AUTOINCREMENT, MachineType INTEGER, "
                       "AlarmNo INTEGER NOT NULL DEFAULT 0, Sensor TEXT COLLATE NOCASE);"
                       "CREATE INDEX AlarmMachine ON AlarmDefinition (MachineType, AlarmNo);"
                       "CREATE INDEX AlarmSensor ON AlarmDefinition (Sensor);"_s);
        for (int i = 1; i <= 6; ++i)
            db->exec(u"INSERT INTO AlarmDefinition (MachineType, AlarmNo, Sensor) VALUES (?, ?, ?)"_s,
                     {i <= 3 ? 4711 : 0, i, u"Sensör %1"_s.arg(i)});
        db->exec(u"DELETE FROM AlarmDefinition WHERE AlarmID = 6"_s); // the sequence is ahead of max
    }
    QStringList indexes()
    {
        return dump(db->path(), u"SELECT name FROM sqlite_schema WHERE type = 'index' ORDER BY 1"_s);
    }
};

} // namespace

TEST_F(DatabaseSchema, NumericColumnBecomesCaselessTextKeepingEverything)
{
    db->changeColumnType(table, u"MachineType"_s, u"TEXT COLLATE NOCASE"_s);
    EXPECT_EQ(columnType(*db, table, u"MachineType"_s), u"TEXT"_s);
    EXPECT_EQ(db->tables(), QStringList{table}); // sqlite_sequence is not listed
    EXPECT_EQ(dump(db->path(), u"SELECT AlarmID, MachineType, typeof(MachineType), AlarmNo FROM "
                               "AlarmDefinition ORDER BY AlarmID"_s),
              (QStringList{"1|4711|text|1", "2|4711|text|2", "3|4711|text|3", "4|0|text|4", "5|0|text|5"}));
    EXPECT_EQ(indexes(), (QStringList{"AlarmMachine", "AlarmSensor"}));
    // The key counts on from the old sequence, the default is kept, and so is the collation.
    db->exec(u"INSERT INTO AlarmDefinition (MachineType) VALUES (?)"_s, {u"Neu"_s});
    EXPECT_EQ(db->lastInsertId().toInt(), 7);
    EXPECT_EQ(dump(db->path(), u"SELECT AlarmNo FROM AlarmDefinition WHERE MachineType = 'NEU'"_s), QStringList{"0"});
    EXPECT_EQ(db->query(u"SELECT 1 FROM AlarmDefinition WHERE Sensor = ?"_s, {u"SENSÖR 2"_s}).recordCount(), 1);
}
