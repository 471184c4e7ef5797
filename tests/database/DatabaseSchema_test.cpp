// Schema changes: a column changes its type by rebuilding the table, keeping values,
// keys, defaults, indexes and the caseless comparison.
#include "database/HelpTextFixture.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

struct DatabaseSchema : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db = Database::create(dir.filePath(QStringLiteral("schema.db")));
    const QString table = QStringLiteral("AlarmDefinition");
    void SetUp() override
    {
        db->execScript(QStringLiteral(
            "CREATE TABLE AlarmDefinition (AlarmID INTEGER PRIMARY KEY AUTOINCREMENT, MachineType INTEGER, "
            "AlarmNo INTEGER NOT NULL DEFAULT 0, Sensor TEXT COLLATE NOCASE);"
            "CREATE INDEX AlarmMachine ON AlarmDefinition (MachineType, AlarmNo);"
            "CREATE INDEX AlarmSensor ON AlarmDefinition (Sensor);"));
        for (int i = 1; i <= 6; ++i)
            db->exec(QStringLiteral("INSERT INTO AlarmDefinition (MachineType, AlarmNo, Sensor) VALUES (?, ?, ?)"),
                     {i <= 3 ? 4711 : 0, i, QStringLiteral("Sensör %1").arg(i)});
        db->exec(QStringLiteral("DELETE FROM AlarmDefinition WHERE AlarmID = 6")); // the sequence is ahead of max
    }
    QStringList indexes()
    {
        return dump(db->path(), QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'index' ORDER BY 1"));
    }
};

} // namespace

TEST_F(DatabaseSchema, NumericColumnBecomesCaselessTextKeepingEverything)
{
    db->changeColumnType(table, QStringLiteral("MachineType"), QStringLiteral("TEXT COLLATE NOCASE"));
    EXPECT_EQ(columnType(*db, table, QStringLiteral("MachineType")), QStringLiteral("TEXT"));
    EXPECT_EQ(db->tables(), QStringList{table}); // sqlite_sequence is not listed
    EXPECT_EQ(dump(db->path(), QStringLiteral("SELECT AlarmID, MachineType, typeof(MachineType), AlarmNo FROM "
                                              "AlarmDefinition ORDER BY AlarmID")),
              (QStringList{"1|4711|text|1", "2|4711|text|2", "3|4711|text|3", "4|0|text|4", "5|0|text|5"}));
    EXPECT_EQ(indexes(), (QStringList{"AlarmMachine", "AlarmSensor"}));
    // The key counts on from the old sequence, the default is kept, and so is the collation.
    db->exec(QStringLiteral("INSERT INTO AlarmDefinition (MachineType) VALUES (?)"), {QStringLiteral("Neu")});
    EXPECT_EQ(db->lastInsertId().toInt(), 7);
    EXPECT_EQ(dump(db->path(), QStringLiteral("SELECT AlarmNo FROM AlarmDefinition WHERE MachineType = 'NEU'")),
              QStringList{"0"});
    EXPECT_EQ(db->query(QStringLiteral("SELECT 1 FROM AlarmDefinition WHERE Sensor = ?"), {QStringLiteral("SENSÖR 2")})
                  .recordCount(),
              1);
}
