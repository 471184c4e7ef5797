// Choosing, checking, backing up and listing the help-text database, each on a
// real SQLite file.
#include "common/Messages.h"
#include "database/HelpTextDatabase.h"
#include "database/HelpTextFixture.h"
#include "database/jet/JetCheck.h"

#include "common/ErrorLog.h"

#include <QDir>
#include <QFile>
#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <thread>

using namespace ht;
using namespace ht::test;

namespace
{

QString failureText(const QString &path)
{
    return QStringLiteral("Error connecting Database \"") + path +
           QStringLiteral("\"! Database either has wrong structure or is writeprotected.");
}

} // namespace

void dropTable(const QString &p, const char *table)
{
    openRW(p)->exec(QStringLiteral("DROP TABLE ") + QLatin1String(table));
}

// Each case spoils a good database in one way.
TEST(CheckConnection, ABadDatabaseFailsWithItsMessageAndChangesNothing)
{
    const struct {
        const char *name;
        std::function<void(const QString &path)> spoil;
    } cases[] = {
        {"NotADatabase", [](const QString &p) { writeFileBytes(p, "AlarmDefinition;WarningText\r\n"); }},
        {"Missing", [](const QString &p) { QFile::remove(p); }},
        {"ZeroBytes", [](const QString &p) { writeFileBytes(p, QByteArray()); }},
        {"Truncated", [](const QString &p) { writeFileBytes(p, readFileBytes(p).left(8192)); }},
        {"MissingTable", [](const QString &p) { dropTable(p, "Discription"); }},
        {"MissingColumn",
         [](const QString &p) { openRW(p)->dropColumn(QStringLiteral("Language"), QStringLiteral("KBLayout")); }},
        {"MaterialChangeWithoutTexts", [](const QString &p) { dropTable(p, "MaterialChangeText"); }},
        {"NumericMachineTypeButNoDiscription",
         [](const QString &p) {
             openRW(p)->changeColumnType(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType"),
                                         QStringLiteral("INTEGER"));
             dropTable(p, "Discription");
         }},
        // SQLite refuses to write a file whose header asks for a newer writer: a
        // write-protected database even for root.
        {"WriteProtected", [](const QString &p) { writeFileBytes(p, readFileBytes(p).replace(18, 1, "\3")); }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        DbTestContext t;
        const QString db = t.newHelpDb();
        c.spoil(db);
        const QByteArray before = readFileBytes(db);
        const QStringList filesBefore = filesIn(t.dir.path());
        t.ctx.state.helpTextDB = QStringLiteral("previous.mdb");

        EXPECT_EQ(CheckConnection(t.ctx, db), QString());

        EXPECT_EQ(t.ctx.state.helpTextDB, QStringLiteral("previous.mdb"));
        ASSERT_EQ(t.ui.shown.size(), 1u);
        EXPECT_EQ(t.ui.shown[0].text, failureText(db));
        EXPECT_EQ(t.ui.shown[0].title, QStringLiteral("Connection failed!"));
        EXPECT_EQ(t.ui.shown[0].icon, Icon::Critical);
        EXPECT_EQ(readFileBytes(db), before);
        EXPECT_TRUE(t.errorLog().contains(QLatin1String("CheckConnection: "))) << "the cause is logged";
        QFile::remove(errorLogPath(t.ctx));
        EXPECT_EQ(filesIn(t.dir.path()), filesBefore);
    }
}

// An older database: numeric machine types, a machine-type conversion that stopped
// half-way, a stale language font and a longer alarm count than the tables hold.
TEST(CheckConnection, BringsAnOlderDatabaseUpToDateKeepingItsData)
{
    DbTestContext t;
    const QString db = t.newHelpDb();
    addLanguage(db, 1031, QStringLiteral("GERMAN"), QStringLiteral("Arial 8"));
    t.ctx.state.langLookupDB = t.path(QStringLiteral("Languages.mdb"));
    makeLookupDb(t.ctx.state.langLookupDB,
                 {{1031, QStringLiteral("GERMAN"), QStringLiteral("Arial 10 400"), QStringLiteral("00000407"), 1252}});
    {
        auto d = openRW(db);
        d->execScript(QStringLiteral(
            "UPDATE DBSys SET Data = '300' WHERE Item = 'MaxLenAlarm';"
            "UPDATE MaterialChangeDefinition SET MachineType = '5' WHERE MaterialChangeID <= 1000;"
            "UPDATE MaterialChangeDefinition SET MachineType = '17' WHERE MaterialChangeID BETWEEN 2001 AND 3000;"));
        // A Long Integer column, and a Double one as a copied Jet Single or Double column is.
        d->changeColumnType(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType"),
                            QStringLiteral("INTEGER"));
        d->changeColumnType(QStringLiteral("MaterialChangeDefinition"), QStringLiteral("MachineType"),
                            QStringLiteral("DOUBLE"));
        // What a conversion leaves when it stops after creating the new column.
        d->renameColumn(QStringLiteral("WarningDefinition"), QStringLiteral("MachineType"),
                        QStringLiteral("MachineType_Old"));
        d->addColumn(QStringLiteral("WarningDefinition"), QStringLiteral("MachineType"), QStringLiteral("TEXT"));
        d->execScript(QStringLiteral("UPDATE WarningDefinition SET MachineType = MachineType_Old WHERE WarningID <= 10;"
                                     "UPDATE WarningDefinition SET MachineType_Old = 'M7' WHERE WarningID > 1000;"));
    }
    const QString mc = QStringLiteral("SELECT MaterialChangeID, MachineType, MaterialChangeNo FROM "
                                      "MaterialChangeDefinition ORDER BY 1");
    const QStringList mcBefore = dump(db, mc);
    const QString types = QStringLiteral("SELECT DISTINCT typeof(MachineType) FROM %1");
    ASSERT_EQ(dump(db, types.arg(QStringLiteral("MaterialChangeDefinition"))), QStringList{QStringLiteral("real")});

    ASSERT_EQ(CheckConnection(t.ctx, db), db);

    for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"})
        EXPECT_EQ(dump(db, types.arg(QLatin1String(table))), QStringList{QStringLiteral("text")}) << table;
    EXPECT_EQ(dump(db, mc), mcBefore);
    EXPECT_FALSE(openRW(db)->hasColumn(QStringLiteral("WarningDefinition"), QStringLiteral("MachineType_Old")));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT MachineType, COUNT(*) FROM WarningDefinition GROUP BY 1 ORDER BY 1")),
              (QStringList{QStringLiteral("0|1000"), QStringLiteral("M7|280")}));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Font, KBLayout FROM Language")),
              QStringList{QStringLiteral("Arial 10 400|00000407")});
    EXPECT_EQ(t.ctx.state.maxItems[KindAlarms], 300);
    EXPECT_EQ(dump(db, QStringLiteral("SELECT COUNT(*), MAX(AlarmID) FROM AlarmDefinition")),
              QStringList{QStringLiteral("1500|1500")});
    // The backup holds the database as it was before the rebuild.
    EXPECT_EQ(t.ctx.state.lastBackupPath, t.path(QStringLiteral("Help_BACKUP.sav")));
    EXPECT_EQ(dump(t.ctx.state.lastBackupPath, QStringLiteral("SELECT COUNT(*) FROM AlarmDefinition")),
              QStringList{QStringLiteral("1280")});
}

// Another program writing the database holds its lock for a while: the check waits for
// it, and when it does not let go in time, says that the database is in use.
TEST(CheckConnection, WaitsForAnotherWriterAndOtherwiseSaysTheDatabaseIsInUse)
{
    for (const bool letGo : {true, false}) {
        DbTestContext t;
        const QString db = t.newHelpDb();
        sqlite3 *other = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(db).constData(), &other), SQLITE_OK);
        sqlite3_busy_timeout(other, 5000);
        ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE; UPDATE DBSys SET Data = Data", nullptr, nullptr, nullptr),
                  SQLITE_OK);
        std::thread writer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            if (letGo)
                sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
        });
        Database::setBusyTimeout(letGo ? 5000 : 100);
        const QString result = CheckConnection(t.ctx, db);
        Database::setBusyTimeout(5000);
        writer.join();
        sqlite3_close(other);

        EXPECT_EQ(result, letGo ? db : QString());
        const QString inUse = QStringLiteral("Error connecting Database \"") + db +
                              QStringLiteral("\"! Database is in use by another program, try again when it is done.");
        EXPECT_EQ(t.ui.messageTexts(), letGo ? QStringList() : QStringList{inUse});
    }
}

// An earlier version converted Access files to "<base>.sqlite" and edited that:
// such a conversion is still used, as it holds the work done since.
TEST(JetHelpText, AnEarlierConversionIsUsedAndNamed)
{
    DbTestContext t;
    const QString jet = t.path(QStringLiteral("Machine.mdb")), sqlite = t.path(QStringLiteral("Machine.sqlite"));
    ASSERT_TRUE(QFile::copy(jetTestFile(QStringLiteral("testUnicodeCompV2003")), jet));
    makeHelpTextDb(sqlite);
    const QByteArray sqliteBytes = readFileBytes(sqlite);

    EXPECT_EQ(CheckConnection(t.ctx, jet), sqlite);

    EXPECT_EQ(t.ctx.state.helpTextDB, sqlite);
    EXPECT_EQ(t.savedHelpTextDb(), sqlite);
    ASSERT_EQ(t.ui.shown.size(), 1u);
    EXPECT_TRUE(t.ui.shown[0].text.contains(u'"' + sqlite + u'"'));
    EXPECT_EQ(t.ui.shown[0].icon, Icon::Information);
    EXPECT_EQ(readFileBytes(sqlite), sqliteBytes) << "nothing needed repair";
}

// This Jet file is no help-text database: whatever lies beside it, the check
// fails and leaves every file as it was.
TEST(JetHelpText, AFailedCheckLeavesEveryFileAsItWas)
{
    const std::function<void(const QString &)> besides[] = {
        [](const QString &) {}, [](const QString &p) { writeFileBytes(p, "my notes, not a database"); },
        [](const QString &p) { makeHelpTextDb(p); }, // ignored when only reading
    };
    for (int i = 0; i < 3; ++i) {
        DbTestContext t;
        const QString jet = t.path(QStringLiteral("Machine.mdb"));
        ASSERT_TRUE(QFile::copy(jetTestFile(QStringLiteral("testUnicodeCompV2003")), jet));
        besides[i](t.path(QStringLiteral("Machine.sqlite")));
        const auto contents = [&] {
            QList<QByteArray> all;
            for (const QString &f : filesIn(t.dir.path()))
                all << readFileBytes(t.path(f));
            return all;
        };
        const QList<QByteArray> before = contents();

        EXPECT_EQ(CheckConnection(t.ctx, jet, i == 2 ? ConnectFor::Reading : ConnectFor::Editing), QString());

        EXPECT_EQ(t.ui.messageTexts(), QStringList{failureText(jet)}) << i;
        EXPECT_TRUE(t.errorLog().contains(QLatin1String("CheckConnection: "))) << "the cause is logged";
        QFile::remove(errorLogPath(t.ctx));
        EXPECT_EQ(contents(), before) << i;
    }
}

// An Access help-text database is used in place: tables too short for their
// item count are rebuilt in the file itself, IDs from 1 in each machine's block.
TEST(JetHelpText, AnAccessDatabaseIsLengthenedInPlace)
{
    DbTestContext t;
    const QString source = t.path(QStringLiteral("source.sqlite")), mdb = t.path(QStringLiteral("Machine.mdb"));
    makeHelpTextDb(source);
    Database::open(source)->exec(QStringLiteral("UPDATE DBSys SET Data = '300' WHERE Item = 'MaxLenAlarm'"));
    makeAccessCopy(source, mdb);
    const QByteArray before = readFileBytes(mdb);

    EXPECT_EQ(CheckConnection(t.ctx, mdb), mdb);

    EXPECT_EQ(t.ui.messageTexts(), QStringList());
    EXPECT_NE(readFileBytes(mdb), before);
    EXPECT_EQ(jet::checkStructure(jet::Image(readFileBytes(mdb), mdb)), QStringList());
    EXPECT_FALSE(QFile::exists(t.path(QStringLiteral("Machine.sqlite"))));
    // Every ID once, 300 per block (the import jobs' comparison reads lengthened files through libmdb too).
    EXPECT_EQ(dump(mdb, QStringLiteral("SELECT COUNT(*), COUNT(DISTINCT AlarmID), MIN(AlarmID), MAX(AlarmID) "
                                       "FROM AlarmDefinition")),
              QStringList{QStringLiteral("1500|1500|1|1500")});
}

// An Access file the program cannot write (here: of a later Access version) is shown read only, and says why.
TEST(JetHelpText, AnAccessDatabaseItCannotWriteIsReadOnlyAndSaysWhy)
{
    DbTestContext t;
    const QString source = t.path(QStringLiteral("source.sqlite")), jet = t.path(QStringLiteral("Machine.mdb"));
    makeHelpTextDb(source);
    const QString made = t.path(QStringLiteral("made.mdb"));
    makeAccessCopy(source, made);
    QByteArray bytes = readFileBytes(made);
    bytes[0x14] = 2;
    writeFileBytes(jet, bytes);

    EXPECT_EQ(CheckConnection(t.ctx, jet), jet);

    ASSERT_EQ(t.ui.messageTexts().size(), 1);
    EXPECT_TRUE(t.ui.messageTexts()[0].contains(QLatin1String("can only be read by this program: Only Access "
                                                              "2000-2003 (Jet 4) files can be changed")))
        << t.ui.messageTexts()[0].toStdString();
    EXPECT_EQ(Database::open(jet, Database::Mode::ReadOnly)
                  ->query(QStringLiteral("SELECT count(*) FROM AlarmDefinition"))
                  .value(0)
                  .toInt(),
              1280);
    EXPECT_EQ(readFileBytes(jet), bytes);
}

TEST(CreateDBBackup, NumbersFurtherBackupsKeepsTheFirstAndReportsAFailedCopy)
{
    DbTestContext t;
    const QString folder = QStringLiteral("Mäschine \"A\" 100% ' machine"); // quotes, %, non-ASCII
    ASSERT_TRUE(QDir(t.dir.path()).mkpath(folder));
    const QString db = t.path(folder + QStringLiteral("/Help text.v2.mdb"));
    makeHelpTextDb(db, false);
    t.ctx.state.helpTextDB = db;
    const QString base = t.path(folder + QStringLiteral("/Help text.v2_BACKUP"));
    const QByteArray first = readFileBytes(db);

    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, base + QStringLiteral(".sav"));
    openRW(db)->exec(QStringLiteral("UPDATE DBSys SET Data = '300' WHERE Item = 'MaxLenAlarm'"));
    const QByteArray second = readFileBytes(db);
    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, base + QStringLiteral("1.sav"));
    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, base + QStringLiteral("2.sav"));

    EXPECT_EQ(readFileBytes(base + QStringLiteral(".sav")), first);
    EXPECT_EQ(readFileBytes(base + QStringLiteral("1.sav")), second);
    EXPECT_NE(first, second);
    // The numbers do not run out.
    for (int n = 3; n <= 9999; ++n)
        writeFileBytes(base + QString::number(n) + QStringLiteral(".sav"), {});
    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, base + QStringLiteral("10000.sav"));
    EXPECT_TRUE(t.ui.shown.empty());

    // A failed copy is named with its cause, here the missing database.
    t.ctx.state.helpTextDB = t.path(QStringLiteral("Gone.mdb"));
    EXPECT_FALSE(CreateDBBackup(t.ctx));
    const QString failed = QStringLiteral("Could not create backup-database") + LFCR +
                           QStringLiteral("Error on copying ") + LFCR + t.ctx.state.helpTextDB +
                           QStringLiteral(" to ") + LFCR + t.path(QStringLiteral("Gone_BACKUP.sav")) + LFCR;
    ASSERT_EQ(t.ui.shown.size(), 1u);
    EXPECT_TRUE(t.ui.shown[0].text.startsWith(failed)) << t.ui.shown[0].text.toStdString();
    EXPECT_TRUE(t.ui.shown[0].text.mid(failed.size()).contains(QStringLiteral("Gone.mdb")));
}

TEST(GetMachineList, NamesRoundTripExactlyAndFreeRowsAreNoMachine)
{
    DbTestContext t;
    t.ctx.state.helpTextDB = t.newHelpDb();
    QStringList names{QStringLiteral("He said \"hi\""),
                      QStringLiteral("100%_done"),
                      QStringLiteral("a/b\\c"),
                      QStringLiteral("  padded  "),
                      QStringLiteral("Übermaß 包装機"),
                      QStringLiteral("abc"),
                      QStringLiteral("O'Brien; DROP TABLE DBSys")};
    {
        auto d = openRW(t.ctx.state.helpTextDB);
        for (int i = 0; i < names.size(); ++i)
            d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = ? WHERE AlarmID = ?"),
                    {names[i], i * 3 + 1});
        // One machine whatever the case it is written in.
        d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = 'ABC' WHERE AlarmID = 100"));
    }
    QStringList list{QStringLiteral("kept")};
    EXPECT_EQ(GetMachineList(t.ctx, list), names.size());
    ASSERT_EQ(list.takeFirst(), QStringLiteral("kept"));
    list.replaceInStrings(QStringLiteral("ABC"), QStringLiteral("abc"));
    list.sort();
    names.sort();
    EXPECT_EQ(list, names);
}

// The program must write, so a database picked "read-only" is used writable and the user is told.
TEST(ConnectToDB_Helptext, ReadOnlyTickIsOverruledWithAWarningAndCancelGivesNothing)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    t.ui.push(OpenFileChoice{db, true});
    EXPECT_EQ(ConnectToDB_Helptext(t.ctx), db);
    t.ui.push(OpenFileChoice{db, false});
    EXPECT_EQ(ConnectToDB_Helptext(t.ctx, QStringLiteral("Pick one")), db);
    t.ui.push(std::monostate{});
    EXPECT_EQ(ConnectToDB_Helptext(t.ctx), QString());

    ASSERT_EQ(t.ui.shown.size(), 4u);
    EXPECT_EQ(t.ui.shown[0].title, QStringLiteral("Select helptext database"));
    EXPECT_EQ(t.ui.shown[1].text, QStringLiteral("Cannot open as \"Writeonly.\"\n\rProtection removed!"));
    EXPECT_EQ(t.ui.shown[1].icon, Icon::Critical);
    EXPECT_EQ(t.ui.shown[2].title, QStringLiteral("Pick one"));
    EXPECT_EQ(t.ui.shown[3].kind, QStringLiteral("openFile"));
}
