// Checking a help-text database before it becomes the active one.
#include "database/HelpTextDatabase.h"
#include "database/HelpTextDatabaseRepair.h"

#include "common/Context.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/ItemCounts.h"
#include "database/LanguageLookup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace ht
{

namespace
{

const QString Q = QStringLiteral("\"");

struct Probe {
    bool materialChange = false;
    QStringList definitionTables; // the ones present, for the MachineType check
};

// Proves that every table and field the program uses is there, reading no rows.
Probe probeTables(Database &db)
{
    Probe p;
    db.query(QStringLiteral("SELECT AlarmText.Alarm_ID, AlarmText.Language, AlarmText.Device, AlarmText.Result, "
                            "AlarmText.Function FROM AlarmText LIMIT 0"));
    db.query(QStringLiteral("SELECT AlarmDefinition.AlarmID, AlarmDefinition.MachineType, AlarmDefinition.AlarmNo, "
                            "AlarmDefinition.Sensor, AlarmDefinition.Cam, AlarmDefinition.CPU, "
                            "AlarmDefinition.Rejects FROM AlarmDefinition LIMIT 0"));
    db.query(QStringLiteral("SELECT WarningText.Warning_ID, WarningText.Language, WarningText.Function "
                            "FROM WarningText LIMIT 0"));
    db.query(QStringLiteral("SELECT WarningDefinition.WarningID, WarningDefinition.MachineType, "
                            "WarningDefinition.WarningNo FROM WarningDefinition LIMIT 0"));
    p.definitionTables << QStringLiteral("AlarmDefinition") << QStringLiteral("WarningDefinition");
    // Material change is an optional pair of tables: older databases lack it.
    if (db.hasTable(QStringLiteral("MaterialChangeDefinition"))) {
        db.query(QStringLiteral("SELECT MaterialChangeDefinition.MaterialChangeID, "
                                "MaterialChangeDefinition.MachineType, MaterialChangeDefinition.MaterialChangeNo "
                                "FROM MaterialChangeDefinition LIMIT 0"));
        db.query(QStringLiteral("SELECT MaterialChangeText.MaterialChange_ID, MaterialChangeText.Language, "
                                "MaterialChangeText.Text FROM MaterialChangeText LIMIT 0"));
        p.materialChange = true;
        p.definitionTables << QStringLiteral("MaterialChangeDefinition");
    }
    db.query(QStringLiteral("SELECT Language.Language, Language.Name, Language.Font, Language.KBLayout "
                            "FROM Language LIMIT 0"));
    db.query(QStringLiteral("SELECT Discription.DiscriptionID, Discription.Language, Discription.Text "
                            "FROM Discription LIMIT 0"));
    db.checkIntact();
    return p;
}

// A file SQLite can only read (its header asks for a newer writer, or the medium
// is read-only) opens all the same: a write that is rolled back again shows it.
void probeWritable(Database &db)
{
    Database::Transaction probe(db);
    const int version = db.query(QStringLiteral("PRAGMA user_version")).value(0).toInt();
    db.exec(QStringLiteral("PRAGMA user_version = %1").arg(version));
}

// "<base>.sqlite" beside the Jet file.
QString conversionPath(const QString &jetPath)
{
    const QFileInfo info(jetPath);
    return info.dir().filePath(info.completeBaseName() + QStringLiteral(".sqlite"));
}

// A Jet file cannot be written: the SQLite file beside it takes its place. An
// existing one is the earlier conversion, with whatever was edited in it since,
// and is used as it is, never overwritten. Returns the path of the file to use;
// `created` is set when this call made it.
QString useConversion(const QString &jetPath, bool &created)
{
    const QString target = conversionPath(jetPath);
    created = false;
    if (QFileInfo::exists(target)) {
        if (detectDatabaseFormat(target) != DbFormat::SQLite)
            throw DbError(
                ("The file " + target + " is in the way of the conversion and is not a database").toStdString());
        return target;
    }
    convertJetToSqlite(jetPath, target);
    created = true;
    return target;
}

// Tells the user which file is in use from now on.
void announceConversion(Context &ctx, const QString &jetPath, const QString &target, bool created)
{
    const QString first = QStringLiteral("The Access database ") + Q + jetPath + Q +
                          QStringLiteral(" cannot be changed by this program.") + LFCR;
    const QString second = created
                               ? QStringLiteral("It has been converted to ") + Q + target + Q +
                                     QStringLiteral(", which is used from now on. The Access database stays as it was.")
                               : QStringLiteral("Its earlier conversion ") + Q + target + Q +
                                     QStringLiteral(" is used instead; the Access database is not converted again.");
    showMessage(ctx, first + second, Buttons::OK, Icon::Information, QStringLiteral("Database converted"));
}

} // namespace

QString CheckConnection(Context &ctx, const QString &path, ConnectFor purpose)
{
    const QString previous = ctx.state.helpTextDB;
    QString active = path;
    bool converted = false, busy = false;
    try {
        ctx.state.helpTextDB = path;
        DbFormat format = detectDatabaseFormat(path);
        if (format == DbFormat::Missing)
            throw DbError("The database file does not exist");
        if (format == DbFormat::Jet && purpose == ConnectFor::Editing) {
            active = useConversion(path, converted);
            ctx.state.helpTextDB = active;
            format = DbFormat::SQLite;
        }
        const bool writable = format == DbFormat::SQLite;

        // Everything that can show the database unfit is checked before anything is written.
        Probe probe;
        {
            auto db = Database::open(active, writable ? Database::Mode::ReadWrite : Database::Mode::ReadOnly);
            probe = probeTables(*db);
            if (writable) {
                probeWritable(*db);
                for (const QString &table : probe.definitionTables) {
                    if (machineTypeNeedsRepair(*db, table))
                        repairMachineTypeColumn(*db, table);
                }
            }
        }
        ctx.state.materialChangePresent = probe.materialChange;
        if (writable)
            UpdateLangFontSettings(ctx);
        if (GetDBSysMaxLenItems(ctx, active) && writable)
            CorrectDBLength(ctx, active);
        if (active != path)
            announceConversion(ctx, path, active, converted);
        // Saved last, so that a database that failed a check is never remembered.
        if (!ctx.state.runningOnMachinePC)
            SaveIni(ctx, active, QStringLiteral("Setup"), QStringLiteral("StandardHelpTextDB"), ctx.state.iniPath);
        return active;
    } catch (const DbBusy &) {
        busy = true; // not the file's fault: it can be had once the other program is done
    } catch (const std::exception &) {
        // The cause is in the message's wording: wrong structure or write protection.
    }
    if (converted)
        QFile::remove(active); // made by this call: the disk is left as it was found
    ctx.state.helpTextDB = previous;
    const QString cause = busy ? QStringLiteral("! Database is in use by another program, try again when it is done.")
                               : QStringLiteral("! Database either has wrong structure or is writeprotected.");
    showMessage(ctx, QStringLiteral("Error connecting Database ") + Q + path + Q + cause, Buttons::OK, Icon::Critical,
                QStringLiteral("Connection failed!"));
    return {};
}

} // namespace ht
