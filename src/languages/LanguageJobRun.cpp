#include "languages/LanguageJobRun.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"

namespace ht
{

StatusRun::StatusRun(Context &ctx, StatusTarget *status, const QString &text, long steps) : m_ctx(ctx), m_status(status)
{
    StatusStart(ctx, status, text, steps, true);
}

StatusRun::~StatusRun()
{
    StatusEnd(m_ctx, m_status);
    DisableControls(m_ctx, m_status, false);
}

void StatusRun::tick()
{
    StatusTick(m_ctx, m_status);
    // The bar is painted between steps; the form takes no input meanwhile.
    if (m_ctx.processEvents)
        m_ctx.processEvents();
}

void StatusRun::tick(const QString &text)
{
    StatusTickNewText(m_ctx, m_status, text);
    if (m_ctx.processEvents)
        m_ctx.processEvents();
}

void tellJobFailure(Context &ctx, const QString &procedure, const QString &headline, const std::exception &e,
                    const QString &outcome)
{
    const QString reason = QString::fromUtf8(e.what());
    LogError(ctx, procedure + QStringLiteral(": ") + headline + QLatin1Char(' ') + reason);
    showMessage(ctx, headline + LFCR + reason + LFCR + LFCR + outcome, Buttons::OK, Icon::Critical,
                QStringLiteral("Languages"));
}

} // namespace ht
