#include "common/StringUtils.h"
#include "QtPrinters.h"
#include "support/TestSupport.h"

#include <QFileInfo>
#include <gtest/gtest.h>

using namespace ht;
using ht::test::TestContext;

namespace
{

const QChar kNul(QChar::Null);

TEST(ReplaceStringInString, FirstOccurrenceCaseSensitive)
{
    TestContext tc;
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "x###A###y###A###", "###A###", "1", false), "x1y###A###");
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "###A###", "###A###", "", false), "");
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "x###a###", "###A###", "1", false), "x###a###");
}

// With conversion the replacement's characters are bytes of the current code page, and the
// converted text keeps the terminating NUL of the conversion buffer.
TEST(ReplaceStringInString, ConvertedTakesCharactersAsCodePageBytes)
{
    const struct {
        const char *codePage;
        QString replacement, expected;
    } cases[] = {{"1253", QString::fromLatin1("\xc1\xe8\xde\xed\xe1"), QString::fromUtf8("Αθήνα") + kNul},
                 {"932", QString::fromLatin1("\x93\xfa\x96\x7b"), QString::fromUtf8("日本") + kNul},
                 // The same bytes read as Windows-1252 letters (curly quote, en dash) give the same result.
                 {"932", QString::fromUtf8("\u201c\u00fa\u2013{"), QString::fromUtf8("日本") + kNul},
                 {"1252", QString::fromLatin1("ab\0cd", 5), "ab" + QString(kNul)}, // stops at a NUL
                 {"1252", "", QString(kNul)},
                 {"", QString::fromLatin1("\x80"), QString::fromUtf8("€") + kNul}, // no code page means ANSI
                 {"999", "abc", ""}};                                              // unknown code page
    for (const auto &c : cases) {
        TestContext tc;
        tc.ctx.state.currentCodePage = c.codePage;
        EXPECT_EQ(ReplaceStringInString(tc.ctx, "<td>###T###</td>", "###T###", c.replacement, true),
                  "<td>" + c.expected + "</td>");
        bool replaced = false;
        EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "[###T###]", "###T###", {c.replacement, c.replacement}, replaced,
                                               true),
                  "[" + c.expected + "<br>" + c.expected + "<br>]");
        EXPECT_TRUE(replaced);
    }
}

TEST(ReplaceStringInTextMultiLine, LinesWithBreaksFlagOnlyWhenFound)
{
    TestContext tc;
    bool replaced = false;
    EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "<p>#L#</p>#L#", "#L#", {"a", "b"}, replaced, false),
              "<p>a<br>b<br></p>#L#");
    EXPECT_TRUE(replaced);
    EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "<p>#L#</p>", "#L#", {}, replaced, false), "<p></p>");
    for (const bool before : {false, true}) {
        replaced = before;
        EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "<p></p>", "#L#", {"a"}, replaced, false), "<p></p>");
        EXPECT_EQ(replaced, before);
    }
}

TEST(StringToStringArray, PiecesFromIndexOneTrimmedButTheLast)
{
    const struct {
        QString text, separator;
        QStringList expected;
    } cases[] = {{"a, b,c", ",", {"", "a", "b", "c"}},
                 {"a / b", "/", {"", "a", " b"}},
                 {"", "/", {"", ""}},
                 {"a//b/", "/", {"", "a", "", "b", ""}},
                 {"a<br>b <br>c", "<br>", {"", "a", "b", "c"}},
                 {"\ta\t,b", ",", {"", "\ta\t", "b"}}, // only blanks are trimmed
                 {"abc", "", {"", "abc"}}};
    for (const auto &c : cases) {
        TestContext tc;
        int events = 0;
        tc.ctx.processEvents = [&] { ++events; };
        EXPECT_EQ(StringToStringArray(tc.ctx, c.text, c.separator), c.expected);
        EXPECT_EQ(events, c.expected.size() - 2) << "once per piece cut off at a separator";
        tc.ctx.processEvents = nullptr;
        EXPECT_EQ(StringToStringArray(tc.ctx, c.text, c.separator), c.expected);
    }
}

TEST(SingleLineToMultiLine, LineBreakPairsBecomeSlashes)
{
    TestContext tc;
    const QString cases[][2] = {
        {"a\r\nb", "a/b"},    {"a\n\rb", "a/b"},      {"a\nb\nc", "a/b/c"},          {"", ""},
        {"\n\r\n", "//"},     {"a\r\nb\nc", "a/b/c"}, {"a\r\nb\rc\nd", "a/b\rc\nd"}, {"a\rb\nc", "a\rb\nc"},
        {"a\r\r\nb", "a\r/b"}};
    for (const auto &c : cases)
        EXPECT_EQ(SingleLineToMultiLine(tc.ctx, c[0]), c[1]);
}

TEST(GetDirectory, ExistingOrOneNewLevelElseReported)
{
    TestContext tc;
    EXPECT_TRUE(GetDirectory(tc.ctx, tc.dir.path()));
    EXPECT_TRUE(GetDirectory(tc.ctx, tc.path("Alarms")));
    EXPECT_TRUE(QFileInfo(tc.path("Alarms")).isDir());
    EXPECT_TRUE(tc.ui.shown.empty());

    ht::test::writeFileBytes(tc.path("file"), "x");
    for (const QString &path : {tc.path("missing/parent"), tc.path("file")}) {
        tc.ui.shown.clear();
        EXPECT_FALSE(GetDirectory(tc.ctx, path));
        ASSERT_EQ(tc.ui.shown.size(), 1u);
        EXPECT_EQ(tc.ui.shown[0].text, "Error creating directory \"" + path + "\" !");
        EXPECT_EQ(tc.ui.shown[0].icon, Icon::Critical);
    }
    EXPECT_FALSE(QFileInfo::exists(tc.path("missing")));
    tc.ctx.state.unattended = true;
    EXPECT_FALSE(GetDirectory(tc.ctx, tc.path("missing/parent")));
    EXPECT_TRUE(tc.errorLog().endsWith("Error creating directory \"" + tc.path("missing/parent") + "\" !\r\n"));
}

} // namespace
