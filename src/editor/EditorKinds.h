#pragma once
// What the editor's procedures need to know of each item kind: its words,
// its tables and columns, the text boxes it uses.

#include "common/AppState.h"

#include <QString>
#include <QStringList>

namespace ht
{

struct EditorKind {
    ItemKind kind;
    QString word;           // "Alarms", "Warnings", "MaterialChange": captions, folders, INI
    QString firstIdTable;   // the table whose first ID numbers the machine's items
    QString textTable;      // "AlarmText", ...
    QString textId;         // "Alarm_ID", ...
    QStringList textFields; // stored text fields, in box order
    QList<int> textBoxes;   // the box of each field (1..3)
    QString lastBoxCaption; // caption of box 3
    QString maxLenItem;     // the DBSys item holding the item count
    bool definitions;       // alarms: Sensor, Cam, CPU, Rejects
};

// Kind 1, 2 or 3; anything else is taken as alarms.
const EditorKind &editorKind(int kind);

} // namespace ht
