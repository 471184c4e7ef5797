#include "database/jet/JetIndexKeys.h"

#include "database/jet/JetValues.h"

#include <algorithm>

namespace ht::jet
{

namespace
{

constexpr quint8 kAscendingValue = 0x7F, kDescendingValue = 0x80, kAscendingNull = 0x00, kDescendingNull = 0xFF;
constexpr quint8 kEndText = 0x01, kEndExtraText = 0x00;
constexpr quint8 kUnprintableMidfix = 0x06;

// The General sort order's weights of the printable ASCII characters from the
// blank on, as Access writes them: one or two bytes in the key itself, or none
// for the apostrophe and the hyphen, which only leave a mark after the text.
struct Weight {
    quint8 first = 0, second = 0;
    quint8 unprintable = 0;
};
constexpr Weight kWeights[0x7F - 0x20] =
    {
        {0x07},       {0x09},       {0x0A},       {0x0C},       {0x0E},       {0x10},       {0x12},
        {0, 0, 0x80}, // blank ! " # $ % & '
        {0x14},       {0x16},       {0x18},       {0x2C},       {0x1A},       {0, 0, 0x82}, {0x1C},
        {0x1E}, // ( ) * + , - . /
        {0x36},       {0x38},       {0x3A},       {0x3C},       {0x3E},       {0x40},       {0x42},
        {0x44},       {0x46},       {0x48},                                                         // 0-9
        {0x20},       {0x22},       {0x2E},       {0x30},       {0x32},       {0x24},       {0x26}, // : ; < = > ? @
        {0x4A},       {0x4C},       {0x4D},       {0x4F},       {0x51},       {0x53},       {0x55},
        {0x57},       {0x59},       {0x5B},       {0x5C},       {0x5E},       {0x60}, // A-M
        {0x62},       {0x64},       {0x66},       {0x68},       {0x69},       {0x6B},       {0x6D},
        {0x6F},       {0x71},       {0x73},       {0x75},       {0x76},       {0x78},       // N-Z
        {0x27},       {0x29},       {0x2A},       {0x2B, 0x02}, {0x2B, 0x03}, {0x2B, 0x07}, // [ \ ] ^ _ `
        {0x4A},       {0x4C},       {0x4D},       {0x4F},       {0x51},       {0x53},       {0x55},
        {0x57},       {0x59},       {0x5B},       {0x5C},       {0x5E},       {0x60}, // a-m
        {0x62},       {0x64},       {0x66},       {0x68},       {0x69},       {0x6B},       {0x6D},
        {0x6F},       {0x71},       {0x73},       {0x75},       {0x76},       {0x78}, // n-z
        {0x2B, 0x09}, {0x2B, 0x0B}, {0x2B, 0x0D}, {0x2B, 0x0F},                       // { | } ~
};

void invert(QByteArray &bytes, qsizetype from)
{
    for (qsizetype i = from; i < bytes.size(); ++i)
        bytes[i] = char(~quint8(bytes[i]));
}

} // namespace

QByteArray numberIndexKey(qint64 value, int width, bool ascending)
{
    const quint64 flipped = quint64(value) ^ (quint64(1) << (8 * width - 1));
    QByteArray key(1, char(ascending ? kAscendingValue : kDescendingValue));
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        key.append(char(flipped >> shift));
    if (!ascending)
        invert(key, 1);
    return key;
}

QByteArray nullIndexKey(bool ascending)
{
    return QByteArray(1, char(ascending ? kAscendingNull : kDescendingNull));
}

std::optional<QByteArray> textIndexKey(const QString &text, bool ascending)
{
    QByteArray key(1, char(ascending ? kAscendingValue : kDescendingValue)), unprintable;
    int inlineCharacters = 0;
    for (QChar c : text) {
        const char16_t u = c.unicode();
        if (u < 0x20 || u >= 0x7F)
            return std::nullopt;
        const Weight &w = kWeights[u - 0x20];
        if (w.unprintable) {
            // Where it stood, counted in the characters before it that have weights.
            const quint16 offset = quint16(0x8000 | (7 + 4 * inlineCharacters));
            unprintable.append(char(offset >> 8)).append(char(offset & 0xFF));
            unprintable.append(char(kUnprintableMidfix)).append(char(w.unprintable));
            continue;
        }
        key.append(char(w.first));
        if (w.second)
            key.append(char(w.second));
        ++inlineCharacters;
    }
    key.append(char(kEndText));
    if (!unprintable.isEmpty())
        key.append(QByteArray(3, char(kEndText))).append(unprintable);
    if (!ascending) {
        key.append(char(kEndExtraText));
        invert(key, 1);
    }
    key.append(char(kEndExtraText));
    return key;
}

std::optional<QByteArray> rowIndexKey(const TableDef &table, int index, const StoredRow &row, QString *why,
                                      bool *allNull, bool *anyNull)
{
    QByteArray key;
    bool nulls = true, aNull = false;
    const std::vector<quint16> &numbers = table.indexColumns[size_t(index)];
    for (size_t k = 0; k < numbers.size(); ++k) {
        const bool ascending = table.indexAscending[size_t(index)][k];
        const auto c = std::find_if(table.columns.begin(), table.columns.end(),
                                    [&](const Column &x) { return x.number == numbers[k]; });
        if (c == table.columns.end()) {
            if (why)
                *why = QStringLiteral("an index of table %1 names a column it does not have").arg(table.name);
            return std::nullopt;
        }
        if (c->type != TypeLong && c->type != TypeInteger && c->type != TypeText) {
            if (why)
                *why = QStringLiteral("column %1 of table %2 is indexed and of a type whose keys are not known here")
                           .arg(c->name, table.name);
            return std::nullopt;
        }
        if (c->type == TypeText && c->sortOrder != kGeneralSortOrder) {
            if (why)
                *why = QStringLiteral("column %1 of table %2 is indexed in a sort order other than General (%3)")
                           .arg(c->name, table.name)
                           .arg(c->sortOrder, 4, 16, QLatin1Char('0'));
            return std::nullopt;
        }
        if (isNull(row, *c)) {
            key += nullIndexKey(ascending);
            aNull = true;
            continue;
        }
        nulls = false;
        const QByteArray stored = storedBytes(row, *c);
        if (c->type == TypeText) {
            const QString text = decodeText(stored);
            const std::optional<QByteArray> textKey = textIndexKey(text, ascending);
            if (!textKey) {
                QString shown = text.left(60);
                for (QChar &ch : shown)
                    if (ch.unicode() < 0x20)
                        ch = QLatin1Char('?');
                if (why)
                    *why = QStringLiteral("the value \"%1\" of column %2 of table %3 holds a character whose place in "
                                          "the index's sort order is not known here")
                               .arg(shown, c->name, table.name);
                return std::nullopt;
            }
            key += *textKey;
        } else {
            const int width = c->type == TypeLong ? 4 : 2;
            if (stored.size() < width) {
                if (why)
                    *why = QStringLiteral("a row of table %1 is cut off in column %2").arg(table.name, c->name);
                return std::nullopt;
            }
            qint64 value = 0;
            for (int i = width - 1; i >= 0; --i)
                value = (value << 8) | quint8(stored[i]);
            if (value & (qint64(1) << (8 * width - 1)))
                value -= qint64(1) << (8 * width); // the sign
            key += numberIndexKey(value, width, ascending);
        }
    }
    if (allNull)
        *allNull = nulls;
    if (anyNull)
        *anyNull = aNull;
    return key;
}

} // namespace ht::jet
