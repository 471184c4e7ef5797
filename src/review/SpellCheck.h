#pragma once
// The `spelling` check: Hunspell dictionaries chosen by the language number.
// A language without a dictionary is skipped; the caller is told once.

#include "review/TextChecks.h"

#include <QHash>
#include <QStringList>
#include <memory>

namespace ht
{

// The dictionary name of a language number: "1031" -> "de_DE"; "" when none is known.
QString dictionaryName(const QString &languageNumber);

// Where dictionaries are looked for: $HELPTEXT_DICTIONARIES, then the system's folders.
QStringList dictionaryFolders();

class SpellCheck
{
  public:
    explicit SpellCheck(QStringList folders = dictionaryFolders());
    ~SpellCheck();
    SpellCheck(const SpellCheck &) = delete;
    SpellCheck &operator=(const SpellCheck &) = delete;

    // Whether the language has a dictionary here (it is loaded on first use).
    bool hasDictionary(const QString &languageNumber);
    Findings check(const FieldTexts &t, const QString &languageNumber);
    // The unknown words of `text`, in order, each once.
    QStringList unknownWords(const QString &text, const QString &languageNumber);
    QStringList suggestions(const QString &word, const QString &languageNumber);

  private:
    class Dictionary;
    Dictionary *dictionary(const QString &languageNumber);
    QStringList m_folders;
    QHash<QString, std::shared_ptr<Dictionary>> m_dictionaries; // null: none for that language
};

} // namespace ht
