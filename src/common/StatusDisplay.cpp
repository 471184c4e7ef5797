#include "common/StatusDisplay.h"

#include "common/Context.h"
#include "common/ErrorLog.h"

#include <stdexcept>

namespace ht
{

namespace
{

// Gaps of the status line, in twips.
constexpr int kTextGap = 150;         // between the status text and the bar
constexpr int kRightMargin = 405;     // right of the bar while running
constexpr int kNewTextMargin = 180;   // right of the bar after a new text
constexpr int kRelocMinBar = 1860;    // narrower status bars keep the bar's width
constexpr int kRelocMargin = 1875;    // right of the bar after a resize
constexpr int kRelocFromBottom = 990; // bar's top above the form's bottom

// StatusStart and StatusTick carry on after any failing step: a progress
// display must never stop the operation it shows.
template <typename F> void ignoringFailure(F &&step)
{
    try {
        step();
    } catch (const std::exception &) {
    }
}

void setWidthIfValid(StatusTarget &form, int width)
{
    // A negative width is refused, as the control refuses it.
    if (width >= 0)
        form.setProgressWidth(width);
}

} // namespace

void HeadlessStatus::setProgressValue(int v)
{
    if (v < 0 || v > max)
        throw std::out_of_range("Invalid property value");
    value = v;
}

void StatusStart(Context &ctx, StatusTarget *form, const QString &text, long maximum, bool disable)
{
    if (!form)
        return;
    ignoringFailure([&] { DisableControls(ctx, form, disable); });
    ignoringFailure([&] { form->setBusyCursor(true); });
    ignoringFailure([&] { form->setStatusText(text); });
    ignoringFailure([&] { form->setProgressLeft(form->textWidth(text) + kTextGap); });
    ignoringFailure([&] { setWidthIfValid(*form, form->innerWidth() - (form->progressLeft() + kRightMargin)); });
    // Let the new text be painted before the work starts.
    ignoringFailure([&] {
        if (ctx.processEvents)
            ctx.processEvents();
    });
    ignoringFailure([&] { form->bringProgressToFront(); });
    ignoringFailure([&] {
        if (!form->progressVisible())
            form->setProgressVisible(true);
    });
    ignoringFailure([&] { form->setProgressValue(0); });
    ignoringFailure([&] {
        if (maximum != 0)
            form->setProgressMax(int(maximum));
    });
}

void StatusTick(Context &ctx, StatusTarget *form)
{
    (void)ctx;
    if (!form)
        return;
    // A step past the maximum is simply dropped.
    ignoringFailure([&] { form->setProgressValue(form->progressValue() + 1); });
    ignoringFailure([&] { setWidthIfValid(*form, form->innerWidth() - (form->progressLeft() + kRightMargin)); });
    ignoringFailure([&] { form->setProgressVisible(true); });
}

void StatusTickNewText(Context &ctx, StatusTarget *form, const QString &text)
{
    if (!form)
        return;
    try {
        form->setStatusText(text);
        const int left = form->textWidth(text) + kTextGap;
        if (form->progressLeft() > left)
            form->setProgressLeft(left);
        const int width = form->statusBarWidth() - form->progressLeft() - kNewTextMargin;
        if (width > 0)
            form->setProgressWidth(width);
        if (form->progressValue() + 1 <= form->progressMax())
            form->setProgressValue(form->progressValue() + 1);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("StatusTickNewText"), e);
    }
}

void StatusEnd(Context &ctx, StatusTarget *form)
{
    if (!form)
        return;
    try {
        // The controls stay as they are: re-enabling is DisableControls' job.
        form->setStatusText(QString());
        form->setProgressVisible(false);
        form->setBusyCursor(false);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("StatusEnd"), e);
    }
}

void StatusAndProgessBarReloc(Context &ctx, StatusTarget *form, int offset)
{
    if (!form)
        return;
    try {
        if (form->statusBarWidth() > kRelocMinBar && form->progressVisible())
            setWidthIfValid(*form, form->innerWidth() - kRelocMargin);
        form->setProgressTop(form->innerHeight() - kRelocFromBottom + offset);
        form->bringProgressToFront();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("StatusAndProgessBarReloc"), e);
    }
}

void DisableControls(Context &ctx, StatusTarget *form, bool disable)
{
    if (!form)
        return;
    try {
        form->disableControls(disable);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("DisableControls"), e);
    }
}

} // namespace ht
