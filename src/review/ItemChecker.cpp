#include "review/ItemChecker.h"

namespace ht
{

ItemChecker::ItemChecker(Context &ctx, WidthLimits limits, QStringList only)
    : m_width(ctx, std::move(limits)), m_only(std::move(only))
{
}

bool ItemChecker::runs(const char *id) const
{
    return m_only.isEmpty() || m_only.contains(QLatin1String(id));
}

Findings ItemChecker::check(const std::vector<FieldTexts> &fields, const CheckLanguage &destination)
{
    Findings out;
    const auto add = [&out](Findings found) { out.insert(out.end(), found.begin(), found.end()); };
    for (const FieldTexts &t : fields) {
        if (runs("missing"))
            add(checkMissing(t));
        if (runs("same"))
            add(checkSame(t));
        if (runs("breaks"))
            add(checkBreaks(t));
        if (runs("blanks"))
            add(checkBlanks(t));
        if (runs("punctuation"))
            add(checkPunctuation(t, destination.number));
        if (runs("numbers"))
            add(checkNumbers(t));
        if (runs("width"))
            add(m_width.check(t, destination.font));
        if (runs("spelling") && !t.destination.trimmed().isEmpty()) {
            if (m_spelling.hasDictionary(destination.number))
                add(m_spelling.check(t, destination.number));
            else if (!m_noDictionary.contains(destination.number)) {
                m_noDictionary.insert(destination.number);
                m_notes << QStringLiteral("no dictionary for ") + destination.name;
            }
        }
        if (runs("review"))
            add(checkReview(t));
    }
    return out;
}

QStringList ItemChecker::takeNotes()
{
    return std::exchange(m_notes, {});
}

} // namespace ht
