// Text conversions between stored item texts and page lines, and reading
// templates and pages in every encoding an editor may have saved them in.

#include "HtmlTestSupport.h"
#include "html/HtmlConversions.h"
#include "html/HtmlTextFile.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

struct TextCase {
    const char *name;
    QString in, out;
};

class SingleLineToHtml : public ::testing::TestWithParam<TextCase>
{
};

TEST_P(SingleLineToHtml, TurnsStoredBreaksIntoTags)
{
    TestContext tc;
    EXPECT_EQ(SingleLineDBToMultiLineHTML(tc.ctx, GetParam().in).toStdString(), GetParam().out.toStdString());
}

INSTANTIATE_TEST_SUITE_P(Cases, SingleLineToHtml,
                         ::testing::Values(TextCase{"Slash", u"Open/close"_qs, u"Open<br>close"_qs},
                                           TextCase{"SlashBlank", u"Open/ close"_qs, u"Open<br>close"_qs},
                                           TextCase{"BlankSlash", u"Open /close"_qs, u"Open <br>close"_qs},
                                           TextCase{"SlashTwoBlanks", u"a/  b"_qs, u"a<br> b"_qs},
                                           TextCase{"TrailingSlash", u"end/"_qs, u"end<br>"_qs},
                                           TextCase{"TrailingSlashBlank", u"end/ "_qs, u"end<br>"_qs},
                                           TextCase{"DoubleSlash", u"a//b"_qs, u"a<br><br>b"_qs},
                                           TextCase{"SlashBlankSlash", u"a/ /b"_qs, u"a<br><br>b"_qs},
                                           TextCase{"CrLf", u"a\r\nb"_qs, u"a<br>b"_qs},
                                           TextCase{"CrLfBlankKept", u"a\r\n b"_qs, u"a<br> b"_qs},
                                           TextCase{"LoneCrAndLfKept", u"a\rb\nc"_qs, u"a\rb\nc"_qs},
                                           TextCase{"Empty", QString(), QString()}),
                         [](const auto &info) { return std::string(info.param.name); });

struct SplitCase {
    const char *name;
    QStringList in, out;
};

class BrToMultiline : public ::testing::TestWithParam<SplitCase>
{
};

TEST_P(BrToMultiline, SplitsAfterEveryTag)
{
    TestContext tc;
    const QStringList input = GetParam().in;
    QStringList out{u"stale"_qs};
    ConvertHTMLBrToMultiline(tc.ctx, input, out);
    EXPECT_EQ(out, GetParam().out);
    EXPECT_EQ(input, GetParam().in);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BrToMultiline,
    ::testing::Values(
        SplitCase{"Example", {u"x"_qs, u"a<br>b"_qs, u"y"_qs}, {u"x"_qs, u"a<br>"_qs, u"b"_qs, u""_qs, u"y"_qs}},
        SplitCase{"TagAtEnd", {u"a<br>"_qs}, {u"a<br>"_qs, u""_qs, u""_qs}},
        SplitCase{"UpperCaseNotSplit", {u"a<BR>b"_qs}, {u"a<BR>b"_qs}},
        SplitCase{"SeveralTags", {u"<br><br>c"_qs}, {u"<br>"_qs, u"<br>"_qs, u"c"_qs, u""_qs}},
        SplitCase{"NoLines", {}, {}}),
    [](const auto &info) { return std::string(info.param.name); });

QByteArray utf16(const QString &s, bool bigEndian)
{
    QByteArray b;
    for (QChar c : s) {
        const char hi = char(c.unicode() >> 8), lo = char(c.unicode() & 0xFF);
        b.append(bigEndian ? hi : lo);
        b.append(bigEndian ? lo : hi);
    }
    return b;
}

struct EncodingCase {
    const char *name;
    QByteArray bytes;
};

const QString kSample = u"<TITLE>Prüfung Ω</TITLE>\r\nzweite Zeile\r\n"_qs;

class Encodings : public ::testing::TestWithParam<EncodingCase>
{
};

TEST_P(Encodings, DecodeToTheSameLines)
{
    const QStringList lines = splitTextLines(decodeTextFileBytes(GetParam().bytes));
    EXPECT_EQ(lines, (QStringList{u"<TITLE>Prüfung Ω</TITLE>"_qs, u"zweite Zeile"_qs}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Encodings,
    ::testing::Values(EncodingCase{"Utf16LeMark", QByteArray("\xFF\xFE", 2) + utf16(kSample, false)},
                      EncodingCase{"Utf16BeMark", QByteArray("\xFE\xFF", 2) + utf16(kSample, true)},
                      EncodingCase{"Utf16LeNoMark", utf16(kSample, false)},
                      EncodingCase{"Utf16BeNoMark", utf16(kSample, true)},
                      EncodingCase{"Utf8Mark", QByteArray("\xEF\xBB\xBF") + kSample.toUtf8()},
                      EncodingCase{"Utf8NoMark", kSample.toUtf8()},
                      EncodingCase{"LfOnly", QString(kSample).replace(u"\r\n"_qs, u"\n"_qs).toUtf8()},
                      EncodingCase{"NoFinalBreak", QString(kSample).chopped(2).toUtf8()}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(SplitTextLines, KeepsEmptyLinesButAddsNoneAtTheEnd)
{
    EXPECT_EQ(splitTextLines(u"a\r\n\r\nb\rc\n"_qs), (QStringList{u"a"_qs, u""_qs, u"b"_qs, u"c"_qs}));
    EXPECT_TRUE(splitTextLines(QString()).isEmpty());
}

TEST(GetTextFileHTML, TellsMissingGeneratedAndHandMadePagesApart)
{
    TestContext tc;
    const QString missing = tc.path(u"none.html"_qs);
    EXPECT_EQ(GetTextFileHTML(tc.ctx, missing, false, true), QStringList{u"-1"_qs});

    writeFileBytes(tc.path(u"generated.html"_qs), "<html>\r\n<title>made by HARKO & CO</title>\r\n<p>x</p>\r\n");
    EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(u"generated.html"_qs), false, true), QStringList{QString()});

    // Mark split over two lines, or only half of it: made by hand.
    writeFileBytes(tc.path(u"hand.html"_qs), "<TITLE>Own page</TITLE>\r\nHarko & Co\r\n");
    EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(u"hand.html"_qs), false, true),
              (QStringList{u"<TITLE>Own page</TITLE>"_qs, u"Harko & Co"_qs}));

    writeFileBytes(tc.path(u"empty.html"_qs), QByteArray());
    EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(u"empty.html"_qs), false, true), QStringList{QString()});
    EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(u"empty.html"_qs), false, false), QStringList{QString()});

    // The template read does not look for the mark.
    EXPECT_EQ(GetTextFileHTML(tc.ctx, tc.path(u"generated.html"_qs), false, false).size(), 3);
    EXPECT_EQ(tc.errorLog(), QString());
}

TEST(GetTextFileHTML, ReportsAMissingFileWhenAsked)
{
    TestContext tc;
    tc.ctx.state.unattended = true;
    const QString missing = tc.path(u"Source_Alarms.html"_qs);
    EXPECT_EQ(GetTextFileHTML(tc.ctx, missing, true, false), QStringList{QString()});
    EXPECT_EQ(tc.errorLog(), u"Error reading predefined HTML-File \""_qs + missing + u"\"!\r\n"_qs);

    tc.ctx.state.unattended = false;
    EXPECT_EQ(GetTextFileHTML(tc.ctx, missing, true, false), QStringList{QString()});
    ASSERT_EQ(tc.ui.shown.size(), 1u);
    EXPECT_EQ(tc.ui.shown[0].icon, Icon::Critical);
}

TEST(GetTextFileHTML, SurvivesBinaryGarbage)
{
    TestContext tc;
    QByteArray garbage;
    for (int i = 0; i < 70000; ++i)
        garbage.append(char((i * 7919) % 256));
    writeFileBytes(tc.path(u"garbage.html"_qs), garbage);
    const QStringList lines = GetTextFileHTML(tc.ctx, tc.path(u"garbage.html"_qs), false, true);
    EXPECT_FALSE(lines.isEmpty());
}

TEST(WriteHtmlPageFile, WritesUtf16WithMarkAndCrLfAfterEveryLine)
{
    TestContext tc;
    const QString path = tc.path(u"page.html"_qs);
    writeFileBytes(path, QByteArray(500, 'x')); // a longer old page is replaced entirely
    ASSERT_TRUE(writeHtmlPageFile(path, {u"Ä"_qs, QString(), u"𝄞"_qs}));
    EXPECT_EQ(readFileBytes(path),
              QByteArray("\xFF\xFE\xC4\x00\r\x00\n\x00\r\x00\n\x00\x34\xD8\x1E\xDD\r\x00\n\x00", 20));
    EXPECT_EQ(GetTextFileHTML(tc.ctx, path, false, false), (QStringList{u"Ä"_qs, QString(), u"𝄞"_qs}));
}

} // namespace
