#include "database/jet/JetValues.h"

#include <QDate>
#include <QDateTime>
#include <cmath>
#include <cstring>

namespace ht::jet
{

namespace
{

constexpr int kMemoHeader = 12;
constexpr quint8 kMemoInline = 0x80, kMemoSingle = 0x40;

bool maskBit(const QByteArray &mask, int bit)
{
    return bit / 8 < mask.size() && (quint8(mask[bit / 8]) >> (bit % 8)) & 1;
}

void setMaskBit(QByteArray &mask, int bit, bool on)
{
    if (bit / 8 >= mask.size())
        return;
    quint8 byte = quint8(mask[bit / 8]);
    byte = on ? byte | (1 << (bit % 8)) : byte & ~(1 << (bit % 8));
    mask[bit / 8] = char(byte);
}

template <typename T> T fixedAs(const QByteArray &b)
{
    T v{};
    if (b.size() >= qsizetype(sizeof v))
        std::memcpy(&v, b.constData(), sizeof v);
    return qFromLittleEndian(v);
}

} // namespace

QString jetDateToIso(double value)
{
    if (!std::isfinite(value) || std::fabs(value) > 3e6)
        return QString();
    const double days = std::trunc(value);
    qint64 seconds = std::llround(std::fabs(value - days) * 86400.0);
    QDate date = QDate(1899, 12, 30).addDays(qint64(days));
    if (seconds >= 86400) { // rounded up to midnight
        seconds -= 86400;
        date = date.addDays(days < 0 ? -1 : 1);
    }
    return QDateTime(date, QTime(0, 0).addSecs(int(seconds))).toString(Qt::ISODate);
}

QString decodeText(const QByteArray &bytes)
{
    if (bytes.size() >= 2 && quint8(bytes[0]) == 0xFF && quint8(bytes[1]) == 0xFE) {
        QString out;
        bool compressed = true;
        for (qsizetype i = 2; i < bytes.size();) {
            const quint8 b = quint8(bytes[i]);
            if (b == 0) {
                compressed = !compressed;
                ++i;
            } else if (compressed) {
                out += QChar(b);
                ++i;
            } else {
                if (i + 1 < bytes.size())
                    out += QChar(quint16(b | (quint8(bytes[i + 1]) << 8)));
                i += 2;
            }
        }
        return out;
    }
    return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2);
}

QByteArray encodeText(const QString &text, bool compressible)
{
    const bool oneByte =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() >= 1 && c.unicode() <= 0xFF; });
    if (compressible && oneByte && text.size() > 2) {
        QByteArray out("\xFF\xFE", 2);
        for (QChar c : text)
            out += char(c.unicode());
        return out;
    }
    QByteArray out(text.size() * 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i)
        put16(out.data() + 2 * i, text[i].unicode());
    return out;
}

bool isNull(const StoredRow &row, const Column &column)
{
    if (column.number >= row.columnCount())
        return true;
    if (column.type == TypeBoolean)
        return false;
    if (!column.fixed() && column.variableIndex >= row.variable.size())
        return true;
    return !maskBit(row.nullMask, column.number);
}

QByteArray storedBytes(const StoredRow &row, const Column &column)
{
    if (isNull(row, column))
        return {};
    if (column.fixed())
        return row.head.mid(2 + column.fixedOffset, column.length);
    // A Boolean lives in the null mask: only a damaged definition calls one variable.
    return column.variableIndex < row.variable.size() ? row.variable[column.variableIndex] : QByteArray();
}

QByteArray readLongValue(const Image &image, const QByteArray &header, std::vector<RowPointer> *rows)
{
    if (header.size() < kMemoHeader)
        image.damaged(QStringLiteral("a long value's header is cut off"));
    const quint32 lengthAndFlags = le32(header.constData());
    const quint32 length = lengthAndFlags & 0x3FFFFFFF;
    const quint8 kind = quint8(header[3]) & 0xC0;
    if (kind == kMemoInline)
        return header.mid(kMemoHeader, length);
    RowPointer at = RowPointer::unpack(le32(header.constData() + 4));
    if (kind == kMemoSingle) {
        if (rows)
            rows->push_back(at);
        return rowBytes(image, at.page, at.row).left(length);
    }
    QByteArray value;
    for (int hops = 0; at.page != 0 && quint32(value.size()) < length; ++hops) {
        if (hops > 600000 || value.size() > image.bytes().size())
            image.damaged(QStringLiteral("a long value's chain does not end"));
        if (rows)
            rows->push_back(at);
        const QByteArray part = rowBytes(image, at.page, at.row);
        if (part.size() < 4)
            image.damaged(QStringLiteral("a long value's chain is cut off"));
        value += part.mid(4);
        at = RowPointer::unpack(le32(part.constData()));
    }
    return value.left(length);
}

QVariant columnValue(const Image &image, const StoredRow &row, const Column &column)
{
    if (column.type == TypeBoolean)
        return QVariant(qlonglong(maskBit(row.nullMask, column.number) ? -1 : 0));
    if (isNull(row, column))
        return column.type == TypeText || column.type == TypeMemo ? QVariant(QString()) : QVariant();
    const QByteArray b = storedBytes(row, column);
    switch (column.type) {
    case TypeByte:
        return QVariant(qlonglong(b.isEmpty() ? 0 : quint8(b[0])));
    case TypeInteger:
        return QVariant(qlonglong(fixedAs<qint16>(b)));
    case TypeLong:
        return QVariant(qlonglong(fixedAs<qint32>(b)));
    case TypeMoney:
        return QVariant(double(fixedAs<qint64>(b)) / 10000.0);
    case TypeSingle: {
        const quint32 bits = fixedAs<quint32>(b);
        float f;
        std::memcpy(&f, &bits, sizeof f);
        return QVariant(double(f));
    }
    case TypeDouble:
    case TypeDateTime: {
        const quint64 bits = fixedAs<quint64>(b);
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return column.type == TypeDouble ? QVariant(d) : QVariant(jetDateToIso(d));
    }
    case TypeText:
        return QVariant(decodeText(b));
    case TypeMemo:
        return QVariant(decodeText(readLongValue(image, b)));
    case TypeOle:
        return QVariant(readLongValue(image, b));
    default:
        return QVariant(b);
    }
}

void setStoredBytes(StoredRow &row, const Column &column, const std::optional<QByteArray> &bytes)
{
    setMaskBit(row.nullMask, column.number, bytes.has_value());
    if (column.fixed()) {
        const int at = 2 + column.fixedOffset;
        if (bytes && row.head.size() >= at + column.length)
            row.head.replace(at, column.length, bytes->left(column.length).leftJustified(column.length, '\0'));
        return;
    }
    if (row.variable.size() <= column.variableIndex)
        row.variable.resize(size_t(column.variableIndex) + 1);
    row.variable[column.variableIndex] = bytes.value_or(QByteArray());
}

std::optional<QByteArray> encodeNumber(const Column &column, const QVariant &value)
{
    bool ok = false;
    const qlonglong whole = value.toLongLong(&ok);
    QByteArray out(column.length, '\0');
    switch (column.type) {
    case TypeByte:
        if (!ok || whole < 0 || whole > 255)
            return std::nullopt;
        out[0] = char(whole);
        return out;
    case TypeInteger:
        if (!ok || whole < -32768 || whole > 32767)
            return std::nullopt;
        put16(out.data(), quint16(qint16(whole)));
        return out;
    case TypeLong:
        if (!ok || whole < INT32_MIN || whole > INT32_MAX)
            return std::nullopt;
        put32(out.data(), quint32(qint32(whole)));
        return out;
    case TypeDouble:
    case TypeDateTime: {
        // Dates are days since 30 December 1899, the time of day as the fraction.
        const double d =
            value.typeId() == QMetaType::QDateTime
                ? double(QDateTime(QDate(1899, 12, 30), QTime(0, 0)).msecsTo(value.toDateTime())) / 86400000.0
                : value.toDouble(&ok);
        ok = ok || value.typeId() == QMetaType::QDateTime;
        if (!ok)
            return std::nullopt;
        quint64 bits;
        std::memcpy(&bits, &d, sizeof bits);
        qToLittleEndian(bits, out.data());
        return out;
    }
    default:
        return std::nullopt;
    }
}

} // namespace ht::jet
