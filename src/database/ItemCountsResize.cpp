// Rebuilding one kind's definition and text tables to longer machine blocks.
//
// The saved rows are renumbered in place instead of being read out and written
// back: the k-th saved row of block b (blocks cut by position in ID order, the
// old block length being the row count / 5) gets the ID b * count + k + 1, its
// text rows follow it, and every block is then filled up to `count` rows with
// rows of the block's machine. The whole rebuild is one transaction, so it either
// completes or leaves the database as it was.
#include "database/ItemCounts.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "database/Database.h"

#include <algorithm>
#include <optional>

namespace ht
{

namespace
{

constexpr long kBlocks = 5;

struct KindTables {
    QString definition, id, text, textId; // quoted identifiers
    QString definitionName;               // for sqlite_sequence
};

std::optional<KindTables> tablesOf(const QString &kindWord)
{
    for (const char *word : {"Alarm", "Warning", "MaterialChange"}) {
        const QString w = QString::fromLatin1(word);
        if (kindWord == w)
            return KindTables{quoteIdentifier(w + QStringLiteral("Definition")),
                              quoteIdentifier(w + QStringLiteral("ID")), quoteIdentifier(w + QStringLiteral("Text")),
                              quoteIdentifier(w + QStringLiteral("_ID")), w + QStringLiteral("Definition")};
    }
    return std::nullopt;
}

long long scalar(Database &db, const QString &sql)
{
    return db.query(sql).value(0).toLongLong();
}

// Fills %D %I %T %J with the kind's tables and ID columns.
QString sqlFor(const KindTables &t, QString sql)
{
    return sql.replace(QLatin1String("%D"), t.definition)
        .replace(QLatin1String("%I"), t.id)
        .replace(QLatin1String("%T"), t.text)
        .replace(QLatin1String("%J"), t.textId);
}

void rebuild(Database &db, const KindTables &t, long count)
{
    Database::Transaction transaction(db);
    const long long rows = scalar(db, sqlFor(t, QStringLiteral("SELECT COUNT(*) FROM %D")));
    const long long oldBlock = rows / kBlocks;

    // Where each saved definition row goes.
    db.exec(QStringLiteral("DROP TABLE IF EXISTS temp.ht_renumber"));
    db.exec(QStringLiteral("CREATE TEMP TABLE ht_renumber (old INTEGER PRIMARY KEY, block INTEGER NOT NULL, "
                           "pos INTEGER NOT NULL, new INTEGER NOT NULL)"));
    const QString blockOf = oldBlock == 0 ? QStringLiteral("0") : QStringLiteral("MIN(p / %1, 4)").arg(oldBlock);
    db.exec(sqlFor(t, QStringLiteral("INSERT INTO temp.ht_renumber (old, block, pos, new) "
                                     "SELECT id, b, p - b * %1, b * %2 + p - b * %1 + 1 FROM ("
                                     "SELECT id, p, %3 AS b FROM ("
                                     "SELECT %I AS id, ROW_NUMBER() OVER (ORDER BY %I) - 1 AS p FROM %D))")
                          .arg(oldBlock)
                          .arg(count)
                          .arg(blockOf)));
    const long long fullest = scalar(db, QStringLiteral("SELECT COALESCE(MAX(pos) + 1, 0) FROM temp.ht_renumber"));
    if (fullest > count)
        throw DbError(QStringLiteral("A machine block holds %1 rows, more than the new count %2")
                          .arg(fullest)
                          .arg(count)
                          .toStdString());

    // Text rows of no definition would land on another item: they go.
    db.exec(
        sqlFor(t, QStringLiteral("DELETE FROM %T WHERE %J IS NULL OR %J NOT IN (SELECT old FROM temp.ht_renumber)")));

    // Two passes through values no row holds, so that no ID meets another on the way.
    const long long offset =
        1 + std::max({scalar(db, sqlFor(t, QStringLiteral("SELECT COALESCE(MAX(ABS(%I)), 0) FROM %D"))),
                      scalar(db, sqlFor(t, QStringLiteral("SELECT COALESCE(MAX(ABS(%J)), 0) FROM %T"))),
                      static_cast<long long>(kBlocks) * count});
    const QVariantList off{offset};
    db.exec(sqlFor(t, QStringLiteral("UPDATE %D SET %I = -(? + (SELECT new FROM temp.ht_renumber WHERE old = %D.%I))")),
            off);
    db.exec(sqlFor(t, QStringLiteral("UPDATE %T SET %J = -(? + (SELECT new FROM temp.ht_renumber WHERE old = %T.%J))")),
            off);
    db.exec(sqlFor(t, QStringLiteral("UPDATE %D SET %I = -%I - ?")), off);
    db.exec(sqlFor(t, QStringLiteral("UPDATE %T SET %J = -%J - ?")), off);

    // Each block filled up to the count with rows of the machine of its last saved row ("0" when free).
    db.exec(QStringLiteral("DROP TABLE IF EXISTS temp.ht_blocks"));
    db.exec(
        sqlFor(t, QStringLiteral("CREATE TEMP TABLE ht_blocks AS SELECT k.b AS block, "
                                 "(SELECT COUNT(*) FROM temp.ht_renumber r WHERE r.block = k.b) AS saved, "
                                 "COALESCE((SELECT d.MachineType FROM %D d WHERE d.%I = "
                                 "(SELECT MAX(r.new) FROM temp.ht_renumber r WHERE r.block = k.b)), '0') AS machine "
                                 "FROM (SELECT 0 AS b UNION ALL SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3 "
                                 "UNION ALL SELECT 4) k")));
    db.exec(sqlFor(t, QStringLiteral("WITH RECURSIVE n(q) AS (SELECT 0 UNION ALL SELECT q + 1 FROM n WHERE q + 1 < ?) "
                                     "INSERT INTO %D (%I, MachineType) "
                                     "SELECT k.block * ? + n.q + 1, k.machine FROM temp.ht_blocks k, n "
                                     "WHERE n.q >= k.saved ORDER BY 1")),
            {qlonglong(count), qlonglong(count)});

    // One text row per definition row and language present; the saved ones keep their texts.
    // Typed columns, so that the look-up below can use the key (untyped ones made it a scan per row).
    db.exec(QStringLiteral("DROP TABLE IF EXISTS temp.ht_texts"));
    db.exec(QStringLiteral(
        "CREATE TEMP TABLE ht_texts (id INTEGER, language INTEGER, PRIMARY KEY (id, language)) WITHOUT ROWID"));
    db.exec(sqlFor(t, QStringLiteral("INSERT OR IGNORE INTO temp.ht_texts SELECT %J, Language FROM %T "
                                     "WHERE Language IS NOT NULL")));
    db.exec(sqlFor(t, QStringLiteral("INSERT INTO %T (%J, Language) "
                                     "SELECT d.%I, l.Language FROM %D d, "
                                     "(SELECT DISTINCT Language FROM Language WHERE Language IS NOT NULL) l "
                                     "WHERE NOT EXISTS (SELECT 1 FROM temp.ht_texts x "
                                     "WHERE x.id = d.%I AND x.language = l.Language) "
                                     "ORDER BY d.%I, l.Language")));

    // New rows are numbered on from the last ID, as after a compaction.
    if (scalar(db, QStringLiteral("SELECT COUNT(*) FROM sqlite_schema WHERE name = 'sqlite_sequence'")) > 0)
        db.exec(sqlFor(t, QStringLiteral("UPDATE sqlite_sequence SET seq = (SELECT MAX(%I) FROM %D) "
                                         "WHERE name = ? COLLATE NOCASE")),
                {t.definitionName});

    db.exec(QStringLiteral("DROP TABLE temp.ht_renumber"));
    db.exec(QStringLiteral("DROP TABLE temp.ht_blocks"));
    db.exec(QStringLiteral("DROP TABLE temp.ht_texts"));
    transaction.commit();
}

} // namespace

void correctItemLengthIn(Database &db, const QString &kindWord, long count)
{
    const auto tables = tablesOf(kindWord);
    if (!tables)
        throw DbError(("Unknown kind of item: " + kindWord).toStdString());
    if (count <= 0)
        throw DbError(("No rows to make for a count of " + QString::number(count)).toStdString());
    rebuild(db, *tables, count);
}

long CorrectItemLenth(Context &ctx, const QString &kindWord, long &count)
{
    return CorrectItemLenth(ctx, ctx.state.helpTextDB, kindWord, count);
}

long CorrectItemLenth(Context &ctx, const QString &databasePath, const QString &kindWord, long &count)
{
    try {
        auto db = Database::open(databasePath, Database::Mode::ReadWrite);
        correctItemLengthIn(*db, kindWord, count);
        return count;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CorrectItemLenth"), e);
    }
    return -1;
}

} // namespace ht
