// Schema queries and changes: a column changes its type by rebuilding the table, keeping
// values, keys, indexes and the caseless comparison.
#include "database/Database.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace ht;

namespace
{

struct DatabaseSchema : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db;
    void SetUp() override
    {
        db = Database::create(dir.filePath(QStringLiteral("schema.db")));
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
    QString typeOf(const QString &table, const QString &column)
    {
        for (const ColumnInfo &c : db->columns(table))
            if (c.name == column)
                return c.type;
        return QStringLiteral("<none>");
    }
    QStringList indexes()
    {
        QStringList names;
        for (const QVariantList &row :
             db->query(QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'index' ORDER BY name")).rows())
            names << row[0].toString();
        return names;
    }
};

} // namespace

TEST_F(DatabaseSchema, TablesAndColumnsAreFoundInAnyCase)
{
    EXPECT_EQ(db->tables(), QStringList{QStringLiteral("AlarmDefinition")}); // sqlite_sequence is not listed
    EXPECT_TRUE(db->hasTable(QStringLiteral("alarmdefinition")));
    EXPECT_FALSE(db->hasTable(QStringLiteral("AlarmText")));
    EXPECT_TRUE(db->hasColumn(QStringLiteral("ALARMDEFINITION"), QStringLiteral("machinetype")));
    EXPECT_FALSE(db->hasColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("Rejects")));
    const auto cols = db->columns(QStringLiteral("AlarmDefinition"));
    ASSERT_EQ(cols.size(), 4u);
    EXPECT_EQ(cols[1].name, QStringLiteral("MachineType"));
    EXPECT_FALSE(cols[1].isText());
    EXPECT_TRUE(cols[3].isText());
    EXPECT_TRUE(db->columns(QStringLiteral("Nothing")).empty());
}

TEST_F(DatabaseSchema, NumericColumnBecomesCaselessTextKeepingEverything)
{
    db->changeColumnType(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType"),
                         QStringLiteral("TEXT COLLATE NOCASE"));
    EXPECT_EQ(typeOf(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType")), QStringLiteral("TEXT"));
    const Recordset rs = db->query(QStringLiteral("SELECT AlarmID, MachineType, AlarmNo, Sensor, typeof(MachineType) "
                                                  "FROM AlarmDefinition ORDER BY AlarmID"));
    ASSERT_EQ(rs.recordCount(), 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(rs.rows()[i][0].toInt(), i + 1);
        EXPECT_EQ(rs.rows()[i][1].toString(), i < 3 ? QStringLiteral("4711") : QStringLiteral("0"));
        EXPECT_EQ(rs.rows()[i][4].toString(), QStringLiteral("text"));
    }
    EXPECT_EQ(indexes(), (QStringList{QStringLiteral("AlarmMachine"), QStringLiteral("AlarmSensor")}));
    // The key still counts on from the old sequence, and the default is kept.
    db->exec(QStringLiteral("INSERT INTO AlarmDefinition (MachineType) VALUES (?)"), {QStringLiteral("Neu")});
    EXPECT_EQ(db->lastInsertId().toInt(), 7);
    EXPECT_EQ(
        db->query(QStringLiteral("SELECT AlarmNo FROM AlarmDefinition WHERE MachineType = 'NEU'")).value(0).toInt(), 0);
    EXPECT_EQ(db->query(QStringLiteral("SELECT 1 FROM AlarmDefinition WHERE Sensor = ?"), {QStringLiteral("SENSÖR 2")})
                  .recordCount(),
              1);
}

TEST_F(DatabaseSchema, AddRenameAndDropColumns)
{
    db->addColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("Cam \"x\""), QStringLiteral("TEXT"));
    EXPECT_TRUE(db->hasColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("Cam \"x\"")));
    db->renameColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType"),
                     QStringLiteral("MachineType_Old"));
    EXPECT_TRUE(db->hasColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType_Old")));
    // Indexed: SQLite cannot drop it in place; the rebuild drops the index with it.
    db->dropColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType_Old"));
    EXPECT_FALSE(db->hasColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType_Old")));
    EXPECT_EQ(indexes(), QStringList{QStringLiteral("AlarmSensor")});
    db->dropColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("Cam \"x\""));
    EXPECT_EQ(db->columns(QStringLiteral("AlarmDefinition")).size(), 3u);
    EXPECT_EQ(db->query(QStringLiteral("SELECT * FROM AlarmDefinition")).recordCount(), 5);
    EXPECT_THROW(db->dropColumn(QStringLiteral("AlarmDefinition"), QStringLiteral("Nope")), DbError);
}
