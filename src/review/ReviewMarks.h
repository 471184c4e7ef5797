#pragma once
// Review marks: for each saved destination text, the source text (and source
// language) it was translated from. They live in a companion SQLite file beside
// the help-text database ("Helptext.mdb" -> "Helptext.mdb.work.sqlite"), so the
// database keeps the schema the operator panel expects. The file is made when
// first needed; losing it loses marks, never texts. Several editors share it
// under SQLite's own locking.

#include <QHash>
#include <QString>
#include <QStringList>
#include <vector>

namespace ht
{

QString reviewMarksPath(const QString &databasePath);

struct KeptSource {
    QString field;
    QString text; // the source text as stored
};

// Where a kept source belongs: an item's text table row and field.
struct MarkKey {
    int kind = 0;
    long itemId = 0;
    QString field;
    bool operator==(const MarkKey &) const = default;
};
inline size_t qHash(const MarkKey &k, size_t seed = 0)
{
    return qHashMulti(seed, k.kind, k.itemId, k.field);
}

// Keeps the sources the destination texts of one item were saved against,
// in one transaction. Throws DbError when the file cannot be made or written.
void keepTranslatedFrom(const QString &databasePath, int kind, long itemId, const QString &language,
                        const QString &sourceLanguage, const std::vector<KeptSource> &sources);

// Every kept source of `language` translated from `sourceLanguage`; empty
// when the file does not exist. Throws DbError when it cannot be read.
QHash<MarkKey, QString> readTranslatedFrom(const QString &databasePath, const QString &language,
                                           const QString &sourceLanguage);

// The kept sources of one item's fields (field -> text); empty when none or no file.
QHash<QString, QString> readTranslatedFrom(const QString &databasePath, int kind, long itemId, const QString &language,
                                           const QString &sourceLanguage);

} // namespace ht
