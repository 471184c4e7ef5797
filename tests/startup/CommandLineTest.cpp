#include "startup/CommandLine.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace ht
{
namespace
{

struct SplitCase {
    const char *line;
    QStringList expected;
};

void PrintTo(const SplitCase &c, std::ostream *os)
{
    *os << '"' << c.line << '"';
}

class ReadCommandLineTest : public ::testing::TestWithParam<SplitCase>
{
};

TEST_P(ReadCommandLineTest, SplitsAtTheFirstCharacter)
{
    EXPECT_EQ(ReadCommandLine(QString::fromUtf8(GetParam().line)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Grammar, ReadCommandLineTest,
    ::testing::Values(SplitCase{"", {""}}, SplitCase{"   ", {""}}, SplitCase{"/html/Alarms", {"html", "Alarms"}},
                      SplitCase{"-html -Alarms", {"html", "Alarms"}}, SplitCase{"/html /Alarms", {"html", "Alarms"}},
                      SplitCase{"  /html/ Warnings /MaterialChange  ", {"html", "Warnings", "MaterialChange"}},
                      SplitCase{"/html", {"html"}}, SplitCase{"/html/", {"html", ""}},
                      SplitCase{"//html", {"", "html"}},
                      // Without a leading separator the first letter is taken as one.
                      SplitCase{"html", {"tml"}}, SplitCase{"x", {""}},
                      SplitCase{"#html#Alarms#Warnings", {"html", "Alarms", "Warnings"}}));

struct FindCase {
    const char *line;
    const char *name;
    bool found;
};

void PrintTo(const FindCase &c, std::ostream *os)
{
    *os << '"' << c.line << "\" looking for " << c.name;
}

class FindParameterTest : public ::testing::TestWithParam<FindCase>
{
};

TEST_P(FindParameterTest, MatchesWholeWordsWithoutCase)
{
    test::TestContext t;
    t.ctx.state.commandLine = ReadCommandLine(QString::fromUtf8(GetParam().line));
    EXPECT_EQ(FindCommandLineParameter(t.ctx, QString::fromUtf8(GetParam().name)), GetParam().found);
}

INSTANTIATE_TEST_SUITE_P(
    Lookup, FindParameterTest,
    ::testing::Values(FindCase{"/HTML/alarms", "html", true}, FindCase{"/HTML/alarms", "Alarms", true},
                      FindCase{"/HTML/alarms", "Warnings", false}, FindCase{"/htmlx/Alarms", "html", false},
                      FindCase{"/html/MaterialChange", "Material", false}, FindCase{"", "html", false},
                      FindCase{"-html -materialchange", "MaterialChange", true}));

} // namespace
} // namespace ht
