#include "common/StringUtils.h"
#include "QtPrinters.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace ht;
using ht::test::TestContext;

namespace
{

const QChar kNul(QChar::Null);

TEST(ReplaceStringInString, OnlyTheFirstOccurrence)
{
    TestContext tc;
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "x###A###y###A###", "###A###", "1", false), "x1y###A###");
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "###A###", "###A###", "", false), "");
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "abc", "###A###", "1", false), "abc");
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "", "###A###", "1", false), "");
    // The search is case-sensitive.
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "x###a###", "###A###", "1", false), "x###a###");
}

struct ConvertCase {
    const char *name;
    const char *codePage;
    QString replacement; // one character per code-page byte
    QString expected;    // what replaces the marker
};

class ReplaceConverted : public ::testing::TestWithParam<ConvertCase>
{
};

TEST_P(ReplaceConverted, TakesCharactersAsCodePageBytes)
{
    TestContext tc;
    const ConvertCase &c = GetParam();
    tc.ctx.state.currentCodePage = c.codePage;
    EXPECT_EQ(ReplaceStringInString(tc.ctx, "<td>###T###</td>", "###T###", c.replacement, true),
              "<td>" + c.expected + "</td>");

    bool replaced = false;
    EXPECT_EQ(
        ReplaceStringInTextMultiLine(tc.ctx, "[###T###]", "###T###", {c.replacement, c.replacement}, replaced, true),
        "[" + c.expected + "<br>" + c.expected + "<br>]");
    EXPECT_TRUE(replaced);
}

INSTANTIATE_TEST_SUITE_P(
    CodePages, ReplaceConverted,
    ::testing::Values(
        ConvertCase{"Greek", "1253", QString::fromLatin1("\xc1\xe8\xde\xed\xe1"), QString::fromUtf8("Αθήνα") + kNul},
        ConvertCase{"Cyrillic", "1251", QString::fromLatin1("\xcc\xee\xf1\xea\xe2\xe0"),
                    QString::fromUtf8("Москва") + kNul},
        ConvertCase{"Japanese", "932", QString::fromLatin1("\x93\xfa\x96\x7b"), QString::fromUtf8("日本") + kNul},
        // The same bytes read as Windows-1252 letters (curly quote, en dash) give the same result.
        ConvertCase{"JapaneseFrom1252Letters", "932", QString::fromUtf8("\u201c\u00fa\u2013{"),
                    QString::fromUtf8("日本") + kNul},
        ConvertCase{"Chinese", "936", QString::fromLatin1("\xd6\xd0\xce\xc4"), QString::fromUtf8("中文") + kNul},
        ConvertCase{"StopsAtNul", "1252", QString::fromLatin1("ab\0cd", 5), "ab" + QString(kNul)},
        ConvertCase{"EmptyKeepsTheNul", "1252", "", QString(kNul)},
        ConvertCase{"NoCodePageMeansAnsi", "", QString::fromLatin1("\x80"), QString::fromUtf8("€") + kNul},
        ConvertCase{"UnknownCodePageGivesNothing", "999", "abc", ""}, ConvertCase{"NotFoundCodePage", "-1", "abc", ""}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(ReplaceStringInTextMultiLine, BuildsLinesWithBreaks)
{
    TestContext tc;
    bool replaced = false;
    EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "<p>#L#</p>#L#", "#L#", {"a", "b"}, replaced, false),
              "<p>a<br>b<br></p>#L#");
    EXPECT_TRUE(replaced);

    replaced = false;
    EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "<p>#L#</p>", "#L#", {}, replaced, false), "<p></p>");
    EXPECT_TRUE(replaced);
}

TEST(ReplaceStringInTextMultiLine, NoMarkerLeavesFlagAlone)
{
    TestContext tc;
    for (const bool before : {false, true}) {
        bool replaced = before;
        EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "<p></p>", "#L#", {"a"}, replaced, false), "<p></p>");
        EXPECT_EQ(replaced, before);
        EXPECT_EQ(ReplaceStringInTextMultiLine(tc.ctx, "", "#L#", {"a"}, replaced, false), "");
        EXPECT_EQ(replaced, before);
    }
}

struct SplitCase {
    const char *name;
    QString text;
    QString separator;
    QStringList expected;
};

class Split : public ::testing::TestWithParam<SplitCase>
{
};

TEST_P(Split, PiecesFromIndexOne)
{
    TestContext tc;
    int events = 0;
    tc.ctx.processEvents = [&] { ++events; };
    const SplitCase &c = GetParam();
    const QStringList pieces = StringToStringArray(tc.ctx, c.text, c.separator);
    EXPECT_EQ(pieces, c.expected);
    // Events run once per piece cut off at a separator.
    EXPECT_EQ(events, pieces.size() - 2);
}

INSTANTIATE_TEST_SUITE_P(Examples, Split,
                         ::testing::Values(SplitCase{"TrimsAllButLast", "a, b,c", ",", {"", "a", "b", "c"}},
                                           SplitCase{"LastKeepsBlank", "a / b", "/", {"", "a", " b"}},
                                           SplitCase{"Empty", "", "/", {"", ""}},
                                           SplitCase{"NoSeparator", " abc ", "/", {"", " abc "}},
                                           SplitCase{"EmptyPieces", "a//b/", "/", {"", "a", "", "b", ""}},
                                           SplitCase{"LongSeparator", "a<br>b <br>c", "<br>", {"", "a", "b", "c"}},
                                           SplitCase{"OnlyBlanksTrimmed", "\ta\t,b", ",", {"", "\ta\t", "b"}},
                                           SplitCase{"EmptySeparatorNeverSplits", "abc", "", {"", "abc"}}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(StringToStringArray, WorksWithoutEventHandler)
{
    TestContext tc;
    tc.ctx.processEvents = nullptr;
    EXPECT_EQ(StringToStringArray(tc.ctx, "a/b", "/"), QStringList({"", "a", "b"}));
}

struct OneLineCase {
    const char *name;
    QString text;
    QString expected;
};

class OneLine : public ::testing::TestWithParam<OneLineCase>
{
};

TEST_P(OneLine, LineBreaksBecomeSlashes)
{
    TestContext tc;
    EXPECT_EQ(SingleLineToMultiLine(tc.ctx, GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Examples, OneLine,
                         ::testing::Values(OneLineCase{"CrLf", "a\r\nb", "a/b"}, OneLineCase{"LfCr", "a\n\rb", "a/b"},
                                           OneLineCase{"Lf", "a\nb\nc", "a/b/c"}, OneLineCase{"CrOnly", "a\rb", "a\rb"},
                                           OneLineCase{"NoBreak", "abc", "abc"}, OneLineCase{"Empty", "", ""},
                                           OneLineCase{"TwoCrLf", "a\r\n\r\nb", "a//b"},
                                           OneLineCase{"PairsTakenFromTheLeft", "\n\r\n", "//"},
                                           OneLineCase{"MixedThenLf", "a\r\nb\nc", "a/b/c"},
                                           OneLineCase{"LoneCrKeepsLf", "a\r\nb\rc\nd", "a/b\rc\nd"},
                                           OneLineCase{"NoPairAtAll", "a\rb\nc", "a\rb\nc"},
                                           OneLineCase{"CrBeforePair", "a\r\r\nb", "a\r/b"}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(GetDirectory, ExistingOrOneNewLevel)
{
    TestContext tc;
    EXPECT_TRUE(GetDirectory(tc.ctx, tc.dir.path()));
    const QString fresh = tc.path("Alarms");
    EXPECT_TRUE(GetDirectory(tc.ctx, fresh));
    EXPECT_TRUE(QFileInfo(fresh).isDir());
    EXPECT_TRUE(tc.ui.shown.empty());
}

TEST(GetDirectory, FailureIsReported)
{
    TestContext tc;
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
