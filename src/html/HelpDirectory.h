#pragma once
// The help main directory, the abort question of a running generation and the
// screen width pages are laid out for.

#include <QString>

namespace ht {

struct Context;

QString GetHelpMainDir(Context &ctx, bool &checkOnly, bool &select);
// 1 when the user chose to abort the running generation, else 0.
int Abort_WriteHTML(Context &ctx);
// Fills ctx.state.screenResolution.
void GetScopiaResolution(Context &ctx);

} // namespace ht
