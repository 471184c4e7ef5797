#pragma once
// The main forms of the two variants and the Info box they open.

#include <QString>

class QWidget;

namespace ht
{

struct Context;
struct StartupSession;

// Shows the main form of `mode` ("EDIT": frmEdit, "IMPORT": frmImport),
// modeless; a second call brings the existing form to the front.
void ShowMainForm(Context &ctx, StartupSession &session, const QString &mode);
// Shows the start-up dialog modally as the Info box of `caller`.
void ShowInfoBox(Context &ctx, StartupSession &session, QWidget *caller);

} // namespace ht
