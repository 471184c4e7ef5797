#include "database/jet/JetImage.h"

#include "database/Database.h"

#include <array>

namespace ht::jet
{

namespace
{

constexpr int kMaskedStart = 0x18, kMaskedLength = 128; // the definition page's RC4-masked area
constexpr int kVersionOffset = 0x14, kKeyOffset = 0x3E;

// The fixed RC4 stream Jet masks its definition page with.
std::array<quint8, kMaskedLength> headerMask()
{
    const quint8 key[4] = {0xC7, 0xDA, 0x39, 0x6B};
    std::array<quint8, 256> s;
    for (int i = 0; i < 256; ++i)
        s[i] = quint8(i);
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + s[i] + key[i % 4]) & 0xFF;
        std::swap(s[i], s[j]);
    }
    std::array<quint8, kMaskedLength> out;
    for (int n = 0, i = 0, j = 0; n < kMaskedLength; ++n) {
        i = (i + 1) & 0xFF;
        j = (j + s[i]) & 0xFF;
        std::swap(s[i], s[j]);
        out[n] = s[(s[i] + s[j]) & 0xFF];
    }
    return out;
}

} // namespace

Image::Image(QByteArray bytes, QString name) : m_bytes(std::move(bytes)), m_name(std::move(name))
{
    if (m_bytes.size() < 3 * kPageSize || m_bytes.size() % kPageSize != 0 || m_bytes[0] != 0)
        damaged(QStringLiteral("it is not made of whole Jet 4 pages"));
    if (m_bytes.mid(4, 15) != "Standard Jet DB" || m_bytes[kVersionOffset] != 1)
        throw DbError(QStringLiteral("Only Access 2000-2003 (Jet 4) files can be changed; %1 is of another version")
                          .arg(m_name)
                          .toStdString());
    const auto mask = headerMask();
    char key[4];
    for (int i = 0; i < 4; ++i)
        key[i] = char(quint8(m_bytes[kKeyOffset + i]) ^ mask[kKeyOffset - kMaskedStart + i]);
    if (le32(key) != 0)
        throw DbError(QStringLiteral("%1 is encoded (encrypted); decode it in Access first to change it here")
                          .arg(m_name)
                          .toStdString());
}

const char *Image::page(quint32 number) const
{
    if (number >= pageCount())
        damaged(QStringLiteral("page %1 lies past the end of the file").arg(number));
    return m_bytes.constData() + qsizetype(number) * kPageSize;
}

char *Image::changePage(quint32 number)
{
    if (number == 0 || number >= pageCount())
        damaged(QStringLiteral("page %1 cannot be changed").arg(number));
    m_changed.insert(number);
    return m_bytes.data() + qsizetype(number) * kPageSize;
}

quint32 Image::appendPage()
{
    const quint32 number = pageCount();
    m_bytes.append(QByteArray(kPageSize, '\0'));
    m_changed.insert(number);
    return number;
}

void Image::damaged(const QString &what) const
{
    throw DbError(QStringLiteral("The Access file %1 cannot be changed: %2").arg(m_name, what).toStdString());
}

} // namespace ht::jet
