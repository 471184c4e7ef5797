#pragma once
// The four standard paths of the machine PC (settings section "Setup"), each
// falling back to the fixed path under the machine root. A path that exists
// neither way ends the program after one line in the error log.

namespace ht
{

struct Context;

// Fills ctx.state.standardHelpTextDB, standardIndexTextDB, standardLangLookupDB
// and standardHelpDir (with a trailing separator), in this order.
void ReadStandardPaths(Context &ctx);

} // namespace ht
