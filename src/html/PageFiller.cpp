#include "html/PageFiller.h"

#include "common/Context.h"
#include "common/StringUtils.h"
#include "html/HtmlConversions.h"
#include "html/HtmlTextFile.h"
#include "html/IndexText.h"

#include <algorithm>

namespace ht
{

namespace
{

const QString kSlotNames[6] = {QStringLiteral("###SENSOR."), QStringLiteral("###CAM."),
                               QStringLiteral("###CPU."),    QStringLiteral("###REJECTS."),
                               QStringLiteral("###DEVICE."), QStringLiteral("###RESULT.")};
const QString kBr = QStringLiteral("<br>");
constexpr int kSlotsPerField = 4;

// Replaces the placeholders of one line in their fixed order, each at its first
// place only; `afterStep` sees the line after every replacement.
template <typename Step>
QString fillLine(Context &ctx, const HtmlKind &kind, QString line, const PageData &data, bool &marked, Step afterStep)
{
    auto replace = [&](const QString &find, const QString &with) {
        line = ReplaceStringInString(ctx, line, find, with, false);
        afterStep(line);
    };
    replace(QStringLiteral("###FONT###"), data.fontName);
    replace(QStringLiteral("###SIZE###"), data.fontSize);
    replace(QStringLiteral("###WEIGHT###"), data.fontWeight);
    if (kind.multiValueFields) {
        for (int f = 0; f < 6; ++f) {
            // Values from slot 1 on; four slots in a template, the unused ones emptied.
            if (!line.contains(kSlotNames[f]))
                continue; // nothing of this field in the line
            const QStringList &values = data.multiValues[f];
            const int count = int(values.size()) - 1;
            for (int i = 1; i <= count; ++i)
                replace(kSlotNames[f] + QString::number(i) + QStringLiteral("###"), values.at(i));
            for (int i = std::max(count, 0) + 1; i <= kSlotsPerField; ++i)
                replace(kSlotNames[f] + QString::number(i) + QStringLiteral("###"), QString());
        }
    }
    line = ReplaceStringInTextMultiLine(ctx, line, kind.textPlaceholder, data.textLines, marked, false);
    afterStep(line);
    return line;
}

// Stand-ins for the values while a template is prepared: characters of the
// private use area, one per value.
enum Slot { SlotFont, SlotSize, SlotWeight, SlotFirstField, SlotText = SlotFirstField + 6 * kSlotsPerField, SlotCount };
constexpr char16_t kStandInBase = 0xE000;

bool isStandIn(QChar c)
{
    return c.unicode() >= kStandInBase && c.unicode() < kStandInBase + SlotCount;
}

QString standIn(int slot)
{
    return QString(QChar(char16_t(kStandInBase + slot)));
}

PageData standInData()
{
    PageData d;
    d.fontName = standIn(SlotFont);
    d.fontSize = standIn(SlotSize);
    d.fontWeight = standIn(SlotWeight);
    for (int f = 0; f < 6; ++f) {
        d.multiValues[f] << QString();
        for (int i = 0; i < kSlotsPerField; ++i)
            d.multiValues[f] << standIn(SlotFirstField + f * kSlotsPerField + i);
    }
    d.textLines << standIn(SlotText);
    return d;
}

// The names between "###" and "###" of every placeholder a line is searched for.
QStringList placeholderNames(const HtmlKind &kind)
{
    QStringList names{u"FONT"_qs, u"SIZE"_qs, u"WEIGHT"_qs, kind.textPlaceholder.mid(3).chopped(3)};
    for (const QString &field : kSlotNames) {
        for (int i = 1; i <= kSlotsPerField; ++i)
            names << field.mid(3) + QString::number(i);
    }
    return names;
}

// Placeholder names hold no '#', so a value free of '#' can only become part
// of a placeholder found later when the text between the last '#' before it
// and the value starts a name. False when a stand-in sits in such a place.
bool valuesStayApart(const QString &line, const QStringList &names)
{
    qsizetype runStart = -1; // after the last '#'; -1 before the first
    bool checked = false;    // the run's first stand-in was looked at
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == u'#') {
            runStart = i + 1;
            checked = false;
        } else if (isStandIn(c) && runStart >= 0 && !checked) {
            const QStringView before = QStringView(line).mid(runStart, i - runStart);
            if (std::any_of(names.begin(), names.end(), [&](const QString &n) { return n.startsWith(before); }))
                return false;
            checked = true; // values later in the run sit behind this text too
        }
    }
    return true;
}

bool hasHash(const QString &s)
{
    return s.contains(u'#');
}

// Where "<br>" starts from `from` on, or -1.
qsizetype indexOfBr(QStringView text, qsizetype from)
{
    const QChar *p = text.data();
    for (qsizetype i = from, last = text.size() - 4; i <= last; ++i) {
        if (p[i] == u'<' && p[i + 1] == u'b' && p[i + 2] == u'r' && p[i + 3] == u'>')
            return i;
    }
    return -1;
}

void appendLineEnd(QString &out)
{
    out += u'\r';
    out += u'\n';
}

} // namespace

bool exchangeIndexTexts(Context &ctx, const HtmlKind &kind, QStringList &lines, const QString &languageNumber,
                        IndexTextCache &cache)
{
    if (!kind.indexTexts)
        return true;
    for (QString &line : lines) {
        if (!line.contains(QLatin1String("###DIREKT:")))
            continue;
        line = ExchangeDirectAdress_IndexText(ctx, line, languageNumber, cache);
        if (ctx.state.indexTextDB.isEmpty())
            return false;
    }
    return true;
}

QStringList fillPageLines(Context &ctx, const HtmlKind &kind, const QStringList &templateLines, const PageData &data)
{
    QStringList out;
    out.reserve(templateLines.size() + data.textLines.size() * 2);
    bool marked = false;
    for (QString line : templateLines) {
        if (line.contains(QLatin1String("###")))
            line = fillLine(ctx, kind, line, data, marked, [](const QString &) {});
        out.append(line);
    }
    if (!marked)
        return out;
    QStringList split;
    ConvertHTMLBrToMultiline(ctx, out, split);
    return split;
}

QStringList fillPageTemplate(Context &ctx, const HtmlKind &kind, const QStringList &templateLines, const PageData &data,
                             IndexTextCache &cache, bool &indexTextLost)
{
    QStringList lines = templateLines;
    if (!exchangeIndexTexts(ctx, kind, lines, data.languageNumber, cache)) {
        indexTextLost = true;
        return {};
    }
    return fillPageLines(ctx, kind, lines, data);
}

PreparedTemplate::PreparedTemplate(Context &ctx, const HtmlKind &kind, const QStringList &templateLines,
                                   const QString &languageNumber, IndexTextCache &cache, bool &indexTextLost)
    : m_kind(kind), m_exchanged(templateLines)
{
    // The same steps as fillPageTemplate, the stand-ins taking the values' places.
    if (!exchangeIndexTexts(ctx, kind, m_exchanged, languageNumber, cache)) {
        indexTextLost = true;
        return;
    }
    PageData standIns = standInData();
    standIns.languageNumber = languageNumber;
    const QStringList names = placeholderNames(kind);
    bool marked = false;
    for (QString line : m_exchanged) {
        if (std::any_of(line.begin(), line.end(), isStandIn))
            m_usable = false; // the template's own text would pass for a value
        if (line.contains(QLatin1String("###")))
            line = fillLine(ctx, kind, line, standIns, marked, [&](const QString &l) {
                if (!valuesStayApart(l, names))
                    m_usable = false;
            });
        std::vector<Piece> pieces;
        qsizetype from = 0;
        for (qsizetype i = 0; i <= line.size(); ++i) {
            if (i < line.size() && !isStandIn(line.at(i)))
                continue;
            if (i > from)
                pieces.push_back({line.mid(from, i - from), -1});
            if (i < line.size())
                pieces.push_back({QString(), int(line.at(i).unicode() - kStandInBase)});
            from = i + 1;
        }
        // Only values, or the template's own tags, can put a "<br>" into the line.
        const bool mayHoldBr =
            line.contains(kBr) || std::any_of(pieces.begin(), pieces.end(), [](const Piece &p) { return p.slot >= 0; });
        m_lines.push_back({std::move(pieces), mayHoldBr});
    }
    m_splitsAtBr = marked;
}

void PreparedTemplate::appendFilledPage(Context &ctx, const PageData &data, QString &out) const
{
    if (!appendPage(data, out))
        appendTextLines(fillPageLines(ctx, m_kind, m_exchanged, data), out);
}

bool PreparedTemplate::accepts(const PageData &data) const
{
    if (!m_usable || data.textLines.isEmpty() || hasHash(data.fontName) || hasHash(data.fontSize) ||
        hasHash(data.fontWeight))
        return false;
    for (const QStringList &values : data.multiValues) {
        if (values.size() - 1 > kSlotsPerField || std::any_of(values.begin(), values.end(), hasHash))
            return false;
    }
    return std::none_of(data.textLines.begin(), data.textLines.end(), hasHash);
}

void PreparedTemplate::appendLine(const std::vector<Piece> &line, const PageData &data, QString &out) const
{
    for (const Piece &p : line) {
        switch (p.slot) {
        case -1:
            out += p.literal;
            break;
        case SlotFont:
            out += data.fontName;
            break;
        case SlotSize:
            out += data.fontSize;
            break;
        case SlotWeight:
            out += data.fontWeight;
            break;
        case SlotText:
            // Every line is followed by "<br>"; the last one's stayed in the template.
            for (qsizetype i = 0; i < data.textLines.size(); ++i) {
                if (i > 0)
                    out += kBr;
                out += data.textLines.at(i);
            }
            break;
        default: {
            const int field = (p.slot - SlotFirstField) / kSlotsPerField;
            out += data.multiValues[field].value((p.slot - SlotFirstField) % kSlotsPerField + 1);
        }
        }
    }
}

bool PreparedTemplate::appendPage(const PageData &data, QString &out) const
{
    if (!accepts(data))
        return false;
    QString line;
    for (const Line &l : m_lines) {
        const qsizetype start = out.size();
        appendLine(l.pieces, data, out);
        qsizetype at = m_splitsAtBr && l.mayHoldBr ? indexOfBr(out, start) : -1;
        if (at < 0) {
            appendLineEnd(out);
            continue;
        }
        // As ConvertHTMLBrToMultiline: a break after every "<br>", then one empty line.
        line.resize(0);
        line.append(out.constData() + start, out.size() - start);
        out.truncate(start);
        qsizetype from = 0;
        for (at = indexOfBr(line, 0); at >= 0; at = indexOfBr(line, from)) {
            out.append(line.constData() + from, at + kBr.size() - from);
            appendLineEnd(out);
            from = at + kBr.size();
        }
        out.append(line.constData() + from, line.size() - from);
        appendLineEnd(out);
        appendLineEnd(out);
    }
    return true;
}

} // namespace ht
