// Times adding a language's text rows to a full keyed Access help-text database
// in place: 7,560 rows (1,280 alarm, 1,280 warning and 5,000 material-change
// texts) inserted into tables keyed on (item ID, Language), their indexes
// rebuilt, the file checked, copied, flushed and renamed into place. The
// database is the keyed one of the tests (5 machines, made by another Jet
// library) grown to 10 languages first. Deleting the language again is timed
// as well.
//   bench_jet_insert_keys [rounds]   (default 7)
#include "common/FileIo.h"
#include "database/Database.h"
#include "database/jet/JetEditor.h"
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

const char *const kTexts[][2] = {{"AlarmText", "AlarmDefinition"},
                                 {"WarningText", "WarningDefinition"},
                                 {"MaterialChangeText", "MaterialChangeDefinition"}};

// One text row per definition row of every kind; the number of rows.
int addLanguage(jet::Editor &file, int language)
{
    int rows = 0;
    for (const auto &kind : kTexts) {
        std::vector<QVariant> ids;
        file.readRows(QString::fromLatin1(kind[1]),
                      [&](jet::RowPointer, const QVariantList &values) { ids.push_back(values[0]); });
        const QString table = QString::fromLatin1(kind[0]);
        const int columns = int(file.columnsOf(table).size());
        for (const QVariant &id : ids) {
            QVariantList values{id, language};
            for (int i = 2; i < columns; ++i)
                values << QStringLiteral("Text %1 of language %2, column %3").arg(id.toInt()).arg(language).arg(i);
            file.insertRow(table, values);
            ++rows;
        }
    }
    return rows;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    QTemporaryDir dir;
    const QString full = dir.filePath(QStringLiteral("Full.mdb")),
                  access = dir.filePath(QStringLiteral("Helptext.mdb"));
    QFile::copy(bench::sourceDir() + QStringLiteral("/tests/data/jet/helptext_keys.mdb"), full);
    auto made = Clock::now();
    {
        jet::Editor file(full);
        for (int language = 2000; language < 2007; ++language)
            addLanguage(file, language);
        file.commit();
    }
    std::printf("Keyed Access help-text database of 10 languages, %.1f MB, made in %.0f ms (%s build)\n",
                double(QFileInfo(full).size()) / 1e6, msSince(made), HELPTEXT_BUILD_TYPE);

    std::vector<double> inserting, committing, total, deleting;
    int rows = 0;
    for (int r = 0; r < rounds; ++r) {
        QFile::remove(access);
        QFile::copy(full, access);
        auto start = Clock::now();
        jet::Editor file(access);
        rows = addLanguage(file, 3000 + r);
        inserting.push_back(msSince(start));
        auto commit = Clock::now();
        file.commit();
        committing.push_back(msSince(commit));
        total.push_back(msSince(start));

        // The same language deleted again, in a round of its own.
        start = Clock::now();
        jet::Editor again(access);
        for (const auto &kind : kTexts) {
            const QString table = QString::fromLatin1(kind[0]);
            std::vector<jet::RowPointer> language;
            again.readRows(table, [&](jet::RowPointer slot, const QVariantList &values) {
                if (values[1].toInt() == 3000 + r)
                    language.push_back(slot);
            });
            for (jet::RowPointer slot : language)
                again.deleteRow(table, slot);
        }
        again.commit();
        deleting.push_back(msSince(start));
    }
    // What the rounds left: the languages of the set-up, none of the rounds'.
    auto check = Database::open(access, Database::Mode::ReadOnly);
    const auto count = [&](int language) {
        return check
            ->query(QStringLiteral("SELECT COUNT(*) AS n FROM MaterialChangeText WHERE Language = ?"), {language})
            .value(QStringLiteral("n"))
            .toInt();
    };
    if (count(2006) != 5000 || count(3000 + rounds - 1) != 0) {
        std::fprintf(stderr, "the file does not hold the rows it should\n");
        return 1;
    }
    std::printf("Adding a language of %d text rows, keys rebuilt, %d rounds:\n", rows, rounds);
    std::printf("  reading the file and inserting the rows: median %.0f ms\n", median(inserting));
    std::printf("  commit (indexes rebuilt, checked, replaced): median %.0f ms\n", median(committing));
    std::printf("  in all: median %.0f ms, max %.0f ms (target under 500 ms)\n", median(total),
                *std::max_element(total.begin(), total.end()));
    std::printf("Deleting it again, keys rebuilt, checked, replaced: median %.0f ms\n", median(deleting));
    return 0;
}
