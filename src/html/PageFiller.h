#pragma once
// Filling a page template with the data of one item in one language.

#include "html/HtmlKinds.h"

#include <QString>
#include <QStringList>

namespace ht
{

struct Context;
struct IndexTextCache;

struct PageData {
    QString fontName, fontSize, fontWeight;
    QStringList textLines;      // the item text, broken to the panel width
    QStringList multiValues[6]; // Sensor, Cam, CPU, Rejects, Device, Result as split at "/" (element 0 unused)
    QString languageNumber;
};

// The page's lines. `indexTextLost` is set when an alarm template needs the
// index-text database and none is available: the run must then stop.
QStringList fillPageTemplate(Context &ctx, const HtmlKind &kind, const QStringList &templateLines, const PageData &data,
                             IndexTextCache &cache, bool &indexTextLost);

} // namespace ht
