#pragma once
// Recognising the machine's own PC: the program runs from <root>/Program/Tools.

namespace ht
{

struct Context;

bool GetAppRunningOnMachinePC(const Context &ctx);

} // namespace ht
