// The text rows of a language, added where they are missing, are the same rows
// on a database without any index (a customer's own file) as on one with keys.
#include "database/HelpTextFixture.h"
#include "database/LanguageRows.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

TEST(LanguageRows, AFileWithoutIndexesGetsTheSameRows)
{
    QTemporaryDir dir;
    const QString keyed = dir.filePath(QStringLiteral("keyed.sqlite")),
                  plain = dir.filePath(QStringLiteral("plain.sqlite"));
    makeHelpTextDb(keyed);
    addLanguage(keyed, 1031, QStringLiteral("Deutsch"));
    QFile::copy(keyed, plain);
    dropIndexes(plain);
    ASSERT_TRUE(dump(plain, QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'index'")).isEmpty());

    const QString tables[] = {QStringLiteral("AlarmText"), QStringLiteral("WarningText"),
                              QStringLiteral("MaterialChangeText"), QStringLiteral("Discription")};
    for (const QString &path : {keyed, plain}) {
        auto db = openRW(path);
        Database::Transaction t(*db);
        // Some rows of a language lost (a repair), and a new language (a creation).
        db->exec(QStringLiteral("DELETE FROM AlarmText WHERE Language = 1031 AND Alarm_ID % 7 = 3"));
        db->exec(QStringLiteral("DELETE FROM MaterialChangeText WHERE Language = 1031 AND MaterialChange_ID > 40"));
        const LanguageRowsAdded repaired = addLanguageTextRows(*db, 1031, true);
        const LanguageRowsAdded created = addLanguageTextRows(*db, 1049, true);
        t.commit();
        EXPECT_GT(repaired.alarms, 0);
        EXPECT_GT(repaired.materialChanges, 0);
        EXPECT_GT(created.warnings, 0);
    }
    for (const QString &table : tables) {
        const QString sql = QStringLiteral("SELECT * FROM %1 ORDER BY 1, 2").arg(table);
        EXPECT_EQ(dump(plain, sql), dump(keyed, sql)) << table.toStdString();
    }
}
