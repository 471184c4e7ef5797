#pragma once
// What the language form and the language commands do to the databases:
// the languages on offer, creating (or repairing) a language with a text row
// for every item, storing its settings, and deleting it. Each job asks and
// tells the user through the context's user interface, and writes in one
// transaction: a failure half-way changes nothing.

#include <QString>
#include <QStringList>
#include <optional>

namespace ht
{

struct Context;
class StatusTarget;

// A language as the language-definition database describes it.
struct LanguageDefinition {
    QString number; // LookupLanguages.Language, the same number in the help-text database
    QString name;
    QString font;
    QString layout; // KBLayout
};

// The names offered for creation, by name: never a row whose Font is "0", and
// with the SubstBy column, never a language that another one stands in for.
QStringList offeredLanguages(Context &ctx);
// The language of that name that may be created or deleted (SubstBy empty when
// the column exists); nothing when there is none. Throws DbError.
std::optional<LanguageDefinition> lookupLanguage(Context &ctx, const QString &name);

// The messages a script answers for the user (see LanguageCommands).
QString languageExistsQuestion(const QString &name);
QString deleteLanguageQuestion(const QString &name, int option);

struct LanguageCreated {
    long alarms = 0, warnings = 0, materialChanges = 0, descriptions = 0; // rows added
};
// Writes the Language row and adds the missing text rows of every kind and the
// eight description rows; existing rows keep their texts. A language that has
// alarm texts already is repaired only when the user agrees. Nothing when it
// was refused or failed (the user has been told).
std::optional<LanguageCreated> createLanguage(Context &ctx, StatusTarget *status, const LanguageDefinition &language);
// Adds or updates the Language row only. False when it failed (the user has been told).
bool updateLanguageSettings(Context &ctx, const LanguageDefinition &language);

// The languages of the help-text database that have alarm texts, by number.
QStringList deletableLanguages(Context &ctx);

enum DeleteOption { DeleteNoOption = 0, DeleteTextsOnly = 1, DeleteWithConfiguration = 2 };
struct LanguageDeleted {
    long alarms = 0, warnings = 0, materialChanges = 0, languageRows = 0, descriptions = 0;
};
// Deletes the texts of the language `name` (and with DeleteWithConfiguration its
// Language and Discription rows) after the user confirmed. German and English
// are refused, as is a name the language-definition database does not know.
std::optional<LanguageDeleted> deleteLanguage(Context &ctx, StatusTarget *status, const QString &name, int option);

} // namespace ht
