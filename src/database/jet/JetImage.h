#pragma once
// A Jet 4 (Access 2000-2003) file held in memory as pages of 4 KiB: what the
// writer reads, changes and checks before the file is replaced. Page 0, the
// database definition, is never changed.

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QtEndian>

namespace ht::jet
{

constexpr int kPageSize = 4096;
enum PageType : quint8 { PageDatabase = 0, PageData = 1, PageTableDef = 2, PageUsage = 5 };
constexpr int kDataHeader = 14; // type, 1, free space, table page, 4 unknown bytes, row count
constexpr int kMaxRowsPerPage = 255;
constexpr int kMaxRowBytes = 4060;
constexpr quint16 kRowOverflowPointer = 0x4000; // the row holds (row, page) of its data elsewhere
constexpr quint16 kRowOverflowTarget = 0x8000;  // the data of a row whose slot is on another page
constexpr quint16 kRowDeleted = 0xC000;
constexpr quint16 kRowOffsetMask = 0x1FFF;

inline quint16 le16(const char *p)
{
    return qFromLittleEndian<quint16>(p);
}
inline quint32 le32(const char *p)
{
    return qFromLittleEndian<quint32>(p);
}
inline void put16(char *p, quint16 v)
{
    qToLittleEndian(v, p);
}
inline void put32(char *p, quint32 v)
{
    qToLittleEndian(v, p);
}

// A row's address: the page and the row's number on it, as Jet packs them (row in the low byte).
struct RowPointer {
    quint32 page = 0;
    quint8 row = 0;
    static RowPointer unpack(quint32 packed) { return {packed >> 8, quint8(packed & 0xFF)}; }
    quint32 packed() const { return (page << 8) | row; }
    bool operator==(const RowPointer &) const = default;
};

class Image
{
  public:
    // The file's bytes; throws DbError naming `name` unless they are an
    // unencoded Jet 4 file of whole pages.
    Image(QByteArray bytes, QString name);

    const QString &name() const { return m_name; }
    quint32 pageCount() const { return quint32(m_bytes.size() / kPageSize); }
    const char *page(quint32 number) const; // throws DbError past the end
    char *changePage(quint32 number);       // the page, noted as changed
    quint32 appendPage();                   // a new zeroed page at the end
    const QSet<quint32> &changedPages() const { return m_changed; }
    const QByteArray &bytes() const { return m_bytes; }

    [[noreturn]] void damaged(const QString &what) const;

  private:
    QByteArray m_bytes;
    QString m_name;
    QSet<quint32> m_changed;
};

} // namespace ht::jet
