#pragma once
// The `width` check: a line of Device or Result drawn in the destination
// language's font must fit the operator panel, measured by the page writer's
// own line breaker with the font and size the page writer takes.

#include "review/TextChecks.h"

#include <memory>

namespace ht
{

struct Context;
class TextWidthBreaker;

struct WidthLimits {
    int device = 0, result = 0; // pixels
    QString fontSize;           // the page writer's: "18" on a 1280 screen, else "10"
};

// From the settings file: [Check] DeviceWidth and ResultWidth, else 90 % of
// [Setup] ScreenResolution (1024 when it is not set), as the page writer lays pages out.
WidthLimits widthLimitsFromSettings(Context &ctx);

class WidthCheck
{
  public:
    WidthCheck(Context &ctx, WidthLimits limits);
    ~WidthCheck();
    // fontSpec: the destination language's Language.Font.
    Findings check(const FieldTexts &t, const QString &fontSpec);
    const WidthLimits &limits() const { return m_limits; }

  private:
    Context &ctx;
    WidthLimits m_limits;
    std::unique_ptr<TextWidthBreaker> m_breaker;
};

} // namespace ht
