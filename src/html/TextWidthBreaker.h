#pragma once
// Breaking an item text into page lines that fit the operator panel's width,
// measured in the language's font as the panel would draw it.

#include <QFont>
#include <QHash>
#include <QString>
#include <QStringList>
#include <memory>
#include <utility>

class QFontMetricsF;

namespace ht
{

struct Context;

// Holds the font between calls (an empty weight keeps the previous one) and
// the metrics of every font used so far. Font sizes are points at 96 dpi:
// pixel size = points x 96 / 72, rounded; widths are pixels x 15 twips.
class TextWidthBreaker
{
  public:
    TextWidthBreaker();
    ~TextWidthBreaker();

    // width: the limit in pixels, 0 meaning 1024. Lines after the first start with a blank.
    QStringList TextSingleLineToArray(Context &ctx, const QString &text, const QString &fontName,
                                      const QString &fontSize, const QString &fontWeight, int width);

    // Width of `text` in twips in the font set by the last call.
    int textWidthTwips(const QString &text) const;
    const QFont &font() const { return m_font; }

    static int pixelSizeForPoints(double points);

    // Measure every join exactly (no estimate for lines far below the limit);
    // for comparing both ways in tests.
    void setMeasureEveryJoin(bool on) { m_measureEveryJoin = on; }

  private:
    struct FontMeasure;
    void setFont(const QString &fontName, const QString &fontSize, const QString &fontWeight);

    QFont m_font;
    FontMeasure *m_measure = nullptr;
    QHash<QString, std::shared_ptr<FontMeasure>> m_measures;
    bool m_measureEveryJoin = false;
    QString m_lastName, m_lastSize, m_lastWeight; // the arguments that made m_font
    QHash<QString, std::pair<QFont, FontMeasure *>> m_fontsByArguments;
};

// Splits at blanks as the line breaker does: runs of blanks count as one.
QStringList splitWordsAtBlanks(const QString &text);

} // namespace ht
