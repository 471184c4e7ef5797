// Times the integrity check a help-text or language-definition database gets before it
// is used (Database::checkIntact, SQLite's quick_check) on a full help-text database:
// five machines of 256 alarms, 256 warnings and 1000 material-change items, with texts
// in several languages. The file is in the disk cache, as right after it was picked.
// Usage: bench_quick_check [languages] [rounds]
#include "database/Database.h"
#include "support/FullDatabase.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using namespace ht;
using ht::bench::makeFullDatabase;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int languages = argc > 1 ? std::max(1, std::atoi(argv[1])) : 6;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 20;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Helptext.mdb"));
    makeFullDatabase(path, languages);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        auto db = Database::open(path, Database::Mode::ReadOnly);
        const auto start = std::chrono::steady_clock::now();
        db->checkIntact();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("quick_check of a full help-text database (%d languages, %lld bytes): median %.1f ms, min %.1f ms, "
                "max %.1f ms (%d rounds)\n",
                languages, QFileInfo(path).size(), times[times.size() / 2], times.front(), times.back(), rounds);
    return 0;
}
