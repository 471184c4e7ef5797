#pragma once
// The findings of `check` and the progress overview of `report` written as
// text, CSV, JSON or (the overview) one self-contained HTML page.

#include "review/DatabaseCheck.h"

#include <QDateTime>

namespace ht
{

struct ItemFinding {
    QString machine;
    int kind = 0;
    long number = 0;
    QString language;
    Finding finding;
};

// One cell of the overview: the items of a machine and kind in one destination language.
struct ProgressCell {
    QString machine;
    int kind = 0;
    QString language;
    int items = 0;        // items whose source has text
    int translated = 0;   // every field the source fills has text here
    int missing = 0;      // at least one such field is empty
    int withFindings = 0; // translated, with a finding of any check but missing and review
    int needsReview = 0;  // a source changed since its translation was saved
    long firstToDo = 0;   // the first item missing, with findings or in need of review; 0 for none
};

struct ProgressReport {
    QString database;
    QString sourceLanguage;
    QDateTime made;
    std::vector<ProgressCell> cells;
};

bool isFindingFormat(const QString &format); // text, csv, json
bool isReportFormat(const QString &format);  // text, csv, json, html

QString formatFindings(const std::vector<ItemFinding> &findings, const QString &format);
QString formatReport(const ProgressReport &report, const QString &format);

} // namespace ht
