// Times the conversion of the largest Access test file into a new SQLite file, and the
// first query on a Jet file opened directly (which copies the table it needs).
// Usage: bench_jet_to_sqlite [file.mdb] [rounds]
#include "database/Database.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace
{

QString largestJetTestFile()
{
    // The Access files the tests read, in the repository that holds this source file.
    const QDir dir(QStringLiteral(HELPTEXT_SOURCE_DIR) + QStringLiteral("/tests/data/jet"));
    QString best;
    qint64 bestSize = -1;
    for (const QFileInfo &info : dir.entryInfoList({QStringLiteral("*.mdb")}, QDir::Files))
        if (info.size() > bestSize) {
            best = info.filePath();
            bestSize = info.size();
        }
    return best;
}

template <typename F> double millis(F &&f)
{
    const auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void report(const char *what, std::vector<double> times)
{
    std::sort(times.begin(), times.end());
    std::printf("%-34s median %8.2f ms   min %8.2f ms   max %8.2f ms   (%zu rounds)\n", what, times[times.size() / 2],
                times.front(), times.back(), times.size());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString jet = argc > 1 ? QString::fromLocal8Bit(argv[1]) : largestJetTestFile();
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 20;
    if (jet.isEmpty()) {
        std::fprintf(stderr, "no Jet file found\n");
        return 1;
    }
    std::printf("file: %s (%lld bytes)\n", qPrintable(jet), QFileInfo(jet).size());
    QTemporaryDir dir;
    std::vector<double> convert, firstQuery;
    int rows = 0;
    for (int i = 0; i < rounds; ++i) {
        const QString target = dir.filePath(QStringLiteral("out%1.sqlite").arg(i));
        convert.push_back(millis([&] { ht::convertJetToSqlite(jet, target); }));
        firstQuery.push_back(millis([&] {
            auto db = ht::Database::open(jet, ht::Database::Mode::ReadOnly);
            rows = 0;
            for (const QString &table : db->tables())
                rows += db->query(QStringLiteral("SELECT * FROM %1").arg(ht::quoteIdentifier(table))).recordCount();
        }));
    }
    report("convertJetToSqlite", convert);
    report("open Jet + read every table", firstQuery);
    std::printf("rows read per round: %d\n", rows);
    return 0;
}
