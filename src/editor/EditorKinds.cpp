#include "editor/EditorKinds.h"

namespace ht
{

const EditorKind &editorKind(int kind)
{
    static const EditorKind kinds[] = {
        {KindAlarms,
         QStringLiteral("Alarms"),
         QStringLiteral("Alarm"),
         QStringLiteral("AlarmText"),
         QStringLiteral("Alarm_ID"),
         {QStringLiteral("Device"), QStringLiteral("Result"), QStringLiteral("Function")},
         {1, 2, 3},
         QStringLiteral("Function"),
         QStringLiteral("MaxLenAlarm"),
         true},
        {KindWarnings,
         QStringLiteral("Warnings"),
         QStringLiteral("Warning"),
         QStringLiteral("WarningText"),
         QStringLiteral("Warning_ID"),
         {QStringLiteral("Function")},
         {3},
         QStringLiteral("Function"),
         QStringLiteral("MaxLenWarning"),
         false},
        // Material change counts from the machine's own block of
        // MaterialChangeDefinition, the rows its import bound and its pages are written from.
        {KindMaterialChange,
         QStringLiteral("MaterialChange"),
         QStringLiteral("MaterialChange"),
         QStringLiteral("MaterialChangeText"),
         QStringLiteral("MaterialChange_ID"),
         {QStringLiteral("Text")},
         {3},
         QStringLiteral("Text"),
         QStringLiteral("MaxLenMaterialChange"),
         false},
    };
    return kinds[(kind >= KindAlarms && kind <= KindMaterialChange ? kind : KindAlarms) - 1];
}

} // namespace ht
