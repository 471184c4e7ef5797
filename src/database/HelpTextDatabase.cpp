// Choosing the help-text database and listing its machines and languages.
#include "database/HelpTextDatabase.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"

namespace ht
{

QString ConnectToDB_Helptext(Context &ctx, const QString &title)
{
    try {
        if (!ctx.ui)
            return {};
        const QString caption = title.isEmpty() ? QStringLiteral("Select helptext database") : title;
        // Converted and newly made databases are SQLite files; they are offered beside the Access ones.
        const QString filter = QStringLiteral("MS Access *.mdb (NT-Version)|*.mdb|MS Access *.vws (XP-Version)|*.vws"
                                              "|SQLite *.sqlite|*.sqlite");
        const auto choice = ctx.ui->openFile(caption, filter, ctx.state.helpTextDB);
        if (!choice || choice->path.isEmpty())
            return {};
        if (choice->readOnlyTicked) {
            // The program needs to write; the database is used writable all the same.
            showMessage(ctx,
                        QStringLiteral("Cannot open as \"Writeonly.\"") + LFCR + QStringLiteral("Protection removed!"),
                        Buttons::OK, Icon::Critical);
        }
        return choice->path;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ConnectToDB_Helptext"), e);
    }
    return {};
}

int GetMachineList(Context &ctx, QStringList &list)
{
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        // Machines are known only through their alarms; "0" marks the free rows.
        const Recordset rs = db->query(QStringLiteral("SELECT AlarmDefinition.MachineType FROM AlarmDefinition "
                                                      "WHERE AlarmDefinition.MachineType <> ? "
                                                      "GROUP BY AlarmDefinition.MachineType "
                                                      "ORDER BY AlarmDefinition.MachineType"),
                                       {QStringLiteral("0")});
        for (const QVariantList &row : rs.rows())
            list << row[0].toString();
        return rs.recordCount();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetMachineList"), e);
    }
    return 0;
}

int GetLanguageList(Context &ctx, QStringList &list)
{
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        const Recordset rs = db->query(QStringLiteral("SELECT Language.Language, Language.Name FROM Language"));
        for (const QVariantList &row : rs.rows())
            list << row[1].toString();
        return rs.recordCount();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetLanguageList"), e);
    }
    return 0;
}

QString accessFileRefusal(const QString &path, const QString &job)
{
    if (detectDatabaseFormat(path) != DbFormat::Jet)
        return QString();
    return job + QStringLiteral(" cannot be done in an Access database (\"") + path +
           QStringLiteral("\"): it changes the design of a table, and this program changes only the rows of an "
                          "Access file.") +
           LFCR +
           QStringLiteral("Nothing was changed. Convert the database to SQLite first (editor: File, \"Convert to "
                          "SQLite...\"; or helptext-importer convert-to-sqlite), then do it there.");
}

} // namespace ht
