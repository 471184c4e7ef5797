#include "database/Machines.h"

#include "common/SafePathName.h"
#include "database/Database.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

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

// What the operator panel's Windows cannot name a folder: these characters, a
// trailing dot or blank, and the device names, with or without an extension.
bool windowsRefusesFolderName(const QString &name)
{
    for (QChar c : name)
        if (QStringLiteral("\"*?<>|").contains(c))
            return true;
    if (name.endsWith(u'.') || name.endsWith(u' '))
        return true;
    static const QRegularExpression device(QStringLiteral("^(CON|PRN|AUX|NUL|COM[1-9]|LPT[1-9])$"),
                                           QRegularExpression::CaseInsensitiveOption);
    return device.match(name.section(u'.', 0, 0).trimmed()).hasMatch();
}

QString folderOf(const QString &helpMainDir, const QString &machine)
{
    return QDir::cleanPath(helpMainDir + QLatin1Char('/') + machine);
}

} // namespace

MachineNameProblem machineNameProblem(const QString &name, const QStringList &machines, const QString &renaming)
{
    if (name.trimmed().isEmpty())
        return MachineNameProblem::Empty;
    if (name == QLatin1String("0"))
        return MachineNameProblem::FreeRowsMark;
    if (!isSafePathName(name) || name != name.trimmed() || windowsRefusesFolderName(name))
        return MachineNameProblem::NotAFolderName;
    for (const QString &m : machines)
        if (m.compare(name, Qt::CaseInsensitive) == 0 && m.compare(renaming, Qt::CaseInsensitive) != 0)
            return MachineNameProblem::Exists;
    return MachineNameProblem::None;
}

QString storedMachineName(const QStringList &machines, const QString &name)
{
    for (const QString &m : machines)
        if (m.compare(name, Qt::CaseInsensitive) == 0)
            return m;
    return {};
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

QString HelpFolderRename::note() const
{
    if (from.isEmpty())
        return {};
    if (blocked)
        return QStringLiteral("The help folder \"") + QDir::toNativeSeparators(from) +
               QStringLiteral("\" stays where it is, with the pages in it (those made by hand too), because \"") +
               QDir::toNativeSeparators(to) + QStringLiteral("\" exists already.");
    return QStringLiteral("Its help folder \"") + QDir::toNativeSeparators(from) +
           QStringLiteral("\" moves with it to \"") + QDir::toNativeSeparators(to) + QStringLiteral("\".");
}

HelpFolderRename planHelpFolderRename(const QString &helpMainDir, const QString &from, const QString &to)
{
    HelpFolderRename plan;
    // A name that would lead out of the help directory is never made a path.
    if (helpMainDir.trimmed().isEmpty() || !isSafePathName(from) || !isSafePathName(to))
        return plan;
    const QString source = folderOf(helpMainDir, from), target = folderOf(helpMainDir, to);
    if (!isPathInside(helpMainDir, source) || !isPathInside(helpMainDir, target) || !QFileInfo(source).isDir())
        return plan;
    plan.from = source;
    plan.to = target;
    // A change of case only is a move on a file system that tells case apart.
    plan.blocked = QFileInfo::exists(target) && !QFileInfo(source).canonicalFilePath().isEmpty() &&
                   QFileInfo(source).canonicalFilePath() != QFileInfo(target).canonicalFilePath();
    return plan;
}

void renameMachineWithHelpFolder(Database &db, const QString &from, const QString &to, bool materialChange,
                                 const HelpFolderRename &folder, const std::function<void()> &tick)
{
    const bool move = !folder.from.isEmpty() && !folder.blocked;
    Database::Transaction transaction(db);
    renameMachine(db, from, to, materialChange, tick);
    if (move && !QDir().rename(folder.from, folder.to))
        throw DbError((QStringLiteral("The help folder \"") + QDir::toNativeSeparators(folder.from) +
                       QStringLiteral("\" could not be moved to \"") + QDir::toNativeSeparators(folder.to) +
                       QStringLiteral("\"."))
                          .toStdString());
    try {
        transaction.commit();
    } catch (...) {
        if (move)
            QDir().rename(folder.to, folder.from); // the pages stay with the name the database keeps
        throw;
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
