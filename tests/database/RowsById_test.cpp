// Statements narrowed to the rowids of an ID touch the rows the statement alone
// would: in a table without any key, with an ID twice, none, or added meanwhile.
#include "database/HelpTextFixture.h"
#include "database/RowsById.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

TEST(RowsById, TouchesTheRowsTheStatementAloneWould)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("plain.sqlite"));
    auto db = Database::create(path);
    db->exec(QStringLiteral("CREATE TABLE T (Id INTEGER, Language INTEGER, Text TEXT)"));
    db->exec(QStringLiteral("INSERT INTO T VALUES (1, 7, 'a'), (2, 7, 'b'), (2, 7, 'c'), (2, 8, 'd'), (NULL, 7, 'e')"));
    RowsById rows(*db, QStringLiteral("T"), QStringLiteral("Id"), 7);
    rows.insert(QStringLiteral("INSERT INTO T VALUES (?, ?, 'f')"), {4, 7}, 4);
    const QString update = QStringLiteral("UPDATE T SET Text = Text || '!' WHERE Language = ? AND Id = ?"),
                  select = QStringLiteral("SELECT Text FROM T WHERE Language = ? AND Id = ?;");
    const struct {
        qlonglong id;
        int touched;
    } cases[] = {{1, 1}, {2, 2}, {3, 0}, {4, 1}};
    for (const auto &c : cases) {
        EXPECT_EQ(rows.exec(update, {7, c.id}, c.id), c.touched) << c.id;
        EXPECT_EQ(rows.query(select, {7, c.id}, c.id).recordCount(), c.touched) << c.id;
    }
    EXPECT_EQ(dump(path, QStringLiteral("SELECT Text FROM T ORDER BY rowid")),
              (QStringList{"a!", "b!", "c!", "d", "e", "f!"}));
}
