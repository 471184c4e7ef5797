#include "common/Messages.h"

#include "common/Context.h"
#include "common/ErrorLog.h"

namespace ht {

Answer defaultAnswer(Buttons buttons)
{
    switch (buttons) {
    case Buttons::OK:
        return Answer::OK;
    case Buttons::OKCancel:
    case Buttons::RetryCancel:
    case Buttons::RetryDiscardCancel:
    case Buttons::YesNoCancel:
        return Answer::Cancel;
    case Buttons::YesNo:
        return Answer::No;
    }
    return Answer::Cancel;
}

Answer showMessage(Context &ctx, const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    if (ctx.state.unattended || !ctx.ui) {
        LogError(ctx, text);
        return defaultAnswer(buttons);
    }
    return ctx.ui->messageBox(text, buttons, icon, title);
}

} // namespace ht
