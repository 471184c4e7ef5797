#pragma once
// Writing the HTML help pages of items from the page templates.

#include <QString>

namespace ht {

struct Context;
class StatusTarget;

// Bulk run: machine and language empty, itemNumber 0. One item: all three given.
void WriteHTMLPage(Context &ctx, StatusTarget *form, bool &alarms, bool &warnings, bool &materialChange,
                   const QString &machine, const QString &language, long itemNumber);

// A run lets window events run at most once per this many milliseconds
// (default 20: the display stays live and ESC is noticed); 0 means at every chance.
void setHtmlEventInterval(int milliseconds);

} // namespace ht
