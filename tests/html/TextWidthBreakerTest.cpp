// Line breaking by measured text width.

#include "html/TextWidthBreaker.h"
#include "support/TestSupport.h"

#include <QFontInfo>
#include <QFontMetrics>
#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{

QFont liberationSans(int pixelSize)
{
    QFont f(u"Liberation Sans"_qs);
    f.setPixelSize(pixelSize);
    f.setWeight(QFont::Normal);
    return f;
}

TEST(TextWidthBreaker, FontResolvesToTheMetricCompatibleFace)
{
    TestContext tc;
    TextWidthBreaker breaker;
    breaker.TextSingleLineToArray(tc.ctx, u"x"_qs, u"Arial"_qs, u"10"_qs, u"400"_qs, 100);
    EXPECT_EQ(QFontInfo(breaker.font()).family().toStdString(), "Liberation Sans");
    EXPECT_EQ(breaker.font().pixelSize(), 13); // 10 pt at 96 dpi
    EXPECT_EQ(TextWidthBreaker::pixelSizeForPoints(18), 24);
}

// The limit is reached when the line and the next word, measured without the
// joining blank, are at least as wide as the limit: one pixel more keeps them together.
TEST(TextWidthBreaker, BreaksExactlyAtThePixelBoundary)
{
    TestContext tc;
    TextWidthBreaker breaker;
    const QString text = u"Check the conveyor belt tension"_qs;
    const int joined = QFontMetrics(liberationSans(13)).horizontalAdvance(u"Check theconveyor"_qs);
    const int firstTwo = QFontMetrics(liberationSans(13)).horizontalAdvance(u"Checkthe"_qs);
    ASSERT_LT(firstTwo, joined);

    const QStringList atLimit =
        breaker.TextSingleLineToArray(tc.ctx, text, u"Liberation Sans"_qs, u"10"_qs, u"400"_qs, joined);
    EXPECT_EQ(atLimit.value(0), u"Check the"_qs);
    EXPECT_EQ(atLimit.value(1).left(9), u" conveyor"_qs);

    const QStringList onePixelMore =
        breaker.TextSingleLineToArray(tc.ctx, text, u"Liberation Sans"_qs, u"10"_qs, u"400"_qs, joined + 1);
    EXPECT_EQ(onePixelMore.value(0).left(18), u"Check the conveyor"_qs);

    const QStringList onePixelLess =
        breaker.TextSingleLineToArray(tc.ctx, text, u"Liberation Sans"_qs, u"10"_qs, u"400"_qs, joined - 1);
    EXPECT_EQ(onePixelLess.value(0), u"Check the"_qs);
}

TEST(TextWidthBreaker, WeightIsKeptWhenNotGiven)
{
    TestContext tc;
    TextWidthBreaker breaker;
    breaker.TextSingleLineToArray(tc.ctx, u"a"_qs, u"Arial"_qs, u"10"_qs, u"700"_qs, 0);
    EXPECT_EQ(breaker.font().weight(), QFont::Bold);
    breaker.TextSingleLineToArray(tc.ctx, u"a"_qs, u"Arial"_qs, u"18"_qs, QString(), 0);
    EXPECT_EQ(breaker.font().weight(), QFont::Bold);
    EXPECT_EQ(breaker.font().pixelSize(), 24);
    // Bold text is wider, so the weight really reaches the measurement.
    const int bold = breaker.textWidthTwips(u"Weight"_qs);
    breaker.TextSingleLineToArray(tc.ctx, u"a"_qs, u"Arial"_qs, u"18"_qs, u"400"_qs, 0);
    EXPECT_GT(bold, breaker.textWidthTwips(u"Weight"_qs));
}

struct BreakCase {
    const char *name;
    QString text;
    int width;
    QStringList lines;
};

class Breaking : public ::testing::TestWithParam<BreakCase>
{
};

TEST_P(Breaking, GivesTheLines)
{
    TestContext tc;
    TextWidthBreaker breaker;
    EXPECT_EQ(
        breaker.TextSingleLineToArray(tc.ctx, GetParam().text, u"Arial"_qs, u"10"_qs, u"400"_qs, GetParam().width),
        GetParam().lines);
}

const QString kLong = QString(u"word "_qs).repeated(60).trimmed(); // about 2300 pixels in Arial 10

INSTANTIATE_TEST_SUITE_P(Cases, Breaking,
                         ::testing::Values(BreakCase{"Empty", QString(), 100, {QString()}},
                                           BreakCase{"TwoBlanksOneBreak", u"a  b"_qs, 1000, {u"a b"_qs}},
                                           BreakCase{"TinyLimit", u"alpha beta"_qs, 1, {u"alpha"_qs, u" beta"_qs}},
                                           BreakCase{"WideWordStaysWhole",
                                                     u"a Donaudampfschifffahrt b"_qs,
                                                     5,
                                                     {u"a"_qs, u" Donaudampfschifffahrt"_qs, u" b"_qs}},
                                           BreakCase{"OuterBlanks", u"x   y   "_qs, 1000, {u"x y"_qs}},
                                           BreakCase{"LeadingBlanks", u"  a  b"_qs, 1000, {u" a b"_qs}},
                                           BreakCase{"TagsStayInWords", u"a<br>b c"_qs, 1000, {u"a<br>b c"_qs}}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(TextWidthBreaker, ZeroWidthBehavesAs1024Pixels)
{
    TestContext tc;
    TextWidthBreaker breaker;
    const QStringList zero = breaker.TextSingleLineToArray(tc.ctx, kLong, u"Arial"_qs, u"10"_qs, u"400"_qs, 0);
    EXPECT_EQ(zero, breaker.TextSingleLineToArray(tc.ctx, kLong, u"Arial"_qs, u"10"_qs, u"400"_qs, 1024));
    EXPECT_NE(zero, breaker.TextSingleLineToArray(tc.ctx, kLong, u"Arial"_qs, u"10"_qs, u"400"_qs, 1200));
    ASSERT_GT(zero.size(), 1);
    for (qsizetype i = 1; i < zero.size(); ++i)
        EXPECT_TRUE(zero[i].startsWith(u" word"_qs));
    EXPECT_EQ(zero.join(QString()), QString(kLong));
}

} // namespace

namespace
{

// Texts of mixed scripts and word lengths, drawn from a fixed seed.
QStringList sampleTexts()
{
    const QStringList pieces{u"Check"_qs,      u"the"_qs,       u"conveyor"_qs, u"belt<br>tension"_qs,
                             u"AVAWAY"_qs,     u"fi"_qs,        u"W."_qs,       u"Привод"_qs,
                             u"остановлен"_qs, u"ΑΒΓ"_qs,       u"停止"_qs,     u"محرك"_qs,
                             u"é"_qs,          u"tab\there"_qs, u"x\u0301y"_qs, u"Donaudampfschifffahrt"_qs,
                             u"T,"_qs,         u"ffi"_qs,       u"Tov"_qs,      u"Wa"_qs,
                             u"Yo"_qs,         u"P."_qs,        u"V,"_qs,       u"Ÿ"_qs,
                             u"rt"_qs,         u"LTA"_qs,       u"((f))"_qs,    u"1234567890"_qs};
    QStringList texts;
    quint32 seed = 12345;
    for (int t = 0; t < 400; ++t) {
        QString text;
        const int words = 5 + t % 60;
        for (int w = 0; w < words; ++w) {
            seed = seed * 1103515245u + 12345u;
            text += pieces.at((seed >> 16) % pieces.size()) + (w % 9 == 8 ? u"  "_qs : u" "_qs);
        }
        texts.append(text);
    }
    return texts;
}

class EstimatedAndMeasured : public ::testing::TestWithParam<std::tuple<const char *, const char *, int>>
{
};

// Joins far below the limit are decided from the characters' advances; the
// lines must be exactly those that measuring every join gives.
TEST_P(EstimatedAndMeasured, BreakIdentically)
{
    const auto [family, weight, width] = GetParam();
    TestContext tc;
    TextWidthBreaker fast, exact;
    exact.setMeasureEveryJoin(true);
    for (const QString &text : sampleTexts()) {
        for (const QString size : {u"10"_qs, u"18"_qs}) {
            const QStringList a = fast.TextSingleLineToArray(tc.ctx, text, QString::fromLatin1(family), size,
                                                             QString::fromLatin1(weight), width);
            const QStringList b = exact.TextSingleLineToArray(tc.ctx, text, QString::fromLatin1(family), size,
                                                              QString::fromLatin1(weight), width);
            ASSERT_EQ(a, b) << text.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Fonts, EstimatedAndMeasured,
                         ::testing::Combine(::testing::Values("Arial", "Times New Roman", "Courier New", "Verdana"),
                                            ::testing::Values("400", "700"), ::testing::Values(120, 720, 921)));

} // namespace
