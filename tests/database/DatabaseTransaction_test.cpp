// Writes framed by Database::Transaction are all-or-nothing, nested scopes included.
#include "database/Database.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace ht;
using namespace Qt::StringLiterals;

namespace
{

struct DatabaseTransaction : ::testing::Test {
    QTemporaryDir dir;
    std::unique_ptr<Database> db = Database::create(dir.filePath(u"tx.db"_s));
    void SetUp() override { db->exec(u"CREATE TABLE T (V INTEGER)"_s); }
    void insert(int v) { db->exec(u"INSERT INTO T (V) VALUES (?)"_s, {v}); }
    QVariantList values()
    {
        QVariantList list;
        for (const QVariantList &row : db->query(u"SELECT V FROM T ORDER BY V"_s).rows())
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
            db->exec(u"INSERT INTO Missing VALUES (1)"_s);
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
