#include "common/CodePage.h"
#include "QtPrinters.h"

using namespace ht;

namespace
{

struct Sample {
    int codePage;
    QByteArray bytes;
    const char *utf8; // nullptr: code page not supported
};

class CodePageSample : public ::testing::TestWithParam<Sample>
{
};

TEST_P(CodePageSample, ConvertsRealText)
{
    const Sample &s = GetParam();
    EXPECT_EQ(isSupportedCodePage(s.codePage), s.utf8 != nullptr);
    EXPECT_EQ(codePageToUnicode(s.bytes, s.codePage), QString::fromUtf8(s.utf8));
}

INSTANTIATE_TEST_SUITE_P(
    Windows, CodePageSample,
    ::testing::Values(Sample{1253, "\xd3\xf5\xed\xe1\xe3\xe5\xf1\xec\xfc\xf2", "Συναγερμός"},
                      Sample{1251, "\xd2\xf0\xe5\xe2\xee\xe3\xe0 \x80", "Тревога Ђ"},
                      Sample{1252, "Ger\xe4t \x80 \x93ok\x94", "Gerät € “ok”"},
                      Sample{1250, "Chyba \x9e\xe1rovky", "Chyba žárovky"}, Sample{1254, "Ar\xfdza \xfe", "Arıza ş"},
                      Sample{1255, "\xf9\xe2\xe9\xe0\xe4", "שגיאה"}, Sample{1256, "\xd8\xe1\xc3", "طلأ"},
                      Sample{1257, "Klaida \xf0", "Klaida š"}, Sample{874, "\xbc\xd4\xb4", "ผิด"},
                      Sample{932, "\x83\x41\x83\x89\x81\x5b\x83\x80", "アラーム"},
                      Sample{932, "\x5c\xb1", "\\ｱ"}, // Microsoft's Shift-JIS keeps the backslash
                      Sample{936, "\xb1\xa8\xbe\xaf \x80", "报警 €"}, Sample{949, "\xb0\xe6\xba\xb8", "경보"},
                      Sample{950, "\xc4\xb5\xb3\xf8", "警報"}, Sample{65001, "\xc3\xa4", "ä"},
                      // Broken sequences do not stop the conversion; unknown code pages give nothing.
                      Sample{1252, "a\x81z", "a\uFFFDz"}, Sample{932, "ab\x83", "ab\uFFFD"}, Sample{0, "abc", nullptr},
                      Sample{999, "abc", nullptr}, Sample{437, "abc", nullptr}, Sample{20127, "abc", nullptr},
                      Sample{-1, "abc", nullptr}));

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
