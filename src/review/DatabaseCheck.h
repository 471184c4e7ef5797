#pragma once
// Runs the checks over a help-text database: every item of every machine and
// kind (or those asked for), one destination language against a source.

#include "review/ItemChecker.h"
#include "review/ReviewMarks.h"

#include <QList>
#include <functional>

namespace ht
{

struct Context;

struct CheckScope {
    QString machine;  // "" for every machine
    int kind = 0;     // 0 for every kind
    QStringList only; // check ids; empty for all
};

// One item of one destination language, as checked.
struct CheckedItem {
    QString machine;
    int kind = 0;
    long number = 0;
    long id = 0;
    bool hasSource = false; // the source has text to translate
    bool missing = false;   // a field the source fills is empty here
    QString sourceStart;    // the source text of its first filled field
    std::vector<FieldTexts> texts;
    Findings findings;
    bool needsReview() const;
    bool hasOtherFindings() const; // anything but missing and review
};

const char *kindWord(int kind); // "alarms", "warnings", "materialchange"

class DatabaseCheck
{
  public:
    // Opens `databasePath` read-only; throws DbError when it cannot.
    DatabaseCheck(Context &ctx, const QString &databasePath, WidthLimits limits, QStringList only = {});
    // With a checker of the caller's, whose dictionaries stay loaded between runs.
    DatabaseCheck(const QString &databasePath, ItemChecker &checker);
    ~DatabaseCheck();

    const QList<CheckLanguage> &languages() const { return m_languages; }
    const CheckLanguage *language(const QString &name) const; // case-insensitive; nullptr when absent
    QStringList machines() const;

    // Calls `each` for every item in scope, in machine, kind, number order.
    void run(const CheckLanguage &destination, const CheckLanguage &source, const CheckScope &scope,
             const std::function<void(const CheckedItem &)> &each);
    QStringList takeNotes() { return m_checker->takeNotes(); }

    // Item `number` of machine and kind: its database ID and its texts in `language`
    // by field; an ID of 0 when the machine has no such item.
    struct ItemTexts {
        long id = 0;
        std::vector<KeptSource> texts;
    };
    ItemTexts itemTexts(const QString &machine, int kind, long number, const CheckLanguage &language);

  private:
    void open(const QString &databasePath);
    struct Impl;
    std::unique_ptr<Impl> d;
    QList<CheckLanguage> m_languages;
    std::unique_ptr<ItemChecker> m_ownChecker;
    ItemChecker *m_checker;
};

} // namespace ht
