#pragma once
// Writing the HTML help pages of items from the page templates.

#include <QString>

namespace ht {

struct Context;
class StatusTarget;

// Bulk run: machine and language empty, itemNumber 0. One item: all three given.
void WriteHTMLPage(Context &ctx, StatusTarget *form, bool &alarms, bool &warnings, bool &materialChange,
                   const QString &machine, const QString &language, long itemNumber);

} // namespace ht
