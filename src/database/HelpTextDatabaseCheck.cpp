// Checking a help-text database before it becomes the active one.
#include "database/HelpTextDatabase.h"
#include "database/HelpTextDatabaseRepair.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
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

// Earlier versions converted an Access file into "<base>.sqlite" and edited that:
// it holds whatever was edited since, so it stays the file to use. "" when there is none.
QString earlierConversion(const QString &jetPath)
{
    const QString target = conversionPath(jetPath);
    if (!QFileInfo::exists(target))
        return QString();
    if (detectDatabaseFormat(target) != DbFormat::SQLite)
        throw DbError(("The file " + target + " beside the Access database is not a database").toStdString());
    return target;
}

// Tells the user which file is in use.
void announceConversion(Context &ctx, const QString &jetPath, const QString &target)
{
    showMessage(ctx,
                QStringLiteral("Its earlier conversion ") + Q + target + Q +
                    QStringLiteral(" is used instead of the Access database ") + Q + jetPath + Q +
                    QStringLiteral(", as it holds the texts edited since.") + LFCR +
                    QStringLiteral("To carry them into the Access database, use \"helptext-importer sync-to-access\"."),
                Buttons::OK, Icon::Information, QStringLiteral("Database converted"));
}

} // namespace

QString CheckConnection(Context &ctx, const QString &path, ConnectFor purpose)
{
    const QString previous = ctx.state.helpTextDB;
    QString active = path;
    bool busy = false;
    try {
        ctx.state.helpTextDB = path;
        DbFormat format = detectDatabaseFormat(path);
        if (format == DbFormat::Missing)
            throw DbError("The database file does not exist");
        if (format == DbFormat::Jet && purpose == ConnectFor::Editing) {
            if (const QString earlier = earlierConversion(path); !earlier.isEmpty()) {
                active = earlier;
                ctx.state.helpTextDB = active;
                format = DbFormat::SQLite;
            }
        }
        // An Access file is edited in place too: its rows, never its design.
        bool writable = format == DbFormat::SQLite || purpose == ConnectFor::Editing;
        QString readOnlyReason; // why an Access file cannot be written; it is shown, read only

        // Everything that can show the database unfit is checked before anything is written.
        Probe probe;
        QStringList numericMachineTypes; // in an Access file, where they stay numbers
        {
            std::unique_ptr<Database> db;
            try {
                db = Database::open(active, writable ? Database::Mode::ReadWrite : Database::Mode::ReadOnly);
            } catch (const DbError &e) {
                // Another Jet version, encoded, write-protected: read only. One that cannot be read fails below.
                if (format != DbFormat::Jet || !writable || dynamic_cast<const DbBusy *>(&e))
                    throw;
                readOnlyReason = QString::fromUtf8(e.what());
                writable = false;
                db = Database::open(active, Database::Mode::ReadOnly);
            }
            probe = probeTables(*db);
            if (writable) {
                if (format == DbFormat::SQLite)
                    probeWritable(*db);
                for (const QString &table : probe.definitionTables) {
                    if (!machineTypeNeedsRepair(*db, table))
                        continue;
                    if (format == DbFormat::SQLite)
                        repairMachineTypeColumn(*db, table);
                    else
                        numericMachineTypes << table;
                }
            }
        }
        ctx.state.materialChangePresent = probe.materialChange;
        if (writable)
            UpdateLangFontSettings(ctx);
        if (GetDBSysMaxLenItems(ctx, active) && writable)
            CorrectDBLength(ctx, active);
        if (!numericMachineTypes.isEmpty())
            showMessage(ctx,
                        accessFileRefusal(active, QStringLiteral("Converting the MachineType column of ") +
                                                      numericMachineTypes.join(QStringLiteral(", ")) +
                                                      QStringLiteral(" to text")) +
                            LFCR + QStringLiteral("The texts can be edited all the same."),
                        Buttons::OK, Icon::Exclamation, QStringLiteral("Access database"));
        if (!readOnlyReason.isEmpty())
            showMessage(ctx,
                        QStringLiteral("The Access database ") + Q + active + Q +
                            QStringLiteral(" can only be read by this program: ") + readOnlyReason + LFCR +
                            QStringLiteral("Its texts are shown, but nothing can be stored. Convert it to SQLite "
                                           "(File, \"Convert to SQLite...\") to edit it."),
                        Buttons::OK, Icon::Exclamation, QStringLiteral("Access database"));
        if (active != path)
            announceConversion(ctx, path, active);
        // Saved last, so that a database that failed a check is never remembered.
        if (!ctx.state.runningOnMachinePC)
            SaveIni(ctx, active, QStringLiteral("Setup"), QStringLiteral("StandardHelpTextDB"), ctx.state.iniPath);
        return active;
    } catch (const DbBusy &) {
        busy = true; // not the file's fault: it can be had once the other program is done
    } catch (const std::exception &e) {
        // The message says it in general words; the log keeps the cause.
        LogError(ctx, QStringLiteral("CheckConnection: ") + QString::fromUtf8(e.what()));
    }
    ctx.state.helpTextDB = previous;
    const QString cause = busy ? QStringLiteral("! Database is in use by another program, try again when it is done.")
                               : QStringLiteral("! Database either has wrong structure or is writeprotected.");
    showMessage(ctx, QStringLiteral("Error connecting Database ") + Q + path + Q + cause, Buttons::OK, Icon::Critical,
                QStringLiteral("Connection failed!"));
    return {};
}

} // namespace ht
