#pragma once
// The checks of one destination text against its source text that need
// neither a font nor a dictionary. Each returns its findings as data.

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace ht
{

// What a check found, in the translator's words.
struct Finding {
    QString check;   // "missing", "same", "breaks", "blanks", "punctuation", "numbers", "width", "spelling", "review"
    QString field;   // "Device", "Result", "Function", "Text"
    QString message; // "Result: 2 line breaks in the source, 1 here"
    bool operator==(const Finding &) const = default;
};
using Findings = std::vector<Finding>;

// One field of an item, as stored: "/" (or "/ ") and line breaks stand for a new line.
struct FieldTexts {
    QString field;
    QString source;
    QString destination;
    // The source text the destination was last saved against, when one was kept.
    std::optional<QString> keptSource;
};

// Every check id, in the order they run.
const QStringList &allCheckIds();

// The stored text as its lines: "/", "/ ", CR LF, CR and LF all end a line.
QStringList textLines(const QString &stored);

Findings checkMissing(const FieldTexts &t);
Findings checkSame(const FieldTexts &t);
Findings checkBreaks(const FieldTexts &t);
Findings checkBlanks(const FieldTexts &t);
// destinationLanguage: the language number; Greek writes ";" for a question mark.
Findings checkPunctuation(const FieldTexts &t, const QString &destinationLanguage = QString());
Findings checkNumbers(const FieldTexts &t);
// The source changed since the destination was saved.
Findings checkReview(const FieldTexts &t);

// Both texts with the words the other does not have in brackets:
// ("Machine stops", "Machine stops at once") -> ("Machine stops", "Machine stops [at once]").
std::pair<QString, QString> markWordDifference(const QString &before, const QString &after);

} // namespace ht
