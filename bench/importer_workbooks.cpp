// Times the workbook reader on every workbook in tests/data/xls (files that
// spreadsheet programs and other writers made, a damaged and a protected one
// among them): all of them read, or refused, one after the other.
// Usage: bench_importer_workbooks [rounds]   (default 20; the median is printed)
#include "importer/Workbook.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QDir>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace ht;
using bench::Clock;
using bench::median;
using bench::msSince;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    const QDir dir(bench::sourceDir() + QStringLiteral("/tests/data/xls"));
    const QStringList files = dir.entryList({QStringLiteral("*.xls"), QStringLiteral("*.xlsx")}, QDir::Files);
    if (files.isEmpty()) {
        std::fprintf(stderr, "no workbooks in %s\n", qPrintable(dir.absolutePath()));
        return 1;
    }
    std::vector<double> totals;
    int read = 0, refused = 0;
    for (int r = 0; r < rounds; ++r) {
        read = refused = 0;
        const auto start = Clock::now();
        for (const QString &f : files) {
            try {
                Workbook::open(dir.filePath(f));
                ++read;
            } catch (const WorkbookError &) {
                ++refused;
            }
        }
        totals.push_back(msSince(start));
    }
    std::printf("reading every workbook in tests/data/xls (%d read, %d refused): median %.1f ms, min %.1f ms "
                "(%d rounds, %s)\n",
                read, refused, median(totals), *std::min_element(totals.begin(), totals.end()), rounds,
                HELPTEXT_BUILD_TYPE);
    return 0;
}
