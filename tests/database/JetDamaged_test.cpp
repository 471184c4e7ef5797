// Damaged Jet files (truncated, scribbled on, not Jet at all) give DbError or readable
// data, never a crash or a hang: libmdb reads them in a child process, the page
// code of the writer (opened for writing, and its structural check) in this one.
#include "database/HelpTextFixture.h"
#include "database/JetFile.h"
#include "database/jet/JetCheck.h"

#include <gtest/gtest.h>
#include <random>

using namespace ht;
using namespace ht::test;
using namespace Qt::StringLiterals;

namespace
{

bool readsIn(const QString &path, Database::Mode mode)
{
    try {
        auto db = Database::open(path, mode);
        for (const QString &table : db->tables())
            db->query(u"SELECT * FROM %1"_s.arg(quoteIdentifier(table)));
        return true;
    } catch (const DbError &) {
        return false;
    }
}

// true: every table read (for reading; for writing, through the writer's page code,
// which checks the file as well); false: DbError. Anything else fails the test.
bool readsCompletely(const QString &path)
{
    const bool read = readsIn(path, Database::Mode::ReadOnly);
    readsIn(path, Database::Mode::ReadWrite);
    try {
        jet::checkStructure(jet::Image(readFileBytes(path), path));
    } catch (const DbError &) {
    }
    return read;
}

struct JetDamaged : ::testing::TestWithParam<const char *> {
    QTemporaryDir dir;
    const QByteArray good = readFileBytes(jetTestFile(QString::fromLatin1(GetParam())));
    void SetUp() override
    {
        ASSERT_GT(good.size(), 8 * 4096) << "the cases below cut and scribble on a file of some pages";
        JetFile::setIdleTimeout(2000); // a hung read is cut short sooner
    }
    void TearDown() override { JetFile::setIdleTimeout(15000); }
};

} // namespace

TEST_P(JetDamaged, EveryTruncationFailsCleanlyOrReads)
{
    int refused = 0;
    for (qsizetype size = 4096; size < good.size(); size += 4096)
        refused += readsCompletely(writeIn(dir, u"cut%1.mdb"_s.arg(size), good.left(size))) ? 0 : 1;
    EXPECT_GE(refused, 2) << "a file cut before its catalog cannot be read";
    // Odd sizes are refused before libmdb sees them.
    for (qsizetype size : {qsizetype(0), qsizetype(20), qsizetype(4095), good.size() - 1000})
        EXPECT_FALSE(readsCompletely(writeIn(dir, u"odd%1.mdb"_s.arg(size), good.left(size)))) << size;
}

TEST_P(JetDamaged, ScribbledPagesFailCleanlyOrRead)
{
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
        readsCompletely(writeIn(dir, u"bad%1.mdb"_s.arg(round), bad)); // must simply return
    }
}

TEST_P(JetDamaged, FailedConversionLeavesNoFile)
{
    const QString target = dir.filePath(u"out.sqlite"_s);
    for (const QString &source : {writeIn(dir, u"cut.mdb"_s, good.left(3 * 4096)),
                                  writeIn(dir, u"text.mdb"_s, "not a database"), dir.filePath(u"missing.mdb"_s)})
        EXPECT_THROW(convertJetToSqlite(source, target), DbError) << source.toStdString();
    EXPECT_EQ(filesIn(dir.path()), (QStringList{u"cut.mdb"_s, u"text.mdb"_s}));
}

INSTANTIATE_TEST_SUITE_P(AccessFiles, JetDamaged, ::testing::Values("test2V2000", "testUnicodeCompV2003"));
