#include "html/HtmlKinds.h"

#include "common/Messages.h"

namespace ht
{

namespace
{

QString missingMessage(const QString &firstLine, const QString &file)
{
    return firstLine + LFCR + QStringLiteral("Sourcefile \"") + file + QStringLiteral("\" not found.");
}

} // namespace

const HtmlKind &htmlKind(ItemKind kind)
{
    // The later kinds' messages name the wrong kind or file; users know them so.
    static const HtmlKind alarms{
        KindAlarms,
        QStringLiteral("Alarms"),
        QStringLiteral("Source_Alarms.html"),
        QStringLiteral("###FUNCTION###"),
        true,
        true,
        missingMessage(QStringLiteral("Unable to create HTML-files for Alarms."), QStringLiteral("Source_Alarms.html")),
        missingMessage(QStringLiteral("Unable to create HTML-files for Alarms."),
                       QStringLiteral("Source_Alarms.html"))};
    static const HtmlKind warnings{KindWarnings,
                                   QStringLiteral("Warnings"),
                                   QStringLiteral("Source_Warnings.html"),
                                   QStringLiteral("###FUNCTION###"),
                                   false,
                                   false,
                                   missingMessage(QStringLiteral("Unable to create HTML-files for Alarms."),
                                                  QStringLiteral("Source_MaterialChange.html")),
                                   missingMessage(QStringLiteral("Unable to create HTML-files for Warnings."),
                                                  QStringLiteral("Source_Warnings.html"))};
    static const HtmlKind materialChange{KindMaterialChange,
                                         QStringLiteral("MaterialChange"),
                                         QStringLiteral("Source_MaterialChange.html"),
                                         QStringLiteral("###TEXT###"),
                                         false,
                                         false,
                                         missingMessage(QStringLiteral("Unable to create HTML-files for Alarms."),
                                                        QStringLiteral("Source_MaterialChange.html")),
                                         missingMessage(QStringLiteral("Unable to create HTML-files for Warnings."),
                                                        QStringLiteral("Source_MaterialChange.html"))};
    switch (kind) {
    case KindAlarms:
        return alarms;
    case KindWarnings:
        return warnings;
    case KindMaterialChange:
        break;
    }
    return materialChange;
}

RecordQuery recordQuery(ItemKind kind, const QString &machine, const QString &language, long itemNumber)
{
    QString def, text, idJoin, number, textField;
    QString extra;
    switch (kind) {
    case KindAlarms:
        def = QStringLiteral("AlarmDefinition");
        text = QStringLiteral("AlarmText");
        idJoin = QStringLiteral("AlarmDefinition.AlarmID = AlarmText.Alarm_ID");
        number = QStringLiteral("AlarmNo");
        textField = QStringLiteral("Function");
        extra = QStringLiteral(", AlarmDefinition.Sensor, AlarmDefinition.Cam, AlarmDefinition.CPU, "
                               "AlarmDefinition.Rejects, AlarmText.Device, AlarmText.Result");
        break;
    case KindWarnings:
        def = QStringLiteral("WarningDefinition");
        text = QStringLiteral("WarningText");
        idJoin = QStringLiteral("WarningDefinition.WarningID = WarningText.Warning_ID");
        number = QStringLiteral("WarningNo");
        textField = QStringLiteral("Function");
        break;
    case KindMaterialChange:
        def = QStringLiteral("MaterialChangeDefinition");
        text = QStringLiteral("MaterialChangeText");
        idJoin = QStringLiteral("MaterialChangeText.MaterialChange_ID = MaterialChangeDefinition.MaterialChangeID");
        number = QStringLiteral("MaterialChangeNo");
        textField = QStringLiteral("Text");
        break;
    }
    RecordQuery q;
    // The language number is selected in bulk runs too: alarm pages need it for index texts.
    q.sql = QStringLiteral("SELECT %1.MachineType, %1.%2, Language.Name, Language.Font, Language.Language, "
                           "%3.\"%4\"%5 FROM (%1 INNER JOIN %3 ON %6) INNER JOIN Language ON "
                           "%3.Language = Language.Language WHERE ((%1.MachineType <> '0'))")
                .arg(def, number, text, textField, extra, idJoin);
    if (!machine.isEmpty() || !language.isEmpty() || itemNumber != 0) {
        q.sql += QStringLiteral(" AND ((%1.%2) = ?) AND ((%1.MachineType) = ? COLLATE NOCASE)"
                                " AND ((Language.Name) = ? COLLATE NOCASE)")
                     .arg(def, number);
        q.params = {qlonglong(itemNumber), machine, language};
    }
    q.sql += QStringLiteral(" ORDER BY %1.MachineType, %1.%2, Language.Language;").arg(def, number);
    return q;
}

} // namespace ht
