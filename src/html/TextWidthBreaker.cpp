#include "html/TextWidthBreaker.h"

#include "common/Context.h"
#include "common/ErrorLog.h"

#include <QFontMetrics>
#include <cmath>
#include <vector>

namespace ht
{

// Estimates of a text's width from the advances of its characters, so that
// only joins close to the limit need shaping. For Latin, Greek and Cyrillic
// text the shaped width lies between the two estimates: the plain sum of the
// advances (kerning and ligatures only narrow the text) and that sum with the
// kerning of every neighbouring pair (ligatures of three narrow it further).
struct WidthEstimate {
    bool usable = true;
    bool empty = true;
    double advances = 0; // the wider estimate
    double kerning = 0;  // added: the narrower one
    char16_t first = 0, last = 0;
};

// The metrics of one font and the advances and pair kerning met so far.
struct TextWidthBreaker::FontMeasure {
    explicit FontMeasure(const QFont &font)
        : metrics(font), metricsF(font), advances(kEstimableEnd, qQNaN()), latinPairs(kLatinEnd * kLatinEnd, qQNaN())
    {
    }
    // Estimable characters lie below kEstimableEnd; pairs of the Latin letters
    // below kLatinEnd have a table, the rarer ones a hash.
    static constexpr char16_t kEstimableEnd = 0x590, kLatinEnd = 0x180;
    QFontMetrics metrics;
    QFontMetricsF metricsF;
    std::vector<double> advances;
    std::vector<float> latinPairs;
    QHash<quint32, double> otherPairs;

    static bool estimable(char16_t c)
    {
        // Other scripts, controls (tabs), combining marks and surrogates are always shaped.
        return !(c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x300 && c < 0x370) || c >= kEstimableEnd);
    }
    // The look-ups run for every character of every text: the table hit is
    // kept small enough to be inlined, the first measurement is not.
    double advance(char16_t c)
    {
        const double a = advances[c];
        return std::isnan(a) ? measureAdvance(c) : a;
    }
    Q_NEVER_INLINE double measureAdvance(char16_t c) { return advances[c] = metricsF.horizontalAdvance(QChar(c)); }
    double measurePair(char16_t a, char16_t b)
    {
        const QChar both[2] = {QChar(a), QChar(b)};
        return metricsF.horizontalAdvance(QString(both, 2)) - advance(a) - advance(b);
    }
    double pair(char16_t a, char16_t b)
    {
        if (a < kLatinEnd && b < kLatinEnd) {
            const float k = latinPairs[a * kLatinEnd + b];
            if (!std::isnan(k))
                return k;
        }
        return measureOrLookUpPair(a, b);
    }
    Q_NEVER_INLINE double measureOrLookUpPair(char16_t a, char16_t b)
    {
        if (a < kLatinEnd && b < kLatinEnd)
            return latinPairs[a * kLatinEnd + b] = float(measurePair(a, b));
        const quint32 key = (quint32(a) << 16) | b;
        auto it = otherPairs.constFind(key);
        if (it == otherPairs.constEnd())
            it = otherPairs.insert(key, measurePair(a, b));
        return *it;
    }
    WidthEstimate estimate(QStringView text)
    {
        WidthEstimate e;
        for (QChar qc : text) {
            const char16_t c = qc.unicode();
            if (!estimable(c)) {
                e.usable = false;
                return e;
            }
            e.advances += advance(c);
            if (e.empty)
                e.first = c;
            else
                e.kerning += pair(e.last, c);
            e.empty = false;
            e.last = c;
        }
        return e;
    }
    // The estimate of `a` immediately followed by `b`.
    WidthEstimate joined(const WidthEstimate &a, const WidthEstimate &b)
    {
        if (!a.usable || !b.usable) {
            WidthEstimate none;
            none.usable = false;
            return none;
        }
        if (a.empty)
            return b;
        if (b.empty)
            return a;
        WidthEstimate e;
        e.empty = false;
        e.advances = a.advances + b.advances;
        e.kerning = a.kerning + b.kerning + pair(a.last, b.first);
        e.first = a.first;
        e.last = b.last;
        return e;
    }
};

TextWidthBreaker::TextWidthBreaker()
{
    m_font.setPixelSize(pixelSizeForPoints(10));
}

TextWidthBreaker::~TextWidthBreaker() = default;

int TextWidthBreaker::pixelSizeForPoints(double points)
{
    return std::max(1, int(std::lround(points * 96.0 / 72.0)));
}

void TextWidthBreaker::setFont(const QString &fontName, const QString &fontSize, const QString &fontWeight)
{
    // A run sets the same font for page after page: nothing to do then.
    if (m_measure && fontName == m_lastName && fontSize == m_lastSize &&
        (fontWeight.isEmpty() || fontWeight == m_lastWeight))
        return;
    m_lastName = fontName;
    m_lastSize = fontSize;
    if (!fontWeight.isEmpty())
        m_lastWeight = fontWeight;
    // Languages take turns row by row: a font met before is taken as it was made.
    const QString arguments = fontName + QLatin1Char('\n') + fontSize + QLatin1Char('\n') + fontWeight;
    if (const auto known = m_fontsByArguments.constFind(arguments); known != m_fontsByArguments.constEnd()) {
        m_font = known->first;
        m_measure = known->second;
        return;
    }
    m_font.setFamily(fontName);
    bool sizeOk = false, weightOk = false;
    const double points = fontSize.trimmed().toDouble(&sizeOk);
    sizeOk = sizeOk && points > 0;
    if (sizeOk)
        m_font.setPixelSize(pixelSizeForPoints(points));
    if (!fontWeight.isEmpty()) {
        const int weight = fontWeight.trimmed().toInt(&weightOk);
        if (weightOk)
            m_font.setWeight(QFont::Weight(std::clamp(weight, 1, 1000)));
    }
    // One metrics object per font for the whole life of the breaker.
    const QString key = m_font.key();
    auto it = m_measures.find(key);
    if (it == m_measures.end())
        it = m_measures.insert(key, std::make_shared<FontMeasure>(m_font));
    m_measure = it->get();
    // Only arguments that set both size and weight make the font on their own.
    if (sizeOk && weightOk)
        m_fontsByArguments.insert(arguments, {m_font, m_measure});
}

int TextWidthBreaker::textWidthTwips(const QString &text) const
{
    const int pixels =
        m_measure ? m_measure->metrics.horizontalAdvance(text) : QFontMetrics(m_font).horizontalAdvance(text);
    return pixels * 15;
}

namespace
{

// Walks the words of a text without copying them. A word runs up to the next
// blank; the blanks after it are skipped. Leading blanks therefore give one
// empty first word, trailing blanks nothing.
class WordWalk
{
  public:
    explicit WordWalk(QStringView text) : m_text(text) {}
    bool next(QStringView &word)
    {
        if (m_done)
            return false;
        const qsizetype n = m_text.size();
        qsizetype end = m_pos;
        while (end < n && m_text[end] != u' ')
            ++end;
        word = m_text.mid(m_pos, end - m_pos);
        m_pos = end;
        while (m_pos < n && m_text[m_pos] == u' ')
            ++m_pos;
        m_done = m_pos >= n;
        return true;
    }

  private:
    QStringView m_text;
    qsizetype m_pos = 0;
    bool m_done = false;
};

} // namespace

QStringList splitWordsAtBlanks(const QString &text)
{
    QStringList words;
    WordWalk walk(text);
    for (QStringView word; walk.next(word);)
        words.append(word.toString());
    return words;
}

QStringList TextWidthBreaker::TextSingleLineToArray(Context &ctx, const QString &text, const QString &fontName,
                                                    const QString &fontSize, const QString &fontWeight, int width)
{
    try {
        setFont(fontName, fontSize, fontWeight);
        const int limitPixels = width != 0 ? width : 1024;
        const int limitTwips = limitPixels * 15;
        // Shaped only when the estimates do not settle the join: a few pixels of
        // slack cover the rounding of the shaped width.
        const double slack = 3 + limitPixels * 0.005;
        const WidthEstimate blank = m_measure->estimate(u" ");
        WordWalk walk(text);
        QStringView word;
        walk.next(word);
        // The line grows in place; it joins the result when the next one starts.
        QStringList lines;
        QString current = word.toString();
        current.reserve(text.size());
        WidthEstimate line = m_measure->estimate(word);
        while (walk.next(word)) {
            const WidthEstimate wordEstimate = m_measure->estimate(word);
            // The blank that joins the word is not part of the measurement.
            const WidthEstimate both = m_measure->joined(line, wordEstimate);
            bool breakHere;
            if (!m_measureEveryJoin && both.usable && both.advances < limitPixels - slack)
                breakHere = false;
            else if (!m_measureEveryJoin && both.usable && both.advances + both.kerning >= limitPixels + slack)
                breakHere = true;
            else
                breakHere = textWidthTwips(QString(current).append(word)) >= limitTwips;
            if (breakHere) {
                lines.append(current);
                current.resize(0);
                line = WidthEstimate();
            }
            current += QLatin1Char(' ');
            current += word;
            line = m_measure->joined(m_measure->joined(line, blank), wordEstimate);
        }
        lines.append(current);
        return lines;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextSingleLineToArray"), e);
        return {};
    }
}

} // namespace ht
