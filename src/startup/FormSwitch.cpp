#include "startup/FormSwitch.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "html/HelpDirectory.h"

namespace ht
{

bool SwitchForm(Context &ctx, FormId leave, FormId show)
{
    try {
        if (!ctx.forms)
            return false;
        if (ctx.state.writingHtml && Abort_WriteHTML(ctx) != 1)
            return false;
        // While the flag is set, the form that goes does not take the program with it.
        ctx.state.switchingForm = true;
        ctx.forms->unloadForm(leave);
        ctx.forms->showForm(show);
        ctx.state.switchingForm = false;
        return true;
    } catch (const std::exception &e) {
        ctx.state.switchingForm = false;
        reportUnexpected(ctx, QStringLiteral("SwitchForm"), e);
    }
    return false;
}

} // namespace ht
