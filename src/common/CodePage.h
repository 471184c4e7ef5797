#pragma once
// Conversion from a Windows code page (874, 932, 936, 949, 950, 1250-1258,
// 65001) to Unicode, as MultiByteToWideChar does it.

#include <QByteArray>
#include <QString>

namespace ht
{

bool isSupportedCodePage(int codePage);
// Converts bytes of `codePage`; an unknown code page gives an empty string.
// Invalid or cut-off sequences become U+FFFD and the conversion goes on.
QString codePageToUnicode(const QByteArray &bytes, int codePage);

// The bytes that a text's characters stand for when it holds code-page bytes
// one per character: characters up to U+00FF are their own byte, the
// Windows-1252 letters (euro sign, curly quotes ...) their 0x80..0x9F byte,
// anything else '?'.
QByteArray charactersAsAnsiBytes(const QString &text);

} // namespace ht
