#include "common/StatusDisplay.h"
#include "QtPrinters.h"
#include "support/TestSupport.h"

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

TEST(Status, StartTicksAndEnd)
{
    TestContext tc;
    int events = 0;
    tc.ctx.processEvents = [&] { ++events; };
    HeadlessStatus form;
    form.value = 5;
    StatusStart(tc.ctx, &form, "Importing alarms", 3, true);
    EXPECT_EQ(form.text, "Importing alarms");
    EXPECT_EQ(form.left, textWidth("Importing alarms") + 150); // the bar right behind the text
    EXPECT_EQ(form.width, form.formWidth - (form.left + 405));
    EXPECT_TRUE(form.visible && form.busy && form.disabled);
    EXPECT_EQ(form.value, 0);
    EXPECT_EQ(form.max, 3);
    EXPECT_EQ(events, 1);

    form.formWidth = 12000; // the form was widened meanwhile
    for (int i = 0; i < 5; ++i)
        StatusTick(tc.ctx, &form); // ticks past the maximum are dropped
    EXPECT_EQ(form.value, 3);
    EXPECT_EQ(form.width, 12000 - (form.left + 405));

    StatusStart(tc.ctx, &form, "Again", 0, false);
    EXPECT_EQ(form.max, 3); // 0 keeps the maximum
    EXPECT_FALSE(form.disabled);
    DisableControls(tc.ctx, &form, true);
    StatusEnd(tc.ctx, &form);
    EXPECT_EQ(form.text, "");
    EXPECT_FALSE(form.visible || form.busy);
    EXPECT_TRUE(form.disabled); // the controls are the caller's business
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
    StatusTickNewText(tc.ctx, &form, "Short");
    EXPECT_EQ(form.value, 2);
    EXPECT_TRUE(tc.ui.shown.empty());

    // A status bar too narrow for the bar leaves its width alone.
    form.barWidth = form.left + 180;
    form.width = 777;
    StatusTickNewText(tc.ctx, &form, "Short");
    EXPECT_EQ(form.width, 777);
}

TEST(Status, RelocWidensOnlyAWideVisibleBar)
{
    const struct {
        int barWidth;
        bool visible;
        bool widthChanges;
    } cases[] = {{1860, true, false}, {1861, true, true}, {5000, false, false}};
    for (const auto &c : cases) {
        TestContext tc;
        HeadlessStatus form;
        form.barWidth = c.barWidth;
        form.visible = c.visible;
        form.width = 500;
        StatusAndProgessBarReloc(tc.ctx, &form, 300);
        EXPECT_EQ(form.width, c.widthChanges ? form.formWidth - 1875 : 500) << c.barWidth;
        EXPECT_EQ(form.top, form.formHeight - 990 + 300);
    }
}

// A display whose text cannot be set, as a destroyed control would behave.
class BrokenStatus : public HeadlessStatus
{
  public:
    void setStatusText(const QString &) override { throw std::runtime_error("Object required"); }
};

TEST(Status, StartIgnoresFailuresOthersReportThemNoFormNoDisplay)
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

    tc.ui.shown.clear();
    StatusStart(tc.ctx, nullptr, "x", 3, true);
    StatusTick(tc.ctx, nullptr);
    StatusTickNewText(tc.ctx, nullptr, "y");
    StatusEnd(tc.ctx, nullptr);
    StatusAndProgessBarReloc(tc.ctx, nullptr, 300);
    DisableControls(tc.ctx, nullptr, true);
    EXPECT_TRUE(tc.ui.shown.empty());
}

} // namespace
