#include "html/TextWidthBreaker.h"

#include "common/Context.h"
#include "common/ErrorLog.h"

#include <QFontMetrics>
#include <cmath>

namespace ht
{

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
    auto it = m_metricsByFont.find(key);
    if (it == m_metricsByFont.end())
        it = m_metricsByFont.insert(key, std::make_shared<QFontMetrics>(m_font));
    m_metrics = it->get();
}

int TextWidthBreaker::textWidthTwips(const QString &text) const
{
    const int pixels = m_metrics ? m_metrics->horizontalAdvance(text) : QFontMetrics(m_font).horizontalAdvance(text);
    return pixels * 15;
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
        const int limitTwips = (width != 0 ? width : 1024) * 15;
        // Window events run once per text, not per word: a bulk run breaks many texts.
        if (ctx.processEvents)
            ctx.processEvents();
        const QStringList words = splitWordsAtBlanks(text);
        QStringList lines{words.first()};
        for (qsizetype i = 1; i < words.size(); ++i) {
            // The blank that joins the word is not part of the measurement.
            if (textWidthTwips(lines.last() + words.at(i)) >= limitTwips)
                lines.append(QString());
            lines.last() += QLatin1Char(' ') + words.at(i);
        }
        return lines;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("TextSingleLineToArray"), e);
        return {};
    }
}

} // namespace ht
