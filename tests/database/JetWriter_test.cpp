// The Jet 4 page code against Access-made files: the structural check passes
// them and catches damage; edits of every kind read back through libmdb with
// nothing else in the file changed; a kill at any moment leaves the old file or
// the new one.
#include "database/HelpTextFixture.h"
#include "database/ItemCounts.h"
#include "database/JetFile.h"
#include "database/JetModel.h"
#include "database/LanguageRows.h"
#include "database/jet/JetBuilder.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetEditor.h"
#include "database/jet/JetIndexKeys.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetValues.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ht;
using namespace ht::test;
using namespace ht::jet;

TEST(JetCheck, PassesEveryAccessMadeFileAndReadsAsLibmdbDoes)
{
    for (const char *name : kAccessFiles) {
        const QString path = jetTestFile(QString::fromLatin1(name));
        EXPECT_EQ(checkStructure(loadImage(path)), QStringList()) << name;
        Editor editor(path);
        EXPECT_EQ(readModel(editor).asLibmdbReadsIt(editor), readThroughLibmdb(path)) << name;
    }
}

TEST(JetCheck, CatchesDamagedCopies)
{
    struct Damage {
        const char *file;
        const char *what;
        std::function<void(Image &)> apply;
        const char *expected;
    };
    const auto firstDataPage = [](Image &image, const QString &table) {
        for (const CatalogEntry &e : readCatalog(image))
            if (e.name == table)
                return mapPages(image, readTableDef(image, e.tableDefPage, e.name).usedPagesMap).front();
        return quint32(0);
    };
    const auto tableDefOf = [](Image &image, const QString &table) {
        for (const CatalogEntry &e : readCatalog(image))
            if (e.name == table)
                return e.tableDefPage;
        return quint32(0);
    };
    const Damage damages[] = {
        {"compIndexTestV2000", "free-space field off by one",
         [&](Image &im) {
             char *p = im.changePage(firstDataPage(im, QStringLiteral("Table1")));
             put16(p + 2, le16(p + 2) + 1);
         },
         "free space field"},
        {"compIndexTestV2000", "two row offsets swapped",
         [&](Image &im) {
             char *p = im.changePage(firstDataPage(im, QStringLiteral("Table1")));
             const quint16 a = le16(p + kDataHeader), b = le16(p + kDataHeader + 2);
             put16(p + kDataHeader, b);
             put16(p + kDataHeader + 2, a);
         },
         "lies outside its page"},
        {"compIndexTestV2000", "row count of the definition",
         [&](Image &im) {
             char *p = im.changePage(tableDefOf(im, QStringLiteral("Table1")));
             put32(p + kTableRowCountOffset, 511);
         },
         "rows, but its definition says"},
        {"compIndexTestV2000", "an owned page marked free in the global map",
         [&](Image &im) { setMapBit(im, kGlobalMap, firstDataPage(im, QStringLiteral("Table1")), true); },
         "which the global map calls free"},
        {"compIndexTestV2000", "an index entry pointing at another row",
         [&](Image &im) {
             quint32 page = 0; // a leaf of the table's index
             while (quint8(im.page(page)[0]) != 4 ||
                    le32(im.page(page) + 4) != tableDefOf(im, QStringLiteral("Table1")))
                 ++page;
             char *p = im.changePage(page);
             int end = 0; // the end of the first entry: its last byte is the row number
             while (!((quint8(p[27 + end / 8]) >> (end % 8)) & 1))
                 ++end;
             p[480 + end - 1] = char(250);
         },
         "no row"},
        {"compIndexTestV2000", "an indexed number changed behind its index's back",
         [&](Image &im) {
             const quint32 page = firstDataPage(im, QStringLiteral("Table1"));
             char *value = im.changePage(page) + slotOf(im, page, 0).start + 2; // CD_AGENTE, the first fixed column
             put32(value, le32(value) + 1000000);
         },
         "does not hold the row's values"},
        {"testUnicodeCompV2003", "compressed text in a column that does not allow it",
         [&](Image &im) {
             const quint32 page = tableDefOf(im, QStringLiteral("Table"));
             const TableDef t = readTableDef(im, page, QStringLiteral("Table"));
             for (size_t i = 0; i < t.columns.size(); ++i)
                 if (t.columns[i].name == QLatin1String("Unicode"))
                     im.changePage(page)[63 + 12 * int(t.indexRoots.size()) + 25 * int(i) + 16] = 0;
         },
         "compressed text in column Unicode"},
        {"overflowTestV2000", "an overflow pointer to a plain row",
         [&](Image &im) {
             for (quint32 page :
                  mapPages(im, readTableDef(im, tableDefOf(im, QStringLiteral("Table1")), QStringLiteral("Table1"))
                                   .usedPagesMap))
                 for (int r = 0; r < rowCount(im.page(page)); ++r)
                     if (slotOf(im, page, r).flags == kRowOverflowPointer) {
                         char *p = im.changePage(page);
                         put32(p + slotOf(im, page, r).start, RowPointer{page, quint8(r)}.packed());
                         return;
                     }
         },
         "overflow pointer to no overflow row"},
    };
    for (const Damage &d : damages) {
        Image image = loadImage(jetTestFile(QString::fromLatin1(d.file)));
        d.apply(image);
        const QString problems = checkStructure(image).join(QLatin1Char('\n'));
        EXPECT_TRUE(problems.contains(QLatin1String(d.expected))) << d.what << ": " << problems.toStdString();
    }
}

TEST(JetBuilder, CatalogKeysAreTheOnesAccessWrites)
{
    // Every entry of the empty file's two catalog indexes, made again from the rows.
    Image image = loadImage(jetTestFile(QStringLiteral("empty")));
    const TableDef catalog = readTableDef(image, 2, QStringLiteral("MSysObjects"));
    int compared = 0;
    forEachRow(image, catalog, [&](RowPointer at, const QByteArray &bytes) {
        const StoredRow row = decodeRow(image, bytes, true);
        const auto value = [&](const char *name) {
            return columnValue(image, row, *catalog.column(QString::fromLatin1(name)));
        };
        QByteArray byId = numberIndexKey(value("Id").toInt(), 4);
        QByteArray byName = numberIndexKey(value("ParentId").toInt(), 4) + letterIndexKey(value("Name").toString());
        for (QByteArray *key : {&byId, &byName})
            key->append(char(at.page >> 16)).append(char(at.page >> 8)).append(char(at.page)).append(char(at.row));
        const QByteArray leaves = QByteArray(image.page(catalog.indexRoots[0]) + 480, kPageSize - 480) +
                                  QByteArray(image.page(catalog.indexRoots[1]) + 480, kPageSize - 480);
        EXPECT_TRUE(leaves.contains(byName)) << value("Name").toString().toStdString();
        EXPECT_TRUE(leaves.contains(byId)) << value("Name").toString().toStdString();
        ++compared;
    });
    EXPECT_EQ(compared, 18);
    EXPECT_TRUE(letterIndexKey(QStringLiteral("Alarm_Text")).isEmpty());
}

TEST(JetBuilder, MakesAnAccessFileLibmdbReadsAsTheSqliteOne)
{
    QTemporaryDir dir;
    const QString sqlite = dir.filePath(QStringLiteral("help.sqlite")),
                  access = dir.filePath(QStringLiteral("help.mdb"));
    makeHelpTextDb(sqlite);
    {
        auto db = Database::open(sqlite);
        db->exec(QStringLiteral("INSERT INTO Language VALUES (1, 'English', 'Arial', '00000409')"));
        db->exec(QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language, Device, Result, Function) "
                                "SELECT AlarmID, 1, 'Device ' || AlarmID, NULL, ? FROM AlarmDefinition"),
                 {textOfLength(3000, 3)});
    }
    convertSqliteToJet(sqlite, jetTestFile(QStringLiteral("empty")), access);
    auto a = Database::open(sqlite, Database::Mode::ReadOnly);
    auto b = Database::open(access, Database::Mode::ReadOnly);
    ASSERT_EQ(b->format(), DbFormat::Jet);
    for (const QString &table : a->tables()) {
        const QString sql = QStringLiteral("SELECT * FROM %1").arg(quoteIdentifier(table));
        const auto expected = a->query(sql).rows(), actual = b->query(sql).rows();
        ASSERT_EQ(expected.size(), actual.size()) << table.toStdString();
        for (size_t i = 0; i < expected.size(); ++i)
            for (int k = 0; k < expected[i].size(); ++k)
                ASSERT_EQ(expected[i][k].toString(), actual[i][k].toString()) << table.toStdString() << " row " << i;
    }
}

TEST(JetWriter, RowsGrowPastTheirPageAndShrinkBack)
{
    // The first two have rows that cannot all stay on their pages.
    for (const char *file : {"compIndexTestV2000", "overflowTestV2000", "delTestV2000"}) {
        const bool mustMove = std::string(file) != "delTestV2000";
        EditedCopy copy(jetTestFile(QString::fromLatin1(file)));
        const Model original = copy.model;
        const QString table =
            copy.model.rows.count(QStringLiteral("Table1")) ? QStringLiteral("Table1") : QStringLiteral("Table");
        Editor probe(copy.path);
        const std::vector<const Column *> columns = columnsInOrder(probe.table(table));
        const auto fill = [&](int length) {
            copy.edit([&](Editor &e, Model &m) {
                int n = 0;
                for (auto &[slot, values] : m.rows[table]) {
                    for (const Column *c : columns)
                        if (!c->indexed && c->type == TypeText)
                            setValue(e, m, table, slot, c->name, textOfLength(std::min<int>(length, c->length / 2), n));
                    ++n;
                }
            });
        };
        const qint64 before = QFileInfo(copy.path).size();
        fill(255);
        copy.verify(std::string(file) + " grown");
        if (std::string(file) == "compIndexTestV2000")
            EXPECT_GT(QFileInfo(copy.path).size(), before) << file << ": grown rows moved to new pages";
        int moved = 0;
        Image image = loadImage(copy.path);
        for (const auto &[slot, values] : copy.model.rows[table])
            moved +=
                slotOf(image, RowPointer::unpack(slot).page, RowPointer::unpack(slot).row).flags == kRowOverflowPointer;
        if (mustMove)
            EXPECT_GT(moved, 0) << file;
        // Back to the values Access wrote; every row finds its way home or stays where it went.
        copy.edit([&](Editor &e, Model &m) {
            for (const auto &[slot, values] : original.rows.at(table)) {
                e.updateRow(table, RowPointer::unpack(slot), values);
                m.rows[table][slot] = values;
            }
        });
        copy.verify(std::string(file) + " shrunk");
    }
}

TEST(JetWriter, RandomEditSequences)
{
    QTemporaryDir dir;
    const QString sqlite = dir.filePath(QStringLiteral("help.sqlite")),
                  helpText = dir.filePath(QStringLiteral("help.mdb"));
    makeHelpTextDb(sqlite, false);
    Database::open(sqlite)->exec(QStringLiteral("INSERT INTO AlarmText (Alarm_ID, Language, Device) "
                                                "SELECT AlarmID, 1, 'Device' FROM AlarmDefinition"));
    convertSqliteToJet(sqlite, jetTestFile(QStringLiteral("empty")), helpText);
    QRandomGenerator random(20261125);
    int edits = 0;
    for (const QString &file :
         {jetTestFile(QStringLiteral("compIndexTestV2000")), jetTestFile(QStringLiteral("overflowTestV2000")),
          jetTestFile(QStringLiteral("test2V2000")), helpText}) {
        EditedCopy copy(file);
        for (int round = 0; round < 6; ++round) {
            copy.edit([&](Editor &e, Model &m) {
                for (int k = 0; k < 15; ++k, ++edits) {
                    auto table = m.rows.begin();
                    std::advance(table, random.bounded(int(m.rows.size())));
                    if (table->second.empty())
                        continue;
                    auto row = table->second.begin();
                    std::advance(row, random.bounded(int(table->second.size())));
                    std::vector<const Column *> writable;
                    for (const Column *c : columnsInOrder(e.table(table->first)))
                        if (!c->indexed && (c->type == TypeText || c->type == TypeMemo))
                            writable.push_back(c);
                    if (writable.empty())
                        continue;
                    const Column *c = writable[random.bounded(int(writable.size()))];
                    // Empty, inline, one long-value row and a chain of them, at their edges.
                    const int lengths[] = {0, 1, 30, 31, 33, 255, 2000, 2100, 5000, 12000};
                    int length = lengths[random.bounded(int(std::size(lengths)))];
                    if (c->type == TypeText)
                        length = std::min<int>(length, c->length / 2);
                    const QVariant value =
                        random.bounded(8) == 0 ? QVariant() : QVariant(textOfLength(length, random.bounded(7)));
                    setValue(e, m, table->first, row->first, c->name, value);
                }
            });
            copy.verify(file.toStdString() + " round " + std::to_string(round));
        }
    }
    EXPECT_GE(edits, 300);
}

TEST(JetWriter, RefusesWhatItCannotDoSafely)
{
    QTemporaryDir dir;
    // A round given up before its commit writes nothing. (A key twice is refused in JetDatabase.)
    const QString path =
        writeIn(dir, QStringLiteral("index.mdb"), readFileBytes(jetTestFile(QStringLiteral("compIndexTestV2000"))));
    const QByteArray before = readFileBytes(path);
    dbErrorOf([&] {
        Editor e(path);
        std::optional<RowPointer> last;
        e.readRows(QStringLiteral("Table1"), [&](RowPointer slot, const QVariantList &) { last = slot; });
        e.deleteRow(QStringLiteral("Table1"), *last);
        throw DbError("abandoned");
    });
    EXPECT_EQ(readFileBytes(path), before);
    // Encoded, or of another version or page layout.
    // Jet 3, Access 2007, an encoding key, not a database page.
    const std::pair<int, char> layouts[] = {{0x14, 0x00}, {0x14, 0x02}, {0x3E, 0x5A}, {0, 0x01}};
    for (const auto &[offset, byte] : layouts) {
        QByteArray bytes = readFileBytes(jetTestFile(QStringLiteral("empty")));
        bytes[offset] = byte;
        const QString path = writeIn(dir, QStringLiteral("odd%1.mdb").arg(offset), bytes);
        EXPECT_FALSE(dbErrorOf([&] { Editor e(path); }).isEmpty()) << offset;
    }
    // A text longer than its column.
    EditedCopy copy(jetTestFile(QStringLiteral("delTestV2000")));
    EXPECT_TRUE(dbErrorOf([&] {
                    copy.edit([&](Editor &e, Model &m) {
                        setValue(e, m, QStringLiteral("Table"), m.rows.at(QStringLiteral("Table")).begin()->first,
                                 QStringLiteral("a"), textOfLength(300, 0));
                    });
                }).contains(QLatin1String("longer than")));
}

// A child applies one batch of edits and commits; the parent kills it at a random
// moment, for each job in turn: page edits, a language created through the
// database layer, a table lengthened to 300 items per machine.
TEST(JetWriter, KilledAtAnyMomentLeavesTheOldFileOrTheNew)
{
    const int runs = qEnvironmentVariableIntValue("HELPTEXT_CRASH_RUNS") > 0
                         ? qEnvironmentVariableIntValue("HELPTEXT_CRASH_RUNS")
                         : 20;
    const struct {
        const char *job, *file;
        std::function<void(const QString &path)> batch;
    } jobs[] = {
        {"page edits", "compIndexTestV2000",
         [](const QString &path) {
             Editor e(path);
             e.readRows(QStringLiteral("Table1"), [&](RowPointer slot, QVariantList values) {
                 values[1] = textOfLength(50, int(slot.row));
                 values[2] = textOfLength(40, int(slot.page));
                 e.updateRow(QStringLiteral("Table1"), slot, values);
             });
             e.commit();
         }},
        {"language created", "helptext_keys",
         [](const QString &path) {
             auto db = Database::open(path);
             Database::Transaction t(*db);
             writeLanguageRow(*db, 1036, QStringLiteral("Francais"), QStringLiteral("Arial"), QString());
             addLanguageTextRows(*db, 1036, true);
             t.commit();
         }},
        {"tables lengthened", "helptext_keys",
         [](const QString &path) {
             auto db = Database::open(path);
             correctItemLengthIn(*db, QStringLiteral("Alarm"), 300);
         }},
    };
    for (const auto &job : jobs) {
        SCOPED_TRACE(job.job);
        QTemporaryDir dir;
        const QByteArray original = readFileBytes(jetTestFile(QString::fromLatin1(job.file)));
        const QString reference = writeIn(dir, QStringLiteral("reference.mdb"), original);
        QElapsedTimer timer;
        timer.start();
        job.batch(reference);
        const qint64 batchMicros = std::max<qint64>(1000, timer.nsecsElapsed() / 1000);
        const QByteArray updated = readFileBytes(reference);
        ASSERT_NE(updated, original);
        QRandomGenerator random(7);
        int old = 0, replaced = 0, leftNamed = 0;
        for (int run = 0; run < runs; ++run) {
            const QString path = writeIn(dir, QStringLiteral("killed.mdb"), original);
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                try {
                    job.batch(path);
                } catch (...) {
                    _exit(1);
                }
                _exit(0);
            }
            usleep(useconds_t(batchMicros * 3 / 10 + random.bounded(int(batchMicros * 12 / 10))));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            const QByteArray now = readFileBytes(path);
            ASSERT_TRUE(now == original || now == updated) << "run " << run;
            (now == original ? old : replaced)++;
            EXPECT_EQ(checkStructure(Image(now, path)), QStringList());
            // A temporary file as large as the database must not stay: the next open clears it.
            const QStringList temporary{QStringLiteral(".~*")};
            leftNamed += !QDir(dir.path()).entryList(temporary, QDir::Files | QDir::Hidden).isEmpty();
            Database::open(path);
            EXPECT_EQ(QDir(dir.path()).entryList(temporary, QDir::Files | QDir::Hidden), QStringList())
                << "run " << run;
        }
        RecordProperty(std::string(job.job) + " old", old);
        RecordProperty(std::string(job.job) + " new", replaced);
        RecordProperty(std::string(job.job) + " temporary_left_by_the_kill", leftNamed);
    }
}
