#include "common/StatusDisplay.h"
#include "QtPrinters.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace ht;
using ht::test::TestContext;

namespace
{

// HeadlessStatus measures 90 twips per character.
int textWidth(const QString &t)
{
    return int(t.size()) * 90;
}

TEST(Status, StartPlacesBarBehindText)
{
    TestContext tc;
    int events = 0;
    tc.ctx.processEvents = [&] { ++events; };
    HeadlessStatus form;
    form.value = 5;
    StatusStart(tc.ctx, &form, "Importing alarms", 10, true);
    EXPECT_EQ(form.text, "Importing alarms");
    EXPECT_EQ(form.left, textWidth("Importing alarms") + 150);
    EXPECT_EQ(form.width, form.formWidth - (form.left + 405));
    EXPECT_TRUE(form.visible);
    EXPECT_TRUE(form.busy);
    EXPECT_TRUE(form.disabled);
    EXPECT_EQ(form.value, 0);
    EXPECT_EQ(form.max, 10);
    EXPECT_EQ(events, 1);

    StatusStart(tc.ctx, &form, "Again", 0, false);
    EXPECT_EQ(form.max, 10); // 0 keeps the maximum
    EXPECT_FALSE(form.disabled);
}

TEST(Status, TickPastMaximumIsDropped)
{
    TestContext tc;
    HeadlessStatus form;
    StatusStart(tc.ctx, &form, "Writing", 3, false);
    form.formWidth = 12000; // the form was widened meanwhile
    for (int i = 0; i < 5; ++i)
        EXPECT_NO_THROW(StatusTick(tc.ctx, &form));
    EXPECT_EQ(form.value, 3);
    EXPECT_EQ(form.width, 12000 - (form.left + 405));
    EXPECT_TRUE(tc.ui.shown.empty());
    EXPECT_EQ(tc.errorLog(), "");
}

TEST(Status, NewTextMovesBarLeftOnlyAndStopsAtMaximum)
{
    TestContext tc;
    HeadlessStatus form;
    StatusStart(tc.ctx, &form, "A rather long status text", 2, false);
    const int startLeft = form.left;

    StatusTickNewText(tc.ctx, &form, "A much, much longer status text than before");
    EXPECT_EQ(form.left, startLeft);
    EXPECT_EQ(form.value, 1);

    StatusTickNewText(tc.ctx, &form, "Short");
    EXPECT_EQ(form.text, "Short");
    EXPECT_EQ(form.left, textWidth("Short") + 150);
    EXPECT_EQ(form.width, form.barWidth - form.left - 180);
    EXPECT_EQ(form.value, 2);

    StatusTickNewText(tc.ctx, &form, "Short");
    EXPECT_EQ(form.value, 2);
    EXPECT_TRUE(tc.ui.shown.empty());

    // A status bar too narrow for the bar leaves its width alone.
    form.barWidth = form.left + 180;
    form.width = 777;
    StatusTickNewText(tc.ctx, &form, "Short");
    EXPECT_EQ(form.width, 777);
}

TEST(Status, EndLeavesControlsAlone)
{
    TestContext tc;
    HeadlessStatus form;
    StatusStart(tc.ctx, &form, "Busy", 5, true);
    StatusEnd(tc.ctx, &form);
    EXPECT_EQ(form.text, "");
    EXPECT_FALSE(form.visible);
    EXPECT_FALSE(form.busy);
    EXPECT_TRUE(form.disabled);
    DisableControls(tc.ctx, &form, false);
    EXPECT_FALSE(form.disabled);
}

struct RelocCase {
    const char *name;
    int barWidth;
    bool visible;
    bool widthChanges;
};

class Reloc : public ::testing::TestWithParam<RelocCase>
{
};

TEST_P(Reloc, WidthOnlyForWideVisibleBar)
{
    TestContext tc;
    HeadlessStatus form;
    form.barWidth = GetParam().barWidth;
    form.visible = GetParam().visible;
    form.width = 500;
    StatusAndProgessBarReloc(tc.ctx, &form, 300);
    EXPECT_EQ(form.width, GetParam().widthChanges ? form.formWidth - 1875 : 500);
    EXPECT_EQ(form.top, form.formHeight - 990 + 300);
}

INSTANTIATE_TEST_SUITE_P(StatusBarWidths, Reloc,
                         ::testing::Values(RelocCase{"AtLimit", 1860, true, false},
                                           RelocCase{"JustAbove", 1861, true, true},
                                           RelocCase{"Hidden", 5000, false, false}),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(Status, NoFormMeansNoDisplay)
{
    TestContext tc;
    EXPECT_NO_THROW({
        StatusStart(tc.ctx, nullptr, "x", 3, true);
        StatusTick(tc.ctx, nullptr);
        StatusTickNewText(tc.ctx, nullptr, "y");
        StatusEnd(tc.ctx, nullptr);
        StatusAndProgessBarReloc(tc.ctx, nullptr, 300);
        DisableControls(tc.ctx, nullptr, true);
    });
    EXPECT_TRUE(tc.ui.shown.empty());
}

// A display whose text cannot be set, as a destroyed control would behave.
class BrokenStatus : public HeadlessStatus
{
  public:
    void setStatusText(const QString &) override { throw std::runtime_error("Object required"); }
};

TEST(Status, StartIgnoresFailuresOthersReportThem)
{
    TestContext tc;
    BrokenStatus form;
    StatusStart(tc.ctx, &form, "Busy", 4, false);
    EXPECT_TRUE(form.visible); // later steps still ran
    EXPECT_EQ(form.max, 4);
    EXPECT_TRUE(tc.ui.shown.empty());

    tc.ui.push(Answer::Yes);
    StatusTickNewText(tc.ctx, &form, "x");
    tc.ui.push(Answer::Yes);
    StatusEnd(tc.ctx, &form);
    const QStringList shown = tc.ui.messageTexts();
    ASSERT_EQ(shown.size(), 2);
    EXPECT_TRUE(shown[0].contains("Source: StatusTickNewText"));
    EXPECT_TRUE(shown[1].contains("Source: StatusEnd"));

    tc.ui.push(Answer::No);
    EXPECT_THROW(StatusEnd(tc.ctx, &form), ProgramEnded);
}

TEST(HeadlessStatus, ValueOutsideRangeThrows)
{
    HeadlessStatus form;
    form.max = 2;
    EXPECT_NO_THROW(form.setProgressValue(2));
    EXPECT_THROW(form.setProgressValue(3), std::out_of_range);
    EXPECT_THROW(form.setProgressValue(-1), std::out_of_range);
    EXPECT_EQ(form.value, 2);
}

} // namespace
