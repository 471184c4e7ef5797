#pragma once
// Every check of one item's destination texts against its source texts: the
// one the editor runs while the translator types, and `check` runs per item.

#include "review/SpellCheck.h"
#include "review/TextChecks.h"
#include "review/WidthCheck.h"

#include <QSet>

namespace ht
{

struct Context;

// The destination language as the checks need it.
struct CheckLanguage {
    QString number; // Language.Language
    QString name;
    QString font; // Language.Font
};

class ItemChecker
{
  public:
    // only: the check ids to run; empty runs them all.
    ItemChecker(Context &ctx, WidthLimits limits, QStringList only = {});
    Findings check(const std::vector<FieldTexts> &fields, const CheckLanguage &destination);
    // "no dictionary for Greek", once for each language met without one.
    QStringList takeNotes();
    SpellCheck &spelling() { return m_spelling; }

  private:
    bool runs(const char *id) const;
    WidthCheck m_width;
    SpellCheck m_spelling;
    QStringList m_only;
    QSet<QString> m_noDictionary;
    QStringList m_notes;
};

} // namespace ht
