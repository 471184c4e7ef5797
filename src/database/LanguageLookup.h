#pragma once
// The language-definition database: code pages, language numbers, fonts.

#include <QList>
#include <QString>
#include <QStringList>

namespace ht
{

struct Context;

// Lets the user pick a language-definition database and checks it; "" when
// cancelled or when the file is not one.
QString ConnectToLookup(Context &ctx);
// Checks the file and makes it the active language-definition database
// (ctx.state.langLookupDB, langLookupHasSubstBy). Returns `path`, or "" (the
// active database left as it was) when the file is not a usable one.
QString CheckLanguageLookup(Context &ctx, const QString &path);
QString GetCodePage(Context &ctx, const QString &name);     // "-1" when unknown
QString GetLanguageID(Context &ctx, const QString &number); // "-1" when unknown

// A font specification is a font name followed by up to seven numbers separated
// by blanks: size, weight, character set, italic, underline, strikethrough,
// reserved ("Arial 10 400", "Times New Roman 12 700 0"). The name is everything
// before the first number. The result always has 8 elements: the name, then the
// numbers given and "" for those left out; element 0 is "-1" (and the rest "")
// when the specification is unusable (no name, a part after the name that is
// not a number, more than seven numbers).
QStringList GetFontSpecs(const QString &fontSpec);
enum FontSpecIndex { FontName = 0, FontSize = 1, FontWeight = 2, FontCharSet = 3 };

struct ExistingLanguage {
    QString number;
    QString name;
};
// The languages of the active help-text database's Language table, in record order.
QList<ExistingLanguage> GetExistingLanguages(Context &ctx);
// Copies Font and KBLayout of every language of the active help-text database
// from the language-definition database (rows that agree are left alone), after
// widening the Font column to 255 characters when it is declared narrower.
void UpdateLangFontSettings(Context &ctx);

} // namespace ht
