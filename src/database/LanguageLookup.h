#pragma once
// The language-definition database: code pages, language numbers, fonts.

#include <QString>
#include <QStringList>

namespace ht {

struct Context;

QString ConnectToLookup(Context &ctx);
QString CheckLanguageLookup(Context &ctx, const QString &path);
QString GetCodePage(Context &ctx, const QString &name);      // "-1" when unknown
QString GetLanguageID(Context &ctx, const QString &number);  // "-1" when unknown
// Font name, size, weight, ... ; element 0 == "-1" when the specification is unusable.
QStringList GetFontSpecs(const QString &spec);
struct ExistingLanguage {
    QString number;
    QString name;
};
QList<ExistingLanguage> GetExistingLanguages(Context &ctx);
void UpdateLangFontSettings(Context &ctx);

} // namespace ht
