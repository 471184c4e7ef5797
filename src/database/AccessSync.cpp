#include "database/AccessSync.h"

#include "common/Context.h"
#include "common/Messages.h"
#include "database/Database.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace ht
{

namespace
{

const QString Q = QStringLiteral("\"");

// A table of the help-text database: the columns that name a row, those that
// must agree between the two files, and the texts that are carried over.
struct SyncedTable {
    const char *name;
    QStringList key, agree, texts;
};

const SyncedTable kTables[] = {
    {"AlarmDefinition", {"AlarmID"}, {"MachineType", "AlarmNo"}, {"Sensor", "Cam", "CPU", "Rejects"}},
    {"WarningDefinition", {"WarningID"}, {"MachineType", "WarningNo"}, {}},
    {"MaterialChangeDefinition", {"MaterialChangeID"}, {"MachineType", "MaterialChangeNo"}, {}},
    {"AlarmText", {"Alarm_ID", "Language"}, {}, {"Device", "Result", "Function"}},
    {"WarningText", {"Warning_ID", "Language"}, {}, {"Function"}},
    {"MaterialChangeText", {"MaterialChange_ID", "Language"}, {}, {"Text"}},
    {"Discription", {"DiscriptionID", "Language"}, {}, {"Text"}},
};

struct Row {
    qint64 rowid = 0;
    QStringList agree;
    QVariantList texts;
};

QString keyOf(const QVariantList &values, int count)
{
    QStringList parts;
    for (int i = 0; i < count; ++i)
        parts << values[i].toString();
    return parts.join(QLatin1Char('|'));
}

QHash<QString, Row> readRows(Database &db, const SyncedTable &t)
{
    const QStringList columns = t.key + t.agree + t.texts;
    QHash<QString, Row> rows;
    db.forEachRow(
        QStringLiteral("SELECT rowid, %1 FROM %2").arg(columns.join(QStringLiteral(", ")), QLatin1String(t.name)), {},
        [&](QVariantList &v) {
            Row r;
            r.rowid = v[0].toLongLong();
            v.removeFirst();
            for (qsizetype i = t.key.size(); i < t.key.size() + t.agree.size(); ++i)
                r.agree << v[i].toString().trimmed();
            r.texts = v.mid(t.key.size() + t.agree.size());
            rows.insert(keyOf(v, int(t.key.size())), r);
            return true;
        });
    return rows;
}

bool sameText(const QVariant &a, const QVariant &b)
{
    return a.toString() == b.toString(); // Access reads NULL text as ""
}

[[noreturn]] void mismatch(const SyncedTable &t, const QString &what)
{
    throw DbError(QStringLiteral("The two databases do not hold the same %1: table %2 %3. Nothing was written.")
                      .arg(t.agree.isEmpty() ? QStringLiteral("text rows") : QStringLiteral("machines and items"),
                           QLatin1String(t.name), what)
                      .toStdString());
}

} // namespace

QString ConvertAccessToSqlite(Context &ctx, const QString &jetPath, const QString &target)
{
    const QFileInfo info(jetPath);
    const QString to =
        target.isEmpty() ? info.dir().filePath(info.completeBaseName() + QStringLiteral(".sqlite")) : target;
    QString refusal;
    if (detectDatabaseFormat(jetPath) != DbFormat::Jet)
        refusal = Q + jetPath + Q + QStringLiteral(" is no Access database; there is nothing to convert.");
    else if (QFileInfo::exists(to))
        refusal = Q + to + Q +
                  QStringLiteral(" exists already and is not overwritten. Open it with \"Change "
                                 "database...\", or move it away to convert again.");
    if (refusal.isEmpty()) {
        try {
            convertJetToSqlite(jetPath, to);
        } catch (const DbError &e) {
            refusal =
                QStringLiteral("The Access database could not be converted:") + LFCR + QString::fromUtf8(e.what());
        }
    }
    if (!refusal.isEmpty()) {
        showMessage(ctx, refusal, Buttons::OK, Icon::Exclamation, QStringLiteral("Convert to SQLite"));
        return QString();
    }
    showMessage(ctx,
                QStringLiteral("The Access database ") + Q + jetPath + Q + QStringLiteral(" was converted to ") + Q +
                    to + Q + QStringLiteral(", which is used from now on. The Access database stays as it was.") +
                    LFCR +
                    QStringLiteral("To carry the texts back into it later, use \"helptext-importer sync-to-access\"."),
                Buttons::OK, Icon::Information, QStringLiteral("Convert to SQLite"));
    return to;
}

SyncResult syncToAccess(const QString &sqlitePath, const QString &jetPath)
{
    if (detectDatabaseFormat(sqlitePath) != DbFormat::SQLite)
        throw DbError(("Not an SQLite database: " + sqlitePath).toStdString());
    if (detectDatabaseFormat(jetPath) != DbFormat::Jet)
        throw DbError(("Not an Access database: " + jetPath).toStdString());
    auto from = Database::open(sqlitePath, Database::Mode::ReadOnly);
    auto to = Database::open(jetPath, Database::Mode::ReadWrite);
    SyncResult result;
    Database::Transaction transaction(*to);
    for (const SyncedTable &t : kTables) {
        const QString table = QLatin1String(t.name);
        if (from->hasTable(table) != to->hasTable(table))
            mismatch(t, QStringLiteral("is in only one of them"));
        if (!from->hasTable(table))
            continue;
        const QHash<QString, Row> source = readRows(*from, t), target = readRows(*to, t);
        if (source.size() != target.size())
            mismatch(t, QStringLiteral("has %1 rows in one and %2 in the other").arg(source.size()).arg(target.size()));
        int changed = 0;
        for (auto s = source.begin(); s != source.end(); ++s) {
            const auto d = target.find(s.key());
            if (d == target.end())
                mismatch(t, QStringLiteral("has row %1 only in the SQLite database").arg(s.key()));
            if (d->agree != s->agree)
                mismatch(t, QStringLiteral("row %1 is %2 in one and %3 in the other")
                                .arg(s.key(), s->agree.join(QLatin1Char(' ')), d->agree.join(QLatin1Char(' '))));
            QStringList sets;
            QVariantList values;
            for (qsizetype i = 0; i < t.texts.size(); ++i)
                if (!sameText(s->texts[i], d->texts[i])) {
                    sets << t.texts[i] + QStringLiteral(" = ?");
                    values << s->texts[i];
                }
            if (sets.isEmpty())
                continue;
            to->exec(QStringLiteral("UPDATE %1 SET %2 WHERE rowid = ?").arg(table, sets.join(QStringLiteral(", "))),
                     values << d->rowid);
            ++changed;
        }
        if (changed > 0)
            result.changed << QStringLiteral("%1: %2 %3").arg(table).arg(changed).arg(changed == 1 ? "row" : "rows");
        result.rows += changed;
    }
    transaction.commit();
    return result;
}

} // namespace ht
