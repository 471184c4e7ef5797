// Writes framed by Database::Transaction are all-or-nothing, nested scopes included.
#include "database/Database.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace ht;

namespace
{

struct DatabaseTransaction : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db = Database::create(dir.filePath(QStringLiteral("tx.db")));
    void SetUp() override { db->exec(QStringLiteral("CREATE TABLE T (V INTEGER)")); }
    void insert(int v) { db->exec(QStringLiteral("INSERT INTO T (V) VALUES (?)"), {v}); }
    QVariantList values()
    {
        QVariantList list;
        for (const QVariantList &row : db->query(QStringLiteral("SELECT V FROM T ORDER BY V")).rows())
            list << row[0].toInt();
        return list;
    }
};

} // namespace

TEST_F(DatabaseTransaction, AllOrNothingNestedScopesIncluded)
{
    insert(0);
    try {
        Database::Transaction tx(*db);
        insert(1);
        throw std::runtime_error("import failed half-way");
    } catch (const std::runtime_error &) {
    }
    EXPECT_THROW(
        {
            Database::Transaction tx(*db);
            insert(2);
            db->exec(QStringLiteral("INSERT INTO Missing VALUES (1)"));
            tx.commit();
        },
        DbError);
    {
        Database::Transaction outer(*db); // not stuck in a transaction
        insert(3);
        {
            Database::Transaction inner(*db);
            insert(4);
        } // not committed: rolls back alone
        Database::Transaction inner(*db);
        insert(5);
        inner.commit();
        outer.commit();
    }
    {
        Database::Transaction outer(*db);
        Database::Transaction inner(*db);
        insert(6);
        inner.commit();
    } // the outer one takes the committed inner work with it
    EXPECT_EQ(values(), (QVariantList{0, 3, 5}));
}
