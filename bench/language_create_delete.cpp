// Times creating a language in a full help-text database (five machines of 256
// alarms, 256 warnings and 1000 material changes, ten languages with texts:
// 7,560 text rows for the new language) and deleting it again with its
// configuration, as the language form and the commands do; once on the database as the
// program makes it, once on a copy with no index at all (a customer's own file) and
// once on a copy made by convert-to-sqlite from an Access file of it.
//   bench_language_create_delete [rounds]   (default 10)
#include "common/Context.h"
#include "common/ScriptedUserInterface.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "languages/LanguageJobs.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <vector>

using namespace ht;
using bench::Clock;
using bench::msSince;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
    QTemporaryDir dir;
    Context ctx;
    ScriptedUserInterface ui;
    ctx.ui = &ui;
    ctx.programDir = dir.path();
    ctx.programName = QStringLiteral("bench");
    ctx.state.iniPath = dir.filePath(QStringLiteral("bench.ini"));

    const QString lookup = dir.filePath(QStringLiteral("Languages.mdb"));
    Database::create(lookup)->execScript(bench::schemaScript("languages.sql") +
                                         QStringLiteral("INSERT INTO LookupLanguages VALUES (1049, 'Russian', "
                                                        "'Arial 10 400', '00000419', 1251, NULL);"));
    const QString keyed = dir.filePath(QStringLiteral("Helptext.mdb"));
    bench::makeFullDatabase(keyed, 10);
    // A customer's own SQLite file may have no index at all: every job must stay fast there too.
    const QString plain = dir.filePath(QStringLiteral("HelptextNoIndexes.mdb"));
    bench::makeFullDatabase(plain, 10);
    bench::dropIndexes(plain);
    // The full database through an Access file and convert-to-sqlite, as a customer's converted file is.
    const QString access = dir.filePath(QStringLiteral("HelptextAccess.mdb"));
    const QString converted = dir.filePath(QStringLiteral("HelptextConverted.mdb"));
    convertSqliteToJet(keyed, bench::sourceDir() + QStringLiteral("/tests/data/jet/empty.mdb"), access);
    convertJetToSqlite(access, converted);
    if (CheckLanguageLookup(ctx, lookup).isEmpty()) {
        std::fprintf(stderr, "the language database was refused\n");
        return 1;
    }
    const std::optional<LanguageDefinition> russian = lookupLanguage(ctx, QStringLiteral("Russian"));
    std::printf("Full database (5 machines, 10 languages), 7560 text rows, %d rounds (%s build):\n", rounds,
                HELPTEXT_BUILD_TYPE);
    for (const auto &[label, db] : {std::pair{"with indexes", keyed}, std::pair{"no indexes", plain},
                                    std::pair{"converted from Access", converted}}) {
        if (CheckConnection(ctx, db).isEmpty()) {
            std::fprintf(stderr, "the database was refused\n");
            return 1;
        }
        HeadlessStatus status;
        std::vector<double> created, deleted;
        for (int r = 0; r < rounds; ++r) {
            auto start = Clock::now();
            const std::optional<LanguageCreated> c = createLanguage(ctx, &status, *russian);
            created.push_back(msSince(start));
            ui.push(Answer::OK);
            start = Clock::now();
            const std::optional<LanguageDeleted> d =
                deleteLanguage(ctx, &status, QStringLiteral("Russian"), DeleteWithConfiguration);
            deleted.push_back(msSince(start));
            if (!c || !d || c->alarms + c->warnings + c->materialChanges != 7560 ||
                d->alarms + d->warnings + d->materialChanges != 7560) {
                std::fprintf(stderr, "round %d did not create and delete 7560 text rows\n", r + 1);
                return 1;
            }
        }
        std::sort(created.begin(), created.end());
        std::sort(deleted.begin(), deleted.end());
        std::printf("  %s: create language: median %.1f ms, max %.1f ms\n", label, created[created.size() / 2],
                    created.back());
        std::printf("  %s: delete language: median %.1f ms, max %.1f ms\n", label, deleted[deleted.size() / 2],
                    deleted.back());
    }
    return 0;
}
