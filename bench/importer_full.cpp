// Times a full import into a fresh template database: a workbook of 256 + 256
// standard rows with 999 added alarms and warnings (2,300 rows), and 1,000
// material changes from their own workbook, into a language that has no text
// rows yet, so that the language is created on the way. Prints each phase.
// Also times reading the 2,300-row workbook alone, as .xls and as .xlsx.
// Usage: bench_importer_full [rounds]   (default 5; the median is printed)
#include "common/Context.h"
#include "common/ScriptedUserInterface.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "importer/Importer.h"
#include "importer/Workbook.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <string_view>
#include <vector>

using namespace ht;
using bench::Clock;
using bench::median;
using bench::msSince;

namespace
{

// The import's phases, told apart by the texts its progress display starts with.
class PhaseClock : public HeadlessStatus
{
  public:
    std::vector<std::pair<QString, Clock::time_point>> marks;
    void setStatusText(const QString &t) override
    {
        HeadlessStatus::setStatusText(t);
        static const char *phases[] = {"Reading source",         "Creating new language", "Importing...",
                                       "Binding: Alarms",        "Binding: Warnings",     "Importing: Materialchang",
                                       "Binding: MaterialChange"};
        for (const char *p : phases)
            if (t.startsWith(QLatin1String(p)) && (marks.empty() || marks.back().first != QLatin1String(p)))
                marks.emplace_back(QLatin1String(p), Clock::now());
    }
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    const QString data = bench::sourceDir() + QStringLiteral("/tests/importer/data/");

    for (const char *name : {"full.xls", "full.xlsx"}) {
        std::vector<double> times;
        for (int r = 0; r < rounds; ++r) {
            const auto start = Clock::now();
            Workbook::open(data + QLatin1String(name));
            times.push_back(msSince(start));
        }
        std::printf("reading %s (2,300 rows): median %.1f ms\n", name, median(times));
    }

    // The material changes alone into a full database (five machines, ten languages), once
    // as the program makes it and once without any index (a customer's own file); then
    // everything into a fresh database.
    for (const char *target : {"full database", "full database, no indexes", "fresh database"}) {
        const bool full = target != std::string_view("fresh database");
        std::map<QString, std::vector<double>> phases;
        std::vector<double> totals;
        for (int r = 0; r < (full ? std::min(rounds, 3) : rounds); ++r) {
            QTemporaryDir dir;
            Context ctx;
            ScriptedUserInterface ui;
            ctx.ui = &ui;
            ctx.programDir = dir.path();
            ctx.programName = QStringLiteral("bench");
            AppState &s = ctx.state;
            s.mode = QStringLiteral("IMPORT");
            s.iniPath = dir.filePath(QStringLiteral("bench.ini"));
            const QString db = dir.filePath(QStringLiteral("Help.mdb"));
            if (full) {
                bench::makeFullDatabase(db, 10);
                if (target == std::string_view("full database, no indexes"))
                    bench::dropIndexes(db);
            } else {
                // An SQLite help-text database from the templates' scripts (the templates are Access files).
                Database::create(db)->execScript(bench::schemaScript("helptext.sql") +
                                                 bench::schemaScript("helptext_materialchange.sql"));
            }
            bench::makeLanguageDatabase(dir.filePath(QStringLiteral("Languages.mdb")));
            CheckLanguageLookup(ctx, dir.filePath(QStringLiteral("Languages.mdb")));
            if (CheckConnection(ctx, db).isEmpty()) {
                std::fprintf(stderr, "the database %s was refused\n", qPrintable(db));
                return 1;
            }
            ImportRequest request;
            request.machine = QStringLiteral("Machine 1");
            request.language = QStringLiteral("Francais");
            if (full) {
                // The 1,000 material changes of one machine into 50,000 material-change text rows.
                request.mode = ImportRequest::MaterialChange;
                request.source = {data + QStringLiteral("full-material-change.xlsx"), 1, 1, QString()};
            } else {
                request.source = {data + QStringLiteral("full.xlsx"), 1, 1, QStringLiteral("999")};
                request.materialChangeSource =
                    ListSource{data + QStringLiteral("full-material-change.xlsx"), 1, 1, QStringLiteral("999")};
            }
            PhaseClock clock;
            Importer importer(ctx, &clock, [](const QString &, const QString &, const QString &) { return 3; });
            const auto start = Clock::now();
            if (!importer.MainProc(request)) {
                std::fprintf(stderr, "the import failed: %s\n", qPrintable(ui.messageTexts().join('\n')));
                return 1;
            }
            const auto end = Clock::now();
            totals.push_back(std::chrono::duration<double, std::milli>(end - start).count());
            std::map<QString, double> round;
            for (size_t i = 0; i < clock.marks.size(); ++i) {
                const auto until = i + 1 < clock.marks.size() ? clock.marks[i + 1].second : end;
                round[clock.marks[i].first] +=
                    std::chrono::duration<double, std::milli>(until - clock.marks[i].second).count();
            }
            for (const auto &[phase, ms] : round)
                phases[phase].push_back(ms);
            if (r == 0)
                std::printf("%s: imported: %d alarms, %d warnings, %d material changes\n", target,
                            importer.counts().alarms, importer.counts().warnings, importer.counts().materialChanges);
        }
        // A phase lasts until the next one starts: the tables' rebuild, which
        // shows no text of its own, counts to the language's creation before it.
        for (const auto &[phase, times] : phases)
            std::printf("  %-26s median %7.1f ms%s\n", qPrintable(phase), median(times),
                        phase.startsWith(QLatin1String("Creating")) ? " (with the tables' rebuild to 1255 rows a block)"
                                                                    : "");
        std::printf("full import into the %s, language created on the way: median %.1f ms (%zu rounds)\n", target,
                    median(totals), totals.size());
    }
    return 0;
}
