#pragma once
// What differs between alarm, warning and material-change pages: template,
// folder, placeholders, messages and the record query.

#include "common/AppState.h"

#include <QString>
#include <QVariantList>

namespace ht
{

struct HtmlKind {
    ItemKind kind;
    QString word;            // folder name and status text: "Alarms", "Warnings", "MaterialChange"
    QString templateName;    // "Source_Alarms.html", ...
    QString textPlaceholder; // "###FUNCTION###" or "###TEXT###"
    bool multiValueFields;   // alarms: Sensor, Cam, CPU, Rejects, Device, Result
    bool indexTexts;         // alarms: "###DIREKT:" addresses
    QString missingLogged;   // template-missing message, unattended
    QString missingShown;    // template-missing message, message box
};

const HtmlKind &htmlKind(ItemKind kind);

// Columns of every record query, in this order.
enum RecordColumn {
    ColMachine,
    ColNumber,
    ColName,
    ColFont,
    ColLanguage,
    ColText,   // Function or Text
    ColSensor, // alarms only from here on
    ColCam,
    ColCPU,
    ColRejects,
    ColDevice,
    ColResult,
    AlarmColumnCount
};
constexpr int PlainColumnCount = ColSensor;

struct RecordQuery {
    QString sql;
    QVariantList params;
};

// All items of the kind (machine "0" never), or the one item when `machine` is given.
RecordQuery recordQuery(ItemKind kind, const QString &machine, const QString &language, long itemNumber);

} // namespace ht
