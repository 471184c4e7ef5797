#pragma once
// Item counts per machine (DBSys) and the rebuild of too-short tables.

#include <QString>

namespace ht {

struct Context;

bool GetDBSysMaxLenItems(Context &ctx, const QString &databasePath);
long CorrectDBLength(Context &ctx, const QString &databasePath);
// kindWord: "Alarm", "Warning" or "MaterialChange". Returns the new count or -1.
long CorrectItemLenth(Context &ctx, const QString &kindWord, long &count);

} // namespace ht
