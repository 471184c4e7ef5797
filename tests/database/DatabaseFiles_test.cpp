// Opening by path: the format comes from the header; bad, missing and write-protected
// files give DbError, never a crash or a quietly read-only connection.
#include "database/Database.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ht;

namespace
{

// Runs `body` with an ordinary user's rights (root ignores file permissions); the exit
// code of a forked child is its result. 77: the rights could not be dropped.
int runUnprivileged(const std::function<int()> &body)
{
    if (geteuid() != 0)
        return body();
    const pid_t pid = fork();
    if (pid == 0) {
        if (setgid(65534) != 0 || setuid(65534) != 0)
            _exit(77);
        int rc = 99;
        try {
            rc = body();
        } catch (...) {
        }
        _exit(rc);
    }
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

// 0: opened for writing and wrote; 1: open threw DbError; 2: the write threw DbError.
int tryToWrite(const QString &path)
{
    std::unique_ptr<Database> db;
    try {
        db = Database::open(path, Database::Mode::ReadWrite);
    } catch (const DbError &) {
        return 1;
    }
    try {
        db->exec(QStringLiteral("INSERT INTO T VALUES (2)"));
    } catch (const DbError &) {
        return 2;
    }
    return 0;
}

int tryToRead(const QString &path)
{
    try {
        return Database::open(path, Database::Mode::ReadOnly)->query(QStringLiteral("SELECT * FROM T")).recordCount();
    } catch (const DbError &) {
        return 50;
    }
}

struct DatabaseFiles : ::testing::Test {
    QTemporaryDir dir;
    QString sqlitePath;
    void SetUp() override
    {
        sqlitePath = dir.filePath(QStringLiteral("good.db"));
        auto db = Database::create(sqlitePath);
        db->exec(QStringLiteral("CREATE TABLE T (V INTEGER)"));
        db->exec(QStringLiteral("INSERT INTO T VALUES (1)"));
    }
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = dir.filePath(name);
        test::writeFileBytes(path, bytes);
        return path;
    }
};

} // namespace

TEST_F(DatabaseFiles, FormatComesFromTheHeaderNotTheName)
{
    const QString jet = test::sharedTestData() + QStringLiteral("/jet/test2V2000.mdb");
    const QByteArray sqlite = test::readFileBytes(sqlitePath);
    QByteArray jetHeaderLate = test::readFileBytes(jet);
    jetHeaderLate.prepend('x'); // the engine name one byte too far on
    const struct {
        QString path;
        DbFormat expected;
    } cases[] = {
        {sqlitePath, DbFormat::SQLite},
        {write(QStringLiteral("sqlite.mdb"), sqlite), DbFormat::SQLite},
        {jet, DbFormat::Jet},
        {write(QStringLiteral("jet.db"), test::readFileBytes(jet)), DbFormat::Jet},
        {write(QStringLiteral("late.mdb"), jetHeaderLate), DbFormat::Unknown},
        {write(QStringLiteral("empty.mdb"), {}), DbFormat::Unknown},
        {write(QStringLiteral("text.db"), "SQLite format 2\n"), DbFormat::Unknown},
        {write(QStringLiteral("short.db"), sqlite.left(10)), DbFormat::Unknown},
        {dir.filePath(QStringLiteral("missing.db")), DbFormat::Missing},
        {dir.path(), DbFormat::Missing},
    };
    for (const auto &c : cases)
        EXPECT_EQ(detectDatabaseFormat(c.path), c.expected) << c.path.toStdString();
}

TEST_F(DatabaseFiles, BadFilesAreRefusedWithDbError)
{
    const QByteArray good = test::readFileBytes(sqlitePath);
    const QString paths[] = {
        dir.filePath(QStringLiteral("missing.db")),
        write(QStringLiteral("zero.db"), {}),
        write(QStringLiteral("text.db"), QByteArray("just some text, not a database\n").repeated(200)),
        write(QStringLiteral("header.db"), good.left(100)),
    };
    for (const QString &path : paths) {
        for (auto mode : {Database::Mode::ReadOnly, Database::Mode::ReadWrite})
            EXPECT_THROW(Database::open(path, mode), DbError) << path.toStdString();
    }
    EXPECT_FALSE(QFile::exists(paths[0])); // opening never creates a file
}

TEST_F(DatabaseFiles, TruncatedOrScribbledSqliteFilesFailCleanly)
{
    // Grow the file to several pages so that truncation can hit table pages.
    {
        auto db = Database::open(sqlitePath);
        Database::Transaction tx(*db);
        for (int i = 0; i < 2000; ++i)
            db->exec(QStringLiteral("INSERT INTO T VALUES (?)"), {i});
        tx.commit();
    }
    const QByteArray good = test::readFileBytes(sqlitePath);
    ASSERT_GT(good.size(), 8192);
    int refused = 0;
    for (qsizetype cut : {qsizetype(512), qsizetype(4096), qsizetype(6000), good.size() - 4096, good.size() - 1}) {
        const QString path = write(QStringLiteral("cut%1.db").arg(cut), good.left(cut));
        try {
            auto db = Database::open(path, Database::Mode::ReadOnly);
            db->query(QStringLiteral("SELECT count(*), sum(V) FROM T"));
        } catch (const DbError &) {
            ++refused;
        }
    }
    QByteArray scribbled = good;
    for (qsizetype i = 4096; i < scribbled.size(); i += 97)
        scribbled[i] = char(0xA5);
    const QString path = write(QStringLiteral("scribbled.db"), scribbled);
    try {
        auto db = Database::open(path, Database::Mode::ReadOnly);
        db->query(QStringLiteral("SELECT count(*), sum(V) FROM T"));
    } catch (const DbError &) {
        ++refused;
    }
    EXPECT_GE(refused, 3); // the cuts inside the data pages cannot all go unnoticed
}

TEST_F(DatabaseFiles, CreateRefusesExistingFilesAndWritesAHeader)
{
    EXPECT_THROW(Database::create(sqlitePath), DbError);
    EXPECT_THROW(Database::create(dir.filePath(QStringLiteral("no/such/folder/x.db"))), DbError);
    const QString fresh = dir.filePath(QStringLiteral("fresh.db"));
    Database::create(fresh).reset();
    EXPECT_EQ(detectDatabaseFormat(fresh), DbFormat::SQLite);
    EXPECT_TRUE(Database::open(fresh)->tables().isEmpty());
}

TEST_F(DatabaseFiles, ReadOnlyModeRefusesWrites)
{
    auto db = Database::open(sqlitePath, Database::Mode::ReadOnly);
    EXPECT_THROW(db->exec(QStringLiteral("INSERT INTO T VALUES (2)")), DbError);
    EXPECT_THROW(db->addColumn(QStringLiteral("T"), QStringLiteral("W"), QStringLiteral("TEXT")), DbError);
    EXPECT_EQ(db->query(QStringLiteral("SELECT * FROM T")).recordCount(), 1);
}

TEST_F(DatabaseFiles, WriteProtectedFileOrFolderFailsAtOpen)
{
    // An ordinary user must be able to reach the files at all.
    QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                                          QFileDevice::ReadOther | QFileDevice::ExeOther | QFileDevice::WriteOther);
    const auto readOnly = QFileDevice::ReadOwner | QFileDevice::ReadOther;
    const auto readWrite = readOnly | QFileDevice::WriteOwner | QFileDevice::WriteOther;

    ASSERT_TRUE(QFile::setPermissions(sqlitePath, readWrite));
    ASSERT_EQ(runUnprivileged([&] { return tryToWrite(sqlitePath); }), 0) << "the writable case must work";

    ASSERT_TRUE(QFile::setPermissions(sqlitePath, readOnly));
    EXPECT_EQ(runUnprivileged([&] { return tryToWrite(sqlitePath); }), 1) << "write-protected file";
    EXPECT_EQ(runUnprivileged([&] { return tryToRead(sqlitePath); }), 2) << "still readable";

    // A writable file in a write-protected folder: SQLite could not create its journal.
    QDir(dir.path()).mkdir(QStringLiteral("locked"));
    const QString locked = dir.filePath(QStringLiteral("locked/db.sqlite"));
    ASSERT_TRUE(QFile::copy(sqlitePath, locked));
    ASSERT_TRUE(QFile::setPermissions(locked, readWrite));
    ASSERT_TRUE(QFile::setPermissions(dir.filePath(QStringLiteral("locked")),
                                      QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::WriteOwner |
                                          QFileDevice::ReadOther | QFileDevice::ExeOther));
    EXPECT_EQ(runUnprivileged([&] { return tryToWrite(locked); }), 1) << "write-protected folder";
    EXPECT_EQ(runUnprivileged([&] { return tryToRead(locked); }), 2);
}
