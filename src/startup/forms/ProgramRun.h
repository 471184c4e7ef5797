#pragma once
// The whole run of either variant after the application object exists.

#include <functional>

namespace ht
{

struct Context;
struct StartupSession;

// Loads the start-up dialog, runs its first activation (checks, batch run)
// and then `eventLoop`, whose result is returned. An ended program leaves
// through ProgramEnded.
int RunProgram(Context &ctx, StartupSession &session, const std::function<int()> &eventLoop);

} // namespace ht
