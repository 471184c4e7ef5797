// A Jet file opened for writing through the database layer: rows added, deleted
// and updated reach the file when they are committed; design changes are refused.
#include "common/FileIo.h"
#include "database/AccessSync.h"
#include "database/JetFile.h"
#include "database/JetModel.h"
#include "database/jet/JetCheck.h"

#include <QFile>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ht;
using namespace ht::test;

namespace
{

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

// A column of the rows of `table` that match `key`, as libmdb reads the file.
QStringList libmdbValues(const QString &path, const QString &table, const QString &column, const QVariantMap &key)
{
    QStringList names, values;
    JetFile::open(path)->readTable(
        table,
        [&](const std::vector<JetColumn> &columns) {
            for (const JetColumn &c : columns)
                names << c.name;
        },
        [&](const QVariantList &row) {
            for (auto k = key.cbegin(); k != key.cend(); ++k)
                if (row.value(int(names.indexOf(k.key()))).toString() != k.value().toString())
                    return;
            values << row.value(int(names.indexOf(column))).toString();
        });
    return values;
}

QString keysCopy(const QTemporaryDir &dir)
{
    return writeIn(dir, QStringLiteral("keys.mdb"), readFileBytes(jetTestFile(QStringLiteral("helptext_keys"))));
}

} // namespace

// Rolled-back and immediate writes are checked in RowsAddedAndDeletedReachTheFileRoundAfterRound
// and AWriterWaitsForTheFileAndThenSaysItIsBusy.
TEST(JetDatabase, CommittedUpdatesReachTheFile)
{
    AccessHelpText f;
    // Read back for reading as well: characters beyond the BMP included.
    const QString greek = QString::fromUtf8("Ο αισθητήρας δεν αποκρίνεται \xF0\x9D\x84\x9E \xF0\xA0\x9C\x8E");
    {
        auto db = Database::open(f.path);
        Database::Transaction t(*db);
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = ?, Result = ? WHERE Alarm_ID = 7"),
                 {greek, QString(5000, QLatin1Char('r'))});
        t.commit();
    }
    EXPECT_EQ(f.device(7), greek);
    EXPECT_EQ(f.device(8), QStringLiteral("Device"));
    EXPECT_TRUE(f.sound());
}

TEST(JetDatabase, RefusesDesignChangesAndWhatDoesNotFitAndChangesNothing)
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
        {f.path, QStringLiteral("ALTER TABLE Language ADD COLUMN Extra TEXT"), "Changing the design"},
        {f.path, QStringLiteral("CREATE TABLE Extra (x)"), "Changing the design"},
        {f.path, QStringLiteral("DROP TABLE Discription"), "Changing the design"},
        {f.path, QStringLiteral("UPDATE Language SET Name = ?"), "longer than its 255 characters"},
    };
    for (const auto &r : refused) {
        const QByteArray before = readFileBytes(r.file);
        auto db = Database::open(r.file);
        const QString message = dbErrorOf([&] {
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
    EXPECT_TRUE(dbErrorOf([&] {
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
    EXPECT_TRUE(dbErrorOf([&] {
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
        EXPECT_TRUE(dbErrorOf([&] { syncToAccess(sqlite, f.path); }).contains(QLatin1String(d.named))) << d.sql;
        EXPECT_EQ(readFileBytes(f.path), before) << d.sql;
    }
}

// Key values set to themselves or changed on the keyed help-text database (the
// jobs that write it, imports and renames, are compared with SQLite in the
// importer's AccessDifferentialTest).
TEST(JetDatabase, KeysSetOrChangedAreTakenAndADuplicateKeyRefused)
{
    const struct {
        const char *job, *sql, *table, *column, *keyColumn;
        QVariant key;
        const char *written;
    } jobs[] = {
        {"text key set to itself", "UPDATE DBSys SET Item = Item, Data = Data || '' WHERE Item = 'MaxLenAlarm'",
         "DBSys", "Item", "Item", "MaxLenAlarm", "MaxLenAlarm"},
        {"key columns set to their own values, one as text",
         "UPDATE AlarmText SET Alarm_ID = 2, Language = '1032', Function = 'Λειτουργία 2' WHERE Alarm_ID = 2 AND "
         "Language = 1032",
         "AlarmText", "Language", "Function", QStringLiteral("Λειτουργία 2"), "1032"},
        {"a number key changed", "UPDATE Language SET Language = 1034, Name = 'x' WHERE Language = 1033", "Language",
         "Name", "Language", 1034, "x"},
        {"a text key in other case", "UPDATE DBSys SET Item = upper(Item)", "DBSys", "Item", "Item", "MAXLENALARM",
         "MAXLENALARM"},
        {"a key the unique index already holds", "UPDATE Language SET Language = 1031 WHERE Language = 1033"},
    };
    for (const auto &j : jobs) {
        QTemporaryDir dir;
        const QString path = keysCopy(dir);
        const QByteArray before = readFileBytes(path);
        const QString message = dbErrorOf([&] {
            auto db = Database::open(path);
            Database::Transaction t(*db);
            db->exec(QString::fromUtf8(j.sql));
            t.commit();
        });
        if (!j.table) {
            EXPECT_TRUE(message.contains(QLatin1String("Language"))) << j.job << ": " << message.toStdString();
            EXPECT_TRUE(readFileBytes(path) == before) << j.job;
            continue;
        }
        EXPECT_EQ(message, QString()) << j.job;
        EXPECT_EQ(jet::checkStructure(jet::Image(readFileBytes(path), path)), QStringList()) << j.job;
        EXPECT_EQ(libmdbValues(path, QString::fromLatin1(j.table), QString::fromLatin1(j.column),
                               {{QString::fromLatin1(j.keyColumn), j.key}}),
                  QStringList{QString::fromLatin1(j.written)})
            << j.job;
    }
}

// Rows added, changed and deleted over several rounds through one connection:
// each round's slots are right for the next, and what was rolled back never
// reaches the file.
TEST(JetDatabase, RowsAddedAndDeletedReachTheFileRoundAfterRound)
{
    QTemporaryDir dir;
    const QString path = keysCopy(dir);
    const auto texts = [&](int alarm, int language) {
        return libmdbValues(path, QStringLiteral("AlarmText"), QStringLiteral("Device"),
                            {{QStringLiteral("Alarm_ID"), alarm}, {QStringLiteral("Language"), language}});
    };
    const auto sound = [&] { return jet::checkStructure(jet::Image(readFileBytes(path), path)); };
    const QStringList greek3 = texts(3, 1032);
    ASSERT_EQ(greek3.size(), 1);
    auto db = Database::open(path);
    {
        Database::Transaction t(*db);
        db->exec(QStringLiteral("INSERT INTO Language (Language, Name, Font) VALUES (1040, 'Italiano', 'Arial')"));
        db->exec(QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language, Device) VALUES (1, 1040, 'a'), "
                                "(2, 1040, 'b')"));
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = 'Dispositivo' WHERE Alarm_ID = 1 AND Language = 1040"));
        db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Language = 1040 AND Alarm_ID = 2"));
        db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Language = 1032 AND Alarm_ID = 3"));
        db->exec(QStringLiteral("UPDATE AlarmText SET Device = 'kept' WHERE Alarm_ID = 5 AND Language = 1032"));
        {
            Database::Transaction inner(*db); // rolled back: neither its row nor its deletes stay
            db->exec(QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language, Device) VALUES (9, 1040, 'x')"));
            db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Language = 1032 AND Alarm_ID IN (4, 5)"));
            db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Language = 1040"));
        }
        t.commit();
    }
    EXPECT_EQ(sound(), QStringList());
    EXPECT_EQ(texts(1, 1040), QStringList{QStringLiteral("Dispositivo")});
    EXPECT_EQ(texts(2, 1040), QStringList());
    EXPECT_EQ(texts(9, 1040), QStringList());
    EXPECT_EQ(texts(3, 1032), QStringList());
    EXPECT_EQ(texts(4, 1032).size(), 1);
    EXPECT_EQ(texts(5, 1032), QStringList{QStringLiteral("kept")});

    // The next round finds the rows of the last one where they went.
    db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Language = 1040"));
    db->exec(QStringLiteral("UPDATE Language SET Name = 'Italian' WHERE Language = 1040"));
    db->exec(QStringLiteral("DELETE FROM DBSys")); // a whole table emptied
    EXPECT_EQ(sound(), QStringList());
    EXPECT_EQ(texts(1, 1040), QStringList());
    EXPECT_EQ(
        libmdbValues(path, QStringLiteral("Language"), QStringLiteral("Name"), {{QStringLiteral("Language"), 1040}}),
        QStringList{QStringLiteral("Italian")});
    EXPECT_EQ(libmdbValues(path, QStringLiteral("DBSys"), QStringLiteral("Item"), {}), QStringList());

    // Rolled back, or refused for a key the unique index holds: the file stays as it is.
    const QByteArray before = readFileBytes(path);
    {
        Database::Transaction t(*db);
        db->exec(QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language) VALUES (5, 1040)"));
        db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Alarm_ID = 5"));
    }
    EXPECT_TRUE(dbErrorOf([&] {
                    db->exec(QStringLiteral("INSERT INTO Language (Language, Name) VALUES (1031, 'twice')"));
                }).contains(QLatin1String("Language")));
    EXPECT_TRUE(readFileBytes(path) == before);
}

// Two jobs write one Access file at the same moment, 20 times over: each has
// read the file before either writes. A job that reports success has its
// change in the file; the other one is told the file changed under it.
TEST(JetDatabase, TwoWritersAtOnceNeverLoseAChangeTheyReported)
{
    QTemporaryDir dir;
    const QString path = keysCopy(dir);
    int bothDone = 0;
    for (int round = 0; round < 20; ++round) {
        int ready[2], go[2];
        ASSERT_EQ(pipe(ready), 0);
        ASSERT_EQ(pipe(go), 0);
        const QString texts[2] = {QStringLiteral("first %1").arg(round), QStringLiteral("second %1").arg(round)};
        pid_t children[2];
        for (int w = 0; w < 2; ++w) {
            children[w] = fork();
            ASSERT_GE(children[w], 0);
            if (children[w] != 0)
                continue;
            int code = 2;
            try {
                auto db = Database::open(path);
                db->query(QStringLiteral("SELECT count(*) FROM AlarmText"));
                char c = 0;
                code = write(ready[1], "r", 1) == 1 && read(go[0], &c, 1) == 1 ? 1 : 2;
                Database::Transaction t(*db);
                db->exec(QStringLiteral("UPDATE AlarmText SET Device = ? WHERE Alarm_ID = ? AND Language = 1033"),
                         {texts[w], w + 10});
                t.commit();
                code = 0;
            } catch (const DbError &) {
            }
            _exit(code);
        }
        char c = 0;
        for (int w = 0; w < 2; ++w)
            ASSERT_EQ(read(ready[0], &c, 1), 1);
        ASSERT_EQ(write(go[1], "gg", 2), 2); // both at once
        int succeeded = 0;
        for (int w = 0; w < 2; ++w) {
            int status = 0;
            waitpid(children[w], &status, 0);
            ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << "round " << round;
            const bool reported = WEXITSTATUS(status) == 0;
            succeeded += reported;
            const QStringList stored =
                libmdbValues(path, QStringLiteral("AlarmText"), QStringLiteral("Device"),
                             {{QStringLiteral("Alarm_ID"), w + 10}, {QStringLiteral("Language"), 1033}});
            EXPECT_EQ(stored.value(0) == texts[w], reported)
                << "round " << round << ", writer " << w << ": " << stored.join(u',').toStdString();
        }
        EXPECT_GE(succeeded, 1) << "round " << round;
        bothDone += succeeded == 2;
        for (int fd : {ready[0], ready[1], go[0], go[1]})
            close(fd);
    }
    RecordProperty("both_succeeded", bothDone);
    EXPECT_EQ(jet::checkStructure(jet::Image(readFileBytes(path), path)), QStringList());
}

// While another job holds the file, a write waits for the busy timeout and then
// says the file is busy, with nothing written; once it is free the write goes through.
TEST(JetDatabase, AWriterWaitsForTheFileAndThenSaysItIsBusy)
{
    QTemporaryDir dir;
    const QString path = keysCopy(dir);
    const QByteArray before = readFileBytes(path);
    Database::setBusyTimeout(200);
    auto db = Database::open(path);
    Database::setBusyTimeout(5000);
    const QString update = QStringLiteral("UPDATE AlarmText SET Device = 'saved' WHERE Alarm_ID = 1");
    FileLock other;
    ASSERT_EQ(other.take(dir.filePath(QStringLiteral(".~keys.mdb.lock")), 0), FileLock::Result::Taken);
    for (const bool inTransaction : {false, true}) {
        bool busy = false;
        try {
            if (inTransaction) {
                Database::Transaction t(*db);
                db->exec(update);
                t.commit();
            } else {
                db->exec(update);
            }
        } catch (const DbBusy &e) {
            busy = QString::fromUtf8(e.what()).contains(QLatin1String("is busy"));
        }
        EXPECT_TRUE(busy) << inTransaction;
        EXPECT_TRUE(readFileBytes(path) == before);
    }
    other.release();
    db->exec(update);
    EXPECT_EQ(libmdbValues(path, QStringLiteral("AlarmText"), QStringLiteral("Device"),
                           {{QStringLiteral("Alarm_ID"), 1}, {QStringLiteral("Language"), 1031}}),
              QStringList{QStringLiteral("saved")});
    EXPECT_EQ(filesIn(dir.path()), QStringList{QStringLiteral("keys.mdb")}) << "no lock file left";
}

// Where a killed write left a named temporary file (a file system without
// unnamed files), opening the file for writing removes it; those of running
// processes and other files stay.
TEST(JetDatabase, OpeningForWritingRemovesTemporaryFilesOfKilledRuns)
{
    QTemporaryDir dir;
    const QString path = keysCopy(dir);
    const pid_t gone = fork();
    ASSERT_GE(gone, 0);
    if (gone == 0)
        _exit(0);
    waitpid(gone, nullptr, 0);
    const QString killed = QStringLiteral(".~%1-3.tmp").arg(gone);
    const QString running = QStringLiteral(".~%1-1.tmp").arg(getppid());
    for (const QString &name : {killed, running, QStringLiteral(".~notes.tmp")})
        writeFileBytes(dir.filePath(name), "partial");
    Database::open(path);
    EXPECT_EQ(filesIn(dir.path()), (QStringList{QStringLiteral(".~%1-1.tmp").arg(getppid()),
                                                QStringLiteral(".~notes.tmp"), QStringLiteral("keys.mdb")}));
}
