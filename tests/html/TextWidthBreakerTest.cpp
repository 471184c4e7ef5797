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

struct Breaker {
    TestContext tc;
    TextWidthBreaker breaker;
    QStringList operator()(const QString &text, int width, const QString &family = u"Arial"_qs,
                           const QString &size = u"10"_qs, const QString &weight = u"400"_qs)
    {
        return breaker.TextSingleLineToArray(tc.ctx, text, family, size, weight, width);
    }
};

// The limit is reached when the line and the next word, measured without the
// joining blank, are at least as wide as the limit: one pixel more keeps them together.
TEST(TextWidthBreaker, BreaksExactlyAtThePixelBoundary)
{
    Breaker b;
    const QString text = u"Check the conveyor belt tension"_qs, family = u"Liberation Sans"_qs;
    QFont font(family);
    font.setPixelSize(13);
    const int joined = QFontMetrics(font).horizontalAdvance(u"Check theconveyor"_qs);
    ASSERT_LT(QFontMetrics(font).horizontalAdvance(u"Checkthe"_qs), joined);

    EXPECT_EQ(b(text, joined, family).value(0), u"Check the"_qs);
    EXPECT_EQ(b(text, joined, family).value(1).left(9), u" conveyor"_qs);
    EXPECT_EQ(b(text, joined + 1, family).value(0).left(18), u"Check the conveyor"_qs);
    EXPECT_EQ(b(text, joined - 1, family).value(0), u"Check the"_qs);
}

TEST(TextWidthBreaker, FontFaceSizeAndKeptWeight)
{
    Breaker b;
    b(u"a"_qs, 0, u"Arial"_qs, u"10"_qs, u"700"_qs);
    EXPECT_EQ(QFontInfo(b.breaker.font()).family().toStdString(), "Liberation Sans"); // metric-compatible face
    EXPECT_EQ(b.breaker.font().pixelSize(), 13);                                      // 10 pt at 96 dpi
    b(u"a"_qs, 0, u"Arial"_qs, u"18"_qs, QString());
    EXPECT_EQ(b.breaker.font().weight(), QFont::Bold);
    EXPECT_EQ(b.breaker.font().pixelSize(), 24);
    // Bold text is wider, so the weight really reaches the measurement.
    const int bold = b.breaker.textWidthTwips(u"Weight"_qs);
    b(u"a"_qs, 0, u"Arial"_qs, u"18"_qs, u"400"_qs);
    EXPECT_GT(bold, b.breaker.textWidthTwips(u"Weight"_qs));
}

TEST(TextWidthBreaker, GivesTheLines)
{
    Breaker b;
    const std::tuple<QString, int, QStringList> cases[] = {
        {QString(), 100, {QString()}},
        {u"a  b"_qs, 1000, {u"a b"_qs}},
        {u"alpha beta"_qs, 1, {u"alpha"_qs, u" beta"_qs}},
        {u"a Donaudampfschifffahrt b"_qs, 5, {u"a"_qs, u" Donaudampfschifffahrt"_qs, u" b"_qs}},
        {u"x   y   "_qs, 1000, {u"x y"_qs}},
        {u"  a  b"_qs, 1000, {u" a b"_qs}},
        {u"a<br>b c"_qs, 1000, {u"a<br>b c"_qs}}};
    for (const auto &[text, width, lines] : cases)
        EXPECT_EQ(b(text, width), lines) << text.toStdString();
}

TEST(TextWidthBreaker, ZeroWidthBehavesAs1024Pixels)
{
    Breaker b;
    const QString text = u"word "_qs.repeated(60).trimmed(); // about 2300 pixels in Arial 10
    const QStringList zero = b(text, 0);
    EXPECT_EQ(zero, b(text, 1024));
    EXPECT_NE(zero, b(text, 1200));
    ASSERT_GT(zero.size(), 1);
    for (qsizetype i = 1; i < zero.size(); ++i)
        EXPECT_TRUE(zero[i].startsWith(u" word"_qs));
    EXPECT_EQ(zero.join(QString()), text);
}

// Texts of mixed scripts, kerning pairs and word lengths, drawn from a fixed seed.
QStringList sampleTexts()
{
    const QStringList pieces =
        u"Check the conveyor belt<br>tension AVAWAY fi W. Привод остановлен ΑΒΓ 停止 محرك é tab\there x\u0301y "
        u"Donaudampfschifffahrt T, ffi Tov Wa Yo P. V, Ÿ rt LTA ((f)) 1234567890"_qs.split(u' ');
    QStringList texts;
    quint32 seed = 12345;
    for (int t = 0; t < 400; ++t) {
        QString text;
        for (int w = 0; w < 5 + t % 60; ++w) {
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
    Breaker fast, exact;
    exact.breaker.setMeasureEveryJoin(true);
    for (const QString &text : sampleTexts())
        for (const QString size : {u"10"_qs, u"18"_qs})
            ASSERT_EQ(fast(text, width, QString::fromLatin1(family), size, QString::fromLatin1(weight)),
                      exact(text, width, QString::fromLatin1(family), size, QString::fromLatin1(weight)))
                << text.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Fonts, EstimatedAndMeasured,
                         ::testing::Combine(::testing::Values("Arial", "Times New Roman", "Courier New", "Verdana"),
                                            ::testing::Values("400", "700"), ::testing::Values(120, 720, 921)));

} // namespace
