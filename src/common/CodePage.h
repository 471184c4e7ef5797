#pragma once
// Conversion from a Windows code page (874, 932, 936, 949, 950, 1250-1258) to
// Unicode, as MultiByteToWideChar does it.

#include <QByteArray>
#include <QString>

namespace ht {

bool isSupportedCodePage(int codePage);
// Converts bytes of `codePage`; an unknown code page gives an empty string.
QString codePageToUnicode(const QByteArray &bytes, int codePage);

} // namespace ht
