#pragma once
// Conversions between the stored one-line item texts and page lines.

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;

// "/" (and "/ ") and CR LF become "<br>".
QString SingleLineDBToMultiLineHTML(Context &ctx, const QString &text);

// Splits every line after each "<br>"; a split line is followed by one empty line.
void ConvertHTMLBrToMultiline(Context &ctx, const QStringList &linesIn, QStringList &linesOut);

} // namespace ht
