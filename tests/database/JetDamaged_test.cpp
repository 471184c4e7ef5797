// Damaged Jet files (truncated, scribbled on, not Jet at all) give DbError or readable
// data, never a crash or a hang: libmdb reads them in a child process.
#include "database/Database.h"
#include "database/JetFile.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <random>

using namespace ht;

namespace
{

QByteArray sharedJet(const char *name)
{
    return test::readFileBytes(test::sharedTestData() + QStringLiteral("/jet/") + name + ".mdb");
}

// true: every table read; false: DbError. Anything else fails the test.
bool readsCompletely(const QString &path)
{
    try {
        auto db = Database::open(path, Database::Mode::ReadOnly);
        for (const QString &table : db->tables())
            db->query(QStringLiteral("SELECT * FROM %1").arg(quoteIdentifier(table)));
        return true;
    } catch (const DbError &) {
        return false;
    }
}

struct JetDamaged : ::testing::TestWithParam<const char *> {
    QTemporaryDir dir;
    void SetUp() override { JetFile::setIdleTimeout(2000); } // a hung read is cut short sooner
    void TearDown() override { JetFile::setIdleTimeout(15000); }
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = dir.filePath(name);
        test::writeFileBytes(path, bytes);
        return path;
    }
};

} // namespace

TEST_P(JetDamaged, EveryTruncationFailsCleanlyOrReads)
{
    const QByteArray good = sharedJet(GetParam());
    ASSERT_GT(good.size(), 8 * 4096);
    int refused = 0;
    for (qsizetype size = 4096; size < good.size(); size += 4096)
        refused += readsCompletely(write(QStringLiteral("cut%1.mdb").arg(size), good.left(size))) ? 0 : 1;
    // Odd sizes are refused before libmdb sees them.
    for (qsizetype size : {qsizetype(0), qsizetype(20), qsizetype(4095), good.size() - 1000})
        EXPECT_FALSE(readsCompletely(write(QStringLiteral("odd%1.mdb").arg(size), good.left(size)))) << size;
    EXPECT_GE(refused, 2) << "a file cut before its catalog cannot be read";
}

TEST_P(JetDamaged, ScribbledPagesFailCleanlyOrRead)
{
    const QByteArray good = sharedJet(GetParam());
    std::mt19937 random(20021);
    for (int round = 0; round < 30; ++round) {
        QByteArray bad = good;
        if (round % 2 == 0) { // a few bytes anywhere after the header page
            for (int i = 0; i < 20; ++i)
                bad[4096 + qsizetype(random() % quint32(bad.size() - 4096))] = char(random());
        } else { // one whole page of noise
            const qsizetype page = 1 + qsizetype(random() % quint32(bad.size() / 4096 - 1));
            for (qsizetype i = 0; i < 4096; ++i)
                bad[page * 4096 + i] = char(random());
        }
        readsCompletely(write(QStringLiteral("bad%1.mdb").arg(round), bad)); // must simply return
    }
}

TEST_P(JetDamaged, FailedConversionLeavesNoFile)
{
    const QByteArray good = sharedJet(GetParam());
    const QString source = write(QStringLiteral("cut.mdb"), good.left(3 * 4096));
    const QString target = dir.filePath(QStringLiteral("out.sqlite"));
    EXPECT_THROW(convertJetToSqlite(source, target), DbError);
    EXPECT_THROW(convertJetToSqlite(dir.filePath(QStringLiteral("missing.mdb")), target), DbError);
    EXPECT_THROW(convertJetToSqlite(write(QStringLiteral("text.mdb"), "not a database"), target), DbError);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files),
              (QStringList{QStringLiteral("cut.mdb"), QStringLiteral("text.mdb")}));
}

INSTANTIATE_TEST_SUITE_P(SharedFiles, JetDamaged, ::testing::Values("test2V2000", "testUnicodeCompV2003"));
