#include "review/TextChecks.h"

#include <QRegularExpression>
#include <QSet>

namespace ht
{

namespace
{

Finding finding(const char *check, const FieldTexts &t, const QString &words)
{
    return {QLatin1String(check), t.field, t.field + QStringLiteral(": ") + words};
}

bool blank(const QString &text)
{
    return text.trimmed().isEmpty();
}

// Both sides hold text: the comparing checks have something to compare.
bool bothHaveText(const FieldTexts &t)
{
    return !blank(t.source) && !blank(t.destination);
}

// The one-line fields break at "/", the long ones at their lines.
bool oneLineField(const QString &field)
{
    return field == QLatin1String("Device") || field == QLatin1String("Result");
}

// Line ends of every form made one "\n", with the blank of "/ " taken as part of it.
QString withNewlines(const QString &stored)
{
    QString s = stored;
    s.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    s.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    s.replace(QLatin1String("/ "), QLatin1String("\n"));
    s.replace(QLatin1Char('/'), QLatin1Char('\n'));
    return s;
}

// A word of letters with a small letter in it: a code ("PLC"), a number or
// a lone name does not make a text that wants translating.
int translatableWords(const QString &text)
{
    static const QRegularExpression word(QStringLiteral("[\\p{L}]{2,}"));
    int count = 0;
    for (auto it = word.globalMatch(text); it.hasNext();) {
        const QString w = it.next().captured();
        if (w != w.toUpper())
            ++count;
    }
    return count;
}

// The end mark of a text, full-width and other scripts' forms as the plain one.
QChar endMark(const QString &text, bool greek)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        return {};
    switch (t.back().unicode()) {
    case u'.':
    case u'\u3002': // ideographic full stop
    case u'\uFF0E':
    case u'\uFF61':
    case u'\u2026': // an ellipsis ends like a full stop
        return u'.';
    case u':':
    case u'\uFF1A':
        return u':';
    case u'!':
    case u'\uFF01':
        return u'!';
    case u'?':
    case u'\uFF1F':
    case u'\u061F': // Arabic
    case u'\u037E': // Greek question mark
        return u'?';
    case u';':
        return greek ? QChar(u'?') : QChar();
    default:
        return {};
    }
}

QString markWords(QChar mark)
{
    return mark.isNull() ? QStringLiteral("no mark") : QLatin1Char('"') + mark + QLatin1Char('"');
}

// A number with the unit after it ("24 V", "3.5 mm"), or a code of letters and digits ("M12", "X1.3").
struct Quantity {
    QString number; // decimal comma as point
    QString unit;
    QString shown;
};

QList<Quantity> quantities(const QString &text)
{
    static const QRegularExpression re(
        QStringLiteral("(?<![\\p{L}\\d.,])(\\d+(?:[.,]\\d+)*)(?:\\s?(%|°C|°|[\\p{L}]{1,3})(?![\\p{L}\\d]))?"));
    QList<Quantity> out;
    for (auto it = re.globalMatch(text); it.hasNext();) {
        const auto m = it.next();
        QString number = m.captured(1);
        number.replace(QLatin1Char(','), QLatin1Char('.'));
        out.append({number, m.captured(2), m.captured(0).trimmed()});
    }
    return out;
}

QStringList codes(const QString &text)
{
    static const QRegularExpression re(
        QStringLiteral("(?<![\\p{L}\\d])\\p{L}{1,4}\\d+(?:[.:]\\d+)*[\\p{L}]?(?![\\p{L}\\d])"));
    QStringList out;
    for (auto it = re.globalMatch(text); it.hasNext();)
        out.append(it.next().captured());
    return out;
}

} // namespace

const QStringList &allCheckIds()
{
    static const QStringList ids{QStringLiteral("missing"), QStringLiteral("same"),        QStringLiteral("breaks"),
                                 QStringLiteral("blanks"),  QStringLiteral("punctuation"), QStringLiteral("numbers"),
                                 QStringLiteral("width"),   QStringLiteral("spelling"),    QStringLiteral("review")};
    return ids;
}

QStringList textLines(const QString &stored)
{
    return withNewlines(stored).split(QLatin1Char('\n'));
}

Findings checkMissing(const FieldTexts &t)
{
    if (!blank(t.source) && blank(t.destination))
        return {finding("missing", t, QStringLiteral("no text here, the source has one"))};
    return {};
}

Findings checkSame(const FieldTexts &t)
{
    if (!bothHaveText(t) || t.source.trimmed() != t.destination.trimmed())
        return {};
    // Numbers, codes and names stay as they are in every language.
    if (translatableWords(t.source) < 2)
        return {};
    return {finding("same", t, QStringLiteral("the same as the source, not translated yet?"))};
}

Findings checkBreaks(const FieldTexts &t)
{
    if (!bothHaveText(t))
        return {};
    const qsizetype source = textLines(t.source.trimmed()).size(), here = textLines(t.destination.trimmed()).size();
    if (source == here)
        return {};
    if (oneLineField(t.field))
        return {finding("breaks", t,
                        QStringLiteral("%1 line break%2 in the source, %3 here")
                            .arg(source - 1)
                            .arg(source == 2 ? QString() : QStringLiteral("s"))
                            .arg(here - 1))};
    return {finding("breaks", t, QStringLiteral("%1 lines in the source, %2 here").arg(source).arg(here))};
}

Findings checkBlanks(const FieldTexts &t)
{
    if (!bothHaveText(t))
        return {};
    Findings out;
    const auto leading = [](const QString &s) { return !s.isEmpty() && s.front() == u' '; };
    const auto trailing = [](const QString &s) { return !s.isEmpty() && s.back() == u' '; };
    if (leading(t.source) != leading(t.destination))
        out.push_back(finding("blanks", t,
                              leading(t.source)
                                  ? QStringLiteral("the source starts with a blank, this text does not")
                                  : QStringLiteral("a blank at the start that the source does not have")));
    if (trailing(t.source) != trailing(t.destination))
        out.push_back(finding("blanks", t,
                              trailing(t.source) ? QStringLiteral("the source ends with a blank, this text does not")
                                                 : QStringLiteral("a blank at the end that the source does not have")));
    // A doubled blank the source has as well is meant (a column laid out by hand).
    const QString doubled = QStringLiteral("  ");
    if (withNewlines(t.destination).contains(doubled) && !withNewlines(t.source).contains(doubled))
        out.push_back(finding("blanks", t, QStringLiteral("two blanks in a row")));
    return out;
}

Findings checkPunctuation(const FieldTexts &t, const QString &destinationLanguage)
{
    if (!bothHaveText(t))
        return {};
    const QChar source = endMark(t.source, false);
    const QChar here = endMark(t.destination, destinationLanguage == QLatin1String("1032"));
    if (source == here)
        return {};
    return {
        finding("punctuation", t,
                QStringLiteral("the source ends with %1, this text with %2").arg(markWords(source), markWords(here)))};
}

Findings checkNumbers(const FieldTexts &t)
{
    if (!bothHaveText(t))
        return {};
    Findings out;
    QSet<QString> told;
    const QList<Quantity> here = quantities(t.destination);
    for (const Quantity &q : quantities(t.source)) {
        bool found = false;
        for (const Quantity &h : here)
            // Units may be written in the destination's script ("24 В"): a unit of any kind will do.
            found = found ||
                    (h.number == q.number && (q.unit.isEmpty() || !h.unit.isEmpty() || t.destination.contains(q.unit)));
        if (!found && !told.contains(q.shown)) {
            told.insert(q.shown);
            out.push_back(finding("numbers", t, QStringLiteral("\"%1\" of the source is not here").arg(q.shown)));
        }
    }
    for (const QString &code : codes(t.source)) {
        if (!t.destination.contains(code) && !told.contains(code)) {
            told.insert(code);
            out.push_back(finding("numbers", t, QStringLiteral("\"%1\" of the source is not here").arg(code)));
        }
    }
    return out;
}

std::pair<QString, QString> markWordDifference(const QString &before, const QString &after)
{
    const QStringList a = before.split(QLatin1Char(' '), Qt::SkipEmptyParts),
                      b = after.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    // The longest common word sequence; what lies outside it on either side is the difference.
    std::vector<std::vector<int>> lcs(size_t(a.size() + 1), std::vector<int>(size_t(b.size() + 1), 0));
    for (qsizetype i = a.size() - 1; i >= 0; --i)
        for (qsizetype j = b.size() - 1; j >= 0; --j)
            lcs[i][j] = a[i] == b[j] ? lcs[i + 1][j + 1] + 1 : std::max(lcs[i + 1][j], lcs[i][j + 1]);
    QStringList markedA, markedB, runA, runB;
    const auto flush = [](QStringList &marked, QStringList &run) {
        if (!run.isEmpty())
            marked << QLatin1Char('[') + run.join(QLatin1Char(' ')) + QLatin1Char(']');
        run.clear();
    };
    qsizetype i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        if (i < a.size() && j < b.size() && a[i] == b[j]) {
            flush(markedA, runA);
            flush(markedB, runB);
            markedA << a[i++];
            markedB << b[j++];
        } else if (j < b.size() && (i == a.size() || lcs[i][j + 1] >= lcs[i + 1][j])) {
            runB << b[j++];
        } else {
            runA << a[i++];
        }
    }
    flush(markedA, runA);
    flush(markedB, runB);
    return {markedA.join(QLatin1Char(' ')), markedB.join(QLatin1Char(' '))};
}

Findings checkReview(const FieldTexts &t)
{
    if (!t.keptSource || *t.keptSource == t.source || blank(t.destination))
        return {};
    return {finding("review", t, QStringLiteral("the source changed since this text was saved; needs review"))};
}

} // namespace ht
