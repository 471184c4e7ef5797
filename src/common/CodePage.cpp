#include "common/CodePage.h"

#include <array>
#include <cerrno>
#include <iconv.h>
#include <vector>

namespace ht
{

namespace
{

struct CodePageName {
    int codePage;
    const char *iconvName;
};

// glibc's converters that match the Windows code pages byte for byte
// (CP932 is Microsoft's Shift-JIS, CP936 GBK with the euro sign, CP949 UHC,
// CP950 Big5 with Microsoft's extensions).
constexpr std::array<CodePageName, 15> kCodePages{{
    {874, "CP874"},
    {932, "CP932"},
    {936, "CP936"},
    {949, "CP949"},
    {950, "CP950"},
    {1250, "CP1250"},
    {1251, "CP1251"},
    {1252, "CP1252"},
    {1253, "CP1253"},
    {1254, "CP1254"},
    {1255, "CP1255"},
    {1256, "CP1256"},
    {1257, "CP1257"},
    {1258, "CP1258"},
    {65001, "UTF-8"},
}};

const char *iconvNameOf(int codePage)
{
    for (const auto &cp : kCodePages)
        if (cp.codePage == codePage)
            return cp.iconvName;
    return nullptr;
}

// Owns one iconv descriptor; conversions are short, so one is opened per call
// (glibc caches the loaded converter modules itself).
class Converter
{
  public:
    explicit Converter(const char *from) : cd_(iconv_open("UTF-16LE", from)) {}
    ~Converter()
    {
        if (valid())
            iconv_close(cd_);
    }
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    bool valid() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return cd_; }

  private:
    iconv_t cd_;
};

void appendUtf16(QString &out, const std::vector<char> &buf, size_t bytes)
{
    out.append(reinterpret_cast<const QChar *>(buf.data()), qsizetype(bytes / 2));
}

} // namespace

bool isSupportedCodePage(int codePage)
{
    return iconvNameOf(codePage) != nullptr;
}

QString codePageToUnicode(const QByteArray &bytes, int codePage)
{
    const char *name = iconvNameOf(codePage);
    if (!name)
        return {};
    Converter conv(name);
    if (!conv.valid())
        return {};

    QString out;
    out.reserve(bytes.size());
    // Every input byte gives at most one UTF-16 unit pair; the extra room
    // covers CP1258's composed characters flushed at the end.
    std::vector<char> buf(size_t(bytes.size()) * 4 + 16);
    char *in = const_cast<char *>(bytes.constData());
    size_t inLeft = size_t(bytes.size());
    while (inLeft > 0) {
        char *outPtr = buf.data();
        size_t outLeft = buf.size();
        const size_t rc = iconv(conv.get(), &in, &inLeft, &outPtr, &outLeft);
        appendUtf16(out, buf, buf.size() - outLeft);
        if (rc != size_t(-1))
            continue;
        if (errno == E2BIG)
            continue;
        // An invalid byte or a lead byte cut off at the end: like the Windows
        // conversion without MB_ERR_INVALID_CHARS, it becomes a replacement
        // character and the conversion goes on with the next byte.
        out.append(QChar::ReplacementCharacter);
        ++in;
        --inLeft;
    }
    // Flush a character the converter still holds back (CP1258 waits for a
    // combining mark after each base letter).
    char *outPtr = buf.data();
    size_t outLeft = buf.size();
    iconv(conv.get(), nullptr, nullptr, &outPtr, &outLeft);
    appendUtf16(out, buf, buf.size() - outLeft);
    return out;
}

QByteArray charactersAsAnsiBytes(const QString &text)
{
    // Characters 0..255 stand for their own byte; the Windows-1252 letters of
    // 0x80..0x9F (euro sign, typographic quotes ...) give their byte back, so a
    // text that went through either reading of those bytes round-trips.
    static const QString cp1252High =
        codePageToUnicode(QByteArray("\x80\x81\x82\x83\x84\x85\x86\x87\x88\x89\x8a\x8b\x8c\x8d\x8e\x8f"
                                     "\x90\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9a\x9b\x9c\x9d\x9e\x9f",
                                     32),
                          1252);
    QByteArray out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (c.unicode() <= 0xFF) {
            out.append(char(c.unicode()));
            continue;
        }
        const qsizetype i = c == QChar::ReplacementCharacter ? -1 : cp1252High.indexOf(c);
        out.append(i >= 0 ? char(0x80 + i) : '?');
    }
    return out;
}

} // namespace ht
