// Times saving one edited text into an Access help-text database of about
// 10 MB (the full database with texts in two languages, written as an Access
// file), the file copied, flushed and renamed into place each time:
//   - the writer alone: the file read, the row changed, checked and replaced;
//   - the editor's save: the database opened for writing, the UPDATE in a
//     transaction, the text table read in, and the same replacement on commit.
//   bench_jet_save_text [rounds]   (default 20)
#include "database/Database.h"
#include "database/jet/JetEditor.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace ht;
using bench::Clock;
using bench::msSince;
using bench::median;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    QTemporaryDir dir;
    const QString sqlite = dir.filePath(QStringLiteral("Full.sqlite")),
                  access = dir.filePath(QStringLiteral("Helptext.mdb"));
    bench::makeFullDatabase(sqlite, 2);
    auto made = Clock::now();
    convertSqliteToJet(sqlite, bench::sourceDir() + QStringLiteral("/tests/data/jet/empty.mdb"), access);
    std::printf("Access help-text database of %.1f MB made in %.0f ms (%s build)\n",
                double(QFileInfo(access).size()) / 1e6, msSince(made), HELPTEXT_BUILD_TYPE);

    std::vector<double> writer, editor;
    for (int r = 0; r < rounds; ++r) {
        const QString text = QStringLiteral("Το κείμενο της αποθήκευσης %1").arg(r);
        auto start = Clock::now();
        {
            jet::Editor file(access);
            bool done = false;
            file.readRows(QStringLiteral("AlarmText"), [&](jet::RowPointer slot, QVariantList values) {
                if (done || values[0].toInt() != 300 + r)
                    return;
                values[4] = text;
                file.updateRow(QStringLiteral("AlarmText"), slot, values);
                done = true;
            });
            file.commit();
        }
        writer.push_back(msSince(start));

        start = Clock::now();
        {
            auto db = Database::open(access);
            Database::Transaction t(*db);
            db->exec(QStringLiteral("UPDATE AlarmText SET Function = ? WHERE Alarm_ID = ? AND Language = 1031"),
                     {text, 600 + r});
            t.commit();
        }
        editor.push_back(msSince(start));
    }
    auto check = Database::open(access, Database::Mode::ReadOnly);
    if (check
            ->query(QStringLiteral("SELECT Function FROM AlarmText WHERE Alarm_ID = ? AND Language = 1031"),
                    {600 + rounds - 1})
            .text(QStringLiteral("Function")) != QStringLiteral("Το κείμενο της αποθήκευσης %1").arg(rounds - 1)) {
        std::fprintf(stderr, "the last text did not arrive in the file\n");
        return 1;
    }
    std::printf("Saving one text, %d rounds, the file replaced each time:\n", rounds);
    std::printf("  the writer (read, change, check, copy, flush, rename): median %.1f ms, max %.1f ms\n",
                median(writer), *std::max_element(writer.begin(), writer.end()));
    std::printf("  the editor's save through the database layer:       median %.1f ms, max %.1f ms\n", median(editor),
                *std::max_element(editor.begin(), editor.end()));
    return 0;
}
