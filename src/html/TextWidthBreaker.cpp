#include "html/TextWidthBreaker.h"

#include "common/Context.h"
#include "common/ErrorLog.h"

#include <QFontMetrics>
#include <cmath>

namespace ht
{

// The metrics of one font and the advances of the characters met so far.
struct TextWidthBreaker::FontMeasure {
    explicit FontMeasure(const QFont &font) : metrics(font), metricsF(font) {}
    QFontMetrics metrics;
    QFontMetricsF metricsF;
    QHash<char16_t, double> advances;
};

namespace
{

QString trimBlanks(const QString &s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && s.at(b) == u' ')
        ++b;
    while (e > b && s.at(e - 1) == u' ')
        --e;
    return s.mid(b, e - b);
}

} // namespace

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
    m_font.setFamily(fontName);
    bool ok = false;
    const double points = fontSize.trimmed().toDouble(&ok);
    if (ok && points > 0)
        m_font.setPixelSize(pixelSizeForPoints(points));
    if (!fontWeight.isEmpty()) {
        const int weight = fontWeight.trimmed().toInt(&ok);
        if (ok)
            m_font.setWeight(QFont::Weight(std::clamp(weight, 1, 1000)));
    }
    // One metrics object per font for the whole life of the breaker.
    const QString key = m_font.key();
    auto it = m_measures.find(key);
    if (it == m_measures.end())
        it = m_measures.insert(key, std::make_shared<FontMeasure>(m_font));
    m_measure = it->get();
}

int TextWidthBreaker::textWidthTwips(const QString &text) const
{
    const int pixels =
        m_measure ? m_measure->metrics.horizontalAdvance(text) : QFontMetrics(m_font).horizontalAdvance(text);
    return pixels * 15;
}

double TextWidthBreaker::estimateWidth(const QString &text)
{
    double width = 0;
    for (QChar qc : text) {
        const char16_t c = qc.unicode();
        // Latin, Greek and Cyrillic without controls and combining marks: shaping
        // only kerns them. Other scripts, tabs and surrogates are always measured.
        if (c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x300 && c < 0x370) || c >= 0x590)
            return -1;
        auto it = m_measure->advances.constFind(c);
        if (it == m_measure->advances.constEnd())
            it = m_measure->advances.insert(c, m_measure->metricsF.horizontalAdvance(qc));
        width += *it;
    }
    return width;
}

QStringList splitWordsAtBlanks(const QString &text)
{
    QStringList words{QString()};
    QString rest = text;
    do {
        const qsizetype blank = rest.indexOf(QLatin1Char(' '));
        const QString word = blank < 0 ? rest : rest.left(blank);
        words.last() = word;
        words.append(QString());
        rest = trimBlanks(rest.mid(word.size()));
    } while (!rest.isEmpty());
    if (words.size() > 1)
        words.removeLast();
    return words;
}

QStringList TextWidthBreaker::TextSingleLineToArray(Context &ctx, const QString &text, const QString &fontName,
                                                    const QString &fontSize, const QString &fontWeight, int width)
{
    try {
        setFont(fontName, fontSize, fontWeight);
        const int limitPixels = width != 0 ? width : 1024;
        const int limitTwips = limitPixels * 15;
        // Joins that stay this far below the limit by the sum of the characters'
        // advances need no shaping: kerning never makes up the difference.
        const double safeBelow = limitPixels * 0.9 - 4;
        const double blank = estimateWidth(QStringLiteral(" "));
        const QStringList words = splitWordsAtBlanks(text);
        QStringList lines{words.first()};
        double lineEstimate = estimateWidth(words.first());
        for (qsizetype i = 1; i < words.size(); ++i) {
            const QString &word = words.at(i);
            const double wordEstimate = estimateWidth(word);
            const bool clearlyFits = !m_measureEveryJoin && lineEstimate >= 0 && wordEstimate >= 0 &&
                                     lineEstimate + wordEstimate < safeBelow;
            // The blank that joins the word is not part of the measurement.
            if (!clearlyFits && textWidthTwips(lines.last() + word) >= limitTwips) {
                lines.append(QString());
                lineEstimate = 0;
            }
            lines.last() += QLatin1Char(' ') + word;
            lineEstimate = (lineEstimate < 0 || wordEstimate < 0) ? -1 : lineEstimate + blank + wordEstimate;
        }
        return lines;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextSingleLineToArray"), e);
        return {};
    }
}

} // namespace ht
