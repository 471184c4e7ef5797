#pragma once
// Keyboard layouts as a language's KBLayout names them: the language
// identifier as a decimal number ("1032" is Greek) or the eight hexadecimal
// digits Windows writes a layout identifier with ("00000408").

#include <QString>

namespace ht
{

// The eight-digit hexadecimal layout identifier `stored` names, "" when it names none.
// Eight characters that begin with "0" or hold a letter are hexadecimal, as
// Windows writes them; any other digits are a decimal number.
QString keyboardLayoutId(const QString &stored);

// The line LabelKeyboardLayout shows for typing `language` with `layoutId`:
// the layout's name and, where one is known, the matching X11 layout, so that
// the translator can switch to it where the program cannot.
QString keyboardLayoutText(const QString &layoutId, const QString &language);

} // namespace ht
