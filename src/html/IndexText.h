#pragma once
// Index texts of the operator-panel software inside alarm page templates:
// "###DIREKT:<dotted address>###" is replaced by the text in the page's language.

#include <QHash>
#include <QString>
#include <memory>

namespace ht
{

struct Context;
class Database;

// Kept by the caller for one generation run: each address is looked up once
// per language, found or not, and the index-text database stays open meanwhile.
struct IndexTextCache {
    IndexTextCache();
    ~IndexTextCache();
    QHash<QString, QHash<QString, QString>> textsByLanguage; // language number -> address -> text
    int databaseLookups = 0;
    std::unique_ptr<Database> db;
    QString dbPath;
};

// The address between the first "###DIREKT:" and the next "###", or "".
QString GetHTMLDirectIndexTextAddress(const QString &line);

// The text of `address` in language `languageNumber`, or "-1" when there is none
// or the call is not valid (empty path, mode other than 1).
QString GetScopiaIndexText(Context &ctx, const QString &dbPath, const QString &languageNumber, const QString &address,
                           int mode, IndexTextCache *cache = nullptr);

// The line with every marker replaced. Asks for the index-text database when
// ctx.state.indexTextDB is unusable; the caller aborts when it stays empty.
QString ExchangeDirectAdress_IndexText(Context &ctx, const QString &line, const QString &languageNumber,
                                       IndexTextCache &cache);

} // namespace ht
