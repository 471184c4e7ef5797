// Choosing, checking, backing up and listing the help-text database, each on a
// real SQLite file.
#include "common/IniFile.h"
#include "common/Messages.h"
#include "database/HelpTextDatabase.h"
#include "database/HelpTextFixture.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

const QString kFailedTitle = QStringLiteral("Connection failed!");

QString failureText(const QString &path)
{
    return QStringLiteral("Error connecting Database \"") + path +
           QStringLiteral("\"! Database either has wrong structure or is writeprotected.");
}

QStringList filesIn(const QString &dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

QString savedHelpTextDb(const DbTestContext &t)
{
    return profile::readString(t.ini(), QStringLiteral("Setup"), QStringLiteral("StandardHelpTextDB"), QString());
}

} // namespace

class CheckConnectionTemplates : public ::testing::TestWithParam<bool>
{
};

TEST_P(CheckConnectionTemplates, AcceptsAFreshDatabaseAndReadsItsShape)
{
    DbTestContext t;
    const bool materialChange = GetParam();
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, materialChange);
    t.ctx.state.materialChangePresent = !materialChange;

    EXPECT_EQ(CheckConnection(t.ctx, db), db);
    EXPECT_EQ(t.ctx.state.helpTextDB, db);
    EXPECT_EQ(t.ctx.state.materialChangePresent, materialChange);
    EXPECT_EQ(t.ctx.state.maxItems[KindAlarms], 256);
    EXPECT_EQ(t.ctx.state.maxItems[KindWarnings], 256);
    EXPECT_EQ(t.ctx.state.maxItems[KindMaterialChange], 1000);
    EXPECT_EQ(savedHelpTextDb(t), db);
    EXPECT_TRUE(t.ui.shown.empty());
    EXPECT_TRUE(t.ctx.state.lastBackupPath.isEmpty()) << "nothing to rebuild, so no backup";
}

TEST_P(CheckConnectionTemplates, OnTheMachinePcThePathIsNotSaved)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, GetParam());
    t.ctx.state.runningOnMachinePC = true;
    EXPECT_EQ(CheckConnection(t.ctx, db), db);
    EXPECT_FALSE(QFile::exists(t.ini()));
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutMaterialChange, CheckConnectionTemplates, ::testing::Bool());

// Each case spoils a good database in one way.
struct BadInput {
    const char *name;
    std::function<void(const QString &path)> spoil;
};

void PrintTo(const BadInput &c, std::ostream *os)
{
    *os << c.name;
}

class CheckConnectionBadInput : public ::testing::TestWithParam<BadInput>
{
};

TEST_P(CheckConnectionBadInput, FailsWithItsMessageAndChangesNothing)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Bad.mdb"));
    makeHelpTextDb(db);
    GetParam().spoil(db);
    const QByteArray before = readFileBytes(db);
    const QStringList filesBefore = filesIn(t.dir.path());
    t.ctx.state.helpTextDB = QStringLiteral("previous.mdb");

    EXPECT_EQ(CheckConnection(t.ctx, db), QString());

    EXPECT_EQ(t.ctx.state.helpTextDB, QStringLiteral("previous.mdb"));
    ASSERT_EQ(t.ui.shown.size(), 1u);
    EXPECT_EQ(t.ui.shown[0].text, failureText(db));
    EXPECT_EQ(t.ui.shown[0].title, kFailedTitle);
    EXPECT_EQ(t.ui.shown[0].icon, Icon::Critical);
    EXPECT_EQ(readFileBytes(db), before);
    EXPECT_EQ(filesIn(t.dir.path()), filesBefore);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CheckConnectionBadInput,
    ::testing::Values(
        BadInput{"NotADatabase", [](const QString &p) { writeFileBytes(p, "AlarmDefinition;WarningText\r\n"); }},
        BadInput{"Missing", [](const QString &p) { QFile::remove(p); }},
        BadInput{"ZeroBytes", [](const QString &p) { writeFileBytes(p, QByteArray()); }},
        BadInput{"Truncated", [](const QString &p) { writeFileBytes(p, readFileBytes(p).left(8192)); }},
        BadInput{"MissingTable", [](const QString &p) { openRW(p)->exec(QStringLiteral("DROP TABLE Discription")); }},
        BadInput{
            "MissingColumn",
            [](const QString &p) { openRW(p)->dropColumn(QStringLiteral("Language"), QStringLiteral("KBLayout")); }},
        BadInput{"MaterialChangeWithoutTexts",
                 [](const QString &p) { openRW(p)->exec(QStringLiteral("DROP TABLE MaterialChangeText")); }},
        BadInput{"NumericMachineTypeButNoDiscription",
                 [](const QString &p) {
                     auto db = openRW(p);
                     db->changeColumnType(QStringLiteral("AlarmDefinition"), QStringLiteral("MachineType"),
                                          QStringLiteral("INTEGER"));
                     db->exec(QStringLiteral("DROP TABLE Discription"));
                 }},
        // SQLite refuses to write a file whose header asks for a newer writer: a
        // write-protected database even for root.
        BadInput{"WriteProtected",
                 [](const QString &p) {
                     QByteArray bytes = readFileBytes(p);
                     bytes[18] = 3;
                     writeFileBytes(p, bytes);
                 }}),
    [](const ::testing::TestParamInfo<BadInput> &info) { return std::string(info.param.name); });

TEST(CheckConnection, NumericMachineTypesBecomeTextKeepingTheirValues)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Old.mdb"));
    makeHelpTextDb(db);
    {
        auto d = openRW(db);
        d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = '5' WHERE AlarmID <= 256"));
        d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = '17' WHERE AlarmID BETWEEN 513 AND 768"));
        d->exec(QStringLiteral("UPDATE WarningDefinition SET MachineType = '5' WHERE WarningID <= 256"));
        for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"})
            d->changeColumnType(QString::fromLatin1(table), QStringLiteral("MachineType"), QStringLiteral("INTEGER"));
    }
    const QStringList before =
        dump(db, QStringLiteral("SELECT AlarmID, MachineType, AlarmNo FROM AlarmDefinition ORDER BY AlarmID"));
    ASSERT_EQ(dump(db, QStringLiteral("SELECT DISTINCT typeof(MachineType) FROM AlarmDefinition")),
              QStringList{QStringLiteral("integer")});

    ASSERT_EQ(CheckConnection(t.ctx, db), db);

    for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"}) {
        EXPECT_EQ(dump(db, QStringLiteral("SELECT DISTINCT typeof(MachineType) FROM ") + QString::fromLatin1(table)),
                  QStringList{QStringLiteral("text")})
            << table;
    }
    EXPECT_EQ(dump(db, QStringLiteral("SELECT AlarmID, MachineType, AlarmNo FROM AlarmDefinition ORDER BY AlarmID")),
              before);
    QStringList machines;
    EXPECT_EQ(GetMachineList(t.ctx, machines), 2);
    EXPECT_EQ(machines, (QStringList{QStringLiteral("17"), QStringLiteral("5")}));
}

TEST(CheckConnection, AnInterruptedConversionIsFinished)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Half.mdb"));
    makeHelpTextDb(db);
    {
        // What a conversion leaves when it stops after creating the new column.
        auto d = openRW(db);
        d->renameColumn(QStringLiteral("WarningDefinition"), QStringLiteral("MachineType"),
                        QStringLiteral("MachineType_Old"));
        d->addColumn(QStringLiteral("WarningDefinition"), QStringLiteral("MachineType"), QStringLiteral("TEXT"));
        d->exec(QStringLiteral("UPDATE WarningDefinition SET MachineType = MachineType_Old WHERE WarningID <= 10"));
        d->exec(QStringLiteral("UPDATE WarningDefinition SET MachineType_Old = 'M7' WHERE WarningID > 1000"));
    }
    ASSERT_EQ(CheckConnection(t.ctx, db), db);
    auto d = Database::open(db, Database::Mode::ReadOnly);
    EXPECT_FALSE(d->hasColumn(QStringLiteral("WarningDefinition"), QStringLiteral("MachineType_Old")));
    EXPECT_EQ(dump(db, QStringLiteral("SELECT MachineType, COUNT(*) FROM WarningDefinition GROUP BY 1 ORDER BY 1")),
              (QStringList{QStringLiteral("0|1000"), QStringLiteral("M7|280")}));
}

// A Jet file stands in for an Access help-text database: it cannot be written,
// so editing goes to "<base>.sqlite" beside it.
class JetHelpText : public ::testing::Test
{
  protected:
    DbTestContext t;
    QString jet = t.path(QStringLiteral("Machine.mdb"));
    QString sqlite = t.path(QStringLiteral("Machine.sqlite"));
    QByteArray jetBytes;
    void SetUp() override
    {
        ASSERT_TRUE(QFile::copy(sharedTestData() + QStringLiteral("/jet/testUnicodeCompV2003.mdb"), jet));
        jetBytes = readFileBytes(jet);
    }
};

TEST_F(JetHelpText, AnEarlierConversionIsUsedAndNamed)
{
    makeHelpTextDb(sqlite);
    const QByteArray sqliteBytes = readFileBytes(sqlite);

    EXPECT_EQ(CheckConnection(t.ctx, jet), sqlite);

    EXPECT_EQ(t.ctx.state.helpTextDB, sqlite);
    EXPECT_EQ(savedHelpTextDb(t), sqlite);
    ASSERT_EQ(t.ui.shown.size(), 1u);
    EXPECT_TRUE(t.ui.shown[0].text.contains(QStringLiteral("\"") + sqlite + QStringLiteral("\"")));
    EXPECT_EQ(t.ui.shown[0].icon, Icon::Information);
    EXPECT_EQ(readFileBytes(jet), jetBytes);
    EXPECT_EQ(readFileBytes(sqlite), sqliteBytes) << "nothing needed repair";
}

TEST_F(JetHelpText, AFileInTheWayIsNeverOverwritten)
{
    writeFileBytes(sqlite, "my notes, not a database");
    EXPECT_EQ(CheckConnection(t.ctx, jet), QString());
    EXPECT_EQ(readFileBytes(sqlite), QByteArray("my notes, not a database"));
    EXPECT_EQ(t.ui.messageTexts(), QStringList{failureText(jet)});
}

TEST_F(JetHelpText, AConversionThatFailsTheCheckIsRemovedAgain)
{
    // The Jet file converts, but it is no help-text database.
    EXPECT_EQ(CheckConnection(t.ctx, jet), QString());
    EXPECT_FALSE(QFile::exists(sqlite));
    EXPECT_EQ(filesIn(t.dir.path()), QStringList{QStringLiteral("Machine.mdb")});
    EXPECT_EQ(readFileBytes(jet), jetBytes);
    EXPECT_EQ(t.ui.messageTexts(), QStringList{failureText(jet)});
}

TEST_F(JetHelpText, ReadingUsesTheJetFileItself)
{
    makeHelpTextDb(sqlite);
    // Checked as it is: this Jet file lacks the help-text tables, the conversion beside it is ignored.
    EXPECT_EQ(CheckConnection(t.ctx, jet, ConnectFor::Reading), QString());
    EXPECT_EQ(t.ui.messageTexts(), QStringList{failureText(jet)});
}

TEST(CreateDBBackup, NumbersFurtherBackupsAndKeepsTheFirst)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, false);
    t.ctx.state.helpTextDB = db;
    const QByteArray first = readFileBytes(db);

    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, t.path(QStringLiteral("Help_BACKUP.sav")));
    openRW(db)->exec(QStringLiteral("UPDATE DBSys SET Data = '300' WHERE Item = 'MaxLenAlarm'"));
    const QByteArray second = readFileBytes(db);
    ASSERT_NE(first, second);

    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, t.path(QStringLiteral("Help_BACKUP1.sav")));
    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath, t.path(QStringLiteral("Help_BACKUP2.sav")));

    EXPECT_EQ(readFileBytes(t.path(QStringLiteral("Help_BACKUP.sav"))), first);
    EXPECT_EQ(readFileBytes(t.path(QStringLiteral("Help_BACKUP1.sav"))), second);
    EXPECT_TRUE(t.ui.shown.empty());
}

TEST(CreateDBBackup, AFailedCopyIsReportedAndLoggedOnTheMachinePc)
{
    for (const bool machinePc : {false, true}) {
        DbTestContext t;
        t.ctx.state.runningOnMachinePC = machinePc;
        t.ctx.state.helpTextDB = t.path(QStringLiteral("Gone.mdb"));
        EXPECT_FALSE(CreateDBBackup(t.ctx));
        const QString text = QStringLiteral("Could not create backup-database") + LFCR +
                             QStringLiteral("Error on copying ") + LFCR + t.ctx.state.helpTextDB +
                             QStringLiteral(" to ") + LFCR + t.path(QStringLiteral("Gone_BACKUP.sav"));
        if (machinePc) {
            EXPECT_TRUE(t.ui.shown.empty());
            EXPECT_EQ(t.errorLog(), text + QStringLiteral("\r\n"));
        } else {
            EXPECT_EQ(t.ui.messageTexts(), QStringList{text});
        }
        EXPECT_TRUE(t.ctx.state.lastBackupPath.isEmpty());
    }
}

TEST(GetMachineList, NamesRoundTripExactlyAndFreeRowsAreNoMachine)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    const QStringList names{QStringLiteral("He said \"hi\""), QStringLiteral("100%_done"),
                            QStringLiteral("a/b\\c"),         QStringLiteral("  padded  "),
                            QStringLiteral("Übermaß 包装機"), QStringLiteral("O'Brien; DROP TABLE DBSys")};
    {
        auto d = openRW(db);
        for (int i = 0; i < names.size(); ++i)
            d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = ? WHERE AlarmID = ?"),
                    {names[i], i * 3 + 1});
        // One machine whatever the case it is written in.
        d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = 'abc' WHERE AlarmID = 100"));
        d->exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = 'ABC' WHERE AlarmID = 101"));
    }
    t.ctx.state.helpTextDB = db;
    QStringList list{QStringLiteral("kept")};
    EXPECT_EQ(GetMachineList(t.ctx, list), names.size() + 1);
    ASSERT_EQ(list.takeFirst(), QStringLiteral("kept"));
    EXPECT_EQ(list.filter(QStringLiteral("abc"), Qt::CaseInsensitive).size(), 1);
    list.removeIf([](const QString &s) { return s.compare(QLatin1String("abc"), Qt::CaseInsensitive) == 0; });
    QStringList expected = names;
    expected.sort();
    list.sort();
    EXPECT_EQ(list, expected);
}

TEST(GetLanguageList, NamesInRecordOrder)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db, false);
    addLanguage(db, 1041, QStringLiteral("日本語 \"JP\""));
    addLanguage(db, 1031, QStringLiteral("GERMAN"));
    addLanguage(db, 1033, QStringLiteral("  ENGLISH "));
    t.ctx.state.helpTextDB = db;
    QStringList list;
    EXPECT_EQ(GetLanguageList(t.ctx, list), 3);
    EXPECT_EQ(list,
              (QStringList{QStringLiteral("GERMAN"), QStringLiteral("  ENGLISH "), QStringLiteral("日本語 \"JP\"")}));
}

TEST(ConnectToDB_Helptext, ReturnsTheChoiceAndWarnsAboutTheReadOnlyBox)
{
    struct Case {
        ScriptedUserInterface::Reply reply;
        QString expected;
        bool warned;
    };
    const QString chosen = QStringLiteral("/data/Help.mdb");
    const Case cases[] = {{OpenFileChoice{chosen, false}, chosen, false},
                          {OpenFileChoice{chosen, true}, chosen, true},
                          {std::monostate{}, QString(), false}};
    for (const Case &c : cases) {
        DbTestContext t;
        t.ctx.state.helpTextDB = QStringLiteral("/data/Old.mdb");
        t.ui.push(c.reply);
        EXPECT_EQ(ConnectToDB_Helptext(t.ctx), c.expected);
        ASSERT_GE(t.ui.shown.size(), 1u);
        EXPECT_EQ(t.ui.shown[0].title, QStringLiteral("Select helptext database"));
        EXPECT_TRUE(t.ui.shown[0].text.startsWith(
            QStringLiteral("MS Access *.mdb (NT-Version)|*.mdb|MS Access *.vws (XP-Version)|*.vws")));
        if (c.warned) {
            ASSERT_EQ(t.ui.shown.size(), 2u);
            EXPECT_EQ(t.ui.shown[1].text, QStringLiteral("Cannot open as \"Writeonly.\"\n\rProtection removed!"));
            EXPECT_EQ(t.ui.shown[1].icon, Icon::Critical);
        } else {
            EXPECT_EQ(t.ui.shown.size(), 1u);
        }
    }
}

TEST(CheckConnection, OddCharactersInThePathAreKept)
{
    DbTestContext t;
    ASSERT_TRUE(QDir(t.dir.path()).mkpath(QStringLiteral("Mäschine \"A\" 100% ' machine")));
    const QString db = t.path(QStringLiteral("Mäschine \"A\" 100% ' machine/Help text.v2.mdb"));
    makeHelpTextDb(db);
    EXPECT_EQ(CheckConnection(t.ctx, db), db);
    EXPECT_EQ(savedHelpTextDb(t), db);
    ASSERT_TRUE(CreateDBBackup(t.ctx));
    EXPECT_EQ(t.ctx.state.lastBackupPath,
              t.path(QStringLiteral("Mäschine \"A\" 100% ' machine/Help text.v2_BACKUP.sav")));
}

TEST(CheckConnection, BringsFontsAndTooShortTablesUpToDate)
{
    DbTestContext t;
    const QString db = t.path(QStringLiteral("Help.mdb"));
    makeHelpTextDb(db);
    addLanguage(db, 1031, QStringLiteral("GERMAN"), QStringLiteral("Arial 8"));
    openRW(db)->exec(QStringLiteral("UPDATE DBSys SET Data = '300' WHERE Item = 'MaxLenAlarm'"));
    const QString lookup = t.path(QStringLiteral("Languages.mdb"));
    makeLookupDb(lookup,
                 {{1031, QStringLiteral("GERMAN"), QStringLiteral("Arial 10 400"), QStringLiteral("00000407"), 1252}});
    t.ctx.state.langLookupDB = lookup;

    ASSERT_EQ(CheckConnection(t.ctx, db), db);

    EXPECT_EQ(t.ctx.state.maxItems[KindAlarms], 300);
    EXPECT_EQ(dump(db, QStringLiteral("SELECT COUNT(*), MAX(AlarmID) FROM AlarmDefinition")),
              QStringList{QStringLiteral("1500|1500")});
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Font, KBLayout FROM Language")),
              QStringList{QStringLiteral("Arial 10 400|00000407")});
    EXPECT_EQ(t.ctx.state.lastBackupPath, t.path(QStringLiteral("Help_BACKUP.sav")));
    // The backup holds the database as it was before the rebuild (fonts already brought up to date).
    EXPECT_EQ(dump(t.ctx.state.lastBackupPath, QStringLiteral("SELECT COUNT(*) FROM AlarmDefinition")),
              QStringList{QStringLiteral("1280")});
}
