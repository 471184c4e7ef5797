#pragma once
// The text rows a language needs in a help-text database: one per definition
// row of every kind present, and the eight description rows. Rows already
// there keep their texts, so making them again repairs without losing work.

#include <QString>
#include <QVariant>
#include <functional>

namespace ht
{

class Database;

struct LanguageRowsAdded {
    long alarms = 0, warnings = 0, materialChanges = 0, descriptions = 0;
};

// Adds the missing rows of `language` (empty texts). `progress` is told which
// kind is being built ("Alarms", "Warnings", "MaterialChange",
// "Descriptions"). Runs inside the caller's transaction, if there is one.
LanguageRowsAdded addLanguageTextRows(Database &db, qlonglong language, bool materialChange,
                                      const std::function<void(const QString &kind)> &progress = {});

// Edits the language's row in the Language table, or adds it when there is none.
void writeLanguageRow(Database &db, qlonglong language, const QVariant &name, const QVariant &font,
                      const QVariant &layout);

// A language has one number in the help-text database and the language
// definitions. The sentence naming the first language of `helpText` whose
// number the definitions (`definitionsPath`) give otherwise; "" when all
// agree or there are no definitions to ask. Throws DbError.
QString languageNumberConflict(Database &helpText, const QString &definitionsPath);

constexpr int kDescriptionRows = 8; // Discription IDs 1 to 8 per language

} // namespace ht
