// The template databases made at build time and the tool that makes them.
#include "database/HelpTextDatabase.h"
#include "database/HelpTextFixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

int runTool(const QStringList &args)
{
    QProcess p;
    p.start(binDir() + QStringLiteral("/helptext-mkdb"), args);
    return p.waitForFinished(60000) ? p.exitCode() : -1;
}

// Per block of `n` rows: first and last ID, first and last number, the machine types.
QStringList blocks(const QString &db, const char *table, const char *id, const char *no, int n)
{
    return dump(db, QStringLiteral("SELECT (%1 - 1) / %3, MIN(%1), MAX(%1), MIN(%2), MAX(%2), "
                                   "group_concat(DISTINCT MachineType) FROM %4 GROUP BY 1 ORDER BY 1")
                        .arg(QLatin1String(id), QLatin1String(no), QString::number(n), QLatin1String(table)));
}

class TemplateDatabase : public ::testing::TestWithParam<bool>
{
};

} // namespace

TEST_P(TemplateDatabase, IsAcceptedWithFiveFreeBlocksAndNoLanguage)
{
    const bool materialChange = GetParam();
    const QString name = materialChange ? QStringLiteral("HelpTextMitMaterialchange.mdb")
                                        : QStringLiteral("HelpTextOhneMaterialchange.mdb");
    // In a folder with quotes, percent signs and non-ASCII letters; the second case runs on
    // the machine PC, where the path is not saved.
    DbTestContext t;
    const QString folder = QStringLiteral("Mäschine \"A\" 100% ' machine");
    ASSERT_TRUE(QDir(t.dir.path()).mkpath(folder));
    const QString db = t.path(folder + u'/' + name);
    ASSERT_TRUE(QFile::copy(binDir() + u'/' + name, db)) << "made by the build beside the programs";
    ASSERT_EQ(detectDatabaseFormat(db), DbFormat::Jet) << "an Access file, as the operator panel reads it";
    t.ctx.state.materialChangePresent = !materialChange;
    t.ctx.state.runningOnMachinePC = materialChange;

    EXPECT_EQ(CheckConnection(t.ctx, db), db);
    EXPECT_EQ(t.ctx.state.helpTextDB, db);
    EXPECT_EQ(t.ctx.state.materialChangePresent, materialChange);
    EXPECT_EQ(t.ctx.state.maxItems, (std::array<long, 4>{0, 256, 256, 1000}));
    EXPECT_EQ(t.savedHelpTextDb(), materialChange ? QString() : db);
    EXPECT_TRUE(t.ui.shown.empty());
    EXPECT_TRUE(t.ctx.state.lastBackupPath.isEmpty()) << "nothing to rebuild, so no backup";
    EXPECT_EQ(dump(db, QStringLiteral("SELECT Item, Data FROM DBSys ORDER BY Item")),
              (QStringList{QStringLiteral("MaxLenAlarm|256"), QStringLiteral("MaxLenMaterialChange|1000"),
                           QStringLiteral("MaxLenWarning|256")}));
    QStringList alarmBlocks, mcBlocks;
    for (int b = 0; b < 5; ++b) {
        alarmBlocks << QStringLiteral("%1|%2|%3|1|256|0").arg(b).arg(b * 256 + 1).arg(b * 256 + 256);
        mcBlocks << QStringLiteral("%1|%2|%3|1|1000|0").arg(b).arg(b * 1000 + 1).arg(b * 1000 + 1000);
    }
    EXPECT_EQ(blocks(db, "AlarmDefinition", "AlarmID", "AlarmNo", 256), alarmBlocks);
    EXPECT_EQ(blocks(db, "WarningDefinition", "WarningID", "WarningNo", 256), alarmBlocks);
    if (materialChange)
        EXPECT_EQ(blocks(db, "MaterialChangeDefinition", "MaterialChangeID", "MaterialChangeNo", 1000), mcBlocks);
    EXPECT_EQ(dump(db, QStringLiteral("SELECT (SELECT COUNT(*) FROM Discription) + (SELECT COUNT(*) FROM AlarmText) "
                                      "+ (SELECT COUNT(*) FROM WarningText)")),
              QStringList{QStringLiteral("0")});
    // No language of its own: an import creates its language with the number of
    // the language definitions in use, which no template can know.
    EXPECT_EQ(dump(db, QStringLiteral("SELECT COUNT(*) FROM Language")), QStringList{QStringLiteral("0")});
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutMaterialChange, TemplateDatabase, ::testing::Bool());

TEST(MakeDatabaseTool, NeverOverwritesAndLeavesNothingOnFailure)
{
    DbTestContext t;
    const QString out = t.path(QStringLiteral("Languages.sqlite"));
    ASSERT_EQ(runTool({out, schemaFile(QStringLiteral("languages.sql"))}), 0);
    EXPECT_TRUE(openRW(out)->hasColumn(QStringLiteral("LookupLanguages"), QStringLiteral("SubstBy")));
    const QByteArray made = readFileBytes(out);
    EXPECT_EQ(runTool({out, schemaFile(QStringLiteral("indextext.sql"))}), 2);
    EXPECT_EQ(readFileBytes(out), made);

    // The second script fails half-way: no file is left.
    const QString bad =
        writeIn(t.dir, QStringLiteral("bad.sql"), "CREATE TABLE Extra (x);\nINSERT INTO Nowhere VALUES (1);\n");
    const QString failed = t.path(QStringLiteral("Failed.sqlite"));
    EXPECT_EQ(runTool({failed, schemaFile(QStringLiteral("indextext.sql")), bad}), 1);
    EXPECT_FALSE(QFile::exists(failed));
}
