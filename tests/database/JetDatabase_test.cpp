// A Jet file opened for writing through the database layer: updates of existing
// rows reach the file when they are committed, and nothing else is let through.
#include "database/AccessSync.h"
#include "database/HelpTextFixture.h"
#include "database/jet/JetCheck.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

QString failure(const std::function<void()> &f)
{
    try {
        f();
    } catch (const DbError &e) {
        return QString::fromUtf8(e.what());
    }
    return QString();
}

struct AccessHelpText {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("Help.mdb"));
    AccessHelpText()
    {
        const QString sqlite = dir.filePath(QStringLiteral("Help.sqlite"));
        makeHelpTextDb(sqlite, false);
        addLanguage(sqlite, 1, QStringLiteral("English"), QStringLiteral("Arial"));
        Database::open(sqlite)->exec(QStringLiteral("UPDATE AlarmText SET Device = 'Device'"));
        makeAccessCopy(sqlite, path);
    }
    QString device(int alarm) const
    {
        return Database::open(path, Database::Mode::ReadOnly)
            ->query(QStringLiteral("SELECT Device FROM AlarmText WHERE Alarm_ID = ?"), {alarm})
            .text(QStringLiteral("Device"));
    }
    bool sound() const { return jet::checkStructure(jet::Image(readFileBytes(path), path)).isEmpty(); }
};

} // namespace

TEST(JetDatabase, CommittedUpdatesReachTheFileAndRolledBackOnesDoNot)
{
    AccessHelpText f;
    // Read back for reading as well: characters beyond the BMP included.
    const QString greek = QString::fromUtf8("Ο αισθητήρας δεν αποκρίνεται \xF0\x9D\x84\x9E \xF0\xA0\x9C\x8E");
    {
        auto db = Database::open(f.path);
        Database::Transaction t(*db);
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = ?, Result = ? WHERE Alarm_ID = 7"),
                 {greek, QString(5000, QLatin1Char('r'))});
        db->exec(
            QStringLiteral("UPDATE AlarmDefinition SET MachineType = 'CT400', Sensor = 'B12' WHERE AlarmID <= 256"));
        t.commit();
    }
    EXPECT_EQ(f.device(7), greek);
    EXPECT_EQ(f.device(8), QStringLiteral("Device"));
    EXPECT_EQ(Database::open(f.path, Database::Mode::ReadOnly)
                  ->query(QStringLiteral("SELECT count(*) FROM AlarmDefinition WHERE MachineType = 'CT400'"))
                  .value(0)
                  .toInt(),
              256);
    EXPECT_TRUE(f.sound());

    const QByteArray before = readFileBytes(f.path);
    {
        auto db = Database::open(f.path);
        Database::Transaction t(*db);
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = 'never' WHERE Alarm_ID = 7"));
    } // not committed
    EXPECT_EQ(readFileBytes(f.path), before);

    // Outside a transaction a statement is written at once.
    Database::open(f.path)->exec(QStringLiteral("UPDATE AlarmText SET Device = 'at once' WHERE Alarm_ID = 9"));
    EXPECT_EQ(f.device(9), QStringLiteral("at once"));
    EXPECT_TRUE(f.sound());
}

TEST(JetDatabase, RefusesWhatAnAccessFileCannotTakeYetAndChangesNothing)
{
    AccessHelpText f;
    QTemporaryDir dir;
    const QString indexed =
        writeIn(dir, QStringLiteral("index.mdb"), readFileBytes(jetTestFile(QStringLiteral("compIndexTestV2000"))));
    const struct {
        QString file;
        QString sql;
        const char *named;
    } refused[] = {
        {f.path, QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language) VALUES (9999, 1)"),
         "Adding rows to table AlarmText"},
        {f.path, QStringLiteral("DELETE FROM AlarmText WHERE Language = 1"), "Deleting rows of table AlarmText"},
        {f.path, QStringLiteral("ALTER TABLE Language ADD COLUMN Extra TEXT"), "Changing the design"},
        {f.path, QStringLiteral("CREATE TABLE Extra (x)"), "Changing the design"},
        {f.path, QStringLiteral("DROP TABLE Discription"), "Changing the design"},
        {indexed, QStringLiteral("UPDATE Table1 SET CD_AGENTE = CD_AGENTE + 1"),
         "Changing column CD_AGENTE of table Table1, which is indexed"},
        {f.path, QStringLiteral("UPDATE Language SET Name = ?"), "longer than its 255 characters"},
    };
    for (const auto &r : refused) {
        const QByteArray before = readFileBytes(r.file);
        auto db = Database::open(r.file);
        const QString message = failure([&] {
            db->query(QStringLiteral("SELECT count(*) FROM %1")
                          .arg(r.file == f.path ? "AlarmText" : "Table1")); // copied in first
            db->exec(r.sql,
                     r.sql.contains(QLatin1Char('?')) ? QVariantList{QString(300, QLatin1Char('x'))} : QVariantList{});
        });
        EXPECT_TRUE(message.contains(QLatin1String(r.named))) << r.sql.toStdString() << ": " << message.toStdString();
        EXPECT_EQ(readFileBytes(r.file), before) << r.sql.toStdString();
        // What the program reads afterwards is the file's content, not the refused change.
        if (r.file == f.path)
            EXPECT_EQ(db->query(QStringLiteral("SELECT Name FROM Language")).text(QStringLiteral("Name")),
                      QStringLiteral("English"));
    }
    EXPECT_TRUE(failure([&] {
                    writeFileBytes(dir.filePath(QStringLiteral("index.ldb")), "lock");
                    Database::open(indexed)->exec(QStringLiteral("UPDATE Table1 SET RS_AGENTE = 'x'"));
                }).contains(QLatin1String("open in another program")));
}

TEST(JetDatabase, AChangeByAnotherProgramMeanwhileIsNotOverwritten)
{
    AccessHelpText f;
    auto first = Database::open(f.path);
    auto second = Database::open(f.path);
    second->query(QStringLiteral("SELECT count(*) FROM AlarmText"));
    first->exec(QStringLiteral("UPDATE AlarmText SET Device = 'first' WHERE Alarm_ID = 1"));
    EXPECT_TRUE(failure([&] {
                    second->exec(QStringLiteral("UPDATE AlarmText SET Device = 'second' WHERE Alarm_ID = 2"));
                }).contains(QLatin1String("changed by another program")));
    EXPECT_EQ(f.device(1), QStringLiteral("first"));
    EXPECT_EQ(f.device(2), QStringLiteral("Device"));
}

TEST(JetDatabase, SyncCarriesTheTextsOfAConversionBackAndRefusesWhatDoesNotMatch)
{
    AccessHelpText f;
    const QString sqlite = f.dir.filePath(QStringLiteral("Converted.sqlite"));
    const auto convert = [&] {
        QFile::remove(sqlite);
        convertJetToSqlite(f.path, sqlite);
    };
    convert();
    const QString greek = QStringLiteral("Ο αισθητήρας δεν αποκρίνεται"), memo(6000, QLatin1Char('m'));
    {
        auto db = Database::open(sqlite);
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = ?, Function = ? WHERE Alarm_ID IN (3, 300)"),
                 {greek, memo});
        db->exec(QStringLiteral("UPDATE AlarmDefinition SET Sensor = 'B9' WHERE AlarmID = 3"));
    }
    const SyncResult result = syncToAccess(sqlite, f.path);
    EXPECT_EQ(result.rows, 3);
    EXPECT_EQ(f.device(300), greek);
    EXPECT_EQ(Database::open(f.path, Database::Mode::ReadOnly)
                  ->query(QStringLiteral("SELECT Function FROM AlarmText WHERE Alarm_ID = 3"))
                  .text(QStringLiteral("Function")),
              memo);
    EXPECT_TRUE(f.sound());
    EXPECT_EQ(syncToAccess(sqlite, f.path).rows, 0) << "nothing differs any more";

    // Machines or rows that differ: nothing is written.
    const struct {
        const char *sql, *named;
    } differing[] = {
        {"UPDATE AlarmDefinition SET MachineType = 'FL220' WHERE AlarmID = 5", "machines and items"},
        {"DELETE FROM AlarmText WHERE Alarm_ID = 7", "text rows"},
    };
    for (const auto &d : differing) {
        convert();
        auto db = Database::open(sqlite);
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = 'not carried over'"));
        db->exec(QString::fromLatin1(d.sql));
        db.reset();
        const QByteArray before = readFileBytes(f.path);
        EXPECT_TRUE(failure([&] { syncToAccess(sqlite, f.path); }).contains(QLatin1String(d.named))) << d.sql;
        EXPECT_EQ(readFileBytes(f.path), before) << d.sql;
    }
}
