#pragma once
// The two containers a workbook comes in, written here so that a test can put
// exactly the records or XML it needs into a workbook: an OLE2 compound file
// (.xls) and a zip whose parts are stored unpacked (.xlsx).

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtEndian>
#include <utility>

namespace ht::test
{

using Named = QList<std::pair<QString, QByteArray>>; // stream or part name, bytes

inline QByteArray le16(quint16 v)
{
    QByteArray b(2, '\0');
    qToLittleEndian(v, b.data());
    return b;
}
inline QByteArray le32(quint32 v)
{
    QByteArray b(4, '\0');
    qToLittleEndian(v, b.data());
    return b;
}

// A compound file of 512-byte sectors: the FAT in sector 0, the directory in
// sector 1, then each stream (at most three, grown to 4096 bytes so that none
// lies in the mini stream). The streams hang off the root in name order.
inline QByteArray compoundFile(const Named &streams)
{
    constexpr quint32 kEnd = 0xFFFFFFFE, kFree = 0xFFFFFFFF, kFatSector = 0xFFFFFFFD;
    QList<quint32> fat = {kFatSector, kEnd};
    QByteArray data, directory;
    const auto entry = [&](const QString &name, quint8 type, quint32 right, quint32 child, quint32 start,
                           quint32 size) {
        QByteArray e(128, '\0');
        for (int i = 0; i < name.size(); ++i)
            qToLittleEndian(name[i].unicode(), e.data() + 2 * i);
        qToLittleEndian(quint16(2 * name.size() + 2), e.data() + 64);
        e[66] = char(type);
        e[67] = 1; // black
        qToLittleEndian(kFree, e.data() + 68);
        qToLittleEndian(right, e.data() + 72);
        qToLittleEndian(child, e.data() + 76);
        qToLittleEndian(start, e.data() + 116);
        qToLittleEndian(size, e.data() + 120);
        directory += e;
    };
    entry(QStringLiteral("Root Entry"), 5, kFree, streams.isEmpty() ? kFree : 1, kEnd, 0);
    for (int s = 0; s < streams.size(); ++s) {
        QByteArray bytes = streams[s].second;
        bytes.append(qMax<qsizetype>(0, 4096 - bytes.size()), '\0');
        const quint32 size = quint32(bytes.size()), start = quint32(fat.size());
        bytes.append((512 - bytes.size() % 512) % 512, '\0');
        for (qsizetype i = 1; i < bytes.size() / 512; ++i)
            fat << start + quint32(i);
        fat << kEnd;
        data += bytes;
        entry(streams[s].first, 2, s + 1 < streams.size() ? quint32(s + 2) : kFree, kFree, start, size);
    }
    directory.append(512 - directory.size(), '\0');
    QByteArray fatSector;
    for (int i = 0; i < 128; ++i)
        fatSector += le32(i < fat.size() ? fat[i] : kFree);
    QByteArray header = QByteArray::fromHex("D0CF11E0A1B11AE1") + QByteArray(16, '\0') + le16(0x3E) + le16(3) +
                        le16(0xFFFE) + le16(9) + le16(6) + QByteArray(6, '\0') + le32(0) + le32(1) + le32(1) + le32(0) +
                        le32(4096) + le32(kEnd) + le32(0) + le32(kEnd) + le32(0) + le32(0);
    for (int i = 1; i < 109; ++i)
        header += le32(kFree);
    return header + fatSector + directory + data;
}

// A zip with its parts stored as they are, as any zip reader takes it.
inline QByteArray storedZip(const Named &parts)
{
    const auto crc32 = [](const QByteArray &bytes) {
        quint32 crc = 0xFFFFFFFF;
        for (const char c : bytes) {
            crc ^= quint8(c);
            for (int k = 0; k < 8; ++k)
                crc = (crc >> 1) ^ (0xEDB88320 & (0 - (crc & 1)));
        }
        return ~crc;
    };
    QByteArray local, central;
    for (const auto &[name, bytes] : parts) {
        const QByteArray path = name.toUtf8();
        const QByteArray common = le16(20) + le16(0) + le16(0) + le32(0) + le32(crc32(bytes)) +
                                  le32(quint32(bytes.size())) + le32(quint32(bytes.size())) +
                                  le16(quint16(path.size())) + le16(0);
        central += le32(0x02014B50) + le16(20) + common + le16(0) + le16(0) + le16(0) + le32(0) +
                   le32(quint32(local.size())) + path;
        local += le32(0x04034B50) + common + path + bytes;
    }
    return local + central + le32(0x06054B50) + le16(0) + le16(0) + le16(quint16(parts.size())) +
           le16(quint16(parts.size())) + le32(quint32(central.size())) + le32(quint32(local.size())) + le16(0);
}

} // namespace ht::test
