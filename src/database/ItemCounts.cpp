// The item counts per machine kept in DBSys, and the check of the tables against them.
#include "database/ItemCounts.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"

#include <cmath>
#include <vector>

namespace ht
{

namespace
{

constexpr int kBlocks = 5; // machine blocks per definition table

struct CountItem {
    const char *item;
    int kind;
    long defaultCount;
};
const CountItem kCountItems[] = {{"MaxLenAlarm", KindAlarms, 256},
                                 {"MaxLenWarning", KindWarnings, 256},
                                 {"MaxLenMaterialChange", KindMaterialChange, 1000}};

struct KindTable {
    const char *table;
    const char *word;
    int kind;
};
const KindTable kKindTables[] = {{"AlarmDefinition", "Alarm", KindAlarms},
                                 {"WarningDefinition", "Warning", KindWarnings},
                                 {"MaterialChangeDefinition", "MaterialChange", KindMaterialChange}};

long countFrom(const QVariant &data, const QString &item)
{
    const QString text = data.toString().trimmed();
    bool ok = false;
    const long whole = text.toLong(&ok);
    if (ok)
        return whole;
    const double value = text.toDouble(&ok);
    if (ok && std::isfinite(value))
        return std::lround(value);
    throw DbError(("DBSys item " + item + " holds no count: \"" + text + "\"").toStdString());
}

} // namespace

namespace
{

// An Access file gets the rows it lacks; one that cannot be written (another
// Jet version, write-protected, open elsewhere) keeps the counts only assumed.
void addMissingCountItems(Context &ctx, const QString &databasePath, const std::vector<const CountItem *> &missing)
{
    try {
        auto db = Database::open(databasePath);
        Database::Transaction transaction(*db);
        for (const CountItem *c : missing)
            db->exec(QStringLiteral("INSERT INTO DBSys (Item, Data) VALUES (?, ?)"),
                     {QString::fromLatin1(c->item), QString::number(c->defaultCount)});
        transaction.commit();
    } catch (const DbError &e) {
        LogError(ctx, QStringLiteral("GetDBSysMaxLenItems: the item counts missing from ") + databasePath +
                          QStringLiteral(" are assumed, not written: ") + QString::fromUtf8(e.what()));
    }
}

} // namespace

bool GetDBSysMaxLenItems(Context &ctx, const QString &databasePath)
{
    bool tableFound = false;
    try {
        // A Jet file is read first: it is opened for writing only when rows are missing.
        const DbFormat format = detectDatabaseFormat(databasePath);
        const bool writable = format == DbFormat::SQLite;
        auto db = Database::open(databasePath, writable ? Database::Mode::ReadWrite : Database::Mode::ReadOnly);
        const bool importer = ctx.state.mode == QLatin1String("IMPORT") && ctx.state.anzFehler >= 0;

        const bool hasTable = db->hasTable(QStringLiteral("DBSys"));
        if (!hasTable) {
            for (const CountItem &c : kCountItems)
                ctx.state.maxItems[c.kind] = c.defaultCount;
        }
        tableFound = hasTable;
        std::vector<const CountItem *> missing;
        for (const CountItem &c : kCountItems) {
            const QString item = QString::fromLatin1(c.item);
            const Recordset rs = hasTable ? db->query(QStringLiteral("SELECT DBSys.Item, DBSys.Data FROM DBSys "
                                                                     "WHERE DBSys.Item = ? COLLATE NOCASE"),
                                                      {item})
                                          : Recordset();
            if (rs.recordCount() == 0) {
                missing.push_back(&c);
                ctx.state.maxItems[c.kind] = c.defaultCount;
            } else if (importer && c.kind != KindMaterialChange) {
                // The importer works with its own list length: the standard items plus the added ones.
                ctx.state.maxItems[c.kind] = ctx.state.anzFehler + 256;
            } else {
                ctx.state.maxItems[c.kind] = countFrom(rs.value(QStringLiteral("Data")), item);
            }
        }
        if (writable && (!hasTable || !missing.empty())) {
            Database::Transaction transaction(*db);
            if (!hasTable)
                db->exec(QStringLiteral("CREATE TABLE DBSys (Item TEXT COLLATE NOCASE, Data TEXT)"));
            for (const CountItem *c : missing)
                db->exec(QStringLiteral("INSERT INTO DBSys (Item, Data) VALUES (?, ?)"),
                         {QString::fromLatin1(c->item), QString::number(c->defaultCount)});
            transaction.commit();
            tableFound = true;
        } else if (format == DbFormat::Jet && hasTable && !missing.empty()) {
            db.reset();
            addMissingCountItems(ctx, databasePath, missing);
        }
        return true;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetDBSysMaxLenItems"), e);
    }
    return tableFound;
}

namespace
{

// The kinds whose blocks are shorter than their count.
std::vector<const KindTable *> tooShort(Context &ctx, Database &db)
{
    std::vector<const KindTable *> kinds;
    for (const KindTable &k : kKindTables) {
        const QString table = QString::fromLatin1(k.table);
        if (!db.hasTable(table))
            continue;
        const long long rows = db.query(QStringLiteral("SELECT COUNT(*) FROM ") + table).value(0).toLongLong();
        if (double(rows) / kBlocks < double(ctx.state.maxItems[k.kind]))
            kinds.push_back(&k);
    }
    return kinds;
}

} // namespace

bool dbLengthTooShort(Context &ctx, Database &db)
{
    return !tooShort(ctx, db).empty();
}

bool correctDBLengthIn(Context &ctx, Database &db)
{
    const std::vector<const KindTable *> kinds = tooShort(ctx, db);
    for (const KindTable *k : kinds)
        correctItemLengthIn(db, QString::fromLatin1(k->word), ctx.state.maxItems[k->kind]);
    return !kinds.empty();
}

long CorrectDBLength(Context &ctx, const QString &databasePath)
{
    try {
        bool backedUp = false;
        for (const KindTable &k : kKindTables) {
            const QString table = QString::fromLatin1(k.table);
            long long rows = 0;
            {
                auto db = Database::open(databasePath, Database::Mode::ReadOnly);
                if (!db->hasTable(table))
                    continue; // an older database without material change
                rows = db->query(QStringLiteral("SELECT COUNT(*) FROM ") + table).value(0).toLongLong();
            }
            const double blockLength = double(rows) / kBlocks;
            long &count = ctx.state.maxItems[k.kind];
            if (blockLength >= double(count)) {
                if (count <= 0)
                    count = std::lround(blockLength);
                continue;
            }
            // Too short for its count: rebuilt, after one backup per call.
            if (!backedUp) {
                if (!CreateDBBackup(ctx, databasePath))
                    return -1; // no rebuild without a way back
                backedUp = true;
            }
            long newCount = count;
            if (CorrectItemLenth(ctx, databasePath, QString::fromLatin1(k.word), newCount) == -1)
                return -1;
            count = newCount;
        }
        return 0;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CorrectDBLength"), e);
    }
    return -1;
}

} // namespace ht
