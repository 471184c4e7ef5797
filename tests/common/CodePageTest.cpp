#include "common/CodePage.h"
#include "QtPrinters.h"

using namespace ht;

namespace
{

TEST(CodePage, ConvertsRealText)
{
    const struct {
        int codePage;
        QByteArray bytes;
        const char *utf8; // nullptr: code page not supported
    } samples[] = {{1253, "\xd3\xf5\xed\xe1\xe3\xe5\xf1\xec\xfc\xf2", "Συναγερμός"},
                   {1251, "\xd2\xf0\xe5\xe2\xee\xe3\xe0 \x80", "Тревога Ђ"},
                   {1252, "Ger\xe4t \x80 \x93ok\x94", "Gerät € “ok”"},
                   {1250, "Chyba \x9e\xe1rovky", "Chyba žárovky"},
                   {1254, "Ar\xfdza \xfe", "Arıza ş"},
                   {1255, "\xf9\xe2\xe9\xe0\xe4", "שגיאה"},
                   {1256, "\xd8\xe1\xc3", "طلأ"},
                   {1257, "Klaida \xf0", "Klaida š"},
                   {874, "\xbc\xd4\xb4", "ผิด"},
                   {932, "\x83\x41\x83\x89\x81\x5b\x83\x80", "アラーム"},
                   {932, "\x5c\xb1", "\\ｱ"}, // Microsoft's Shift-JIS keeps the backslash
                   {936, "\xb1\xa8\xbe\xaf \x80", "报警 €"},
                   {949, "\xb0\xe6\xba\xb8", "경보"},
                   {950, "\xc4\xb5\xb3\xf8", "警報"},
                   {65001, "\xc3\xa4", "ä"},
                   // Broken sequences do not stop the conversion; unknown code pages give nothing.
                   {1252, "a\x81z", "a\uFFFDz"},
                   {932, "ab\x83", "ab\uFFFD"},
                   {0, "abc", nullptr},
                   {999, "abc", nullptr},
                   {437, "abc", nullptr},
                   {20127, "abc", nullptr},
                   {-1, "abc", nullptr}};
    for (const auto &s : samples) {
        EXPECT_EQ(isSupportedCodePage(s.codePage), s.utf8 != nullptr) << s.codePage;
        EXPECT_EQ(codePageToUnicode(s.bytes, s.codePage), QString::fromUtf8(s.utf8)) << s.codePage;
    }
}

TEST(CodePage, EmbeddedNulAndVietnameseToneMarks)
{
    EXPECT_EQ(codePageToUnicode(QByteArray("a\0b", 3), 1251), QString::fromLatin1("a\0b", 3));
    // 1258 composes a base letter with a following tone mark; the last letter must not be lost.
    EXPECT_EQ(codePageToUnicode("Vi\xeai\xf2t", 1258).normalized(QString::NormalizationForm_C),
              QString::fromUtf8("Viêịt").normalized(QString::NormalizationForm_C));
    EXPECT_EQ(codePageToUnicode("ba", 1258), "ba");
}

TEST(CodePage, CharactersAsAnsiBytes)
{
    EXPECT_EQ(charactersAsAnsiBytes(QString::fromLatin1("\xe4\x80\x9f")), QByteArray("\xe4\x80\x9f"));
    EXPECT_EQ(charactersAsAnsiBytes(QString::fromUtf8("€“”Ÿ")), QByteArray("\x80\x93\x94\x9f"));
    EXPECT_EQ(charactersAsAnsiBytes(QString::fromUtf8("Ω\uFFFD")), QByteArray("??"));
}

} // namespace
