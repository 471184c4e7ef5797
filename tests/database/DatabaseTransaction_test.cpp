// Writes framed by Database::Transaction are all-or-nothing.
#include "database/Database.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace ht;

namespace
{

struct DatabaseTransaction : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db;
    void SetUp() override
    {
        db = Database::create(dir.filePath(QStringLiteral("tx.db")));
        db->exec(QStringLiteral("CREATE TABLE T (V INTEGER)"));
    }
    int rows() { return db->query(QStringLiteral("SELECT V FROM T")).recordCount(); }
    void insert(int v) { db->exec(QStringLiteral("INSERT INTO T (V) VALUES (?)"), {v}); }
};

} // namespace

TEST_F(DatabaseTransaction, ExceptionLeavingTheScopeRollsBack)
{
    insert(0);
    try {
        Database::Transaction tx(*db);
        insert(1);
        insert(2);
        throw std::runtime_error("import failed half-way");
    } catch (const std::runtime_error &) {
    }
    EXPECT_EQ(rows(), 1);
    // The connection is usable and not stuck in a transaction.
    Database::Transaction tx(*db);
    insert(3);
    tx.commit();
    EXPECT_EQ(rows(), 2);
}

TEST_F(DatabaseTransaction, CommitIsDurableAcrossReopening)
{
    {
        Database::Transaction tx(*db);
        for (int i = 0; i < 10; ++i)
            insert(i);
        tx.commit();
    }
    const QString path = db->path();
    db.reset();
    db = Database::open(path);
    EXPECT_EQ(rows(), 10);
}

TEST_F(DatabaseTransaction, InnerScopeRollsBackAloneOuterCommits)
{
    {
        Database::Transaction outer(*db);
        insert(1);
        {
            Database::Transaction inner(*db);
            insert(2);
        } // not committed
        {
            Database::Transaction inner(*db);
            insert(3);
            inner.commit();
        }
        outer.commit();
    }
    const Recordset rs = db->query(QStringLiteral("SELECT V FROM T ORDER BY V"));
    ASSERT_EQ(rs.recordCount(), 2);
    EXPECT_EQ(rs.rows()[0][0].toInt(), 1);
    EXPECT_EQ(rs.rows()[1][0].toInt(), 3);
}

TEST_F(DatabaseTransaction, OuterRollbackTakesCommittedInnerWorkWithIt)
{
    {
        Database::Transaction outer(*db);
        Database::Transaction inner(*db);
        insert(1);
        inner.commit();
    }
    EXPECT_EQ(rows(), 0);
}

TEST_F(DatabaseTransaction, FailedStatementInsideLeavesNothingBehind)
{
    EXPECT_THROW(
        {
            Database::Transaction tx(*db);
            insert(1);
            db->exec(QStringLiteral("INSERT INTO Missing VALUES (1)"));
            tx.commit();
        },
        DbError);
    EXPECT_EQ(rows(), 0);
}
