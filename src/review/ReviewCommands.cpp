#include "review/ReviewCommands.h"
#include "review/ProgressOverview.h"

#include "common/Context.h"
#include "database/Database.h"
#include "review/ReviewMarks.h"
#include "review/ReviewReports.h"

#include <QFileInfo>
#include <QSaveFile>
#include <cstdio>

namespace ht
{

namespace
{

int usage(const QString &text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    return kCommandUsage;
}

int failed(const QString &text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    return kCommandFailed;
}

void printOut(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void printNotes(const QStringList &notes)
{
    for (const QString &note : notes)
        std::fprintf(stderr, "%s\n", qPrintable(note));
}

int kindNumber(const QString &word)
{
    if (word == QLatin1String("alarms"))
        return KindAlarms;
    if (word == QLatin1String("warnings"))
        return KindWarnings;
    if (word == QLatin1String("materialchange"))
        return KindMaterialChange;
    return 0;
}

// The source: --source, else English, else the first language of the database.
const CheckLanguage *sourceLanguage(const DatabaseCheck &check, const CommandArgs &args)
{
    if (args.has(QStringLiteral("source")))
        return check.language(args.value(QStringLiteral("source")));
    if (const CheckLanguage *english = check.language(QStringLiteral("English")))
        return english;
    return check.languages().isEmpty() ? nullptr : &check.languages().first();
}

std::unique_ptr<DatabaseCheck> openCheck(Context &ctx, const QString &database, const QStringList &only, QString &why)
{
    if (!QFileInfo(database).isFile()) {
        why = QStringLiteral("The database %1 cannot be found.").arg(database);
        return nullptr;
    }
    try {
        return std::make_unique<DatabaseCheck>(ctx, database, widthLimitsFromSettings(ctx), only);
    } catch (const DbError &e) {
        why = QStringLiteral("The database %1 cannot be read: %2").arg(database, QString::fromUtf8(e.what()));
        return nullptr;
    }
}

int runCheck(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("database")) || !args.has(QStringLiteral("language")))
        return usage(QStringLiteral("check: --database and --language are needed"));
    const QString format = args.value(QStringLiteral("format"), QStringLiteral("text"));
    if (!isFindingFormat(format))
        return usage(QStringLiteral("check: --format is text, csv or json"));
    CheckScope scope;
    scope.machine = args.value(QStringLiteral("machine"));
    if (args.has(QStringLiteral("kind"))) {
        scope.kind = kindNumber(args.value(QStringLiteral("kind")));
        if (scope.kind == 0)
            return usage(QStringLiteral("check: --kind is alarms, warnings or materialchange"));
    }
    if (args.has(QStringLiteral("only"))) {
        scope.only = args.value(QStringLiteral("only")).split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (QString &id : scope.only) {
            id = id.trimmed();
            if (!allCheckIds().contains(id))
                return usage(QStringLiteral("check: \"%1\" is no check; the checks are %2")
                                 .arg(id, allCheckIds().join(QStringLiteral(", "))));
        }
    }
    QString why;
    auto check = openCheck(ctx, args.value(QStringLiteral("database")), scope.only, why);
    if (!check)
        return usage(why);
    const CheckLanguage *destination = check->language(args.value(QStringLiteral("language")));
    if (!destination)
        return usage(
            QStringLiteral("check: the database has no language \"%1\"").arg(args.value(QStringLiteral("language"))));
    const CheckLanguage *source = sourceLanguage(*check, args);
    if (!source)
        return usage(
            QStringLiteral("check: the database has no language \"%1\"").arg(args.value(QStringLiteral("source"))));
    if (!scope.machine.isEmpty() && !check->machines().contains(scope.machine, Qt::CaseInsensitive))
        return usage(QStringLiteral("check: the database has no machine \"%1\"").arg(scope.machine));

    std::vector<ItemFinding> findings;
    try {
        check->run(*destination, *source, scope, [&](const CheckedItem &item) {
            for (const Finding &f : item.findings)
                findings.push_back({item.machine, item.kind, item.number, destination->name, f});
        });
    } catch (const DbError &e) {
        return failed(QStringLiteral("check: the database could not be read to the end: ") +
                      QString::fromUtf8(e.what()));
    }
    // By machine, kind and item, as the overview and the editor list them.
    std::stable_sort(findings.begin(), findings.end(), [](const ItemFinding &a, const ItemFinding &b) {
        return std::tie(a.machine, a.kind, a.number) < std::tie(b.machine, b.kind, b.number);
    });
    printNotes(check->takeNotes());
    printOut(formatFindings(findings, format));
    return findings.empty() ? kCommandDone : kCommandFailed;
}

int runReport(Context &ctx, const CommandArgs &args)
{
    if (!args.has(QStringLiteral("database")))
        return usage(QStringLiteral("report: --database is needed"));
    const QString format = args.value(QStringLiteral("format"), QStringLiteral("text"));
    if (!isReportFormat(format))
        return usage(QStringLiteral("report: --format is text, csv, json or html"));
    const QString database = args.value(QStringLiteral("database"));
    QString why;
    auto check = openCheck(ctx, database, {}, why);
    if (!check)
        return usage(why);
    const CheckLanguage *source = sourceLanguage(*check, args);
    if (!source)
        return usage(
            QStringLiteral("report: the database has no language \"%1\"").arg(args.value(QStringLiteral("source"))));

    ProgressReport report;
    report.database = QFileInfo(database).absoluteFilePath();
    report.sourceLanguage = source->name;
    report.made = QDateTime::currentDateTime();
    try {
        report.cells = progressCells(*check, *source);
    } catch (const DbError &e) {
        return failed(QStringLiteral("report: the database could not be read to the end: ") +
                      QString::fromUtf8(e.what()));
    }
    printNotes(check->takeNotes());
    const QString text = formatReport(report, format);
    if (!args.has(QStringLiteral("out"))) {
        printOut(text);
        return kCommandDone;
    }
    // Written under a temporary name and renamed: an old report is never left half overwritten.
    QSaveFile file(args.value(QStringLiteral("out")));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0 || !file.commit())
        return failed(QStringLiteral("report: %1 cannot be written: %2")
                          .arg(args.value(QStringLiteral("out")), file.errorString()));
    return kCommandDone;
}

int runReviewed(Context &ctx, const CommandArgs &args)
{
    for (const char *required : {"database", "language", "machine", "kind", "item"})
        if (!args.has(QLatin1String(required)))
            return usage(QStringLiteral("reviewed: --%1 is missing").arg(QLatin1String(required)));
    const int kind = kindNumber(args.value(QStringLiteral("kind")));
    if (kind == 0)
        return usage(QStringLiteral("reviewed: --kind is alarms, warnings or materialchange"));
    bool ok = false;
    const long number = args.value(QStringLiteral("item")).toLong(&ok);
    if (!ok || number < 1)
        return usage(QStringLiteral("reviewed: --item takes an item number, from 1"));
    const QString database = args.value(QStringLiteral("database"));
    QString why;
    auto check = openCheck(ctx, database, {QStringLiteral("review")}, why);
    if (!check)
        return usage(why);
    const CheckLanguage *destination = check->language(args.value(QStringLiteral("language")));
    const CheckLanguage *source = sourceLanguage(*check, args);
    if (!destination || !source)
        return usage(QStringLiteral("reviewed: the database has no such language"));
    try {
        const DatabaseCheck::ItemTexts item =
            check->itemTexts(args.value(QStringLiteral("machine")), kind, number, *source);
        if (item.id == 0)
            return usage(QStringLiteral("reviewed: machine \"%1\" has no %2 item %3")
                             .arg(args.value(QStringLiteral("machine")), QLatin1String(kindWord(kind)))
                             .arg(number));
        // The translation counts as made from the source as it stands now.
        keepTranslatedFrom(database, kind, item.id, destination->number, source->number, item.texts);
    } catch (const DbError &e) {
        return failed(QStringLiteral("reviewed: the mark could not be kept: ") + QString::fromUtf8(e.what()));
    }
    return kCommandDone;
}

} // namespace

std::vector<ConsoleCommand> reviewCommands()
{
    ConsoleCommand check{
        QStringLiteral("check"),
        QStringLiteral(
            "--database DB --language NAME [--source NAME] [--machine M] [--kind alarms|warnings|materialchange] "
            "[--only ID,ID...] [--format text|csv|json]"),
        QStringLiteral(
            "Checks the texts of one destination language against the source language and prints one finding per "
            "line: machine, kind, item number, language, field, check, message (text: separated by tabs).\n"
            "  --language NAME   the destination language, as the database names it\n"
            "  --source NAME     the language translated from (default English, else the database's first)\n"
            "  --machine M       only this machine; --kind only this kind\n"
            "  --only ID,ID      only these checks: missing, same, breaks, blanks, punctuation, numbers, width,\n"
            "                    spelling, review\n"
            "  --format F        text (default), csv (with a header line) or json (an array, one finding a line)\n"
            "Widths: [Check] DeviceWidth and ResultWidth of the settings file, in pixels, else 90 % of [Setup] "
            "ScreenResolution. Spelling uses the Hunspell dictionary of the language number (1031 de_DE, 1033 en_US, "
            "...); a language without one is named on stderr and not checked. Review: marks kept in DB.work.sqlite "
            "by the editor.\n"
            "Exit code 0 when nothing was found, 1 when something was (or the database could not be read), 2 for a "
            "command line that cannot be run."),
        {QStringLiteral("database"), QStringLiteral("language"), QStringLiteral("source"), QStringLiteral("machine"),
         QStringLiteral("kind"), QStringLiteral("only"), QStringLiteral("format")},
        {},
        runCheck};
    check.drawsText = true;
    ConsoleCommand report{
        QStringLiteral("report"),
        QStringLiteral("--database DB [--source NAME] [--format text|csv|json|html] [--out FILE]"),
        QStringLiteral("The translation progress of every machine, kind and destination language: items, translated, "
                       "missing, with findings (every check of `check`), needs review.\n"
                       "  --source NAME   the language translated from (default English, else the database's first)\n"
                       "  --format F      text (default), csv, json, or html: one page with colours, totals, the date "
                       "and the database, to open in a browser\n"
                       "  --out FILE      write there (under a temporary name, then renamed) instead of stdout\n"
                       "Exit code 0 when written, 1 when not, 2 for a command line that cannot be run."),
        {QStringLiteral("database"), QStringLiteral("source"), QStringLiteral("format"), QStringLiteral("out")},
        {},
        runReport};
    report.drawsText = true;
    ConsoleCommand reviewed{
        QStringLiteral("reviewed"),
        QStringLiteral(
            "--database DB --language NAME [--source NAME] --machine M --kind alarms|warnings|materialchange "
            "--item N"),
        QStringLiteral("Marks the translation of one item as reviewed against its source as it stands now, as the "
                       "editor's Ctrl+R does: its `review` finding goes, its text stays as it is. The mark is kept in "
                       "DB.work.sqlite.\nExit code 0 when marked, 1 when the mark could not be kept, 2 for a command "
                       "line that cannot be run (an unknown language, machine, kind or item)."),
        {QStringLiteral("database"), QStringLiteral("language"), QStringLiteral("source"), QStringLiteral("machine"),
         QStringLiteral("kind"), QStringLiteral("item")},
        {},
        runReviewed};
    return {check, report, reviewed};
}

} // namespace ht
