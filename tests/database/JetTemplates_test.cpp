// Access files made by the builder with keys: the importer's templates hold the
// keys an Access design has, laid out as Access lays them out, and any SQLite
// file's declared keys become the Access file's indexes.
#include "database/HelpTextFixture.h"
#include "database/JetModel.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetImage.h"
#include "database/jet/JetRows.h"
#include "database/jet/JetTable.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;
using namespace ht::jet;

namespace
{

constexpr int kRealBlock = 52, kLogicalBlock = 28;

// "PrimaryKey:Alarm_ID,Language:89": each index as its logical name, its key
// columns and its flags; with the logical block's bytes when `blocks` is given.
QStringList indexesOf(const Image &image, const TableDef &t, QStringList *blocks = nullptr)
{
    const char *def = image.page(t.page); // every definition here fits one page
    const int logical = t.indexBlockOffsets.empty() ? 0 : t.indexBlockOffsets.back() + kRealBlock;
    const int count = int(t.indexRoots.size());
    int at = logical + count * kLogicalBlock;
    QStringList found;
    for (int i = 0; i < count; ++i) {
        const int length = le16(def + at);
        const QString name = QString::fromUtf16(reinterpret_cast<const char16_t *>(def + at + 2), length / 2);
        at += 2 + length;
        const int real = int(le32(def + logical + i * kLogicalBlock + 8));
        QStringList columns;
        for (quint16 number : t.indexColumns[size_t(real)])
            for (const Column &c : t.columns)
                if (c.number == number)
                    columns << c.name;
        found << QStringLiteral("%1:%2:%3")
                     .arg(name, columns.join(u','))
                     .arg(t.indexFlags[size_t(real)], 2, 16, QLatin1Char('0'));
        if (blocks)
            *blocks << name + u':' + QByteArray(def + logical + i * kLogicalBlock, kLogicalBlock).toHex() + u':' +
                           QByteArray(def + t.indexBlockOffsets[size_t(real)], 34).toHex() +
                           QByteArray(def + t.indexBlockOffsets[size_t(real)] + 42, 10).toHex();
    }
    return found;
}

std::map<QString, TableDef> tablesOf(const Image &image)
{
    std::map<QString, TableDef> tables;
    for (const CatalogEntry &e : readCatalog(image))
        tables.emplace(e.name, readTableDef(image, e.tableDefPage, e.name));
    return tables;
}

} // namespace

TEST(AccessTemplates, HoldTheKeysOfAnAccessDesignAsAccessLaysThemOut)
{
    const struct {
        const char *table;
        QStringList indexes;
    } expected[] = {
        {"AlarmDefinition", {"PrimaryKey:AlarmID:89", "AlarmDefinitionMachine:MachineType,AlarmNo:80"}},
        {"AlarmText", {"PrimaryKey:Alarm_ID,Language:89"}},
        {"WarningDefinition", {"PrimaryKey:WarningID:89", "WarningDefinitionMachine:MachineType,WarningNo:80"}},
        {"WarningText", {"PrimaryKey:Warning_ID,Language:89"}},
        {"Language", {"PrimaryKey:Language:89"}},
        {"Discription", {"PrimaryKey:DiscriptionID,Language:89"}},
        {"DBSys", {"PrimaryKey:Item:89"}},
        {"MaterialChangeDefinition",
         {"PrimaryKey:MaterialChangeID:89", "MaterialChangeDefinitionMachine:MachineType,MaterialChangeNo:80"}},
        {"MaterialChangeText", {"PrimaryKey:MaterialChange_ID,Language:89"}},
    };
    // Access's own layout of these primary keys, from a file keyed the same way.
    const Image keyed = loadImage(jetTestFile(QStringLiteral("helptext_keys")));
    const auto keyedTables = tablesOf(keyed);
    for (const bool materialChange : {true, false}) {
        const QString path = binDir() + (materialChange ? QStringLiteral("/HelpTextMitMaterialchange.mdb")
                                                        : QStringLiteral("/HelpTextOhneMaterialchange.mdb"));
        SCOPED_TRACE(path.toStdString());
        ASSERT_EQ(detectDatabaseFormat(path), DbFormat::Jet) << "made by the build beside the programs";
        const Image image = loadImage(path);
        EXPECT_EQ(checkStructure(image), QStringList());
        const auto tables = tablesOf(image);
        const auto libmdb = readThroughLibmdb(path);
        EXPECT_EQ(tables.size(), materialChange ? 9u : 7u);
        for (const auto &e : expected) {
            if (!materialChange && QByteArray(e.table).startsWith("MaterialChange"))
                continue;
            SCOPED_TRACE(e.table);
            const TableDef &t = tables.at(QLatin1String(e.table));
            QStringList blocks, accessBlocks;
            EXPECT_EQ(indexesOf(image, t, &blocks), e.indexes);
            indexesOf(keyed, keyedTables.at(QLatin1String(e.table)), &accessBlocks);
            EXPECT_EQ(blocks.first(), accessBlocks.first()) << "the primary key as Access lays it out";
            EXPECT_EQ(libmdb.at(QLatin1String(e.table)).size(), qsizetype(t.rowCount)) << "rows libmdb reads";
        }
    }
}

TEST(AccessTemplates, BuilderCarriesTheKeysAnSqliteFileDeclares)
{
    QTemporaryDir dir;
    const QString sqlite = dir.filePath(QStringLiteral("keys.sqlite")),
                  access = dir.filePath(QStringLiteral("keys.mdb"));
    {
        auto db = Database::create(sqlite);
        db->execScript(QStringLiteral(
            "CREATE TABLE Parts (Code TEXT, Lot INTEGER, Size INTEGER, Note TEXT UNIQUE, PRIMARY KEY (Lot, Code),"
            " UNIQUE (Size, Lot));"
            "CREATE INDEX PartsBySize ON Parts (Size);"
            "CREATE UNIQUE INDEX PartsNoteAgain ON Parts (Note);" // the same as the UNIQUE: one index serves both
            "CREATE TABLE Plain (ID INTEGER PRIMARY KEY, Name TEXT, UNIQUE (ID));"
            "CREATE TABLE Loose (A INTEGER, B TEXT);"
            "INSERT INTO Parts VALUES ('b', 2, 10, NULL), ('a', 2, 11, NULL), ('a', 1, 10, 'x');"
            "INSERT INTO Plain VALUES (7, 'seven'), (3, 'three');"
            "INSERT INTO Loose VALUES (1, NULL), (1, NULL);"));
    }
    convertSqliteToJet(sqlite, jetTestFile(QStringLiteral("empty")), access);
    const Image image = loadImage(access);
    EXPECT_EQ(checkStructure(image), QStringList());
    const auto tables = tablesOf(image);
    EXPECT_EQ(indexesOf(image, tables.at(QStringLiteral("Parts"))),
              (QStringList{"PrimaryKey:Lot,Code:89", "Note:Note:81", "SizeLot:Size,Lot:81", "PartsBySize:Size:80"}));
    EXPECT_EQ(indexesOf(image, tables.at(QStringLiteral("Plain"))), QStringList{"PrimaryKey:ID:89"});
    EXPECT_EQ(indexesOf(image, tables.at(QStringLiteral("Loose"))), QStringList());
    EXPECT_EQ(readThroughLibmdb(access).at(QStringLiteral("Parts")).size(), 3);

    // Keys an Access file cannot hold: refused, and no file is left.
    const struct {
        const char *why;
        const char *sql;
    } refused[] = {
        {"an index on an expression", "CREATE INDEX ByTwice ON Loose (A * 2);"},
        {"an index on some rows only", "CREATE INDEX SomeRows ON Loose (A) WHERE A > 0;"},
        {"a unique key held twice", "DELETE FROM Loose; INSERT INTO Loose VALUES (1, 'x'), (2, 'x');"
                                    "CREATE TABLE Twice (K TEXT); INSERT INTO Twice VALUES ('k'), ('K');"
                                    "CREATE UNIQUE INDEX TwiceK ON Twice (K COLLATE BINARY);"},
    };
    for (const auto &r : refused) {
        SCOPED_TRACE(r.why);
        const QString source = dir.filePath(QStringLiteral("refused.sqlite")),
                      target = dir.filePath(QStringLiteral("refused.mdb"));
        QFile::remove(source);
        ASSERT_TRUE(QFile::copy(sqlite, source));
        Database::open(source)->execScript(QLatin1String(r.sql));
        EXPECT_THROW(convertSqliteToJet(source, jetTestFile(QStringLiteral("empty")), target), DbError);
        EXPECT_FALSE(QFile::exists(target));
    }
}
