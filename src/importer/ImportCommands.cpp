#include "importer/ImportCommands.h"

#include "common/ConsoleUserInterface.h"
#include "common/Context.h"
#include "common/IniFile.h"
#include "common/InstalledFiles.h"
#include "common/Messages.h"
#include "database/AccessSync.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "importer/DelMachine.h"
#include "importer/Importer.h"
#include "importer/NewDatabase.h"

namespace ht
{

namespace
{

int usage(Context &ctx, const QString &text)
{
    if (auto *console = dynamic_cast<ConsoleUserInterface *>(ctx.ui))
        console->print(text);
    return kCommandUsage;
}

int failedWith(Context &ctx, const QString &text)
{
    if (auto *console = dynamic_cast<ConsoleUserInterface *>(ctx.ui))
        console->print(text);
    return kCommandFailed;
}

// The language definitions of --languages, else of the settings file.
bool connectLanguages(Context &ctx, const CommandArgs &args)
{
    const QString path = args.value(
        QStringLiteral("languages"),
        LoadIniString(ctx, QStringLiteral("Setup"), QStringLiteral("StandardLangLookupDB"), ctx.state.iniPath));
    if (path.isEmpty())
        return !args.has(QStringLiteral("languages"));
    return !CheckLanguageLookup(ctx, path).isEmpty() || !args.has(QStringLiteral("languages"));
}

bool connectDatabase(Context &ctx, const CommandArgs &args)
{
    return !CheckConnection(ctx, args.value(QStringLiteral("database"))).isEmpty();
}

int runImport(Context &ctx, const CommandArgs &args)
{
    // The material-change list alone is the window's second mode.
    const bool alarms = args.has(QStringLiteral("workbook"));
    const bool changes = args.has(QStringLiteral("material-change"));
    for (const char *required : {"database", "machine", "language"})
        if (!args.has(QLatin1String(required)))
            return usage(ctx, QStringLiteral("import: --%1 is missing").arg(QLatin1String(required)));
    if (!alarms && !changes)
        return usage(ctx, QStringLiteral("import: --workbook or --material-change is missing"));
    if (alarms && !args.has(QStringLiteral("column")))
        return usage(ctx, QStringLiteral("import: --column is missing"));
    bool ok = true;
    const double column = alarms ? args.value(QStringLiteral("column")).toDouble(&ok) : 1;
    if (!ok || column < 1)
        return usage(ctx, QStringLiteral("import: --column takes the language's number in the workbook, from 1"));
    const QString added = args.value(QStringLiteral("added"));
    if (args.has(QStringLiteral("added")) &&
        (added.isEmpty() || added.size() > 3 ||
         !std::all_of(added.begin(), added.end(), [](QChar c) { return c.isDigit(); })))
        return usage(ctx, QStringLiteral("import: --added takes a number of at most three digits"));
    const QString replace = args.value(QStringLiteral("replace"), QStringLiteral("never"));
    if (replace != QLatin1String("all") && replace != QLatin1String("never"))
        return usage(ctx, QStringLiteral("import: --replace is all or never"));
    if (changes != args.has(QStringLiteral("position")))
        return usage(ctx, QStringLiteral("import: --material-change and --position go together"));
    const int position = changes ? args.value(QStringLiteral("position")).toInt(&ok) : 1;
    if (!ok || position < 1)
        return usage(ctx, QStringLiteral("import: --position takes the texts' column in the workbook, from 1"));

    // Connected with the counts the database has: nothing is rebuilt before
    // the workbook has been read and the import is sure to be made.
    ctx.state.anzFehler = -1;
    if (!connectLanguages(ctx, args))
        return failedWith(ctx, QStringLiteral("import: the language definitions cannot be used"));
    if (!connectDatabase(ctx, args))
        return kCommandFailed;
    const QString addedRows = args.has(QStringLiteral("added"))
                                  ? added
                                  : QString::number(std::max<long>(0, ctx.state.maxItems[KindAlarms] - kStandardItems));

    ImportRequest request;
    request.machine = args.value(QStringLiteral("machine"));
    request.language = args.value(QStringLiteral("language"));
    const ListSource materialChange{args.value(QStringLiteral("material-change")), column, position, addedRows};
    if (alarms) {
        request.source = {args.value(QStringLiteral("workbook")), column, 1, addedRows};
        if (changes)
            request.materialChangeSource = materialChange;
    } else {
        request.mode = ImportRequest::MaterialChange;
        request.source = materialChange;
    }
    auto *console = dynamic_cast<ConsoleUserInterface *>(ctx.ui);
    HeadlessStatus quiet;
    std::unique_ptr<ConsoleStatus> progress = console ? std::make_unique<ConsoleStatus>(*console) : nullptr;
    const int answer = replace == QLatin1String("all") ? AnswerReplaceAll : AnswerNeverReplace;
    Importer importer(ctx, progress ? static_cast<StatusTarget *>(progress.get()) : &quiet,
                      [&](const QString &, const QString &oldValue, const QString &newValue) {
                          if (console)
                              console->print(QStringLiteral("Stored definition \"") + oldValue +
                                             QStringLiteral("\", new \"") + newValue + QStringLiteral("\": ") +
                                             (answer == AnswerReplaceAll ? QStringLiteral("replaced, and all others")
                                                                         : QStringLiteral("kept, and all others")));
                          return answer;
                      });
    return importer.MainProc(request) ? kCommandDone : kCommandFailed;
}

int runDeleteMachine(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("database")) || !args.has(QStringLiteral("machine")))
        return usage(ctx, QStringLiteral("delete-machine: --database and --machine are needed"));
    if (!connectDatabase(ctx, args))
        return kCommandFailed;
    return deleteMachineNamed(ctx, args.value(QStringLiteral("machine"))) ? kCommandDone : kCommandFailed;
}

int runRenameMachine(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("database")) || !args.has(QStringLiteral("machine")) ||
        !args.has(QStringLiteral("to")))
        return usage(ctx, QStringLiteral("rename-machine: --database, --machine and --to are needed"));
    if (!connectDatabase(ctx, args))
        return kCommandFailed;
    if (args.has(QStringLiteral("help-dir")))
        ctx.state.helpMainDir = args.value(QStringLiteral("help-dir"));
    return renameMachineNamed(ctx, args.value(QStringLiteral("machine")), args.value(QStringLiteral("to")).trimmed())
               ? kCommandDone
               : kCommandFailed;
}

int runConvertToSqlite(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("database")))
        return usage(ctx, QStringLiteral("convert-to-sqlite: --database is needed"));
    return ConvertAccessToSqlite(ctx, args.value(QStringLiteral("database")), args.value(QStringLiteral("to")))
                   .isEmpty()
               ? kCommandFailed
               : kCommandDone;
}

int runSyncToAccess(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("from")) || !args.has(QStringLiteral("to")))
        return usage(ctx, QStringLiteral("sync-to-access: --from and --to are needed"));
    try {
        const SyncResult result = syncToAccess(args.value(QStringLiteral("from")), args.value(QStringLiteral("to")));
        showMessage(ctx,
                    result.rows == 0 ? QStringLiteral("The Access database holds every text already; nothing was "
                                                      "written.")
                                     : QStringLiteral("Texts written into the Access database: ") +
                                           result.changed.join(QStringLiteral(", ")) + QLatin1Char('.'),
                    Buttons::OK, Icon::Information);
        return kCommandDone;
    } catch (const DbError &e) {
        return failedWith(ctx, QString::fromUtf8(e.what()));
    }
}

int runNewDatabase(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("to")))
        return usage(ctx, QStringLiteral("new-database: --to is needed"));
    NewDatabaseRequest request;
    request.target = args.value(QStringLiteral("to"));
    request.materialChange = !args.has(QStringLiteral("without-material-change"));
    const QString format = args.value(QStringLiteral("format"), QStringLiteral("access"));
    if (format != QLatin1String("access") && format != QLatin1String("sqlite"))
        return usage(ctx, QStringLiteral("new-database: --format is access or sqlite"));
    request.sqlite = format == QLatin1String("sqlite");
    const QString added = args.value(QStringLiteral("added"), QStringLiteral("0"));
    bool ok = false;
    request.added = added.toInt(&ok);
    if (!ok || request.added < 0 || request.added > 999)
        return usage(ctx, QStringLiteral("new-database: --added takes a number of at most three digits"));
    const QString why = makeNewDatabase(programDataFile(ctx, templateFileName(request.materialChange)), request);
    if (!why.isEmpty())
        return failedWith(ctx, why);
    showMessage(ctx, QStringLiteral("New help-text database made: ") + request.target, Buttons::OK, Icon::Information);
    return kCommandDone;
}

} // namespace

std::vector<ConsoleCommand> importerCommands()
{
    return {
        {QStringLiteral("import"),
         QStringLiteral("--database DB (--workbook FILE --column N | --material-change FILE --position N) --machine "
                        "NAME --language NAME [--added N] [--replace all|never] [--languages FILE]"),
         QStringLiteral(
             "Imports a machine's alarms and warnings, and its material changes when --material-change is given, "
             "into the help-text database DB, as the importer's window does, in one transaction. With "
             "--material-change and no --workbook, only the material-change list is imported.\n"
             "  --workbook FILE          the workbook with the alarm and warning lists (.xls or .xlsx)\n"
             "  --machine NAME           the machine to import into (a new one takes the next free block)\n"
             "  --language NAME          the language the texts are in, as the databases name it\n"
             "  --column N               the language's number in the workbook (its text columns)\n"
             "  --added N                the added alarms and warnings after the 256 standard ones; it must be the\n"
             "                           number the workbook has (default: the database's, MaxLenAlarm - 256)\n"
             "  --material-change FILE   the workbook with the material-change texts\n"
             "  --position N             their column in that workbook, from 1\n"
             "  --replace all|never      whether a machine's stored alarm definitions that differ are replaced\n"
             "                           (default never); rows this import binds from free ones are always written\n"
             "  --languages FILE         the language-definition database (default: the settings file's)\n"
             "Progress goes to stderr. Exit code 0 when imported; 1 when refused or failed (the database is then "
             "unchanged); 2 for a command line that cannot be run."),
         {QStringLiteral("database"), QStringLiteral("workbook"), QStringLiteral("machine"), QStringLiteral("language"),
          QStringLiteral("column"), QStringLiteral("added"), QStringLiteral("material-change"),
          QStringLiteral("position"), QStringLiteral("replace"), QStringLiteral("languages")},
         {},
         runImport},
        {QStringLiteral("delete-machine"),
         QStringLiteral("--database DB --machine NAME"),
         QStringLiteral("Deletes a machine: its texts in every language are emptied and its rows freed for the next "
                        "machine, in one transaction. Exit code 0 when deleted, 1 when not."),
         {QStringLiteral("database"), QStringLiteral("machine")},
         {},
         runDeleteMachine},
        {QStringLiteral("rename-machine"),
         QStringLiteral("--database DB --machine NAME --to NEW [--help-dir DIR]"),
         QStringLiteral("Renames a machine in every definition table, in one transaction, and moves its help folder "
                        "DIR/NAME to DIR/NEW unless that exists (DIR: the settings file's HelpMainDir). Names compare "
                        "without case. Exit code 0 when renamed, 1 when refused (a name that exists, or that cannot "
                        "be a folder name on Windows) or failed."),
         {QStringLiteral("database"), QStringLiteral("machine"), QStringLiteral("to"), QStringLiteral("help-dir")},
         {},
         runRenameMachine},
        {QStringLiteral("convert-to-sqlite"),
         QStringLiteral("--database DB.mdb [--to FILE]"),
         QStringLiteral("Converts an Access help-text database to SQLite, for the design changes an Access file is "
                        "not given here (machine types of numbers made text, a wider font column).\n"
                        "  --to FILE   the new SQLite file (default: beside DB, named <base>.sqlite); never "
                        "overwritten\n"
                        "The Access database stays as it was. Exit code 0 when converted, 1 when not."),
         {QStringLiteral("database"), QStringLiteral("to")},
         {},
         runConvertToSqlite},
        {QStringLiteral("sync-to-access"),
         QStringLiteral("--from X.sqlite --to Y.mdb"),
         QStringLiteral("Writes the texts of the SQLite help-text database X that differ from those of the Access "
                        "database Y into Y, in one step: the texts of every language and the alarm definitions' "
                        "Sensor, Cam, CPU and Rejects. Refused, with Y unchanged, when the two do not hold the same "
                        "machines, items and text rows. Exit code 0 when Y holds X's texts, 1 when not."),
         {QStringLiteral("from"), QStringLiteral("to")},
         {},
         runSyncToAccess},
        {QStringLiteral("new-database"),
         QStringLiteral("--to FILE [--without-material-change] [--added N] [--format access|sqlite]"),
         QStringLiteral("Makes a new, empty help-text database from the template beside the program, as the "
                        "window's \"New database from template\" does: five free machine blocks, no language (an "
                        "import adds its own).\n"
                        "  --to FILE                  the new database; an existing file is never replaced\n"
                        "  --without-material-change  the template without the material-change tables\n"
                        "  --added N                  alarms and warnings per machine after the 256 standard ones "
                        "(default 0)\n"
                        "  --format access|sqlite     an Access (Jet 4) file as the operator panel reads it "
                        "(default), or SQLite\n"
                        "Exit code 0 when made; 1 when refused or failed (no file is left then); 2 for a command line "
                        "that cannot be run."),
         {QStringLiteral("to"), QStringLiteral("added"), QStringLiteral("format")},
         {QStringLiteral("without-material-change")},
         runNewDatabase},
    };
}

} // namespace ht
