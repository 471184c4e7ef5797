#include "review/ReviewMarks.h"

#include "database/Database.h"

#include <QFileInfo>

namespace ht
{

namespace
{

const char kSchema[] = "CREATE TABLE IF NOT EXISTS TranslatedFrom (Kind INTEGER NOT NULL, ItemID INTEGER NOT NULL, "
                       "Language INTEGER NOT NULL, Field TEXT NOT NULL, SourceLanguage INTEGER NOT NULL, "
                       "SourceText TEXT NOT NULL, Saved TEXT, PRIMARY KEY (Kind, ItemID, Language, Field))";

std::unique_ptr<Database> openForWriting(const QString &path)
{
    if (!QFileInfo::exists(path)) {
        try {
            auto db = Database::create(path);
            db->exec(QLatin1String(kSchema));
            return db;
        } catch (const DbError &) {
            // Another editor made it a moment ago: take theirs.
            if (!QFileInfo::exists(path))
                throw;
        }
    }
    auto db = Database::open(path, Database::Mode::ReadWrite);
    db->exec(QLatin1String(kSchema));
    return db;
}

// The marks of the database, or nothing when none were kept yet.
std::unique_ptr<Database> openForReading(const QString &databasePath)
{
    const QString path = reviewMarksPath(databasePath);
    if (!QFileInfo::exists(path))
        return {};
    auto db = Database::open(path, Database::Mode::ReadOnly);
    if (!db->hasTable(QStringLiteral("TranslatedFrom")))
        return {};
    return db;
}

} // namespace

QString reviewMarksPath(const QString &databasePath)
{
    return databasePath + QStringLiteral(".work.sqlite");
}

void keepTranslatedFrom(const QString &databasePath, int kind, long itemId, const QString &language,
                        const QString &sourceLanguage, const std::vector<KeptSource> &sources)
{
    auto db = openForWriting(reviewMarksPath(databasePath));
    Database::Transaction transaction(*db);
    for (const KeptSource &s : sources)
        db->exec(QStringLiteral("INSERT OR REPLACE INTO TranslatedFrom (Kind, ItemID, Language, Field, SourceLanguage, "
                                "SourceText, Saved) VALUES (?, ?, ?, ?, ?, ?, datetime('now'))"),
                 {kind, qlonglong(itemId), language.toLongLong(), s.field, sourceLanguage.toLongLong(), s.text});
    transaction.commit();
}

QHash<MarkKey, QString> readTranslatedFrom(const QString &databasePath, const QString &language,
                                           const QString &sourceLanguage)
{
    QHash<MarkKey, QString> kept;
    const std::unique_ptr<Database> db = openForReading(databasePath);
    if (!db)
        return kept;
    db->forEachRow(QStringLiteral("SELECT Kind, ItemID, Field, SourceText FROM TranslatedFrom WHERE Language = ? AND "
                                  "SourceLanguage = ?"),
                   {language.toLongLong(), sourceLanguage.toLongLong()}, [&](QVariantList &row) {
                       kept.insert({row[0].toInt(), long(row[1].toLongLong()), row[2].toString()}, row[3].toString());
                       return true;
                   });
    return kept;
}

QHash<QString, QString> readTranslatedFrom(const QString &databasePath, int kind, long itemId, const QString &language,
                                           const QString &sourceLanguage)
{
    QHash<QString, QString> kept;
    const std::unique_ptr<Database> db = openForReading(databasePath);
    if (!db)
        return kept;
    for (const QVariantList &row :
         db->query(QStringLiteral("SELECT Field, SourceText FROM TranslatedFrom WHERE Kind = ? AND ItemID = ? AND "
                                  "Language = ? AND SourceLanguage = ?"),
                   {kind, qlonglong(itemId), language.toLongLong(), sourceLanguage.toLongLong()})
             .rows())
        kept.insert(row[0].toString(), row[1].toString());
    return kept;
}

} // namespace ht
