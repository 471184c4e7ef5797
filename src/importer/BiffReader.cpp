// Excel 97-2003 (BIFF8) and Excel 5/95 (BIFF5) workbooks: the compound file
// is opened with libgsf, the records of its workbook stream are read here.
// Every length is checked against the bytes there are: a damaged file is
// refused, never read past its end. A record laid out otherwise than this
// reader expects is named in the refusal, and the file not called damaged.
#include "importer/WorkbookFormats.h"

#include "common/CodePage.h"

#include <QHash>
#include <QtEndian>
#include <cstring>
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-utils.h>
#include <mutex>

namespace ht
{

namespace
{

enum Record : quint16 {
    kFormula = 0x0006,
    kFormulaOld = 0x0406, // Excel 3 and 4 wrote it; some programs still do
    kEof = 0x000A,
    kFilePass = 0x002F,
    kContinue = 0x003C,
    kCodePage = 0x0042,
    kBoundSheet = 0x0085,
    kMulRk = 0x00BD,
    kSst = 0x00FC,
    kLabelSst = 0x00FD,
    kRString = 0x00D6,
    kNumber = 0x0203,
    kLabel = 0x0204,
    kBoolErr = 0x0205,
    kString = 0x0207,
    kRk = 0x027E,
    kBof = 0x0809,
};
constexpr quint16 kBiff8 = 0x0600, kBiff5 = 0x0500;
constexpr int kUtf16CodePage = 1200;

// The bytes end before a record or the stream does: the file is damaged.
struct Damaged {
    QString why;
};
// A record that is not laid out as this reader expects.
struct Unexpected {
    QString why;
};

// One record with the CONTINUE records that follow it.
struct RecordData {
    quint16 type = 0;
    std::vector<QByteArrayView> parts; // the record's own data first
    qsizetype next = 0;                // offset of the record after it
};

class Stream
{
  public:
    explicit Stream(QByteArrayView bytes) : m_bytes(bytes) {}
    bool atEnd(qsizetype at) const { return at + 4 > m_bytes.size(); }
    RecordData record(qsizetype at) const
    {
        if (at < 0 || atEnd(at))
            throw Damaged{QStringLiteral("a record lies past the end of the file")};
        RecordData r;
        r.type = header(at, 0);
        qsizetype length = header(at, 2);
        if (at + 4 + length > m_bytes.size())
            throw Damaged{QStringLiteral("a record runs past the end of the file")};
        r.parts.push_back(m_bytes.sliced(at + 4, length));
        at += 4 + length;
        while (!atEnd(at) && header(at, 0) == kContinue) {
            length = header(at, 2);
            if (at + 4 + length > m_bytes.size())
                throw Damaged{QStringLiteral("a record runs past the end of the file")};
            r.parts.push_back(m_bytes.sliced(at + 4, length));
            at += 4 + length;
        }
        r.next = at;
        return r;
    }

  private:
    quint16 header(qsizetype at, int offset) const
    {
        return qFromLittleEndian<quint16>(m_bytes.constData() + at + offset);
    }
    QByteArrayView m_bytes;
};

// Reads a record's data across its CONTINUE parts. Character data that goes
// on in a new part starts that part with a fresh flags byte.
class Reader
{
  public:
    explicit Reader(const RecordData &r) : m_parts(r.parts) {}
    qsizetype left() const
    {
        qsizetype n = m_parts[m_part].size() - m_pos;
        for (size_t p = m_part + 1; p < m_parts.size(); ++p)
            n += m_parts[p].size();
        return n;
    }
    quint8 u8() { return quint8(take(1)[0]); }
    quint16 u16() { return qFromLittleEndian<quint16>(take(2).constData()); }
    quint32 u32() { return qFromLittleEndian<quint32>(take(4).constData()); }
    double f64()
    {
        const quint64 bits = qFromLittleEndian<quint64>(take(8).constData());
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return d;
    }
    void skip(qsizetype n)
    {
        while (n > 0) {
            nextPartIfDone();
            const qsizetype step = std::min(n, m_parts[m_part].size() - m_pos);
            m_pos += step;
            n -= step;
        }
    }
    // XLUnicodeString's characters: `count` of them, one or two bytes each,
    // the width given again by the first byte of every further part.
    QString characters(qsizetype count, bool wide)
    {
        QString text;
        text.reserve(count);
        while (count > 0) {
            if (m_pos == m_parts[m_part].size()) {
                nextPartIfDone();
                wide = (u8() & 1) != 0;
            }
            const qsizetype width = wide ? 2 : 1;
            const qsizetype fit = std::min(count, (m_parts[m_part].size() - m_pos) / width);
            if (fit == 0)
                throw Unexpected{QStringLiteral("a text in it is cut off")};
            const char *p = m_parts[m_part].constData() + m_pos;
            if (wide) {
                for (qsizetype i = 0; i < fit; ++i)
                    text += QChar(qFromLittleEndian<quint16>(p + 2 * i));
            } else {
                text += QString::fromLatin1(p, fit);
            }
            m_pos += fit * width;
            count -= fit;
        }
        return text;
    }
    // A BIFF8 string with a 16-bit length; rich-text runs and phonetic data skipped.
    QString unicodeString(bool sixteenBitLength = true)
    {
        const qsizetype count = sixteenBitLength ? u16() : u8();
        if (count == 0 && left() == 0) // an empty text without its flags byte
            return {};
        const quint8 flags = u8();
        const quint16 runs = (flags & 0x08) ? u16() : 0;
        const quint32 extra = (flags & 0x04) ? u32() : 0;
        QString text = characters(count, (flags & 0x01) != 0);
        skip(qsizetype(runs) * 4 + extra);
        return text;
    }
    QByteArray bytes(qsizetype n) { return take(n).toByteArray(); }

  private:
    void nextPartIfDone()
    {
        while (m_pos == m_parts[m_part].size()) {
            if (m_part + 1 >= m_parts.size())
                throw Unexpected{QStringLiteral("the record is shorter than its contents")};
            ++m_part;
            m_pos = 0;
        }
    }
    // `n` bytes from one part: numbers never straddle parts.
    QByteArrayView take(qsizetype n)
    {
        if (n == 0) // an empty text at the record's very end
            return {};
        nextPartIfDone();
        if (m_parts[m_part].size() - m_pos < n)
            throw Unexpected{QStringLiteral("the record is shorter than its contents")};
        const QByteArrayView v = m_parts[m_part].sliced(m_pos, n);
        m_pos += n;
        return v;
    }
    const std::vector<QByteArrayView> &m_parts;
    size_t m_part = 0;
    qsizetype m_pos = 0;
};

double rkValue(quint32 rk)
{
    double value;
    if (rk & 0x02) {
        value = double(qint32(rk) >> 2);
    } else {
        const quint64 bits = quint64(rk & 0xFFFFFFFCu) << 32;
        std::memcpy(&value, &bits, sizeof value);
    }
    return (rk & 0x01) ? value / 100 : value;
}

QString errorText(quint8 code)
{
    switch (code) {
    case 0x00:
        return QStringLiteral("#NULL!");
    case 0x07:
        return QStringLiteral("#DIV/0!");
    case 0x0F:
        return QStringLiteral("#VALUE!");
    case 0x17:
        return QStringLiteral("#REF!");
    case 0x1D:
        return QStringLiteral("#NAME?");
    case 0x24:
        return QStringLiteral("#NUM!");
    default:
        return QStringLiteral("#N/A");
    }
}

// "the LABEL record (0x0204)", for messages.
QString recordName(quint16 type)
{
    static const QHash<quint16, const char *> names = {{kFormula, "FORMULA"},
                                                       {kFormulaOld, "FORMULA"},
                                                       {kEof, "EOF"},
                                                       {kFilePass, "FILEPASS"},
                                                       {kContinue, "CONTINUE"},
                                                       {kCodePage, "CODEPAGE"},
                                                       {kBoundSheet, "BOUNDSHEET"},
                                                       {kMulRk, "MULRK"},
                                                       {kSst, "SST"},
                                                       {kLabelSst, "LABELSST"},
                                                       {kRString, "RSTRING"},
                                                       {kNumber, "NUMBER"},
                                                       {kLabel, "LABEL"},
                                                       {kBoolErr, "BOOLERR"},
                                                       {kString, "STRING"},
                                                       {kRk, "RK"},
                                                       {kBof, "BOF"}};
    const QString hex = QStringLiteral("0x") + QStringLiteral("%1").arg(type, 4, 16, QLatin1Char('0')).toUpper();
    if (const char *name = names.value(type))
        return QStringLiteral("the %1 record (%2)").arg(QLatin1String(name), hex);
    return QStringLiteral("the record of type %1").arg(hex);
}

struct SheetEntry {
    quint32 offset;
    QString name;
    qsizetype listedAt; // the BOUNDSHEET record's offset
};

class BiffBook
{
  public:
    BiffBook(QByteArrayView stream, const QString &streamName, const QString &name)
        : m_stream(stream), m_streamName(streamName), m_name(name)
    {
    }
    void read(Workbook &book);

  private:
    RecordData record(qsizetype at);
    void readGlobals(std::vector<SheetEntry> &sheets);
    void readSheet(const SheetEntry &entry, Sheet &sheet);
    void readSst(const RecordData &r);
    QString byteString(Reader &in, qsizetype length); // BIFF5 text in the workbook's code page
    QString labelText(Reader &in);

    Stream m_stream;
    QString m_streamName, m_name;
    quint16 m_version = 0;
    int m_codePage = 1252;
    std::vector<QString> m_strings;
    qsizetype m_at = 0; // the record being read, named when it cannot be read
    quint16 m_type = 0;
};

RecordData BiffBook::record(qsizetype at)
{
    RecordData r = m_stream.record(at);
    m_at = at;
    m_type = r.type;
    return r;
}

QString BiffBook::byteString(Reader &in, qsizetype length)
{
    const QByteArray bytes = in.bytes(length);
    const int cp = m_codePage == 32769 ? 1252 : m_codePage;
    if (isSupportedCodePage(cp))
        return codePageToUnicode(bytes, cp);
    return QString::fromLatin1(bytes);
}

QString BiffBook::labelText(Reader &in)
{
    if (in.left() == 0) // a text record that ends before its length: an empty text
        return {};
    if (m_version == kBiff8)
        return in.unicodeString();
    return byteString(in, in.u16());
}

void BiffBook::readSst(const RecordData &r)
{
    Reader in(r);
    in.u32(); // references in the workbook
    const quint32 unique = in.u32();
    m_strings.clear();
    m_strings.reserve(std::min<quint32>(unique, quint32(in.left() / 3 + 1)));
    for (quint32 i = 0; i < unique && in.left() > 0; ++i)
        m_strings.push_back(in.unicodeString());
}

void BiffBook::readGlobals(std::vector<SheetEntry> &sheets)
{
    qsizetype at = 0;
    RecordData r = record(at);
    if (r.type != kBof)
        throw Unexpected{QStringLiteral("a workbook stream begins with a BOF record")};
    {
        Reader bof(r);
        m_version = bof.u16();
    }
    if (m_version != kBiff8 && m_version != kBiff5)
        refuseWorkbook(m_name, QStringLiteral("was saved by an Excel version older than Excel 5, which cannot be "
                                              "read; save it as an Excel 97-2003 or .xlsx workbook"));
    for (at = r.next; !m_stream.atEnd(at); at = r.next) {
        r = record(at);
        Reader in(r);
        switch (r.type) {
        case kEof:
            return;
        case kFilePass:
            refuseWorkbook(m_name, QStringLiteral("is protected by a password; save it without one to import it"));
        case kCodePage:
            m_codePage = in.u16();
            break;
        case kBoundSheet: {
            const quint32 offset = in.u32();
            in.u8(); // visibility
            const quint8 type = in.u8();
            const QString name = m_version == kBiff8 ? in.unicodeString(false) : byteString(in, in.u8());
            if (type == 0) // a worksheet, not a chart or a macro sheet
                sheets.push_back({offset, name, at});
            break;
        }
        case kSst:
            if (m_version == kBiff8)
                readSst(r);
            break;
        default:
            break;
        }
    }
    throw Damaged{QStringLiteral("its ") + m_streamName +
                  QStringLiteral(" stream ends before its list of sheets does")};
}

void BiffBook::readSheet(const SheetEntry &entry, Sheet &sheet)
{
    if (m_stream.atEnd(entry.offset) || m_stream.record(entry.offset).type != kBof) {
        record(entry.listedAt);
        throw Unexpected{QStringLiteral("no sheet begins at byte %1, where it places sheet \"%2\"")
                             .arg(entry.offset)
                             .arg(entry.name)};
    }
    bool stringFollows = false; // a FORMULA's text comes in the STRING record after it
    quint16 formulaRow = 0, formulaColumn = 0;
    int nested = 0; // a chart on the sheet is a substream of its own, BOF to EOF: no cells of the sheet
    RecordData r = record(entry.offset);
    for (qsizetype at = r.next; !m_stream.atEnd(at); at = r.next) {
        r = record(at);
        if (r.type == kBof) {
            ++nested;
            continue;
        }
        if (r.type == kEof) {
            if (nested == 0)
                return;
            --nested;
            continue;
        }
        if (nested > 0)
            continue;
        Reader in(r);
        switch (r.type) {
        case kLabelSst: {
            const quint16 row = in.u16(), column = in.u16();
            in.u16();
            const quint32 index = in.u32();
            if (index >= m_strings.size())
                throw Unexpected{QStringLiteral("the shared text it refers to does not exist")};
            sheet.set(row, column, m_strings[index]);
            break;
        }
        case kLabel:
        case kRString: {
            const quint16 row = in.u16(), column = in.u16();
            in.u16();
            sheet.set(row, column, labelText(in));
            break;
        }
        case kNumber: {
            const quint16 row = in.u16(), column = in.u16();
            in.u16();
            sheet.set(row, column, numberText(in.f64()));
            break;
        }
        case kRk: {
            const quint16 row = in.u16(), column = in.u16();
            in.u16();
            sheet.set(row, column, numberText(rkValue(in.u32())));
            break;
        }
        case kMulRk: {
            const quint16 row = in.u16(), first = in.u16();
            const qsizetype cells = (in.left() - 2) / 6;
            for (qsizetype i = 0; i < cells; ++i) {
                in.u16();
                sheet.set(row, quint32(first + i), numberText(rkValue(in.u32())));
            }
            break;
        }
        case kBoolErr: {
            const quint16 row = in.u16(), column = in.u16();
            in.u16();
            const quint8 value = in.u8(), isError = in.u8();
            sheet.set(row, column,
                      isError ? errorText(value) : (value ? QStringLiteral("TRUE") : QStringLiteral("FALSE")));
            break;
        }
        case kFormula:
        case kFormulaOld: { // the cached result is all that is read; both lay it out alike
            const quint16 row = in.u16(), column = in.u16();
            in.u16();
            const QByteArray result = in.bytes(8);
            const bool special = uchar(result[6]) == 0xFF && uchar(result[7]) == 0xFF;
            if (!special) {
                double value;
                const quint64 bits = qFromLittleEndian<quint64>(result.constData());
                std::memcpy(&value, &bits, sizeof value);
                sheet.set(row, column, numberText(value));
            } else if (result[0] == 0) {
                stringFollows = true;
                formulaRow = row;
                formulaColumn = column;
            } else if (result[0] == 1) {
                sheet.set(row, column, result[2] ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
            } else if (result[0] == 2) {
                sheet.set(row, column, errorText(quint8(result[2])));
            }
            break;
        }
        case kString:
            if (stringFollows)
                sheet.set(formulaRow, formulaColumn, labelText(in));
            stringFollows = false;
            break;
        default:
            break;
        }
    }
    // A last sheet without its end record still gives what it holds.
}

void BiffBook::read(Workbook &book)
{
    try {
        std::vector<SheetEntry> sheets;
        readGlobals(sheets);
        for (const SheetEntry &s : sheets) {
            book.m_sheets.emplace_back();
            readSheet(s, book.m_sheets.back());
        }
    } catch (const Damaged &d) {
        refuseWorkbook(m_name, QStringLiteral("is damaged and cannot be read (") + d.why + QLatin1Char(')'));
    } catch (const Unexpected &u) {
        refuseWorkbook(m_name, QStringLiteral("cannot be read: reading stopped at %1 at byte %2 of its %3 stream: %4")
                                   .arg(recordName(m_type))
                                   .arg(m_at)
                                   .arg(m_streamName, u.why));
    }
}

// The compound file's streams, freed however the reading ends.
struct GObjectRef {
    gpointer object = nullptr;
    ~GObjectRef()
    {
        if (object)
            g_object_unref(object);
    }
};

// GLib's and libgsf's own warnings about a bad file ("libgsf:msole-CRITICAL **: ...")
// would reach the user's terminal beside the reader's message, which says all
// the user can act on: they are dropped. Other libraries' messages go on as before.
GLogFunc g_previousHandler = nullptr;

void dropContainerDiagnostics(const gchar *domain, GLogLevelFlags level, const gchar *message, gpointer)
{
    const bool ours = domain && (g_str_has_prefix(domain, "libgsf") || g_str_has_prefix(domain, "GLib"));
    if (!ours || (level & G_LOG_LEVEL_ERROR))
        g_previousHandler(domain, level, message, nullptr);
}

} // namespace

void initContainerLibrary()
{
    static std::once_flag initialised;
    std::call_once(initialised, [] {
        g_previousHandler = g_log_set_default_handler(dropContainerDiagnostics, nullptr);
        gsf_init();
    });
}

void readBiffWorkbook(const QByteArray &bytes, const QString &name, Workbook &book)
{
    initContainerLibrary();

    GObjectRef input{gsf_input_memory_new(reinterpret_cast<const guint8 *>(bytes.constData()), bytes.size(), FALSE)};
    GError *error = nullptr;
    GObjectRef ole{gsf_infile_msole_new(GSF_INPUT(input.object), &error)};
    if (error)
        g_error_free(error);
    if (!ole.object)
        refuseWorkbook(name, QStringLiteral("is damaged: its container cannot be read"));
    GsfInfile *infile = GSF_INFILE(ole.object);
    // A file saved for Excel 97 and Excel 5 at once holds both streams: the
    // BIFF8 "Workbook" has the texts in Unicode, the BIFF5 "Book" only in a code page.
    int workbook = -1, book5 = -1;
    for (int i = 0; i < gsf_infile_num_children(infile); ++i) {
        const QString child = QString::fromUtf8(gsf_infile_name_by_index(infile, i));
        if (child.compare(QLatin1String("EncryptedPackage"), Qt::CaseInsensitive) == 0)
            refuseWorkbook(name, QStringLiteral("is protected by a password; save it without one to import it"));
        if (workbook < 0 && child.compare(QLatin1String("Workbook"), Qt::CaseInsensitive) == 0)
            workbook = i;
        if (book5 < 0 && child.compare(QLatin1String("Book"), Qt::CaseInsensitive) == 0)
            book5 = i;
    }
    const int chosen = workbook >= 0 ? workbook : book5;
    if (chosen < 0)
        refuseWorkbook(name, QStringLiteral("is not an Excel workbook: it holds no workbook stream"));
    const QString streamName = QString::fromUtf8(gsf_infile_name_by_index(infile, chosen));
    GObjectRef stream{gsf_infile_child_by_index(infile, chosen)};
    if (!stream.object)
        refuseWorkbook(name,
                       QStringLiteral("is damaged: its ") + streamName + QStringLiteral(" stream cannot be read"));
    GsfInput *in = GSF_INPUT(stream.object);
    const gsf_off_t size = gsf_input_size(in);
    if (size < 0 || size > kMaxWorkbookBytes)
        refuseWorkbook(name, QStringLiteral("is too large to be an item list"));
    QByteArray data(qsizetype(size), Qt::Uninitialized);
    if (size > 0 && !gsf_input_read(in, size, reinterpret_cast<guint8 *>(data.data())))
        refuseWorkbook(name,
                       QStringLiteral("is damaged: its ") + streamName + QStringLiteral(" stream cannot be read"));
    BiffBook(data, streamName, name).read(book);
}

} // namespace ht
