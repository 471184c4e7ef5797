// Opening by path: the format comes from the header; bad, missing and write-protected
// files give DbError, never a crash or a quietly read-only connection.
#include "database/HelpTextFixture.h"

#include <QFile>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ht;
using namespace ht::test;
using namespace Qt::StringLiterals;

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
        int rc = 77;
        if (setgid(65534) == 0 && setuid(65534) == 0) {
            try {
                rc = body();
            } catch (...) {
                rc = 99;
            }
        }
        _exit(rc);
    }
    int status = 0;
    return pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// 0: opened for writing and wrote; 1: open threw DbError; 2: the write threw DbError.
int tryToWrite(const QString &path)
{
    std::unique_ptr<Database> db;
    try {
        db = Database::open(path, Database::Mode::ReadWrite);
        db->exec(u"INSERT INTO T VALUES (2)"_s);
        return 0;
    } catch (const DbError &) {
        return db ? 2 : 1;
    }
}

// The number of rows of T, or -1 for a DbError.
int rowsOrRefused(const QString &path)
{
    try {
        return Database::open(path, Database::Mode::ReadOnly)
            ->query(u"SELECT sum(V), count(*) FROM T"_s)
            .value(1)
            .toInt();
    } catch (const DbError &) {
        return -1;
    }
}

struct DatabaseFiles : ::testing::Test {
    QTemporaryDir dir;
    QString good = dir.filePath(u"good.db"_s);
    void SetUp() override
    {
        auto db = Database::create(good);
        db->exec(u"CREATE TABLE T (V INTEGER)"_s);
        db->exec(u"INSERT INTO T VALUES (1)"_s);
    }
};

} // namespace

TEST_F(DatabaseFiles, FormatComesFromTheHeaderNotTheName)
{
    const QByteArray sqlite = readFileBytes(good), jet = readFileBytes(jetTestFile(u"test2V2000"_s));
    const std::pair<QString, DbFormat> cases[] = {
        {good, DbFormat::SQLite},
        {writeIn(dir, u"sqlite.mdb"_s, sqlite), DbFormat::SQLite},
        {writeIn(dir, u"jet.db"_s, jet), DbFormat::Jet},
        {writeIn(dir, u"late.mdb"_s, 'x' + jet), DbFormat::Unknown}, // engine name one byte on
        {writeIn(dir, u"empty.mdb"_s, {}), DbFormat::Unknown},
        {writeIn(dir, u"text.db"_s, "SQLite format 2\n"), DbFormat::Unknown},
        {writeIn(dir, u"short.db"_s, sqlite.left(10)), DbFormat::Unknown},
        {dir.filePath(u"missing.db"_s), DbFormat::Missing},
        {dir.path(), DbFormat::Missing},
    };
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(detectDatabaseFormat(path), expected) << path.toStdString();
}

TEST_F(DatabaseFiles, BadFilesAreRefusedForReadingAndWriting)
{
    const QString fifo = dir.filePath(u"fifo.db"_s); // a read would wait for a writer
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    const QString refused[] = {
        dir.filePath(u"missing.db"_s),
        writeIn(dir, u"zero.db"_s, {}),
        writeIn(dir, u"text.db"_s, QByteArray("just some text, not a database\n").repeated(200)),
        writeIn(dir, u"header.db"_s, readFileBytes(good).left(100)),
        fifo,
    };
    for (const QString &path : refused) // at open, not at the first query
        for (auto mode : {Database::Mode::ReadOnly, Database::Mode::ReadWrite})
            EXPECT_THROW(Database::open(path, mode), DbError) << path.toStdString();
    EXPECT_FALSE(QFile::exists(refused[0])); // opening never creates a file
}

TEST_F(DatabaseFiles, CreateNeverOverwritesAndReadOnlyNeverWrites)
{
    EXPECT_THROW(Database::create(good), DbError);
    EXPECT_THROW(Database::create(dir.filePath(u"no/such/folder/x.db"_s)), DbError);
    auto db = Database::open(good, Database::Mode::ReadOnly);
    EXPECT_THROW(db->exec(u"INSERT INTO T VALUES (2)"_s), DbError);
    EXPECT_THROW(db->addColumn(u"T"_s, u"W"_s, u"TEXT"_s), DbError);
    EXPECT_EQ(rowsOrRefused(good), 1);
}

// SQLite itself refuses a write-protected file (see CheckConnection's cases), but opens a
// writable file in a write-protected folder and only fails to create its journal at the first write.
TEST_F(DatabaseFiles, WriteProtectedFolderFailsAtOpen)
{
    using P = QFileDevice;
    const auto readable = P::ReadOwner | P::ReadOther | P::ExeOwner | P::ExeOther;
    ASSERT_TRUE(QFile::setPermissions(good, P::ReadOther | P::WriteOther | P::ReadOwner | P::WriteOwner));
    ASSERT_TRUE(QFile::setPermissions(dir.path(), readable | P::WriteOwner | P::WriteOther)); // for an ordinary user
    ASSERT_EQ(runUnprivileged([&] { return tryToWrite(good); }), 0) << "the writable case must work";
    ASSERT_TRUE(QFile::setPermissions(dir.path(), readable | P::WriteOwner));
    EXPECT_EQ(runUnprivileged([&] { return tryToWrite(good); }), 1);
    EXPECT_EQ(runUnprivileged([&] { return rowsOrRefused(good); }), 2) << "still readable";
}
