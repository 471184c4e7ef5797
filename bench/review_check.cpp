// Times `helptext-importer check` on a full database (five machines, ten
// languages, 75,600 destination texts): one destination language against the
// source, every check, dictionaries loaded on the way; and the progress
// overview of `report` (every destination language), and the overview window's rows.
// Usage: bench_review_check [rounds]
#include "common/AppState.h"
#include "common/Context.h"
#include "review/DatabaseCheck.h"
#include "review/ProgressOverview.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QGuiApplication>
#include <QTemporaryDir>
#include <cstdio>

using namespace ht;
using namespace ht::bench;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Helptext.mdb"));
    makeFullDatabase(path, 10);
    Context ctx;
    std::vector<double> one, all, overview, findingsAfter, row;
    size_t cells = 0;
    size_t findings = 0, items = 0;
    for (int r = 0; r < rounds; ++r) {
        // As the command runs: open, load the dictionary, check, everything from cold.
        auto start = Clock::now();
        {
            DatabaseCheck check(ctx, path, {922, 922, QStringLiteral("10")});
            findings = 0;
            check.run(*check.language(QStringLiteral("LANGUAGE 2")), *check.language(QStringLiteral("LANGUAGE 1")), {},
                      [&](const CheckedItem &item) { findings += item.findings.size(); });
        }
        one.push_back(msSince(start));
        start = Clock::now();
        {
            DatabaseCheck check(ctx, path, {922, 922, QStringLiteral("10")});
            items = 0;
            for (const CheckLanguage &l : check.languages())
                if (l.number != check.languages().first().number)
                    check.run(l, check.languages().first(), {}, [&](const CheckedItem &) { ++items; });
        }
        all.push_back(msSince(start));
        // The window opens with the counts and fills in "with findings" once it shows.
        start = Clock::now();
        ProgressOverview rows(ctx, path, QStringLiteral("LANGUAGE 1"));
        cells = rows.counts().size();
        overview.push_back(msSince(start));
        start = Clock::now();
        rows.findings();
        findingsAfter.push_back(msSince(start));
        start = Clock::now(); // after a save: the saved item's row
        rows.cell(QStringLiteral("Machine 3"), KindMaterialChange, QStringLiteral("LANGUAGE 2"));
        row.push_back(msSince(start));
    }
    std::printf("check of one language of a full database (LANGUAGE 2 = 1032, Greek dictionary, %zu findings): "
                "median %.0f ms\n",
                findings, median(one));
    std::printf("progress overview of all nine destination languages (%zu items checked): median %.0f ms\n", items,
                median(all));
    std::printf("opening the overview window (%zu cells: translated, missing, needs review): median %.0f ms\n", cells,
                median(overview));
    std::printf("then its \"with findings\" column (every check but spelling and width): median %.0f ms\n",
                median(findingsAfter));
    std::printf("one row counted again after a save (1000 material-change items): median %.1f ms\n", median(row));
    return 0;
}
