// Times the jobs on a full keyed Access help-text database, in place: creating
// a language (7,560 text rows added, every index of the text tables rebuilt)
// and deleting it with its configuration, lengthening the alarm tables to 300
// per machine block, and a full import of a new machine (the free fifth block)
// with a new language. Each job's time includes reading the file, checking it
// and writing it aside and renaming it into place.
//   bench_jet_jobs [rounds]   (default 5; medians printed)
#include "common/Context.h"
#include "common/ScriptedUserInterface.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/ItemCounts.h"
#include "database/LanguageLookup.h"
#include "importer/Importer.h"
#include "languages/LanguageJobs.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <vector>

using namespace ht;
using bench::Clock;
using bench::median;
using bench::msSince;

namespace
{

struct Workspace {
    QTemporaryDir dir;
    Context ctx;
    ScriptedUserInterface ui;
    QString db = dir.filePath(QStringLiteral("Helptext.mdb"));
    explicit Workspace(const QString &full)
    {
        ctx.ui = &ui;
        ctx.programDir = dir.path();
        ctx.programName = QStringLiteral("bench");
        ctx.state.iniPath = dir.filePath(QStringLiteral("bench.ini"));
        QFile::copy(full, db);
        QFile(db).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        bench::makeLanguageDatabase(dir.filePath(QStringLiteral("Languages.mdb")));
        CheckLanguageLookup(ctx, dir.filePath(QStringLiteral("Languages.mdb")));
    }
    bool connect() { return !CheckConnection(ctx, db).isEmpty(); }
};

int fail(const char *what, const ScriptedUserInterface &ui)
{
    std::fprintf(stderr, "%s failed: %s\n", what, qPrintable(ui.messageTexts().join('\n')));
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    QTemporaryDir dir;
    const QString full = dir.filePath(QStringLiteral("Full.mdb")), four = dir.filePath(QStringLiteral("Four.mdb"));
    bench::makeFullAccessDatabase(full, 5);
    bench::makeFullAccessDatabase(four, 4);
    std::printf("Keyed Access help-text database, 10 languages, %.1f MB (%s build), %d rounds:\n",
                double(QFileInfo(full).size()) / 1e6, HELPTEXT_BUILD_TYPE, rounds);

    std::vector<double> created, deleted, lengthened, imported;
    HeadlessStatus status;
    for (int r = 0; r < rounds; ++r) {
        {
            Workspace w(full);
            if (!w.connect())
                return fail("connecting", w.ui);
            const std::optional<LanguageDefinition> russian = lookupLanguage(w.ctx, QStringLiteral("Russian"));
            auto start = Clock::now();
            if (!createLanguage(w.ctx, &status, *russian))
                return fail("creating a language", w.ui);
            created.push_back(msSince(start));
            w.ui.push(Answer::OK);
            start = Clock::now();
            if (!deleteLanguage(w.ctx, &status, QStringLiteral("Russian"), DeleteWithConfiguration))
                return fail("deleting a language", w.ui);
            deleted.push_back(msSince(start));
        }
        {
            Workspace w(full);
            long count = 300;
            const auto start = Clock::now();
            if (CorrectItemLenth(w.ctx, w.db, QStringLiteral("Alarm"), count) == -1)
                return fail("lengthening", w.ui);
            lengthened.push_back(msSince(start));
        }
        {
            Workspace w(four);
            w.ctx.state.mode = QStringLiteral("IMPORT");
            if (!w.connect())
                return fail("connecting", w.ui);
            ImportRequest request;
            request.machine = QStringLiteral("Machine 9");
            request.language = QStringLiteral("Russian");
            request.source = {bench::sourceDir() + QStringLiteral("/tests/importer/data/layout-plain.xlsx"), 2, 1,
                              QStringLiteral("0")};
            Importer importer(w.ctx, &status, [](const QString &, const QString &, const QString &) { return 3; });
            const auto start = Clock::now();
            if (!importer.MainProc(request))
                return fail("the import", w.ui);
            imported.push_back(msSince(start));
        }
    }
    std::printf("  create language (7,560 text rows):         median %.0f ms\n", median(created));
    std::printf("  delete language with its configuration:    median %.0f ms\n", median(deleted));
    std::printf("  alarm tables lengthened to 300 per block:  median %.0f ms\n", median(lengthened));
    std::printf("  import of a new machine, new language:     median %.0f ms\n", median(imported));
    return 0;
}
