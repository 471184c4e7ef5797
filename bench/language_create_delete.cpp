// Times creating a language in a full help-text database (five machines of 256
// alarms, 256 warnings and 1000 material changes, ten languages with texts:
// 7,560 text rows for the new language) and deleting it again with its
// configuration, as the language form and the commands do.
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
    const QString db = dir.filePath(QStringLiteral("Helptext.mdb"));
    bench::makeFullDatabase(db, 10);
    if (CheckLanguageLookup(ctx, lookup).isEmpty() || CheckConnection(ctx, db).isEmpty()) {
        std::fprintf(stderr, "the databases were refused\n");
        return 1;
    }
    const std::optional<LanguageDefinition> russian = lookupLanguage(ctx, QStringLiteral("Russian"));
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
    std::printf("Full database (5 machines, 10 languages), 7560 text rows, %d rounds (%s build):\n", rounds,
                HELPTEXT_BUILD_TYPE);
    std::printf("  create language: median %.1f ms, max %.1f ms\n", created[created.size() / 2], created.back());
    std::printf("  delete language: median %.1f ms, max %.1f ms\n", deleted[deleted.size() / 2], deleted.back());
    return 0;
}
