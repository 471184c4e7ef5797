#pragma once
// Small string and directory helpers shared by editor, page writer and importer.

#include <QString>
#include <QStringList>

namespace ht {

struct Context;

bool GetDirectory(Context &ctx, const QString &path);
QString ReplaceStringInString(Context &ctx, const QString &text, const QString &find, const QString &replacement,
                              bool convert);
QString ReplaceStringInTextMultiLine(Context &ctx, const QString &text, const QString &find,
                                     const QStringList &lines, bool &replaced, bool convert);
// Element 0 is always "", the pieces follow from index 1.
QStringList StringToStringArray(Context &ctx, const QString &text, const QString &separator);
// Multi-line text to the stored one-line form ("/" for each line break).
QString SingleLineToMultiLine(Context &ctx, const QString &text);
// A value as a log line may quote it: a long one is cut, saying how long it was.
QString shortForLog(const QString &value, qsizetype maxLength = 200);

} // namespace ht
