#pragma once
// Showing a message: in a box through the user interface, or to the error log
// while the program runs unattended.

#include "common/UserInterface.h"

namespace ht {

struct Context;

Answer showMessage(Context &ctx, const QString &text, Buttons buttons = Buttons::OK, Icon icon = Icon::None,
                   const QString &title = QString());

// Line break used by the classic messages: LF followed by CR.
inline const QString LFCR = QStringLiteral("\n\r");

} // namespace ht
