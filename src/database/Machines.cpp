#include "database/Machines.h"

#include "common/SafePathName.h"
#include "database/Database.h"

namespace ht
{

namespace
{

QStringList kinds(bool materialChange)
{
    QStringList words{QStringLiteral("Alarm"), QStringLiteral("Warning")};
    if (materialChange)
        words << QStringLiteral("MaterialChange");
    return words;
}

} // namespace

MachineNameProblem machineNameProblem(const QString &name, const QStringList &machines, const QString &renaming)
{
    if (name.trimmed().isEmpty())
        return MachineNameProblem::Empty;
    if (name == QLatin1String("0"))
        return MachineNameProblem::FreeRowsMark;
    if (!isSafePathName(name) || name != name.trimmed())
        return MachineNameProblem::NotAFolderName;
    for (const QString &m : machines)
        if (m.compare(name, Qt::CaseInsensitive) == 0 && m.compare(renaming, Qt::CaseInsensitive) != 0)
            return MachineNameProblem::Exists;
    return MachineNameProblem::None;
}

bool machineTypesAreNumbers(Database &db, bool materialChange)
{
    for (const QString &k : kinds(materialChange)) {
        for (const ColumnInfo &c : db.columns(k + QStringLiteral("Definition"))) {
            if (c.name.compare(QLatin1String("MachineType"), Qt::CaseInsensitive) != 0)
                continue;
            for (const char *numeric : {"INT", "REAL", "FLOA", "DOUB", "NUM", "DEC"})
                if (c.type.contains(QLatin1String(numeric)))
                    return true;
        }
    }
    return false;
}

void renameMachine(Database &db, const QString &from, const QString &to, bool materialChange,
                   const std::function<void()> &tick)
{
    for (const QString &k : kinds(materialChange)) {
        db.exec(
            QStringLiteral("UPDATE %1Definition SET MachineType = ? WHERE (((%1Definition.MachineType)=?));").arg(k),
            {to, from});
        if (tick)
            tick();
    }
}

void deleteMachine(Database &db, const QString &machine, bool materialChange)
{
    const QVariantList m{machine};
    // Texts first, while the definitions still name the machine; every language.
    db.exec(QStringLiteral("UPDATE AlarmText SET Device = '', Result = '', Function = '' WHERE Alarm_ID IN "
                           "(SELECT AlarmID FROM AlarmDefinition WHERE MachineType = ?)"),
            m);
    db.exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = '0', Sensor = '', Cam = '', CPU = '', "
                           "Rejects = '0' WHERE MachineType = ?"),
            m);
    db.exec(QStringLiteral("UPDATE WarningText SET Function = '' WHERE Warning_ID IN "
                           "(SELECT WarningID FROM WarningDefinition WHERE MachineType = ?)"),
            m);
    db.exec(QStringLiteral("UPDATE WarningDefinition SET MachineType = '0' WHERE MachineType = ?"), m);
    if (!materialChange)
        return;
    db.exec(QStringLiteral("UPDATE MaterialChangeText SET Text = '' WHERE MaterialChange_ID IN "
                           "(SELECT MaterialChangeID FROM MaterialChangeDefinition WHERE MachineType = ?)"),
            m);
    db.exec(QStringLiteral("UPDATE MaterialChangeDefinition SET MachineType = '0' WHERE MachineType = ?"), m);
}

} // namespace ht
