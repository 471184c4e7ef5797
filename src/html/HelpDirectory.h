#pragma once
// The help main directory, the abort question of a running generation and the
// screen width pages are laid out for.

#include <QString>

namespace ht
{

struct Context;

QString GetHelpMainDir(Context &ctx, bool &checkOnly, bool &select);
// 1 when the user chose to abort the running generation, else 0.
int Abort_WriteHTML(Context &ctx);
// Asks with dlgSelectHTMLOption which pages to generate: 1 those of `kindName`
// only, 2 those of all kinds, 0 none (cancelled, or nobody to ask).
int GetGenerateHTMLOption(Context &ctx, const QString &kindName);
// Fills ctx.state.screenResolution: the screen's width on the machine PC,
// else (and on a machine PC without a real screen) Setup/ScreenResolution of
// the settings file, asked for at a workstation, 1024 when nobody can say.
void GetScopiaResolution(Context &ctx);
// False on the headless platforms (offscreen, minimal) and without a screen.
bool hasRealScreen();

} // namespace ht
