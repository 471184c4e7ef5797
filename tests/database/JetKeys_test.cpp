// Rows added, deleted and given new keys in Access-made files and in a keyed
// help-text database: after every round the file is sound by the checker with
// its indexes, and our reader and libmdb read what was written.
#include "database/JetModel.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetIndex.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetValues.h"
#include "database/jet/JetWriter.h"

#include <QRandomGenerator>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;
using namespace ht::jet;
using namespace Qt::StringLiterals;

namespace
{

// Characters a text key may hold here: letters, digits, blank and punctuation.
const QString kKeyCharacters = u"abcXYZ019 .,-'_()/:+&#"_s;

QString randomKeyText(QRandomGenerator &random, int maxLength)
{
    QString text;
    const int length = 1 + random.bounded(std::max(1, std::min(maxLength, 24)));
    for (int i = 0; i < length; ++i)
        text += kKeyCharacters[random.bounded(int(kKeyCharacters.size()))];
    return text;
}

// A value for a column of a new row or a changed key; numbers of key columns are
// new ones (`fresh` counts on from the table's greatest), so that no unique key
// comes twice.
QVariant randomValue(const Column &c, QRandomGenerator &random, qint64 &fresh)
{
    switch (c.type) {
    case TypeLong:
    case TypeInteger:
        return c.indexed ? QVariant(fresh++) : QVariant(qint64(random.bounded(1000)));
    case TypeText:
        return c.indexed ? QVariant(randomKeyText(random, c.length / 2))
                         : QVariant(textOfLength(random.bounded(std::min(c.length / 2, 80) + 1), random.bounded(7)));
    case TypeMemo: {
        const int lengths[] = {0, 10, 64, 300, 5000};
        return textOfLength(lengths[random.bounded(int(std::size(lengths)))], random.bounded(7));
    }
    default:
        return QVariant(); // other types are left null
    }
}

struct Table {
    QString name;
    std::vector<const Column *> columns;
    std::map<QString, qint64> fresh; // per number column, the next unused value
};

Table tableOf(Editor &e, const Model &m, const QString &name)
{
    Table t{name, columnsInOrder(e.table(name)), {}};
    for (size_t i = 0; i < t.columns.size(); ++i) {
        qint64 greatest = 0;
        for (const auto &[slot, values] : m.rows.at(name))
            greatest = std::max(greatest, values[qsizetype(i)].toLongLong());
        t.fresh[t.columns[i]->name] = greatest + 1;
    }
    return t;
}

void insertRandomRow(Editor &e, Model &m, Table &t, QRandomGenerator &random)
{
    QVariantList values;
    for (const Column *c : t.columns)
        values << randomValue(*c, random, t.fresh[c->name]);
    m.rows[t.name][e.insertRow(t.name, values).packed()] = values;
}

// The depth of an index: 1 when its root is a leaf.
int depth(const QString &path, const QString &table, int index)
{
    const Image image = loadImage(path);
    Editor e(path);
    quint32 page = e.table(table).indexRoots[size_t(index)];
    int levels = 1;
    while (quint8(image.page(page)[0]) == kIndexNodePage) {
        const QByteArray first = indexPageEntries(image.page(page)).front();
        page = qFromBigEndian<quint32>(first.constData() + first.size() - 4);
        ++levels;
    }
    return levels;
}

} // namespace

TEST(JetKeys, RandomInsertsDeletesAndKeyChangesKeepEveryIndexSound)
{
    QRandomGenerator random(18);
    struct Case {
        const char *file;
        int rounds, changesPerRound;
        QStringList refused; // tables whose stored text keys are not computed alike here
    };
    const Case cases[] = {
        {"indexTestV2000", 6, 12, {}}, {"compIndexTestV2000", 6, 40, {}}, {"testUnicodeCompV2003", 4, 8, {u"Table"_s}},
        {"delTestV2000", 4, 8, {}},    {"overflowTestV2000", 4, 8, {}},   {"helptext_keys", 4, 60, {}},
    };
    for (const Case &k : cases) {
        EditedCopy copy(jetTestFile(QString::fromLatin1(k.file)));
        QStringList refused;
        for (int round = 0; round < k.rounds; ++round) {
            copy.edit([&](Editor &e, Model &m) {
                std::map<QString, Table> tables; // of this round's editor
                for (int n = 0; n < k.changesPerRound; ++n) {
                    auto rows = m.rows.begin();
                    std::advance(rows, random.bounded(int(m.rows.size())));
                    if (refused.contains(rows->first))
                        continue;
                    Table &t = tables.try_emplace(rows->first, tableOf(e, m, rows->first)).first->second;
                    const int what = rows->second.empty() ? 0 : random.bounded(3);
                    try {
                        if (what == 0) {
                            insertRandomRow(e, m, t, random);
                            continue;
                        }
                        auto row = rows->second.begin();
                        std::advance(row, random.bounded(int(rows->second.size())));
                        if (what == 1) {
                            e.deleteRow(t.name, RowPointer::unpack(row->first));
                            rows->second.erase(row);
                            continue;
                        }
                        // A key column or any other given a new value.
                        std::vector<const Column *> keys;
                        for (const Column *c : t.columns)
                            if (c->indexed)
                                keys.push_back(c);
                        const Column *c = !keys.empty() && random.bounded(3) > 0
                                              ? keys[random.bounded(int(keys.size()))]
                                              : t.columns[random.bounded(int(t.columns.size()))];
                        if (c->type != TypeLong && c->type != TypeInteger && c->type != TypeText && c->type != TypeMemo)
                            continue;
                        setValue(e, m, t.name, row->first, c->name, randomValue(*c, random, t.fresh[c->name]));
                    } catch (const DbError &error) {
                        ASSERT_TRUE(QString::fromUtf8(error.what()).contains(QLatin1String("does not compute alike")))
                            << k.file << ": " << error.what();
                        refused << t.name;
                    }
                }
            });
            copy.verify(std::string(k.file) + " round " + std::to_string(round));
        }
        EXPECT_EQ(refused, k.refused) << k.file;
    }
}

TEST(JetKeys, ALanguageOfThousandsOfRowsAddedAndDeleted)
{
    EditedCopy copy(jetTestFile(u"helptext_keys"_s));
    const struct {
        const char *texts, *definitions;
    } kinds[] = {{"AlarmText", "AlarmDefinition"},
                 {"WarningText", "WarningDefinition"},
                 {"MaterialChangeText", "MaterialChangeDefinition"}};
    int added = 0;
    copy.edit([&](Editor &e, Model &m) {
        for (const auto &kind : kinds) {
            const QString texts = QString::fromLatin1(kind.texts);
            const int columns = int(columnsInOrder(e.table(texts)).size());
            for (const auto &[slot, definition] : m.rows.at(QString::fromLatin1(kind.definitions))) {
                QVariantList values{definition[0], 1049};
                for (int i = 2; i < columns; ++i)
                    values << textOfLength(20 + added % 200, 2);
                m.rows[texts][e.insertRow(texts, values).packed()] = values;
                ++added;
            }
        }
        // Long text keys, so that the index has nodes above nodes.
        for (int i = 0; i < 6000; ++i) {
            const QVariantList values{
                u"%1 - an item of the settings' list, by number"_s.arg(i, 5, 10, QLatin1Char('0')), QString::number(i)};
            m.rows[u"DBSys"_s][e.insertRow(u"DBSys"_s, values).packed()] = values;
        }
    });
    EXPECT_EQ(added, 7560);
    copy.verify("a language added");
    EXPECT_EQ(depth(copy.path, u"MaterialChangeText"_s, 0), 2);
    EXPECT_EQ(depth(copy.path, u"DBSys"_s, 0), 3);

    copy.edit([&](Editor &e, Model &m) {
        for (const auto &kind : kinds) {
            auto &rows = m.rows[QString::fromLatin1(kind.texts)];
            for (auto row = rows.begin(); row != rows.end();)
                if (row->second[1].toInt() == 1031) {
                    e.deleteRow(QString::fromLatin1(kind.texts), RowPointer::unpack(row->first));
                    row = rows.erase(row);
                } else {
                    ++row;
                }
        }
    });
    copy.verify("a language deleted");
}

TEST(JetKeys, KeysThisProgramCannotComputeAreRefusedAndTheFileKept)
{
    // Byte 11 of a column's block holds its sort order; DBSys.Item's block is the first on page 49.
    constexpr qsizetype kItemSortOrder = 49 * kPageSize + 63 + 12 + 11;
    struct Case {
        const char *what;
        QString table;
        int column;
        QString value;
        std::function<void(QByteArray &)> damage;
    };
    const Case cases[] = {
        {"a letter without a known weight", u"AlarmDefinition"_s, 1, u"Füller 3"_s, {}},
        {"a control character", u"AlarmDefinition"_s, 1, u"Line\t2"_s, {}},
        {"a key column sorted as German", u"DBSys"_s, 0, u"MaxLenOther"_s,
         [](QByteArray &b) { b[kItemSortOrder] = 0x07; }},
    };
    for (const Case &k : cases) {
        QTemporaryDir dir;
        QByteArray bytes = readFileBytes(jetTestFile(u"helptext_keys"_s));
        if (k.damage)
            k.damage(bytes);
        const QString path = writeIn(dir, u"keys.mdb"_s, bytes);
        const QString why = dbErrorOf([&] {
            Editor e(path);
            std::optional<std::pair<RowPointer, QVariantList>> first;
            e.readRows(k.table, [&](RowPointer slot, const QVariantList &values) {
                if (!first)
                    first = {slot, values};
            });
            first->second[k.column] = k.value;
            e.updateRow(k.table, first->first, first->second);
            e.commit();
        });
        EXPECT_TRUE(
            why.contains(u"column %1"_s.arg(columnsInOrder(Editor(path).table(k.table))[size_t(k.column)]->name)))
            << k.what << ": " << why.toStdString();
        EXPECT_EQ(readFileBytes(path), bytes) << k.what;
    }
}

TEST(JetKeys, AnAutonumberLeftNullGetsTheTablesNextNumber)
{
    Image image = loadImage(jetTestFile(u"testUnicodeCompV2003"_s));
    quint32 page = 0;
    for (const CatalogEntry &entry : readCatalog(image))
        if (entry.name == QLatin1String("Table"))
            page = entry.tableDefPage;
    const TableDef t = readTableDef(image, page, u"Table"_s);
    const Column *id = t.column(u"ID"_s), *text = t.column(u"Unicode"_s);
    ASSERT_TRUE(id && id->autoNumber());
    Writer writer(image);
    const struct {
        QVariant given;
        qint64 expected;
    } rows[] = {{QVariant(), 9}, {40, 40}, {QVariant(), 41}, {12, 12}, {QVariant(), 42}};
    for (const auto &row : rows) {
        const RowPointer at = writer.insertRow(t, {{id, row.given}, {text, u"x"_s}});
        EXPECT_EQ(columnValue(image, decodeRow(image, rowData(image, at), true), *id).toLongLong(), row.expected);
    }
    EXPECT_EQ(le32(image.page(page) + kTableAutoNumberOffset), 42u);
    EXPECT_EQ(readTableDef(image, page, u"Table"_s).rowCount, 8u + 5u);
}

TEST(JetKeys, RebuiltIndexesListWhatAccessListed)
{
    // Every index whose keys are computed here, made again from its rows: the same entries in the same order.
    const struct {
        const char *file;
        int atLeast; // indexes made again
    } files[] = {{"empty", 8}, {"indexTestV2000", 21}, {"compIndexTestV2000", 9}, {"helptext_keys", 18}};
    for (const auto &f : files) {
        const Image original = loadImage(jetTestFile(QString::fromLatin1(f.file)));
        int rebuilt = 0;
        for (const CatalogEntry &entry : readCatalog(original, true)) {
            const TableDef t = readTableDef(original, entry.tableDefPage, entry.name);
            for (int i = 0; i < int(t.indexRoots.size()); ++i) {
                if (!storedKeysDiffer(original, t, i).isEmpty())
                    continue; // keys of types or characters not computed here
                const auto entries = [&](const Image &image) {
                    std::vector<QByteArray> all;
                    forEachLeaf(
                        image, readTableDef(image, t.page, t.name).indexRoots[size_t(i)],
                        [&](quint32, const std::vector<QByteArray> &e) { all.insert(all.end(), e.begin(), e.end()); });
                    return all;
                };
                Image copy = original;
                rebuildIndex(copy, t, i);
                EXPECT_EQ(entries(copy), entries(original)) << f.file << " " << t.name.toStdString() << " " << i;
                EXPECT_TRUE(checkStructure(copy).isEmpty()) << f.file << " " << t.name.toStdString() << " " << i;
                ++rebuilt;
            }
        }
        EXPECT_GE(rebuilt, f.atLeast) << f.file;
    }
}

TEST(JetKeys, ScribbledIndexPagesGiveDbErrorsOrSoundFiles)
{
    // The index pages of a table with node pages, bytes overwritten; the check and a delete with its rebuild must cope.
    const QString source = jetTestFile(u"compIndexTestV2000"_s);
    const QByteArray original = readFileBytes(source);
    const quint32 table = Editor(source).table(u"Table1"_s).page;
    std::vector<quint32> indexPages;
    for (quint32 page = 1; page < quint32(original.size() / kPageSize); ++page) {
        const char *p = original.constData() + qsizetype(page) * kPageSize;
        if ((quint8(p[0]) == kIndexNodePage || quint8(p[0]) == kIndexLeafPage) && le32(p + 4) == table)
            indexPages.push_back(page);
    }
    ASSERT_GE(indexPages.size(), 3u);
    QRandomGenerator random(42);
    QTemporaryDir dir;
    int written = 0;
    for (int n = 0; n < 150; ++n) {
        QByteArray bytes = original;
        const qsizetype page = qsizetype(indexPages[random.bounded(int(indexPages.size()))]) * kPageSize;
        for (int k = 0; k < 6; ++k)
            bytes[page + 2 + random.bounded(kPageSize - 2)] = char(random.bounded(256));
        checkStructure(Image(bytes, u"scribbled"_s));
        const QString path = writeIn(dir, u"scribbled.mdb"_s, bytes);
        try {
            Editor e(path);
            std::optional<RowPointer> first;
            e.readRows(u"Table1"_s, [&](RowPointer slot, const QVariantList &) {
                if (!first)
                    first = slot;
            });
            e.deleteRow(u"Table1"_s, *first);
            e.commit();
            ++written;
            EXPECT_TRUE(checkStructure(loadImage(path)).isEmpty()) << n;
        } catch (const DbError &) {
        }
    }
    EXPECT_LT(written, 150); // most damage is seen
}

TEST(JetKeys, EveryRowDeletedAndAddedAgain)
{
    // Indexes emptied down to a root leaf without entries, then grown back to node pages.
    const struct {
        const char *file, *table;
    } cases[] = {{"compIndexTestV2000", "Table1"}, {"indexTestV2000", "Table1"}, {"helptext_keys", "AlarmDefinition"}};
    for (const auto &k : cases) {
        EditedCopy copy(jetTestFile(QString::fromLatin1(k.file)));
        const QString table = QString::fromLatin1(k.table);
        const std::map<quint32, QVariantList> rows = copy.model.rows.at(table);
        copy.edit([&](Editor &e, Model &m) {
            for (const auto &[slot, values] : rows)
                e.deleteRow(table, RowPointer::unpack(slot));
            m.rows[table].clear();
        });
        copy.verify(std::string(k.file) + " emptied");
        copy.edit([&](Editor &e, Model &m) {
            for (const auto &[slot, values] : rows)
                m.rows[table][e.insertRow(table, values).packed()] = values;
        });
        copy.verify(std::string(k.file) + " filled again");
        EXPECT_EQ(depth(copy.path, table, 0), depth(jetTestFile(QString::fromLatin1(k.file)), table, 0)) << k.file;
    }
}

// An editor used again after a commit knows its tables' new roots and row counts.
TEST(JetKeys, AnEditorGoesOnAfterACommit)
{
    EditedCopy copy(jetTestFile(u"compIndexTestV2000"_s));
    const QString table = u"Table1"_s;
    Editor e(copy.path);
    for (int round = 0; round < 3; ++round) {
        const auto first = copy.model.rows.at(table).begin();
        e.deleteRow(table, RowPointer::unpack(first->first));
        copy.model.rows.at(table).erase(first);
        e.commit();
        EXPECT_EQ(e.table(table).rowCount, copy.model.rows.at(table).size());
        copy.verify("commit " + std::to_string(round));
    }
}

TEST(JetKeys, NullKeysAsTheIndexAllows)
{
    // Table1's primary key (index 1) made unique only, or left required as Access made it.
    const struct {
        quint8 flags;
        const char *refusal; // "" when two rows without an id are taken
    } cases[] = {{kIndexUnique | 0x80, ""}, {kIndexUnique | kIndexRequired | 0x80, "primary key empty"}};
    for (const auto &k : cases) {
        QTemporaryDir dir;
        QByteArray bytes = readFileBytes(jetTestFile(u"indexTestV2000"_s));
        const TableDef t = readTableDef(Image(bytes, u"x"_s), 24, u"Table1"_s);
        bytes[24 * kPageSize + t.indexBlockOffsets[1] + kIndexBlockFlags] = char(k.flags);
        const QString path = writeIn(dir, u"nulls.mdb"_s, bytes);
        const QString why = dbErrorOf([&] {
            Editor e(path);
            for (int n = 0; n < 2; ++n)
                e.insertRow(u"Table1"_s, {QVariant(), QVariant(), QVariant(), u"no id"_s});
            e.commit();
            EXPECT_TRUE(checkStructure(loadImage(path)).isEmpty());
        });
        EXPECT_TRUE(*k.refusal ? why.contains(QLatin1String(k.refusal)) : why.isEmpty()) << why.toStdString();
    }
}

TEST(JetKeys, TheCheckFindsKeysAnIndexMayNotHold)
{
    // Rows written while Table1's primary key (index 1) was neither unique nor required, then its flags put back.
    const struct {
        QVariant id;
        const char *problem;
    } cases[] = {{1, "is another row's too"}, {QVariant(), "no value in a required key"}};
    for (const auto &k : cases) {
        QTemporaryDir dir;
        QByteArray bytes = readFileBytes(jetTestFile(u"indexTestV2000"_s));
        const TableDef t = readTableDef(Image(bytes, u"x"_s), 24, u"Table1"_s);
        const qsizetype flags = 24 * kPageSize + t.indexBlockOffsets[1] + kIndexBlockFlags;
        const char accessFlags = bytes[flags];
        bytes[flags] = char(0x80);
        const QString path = writeIn(dir, u"keys.mdb"_s, bytes);
        {
            Editor e(path);
            e.insertRow(u"Table1"_s, {k.id, 7, 7, u"again"_s});
            e.commit();
        }
        bytes = readFileBytes(path);
        bytes[flags] = accessFlags;
        EXPECT_TRUE(checkStructure(Image(bytes, path)).join(QLatin1Char('\n')).contains(QLatin1String(k.problem)))
            << k.problem;
    }
}
