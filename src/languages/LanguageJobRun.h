#pragma once
// What the language jobs share: the progress display of a job, and telling
// the user that a job failed and changed nothing.

#include "common/StatusDisplay.h"

#include <QString>
#include <exception>

namespace ht
{

struct Context;

// The progress display from the start of a job to its end, however it ends;
// the form's controls are unavailable meanwhile.
class StatusRun
{
  public:
    StatusRun(Context &ctx, StatusTarget *status, const QString &text, long steps);
    ~StatusRun();
    StatusRun(const StatusRun &) = delete;
    StatusRun &operator=(const StatusRun &) = delete;
    void tick();                    // one step done
    void tick(const QString &text); // one step done, the next one named

  private:
    Context &m_ctx;
    StatusTarget *m_status;
};

// Logs the failure under `procedure` and shows it: `headline`, the reason, `outcome`.
void tellJobFailure(Context &ctx, const QString &procedure, const QString &headline, const std::exception &e,
                    const QString &outcome);

} // namespace ht
