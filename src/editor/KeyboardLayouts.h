#pragma once
// Keyboard layouts as the language-definition database names them: Windows
// layout identifiers ("00000408" is Greek).

#include <QString>

namespace ht
{

// The line LabelKeyboardLayout shows for typing `language` with `layoutId`:
// the layout's name and, where one is known, the matching X11 layout, so that
// the translator can switch to it where the program cannot.
QString keyboardLayoutText(const QString &layoutId, const QString &language);

} // namespace ht
