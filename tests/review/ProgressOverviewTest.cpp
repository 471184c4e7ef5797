// The overview window's rows on the demo database: counts, findings and the
// first item that needs work, cell by cell.
#include "review/ProgressOverview.h"
#include "common/AppState.h"
#include "database/Database.h"
#include "support/DemoFiles.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

TEST(ProgressOverview, RowsCountEachCellAndNameItsFirstItemToDo)
{
    TestContext t;
    const QString db = t.path("Helptext.sqlite");
    makeDemoHelpTextDB(db);
    // German alarm 2 of CT400 was translated from an older English text.
    auto d = Database::open(db);
    const long id = d->query("SELECT AlarmID FROM AlarmDefinition WHERE MachineType = 'CT400' AND AlarmNo = 2")
                        .value(0)
                        .toLongLong();
    const QString device =
        d->query("SELECT Device FROM AlarmText WHERE Alarm_ID = ? AND Language = 1033", {qlonglong(id)})
            .value(0)
            .toString();
    d.reset();
    keepTranslatedFrom(db, KindAlarms, id, "1031", "1033", {{"Device", device + " (old)"}});

    ProgressOverview overview(t.ctx, db, "English");
    const std::vector<ProgressCell> quick = overview.counts(), full = overview.findings();
    const struct {
        const char *machine;
        int kind;
        const char *language;
        int items, translated, missing, withFindings, needsReview;
        long firstToDo, firstToDoWithoutFindings;
    } cases[] = {
        {"CT400", KindAlarms, "Deutsch", 2, 2, 0, 0, 1, 2, 2},         // needs review only
        {"CT400", KindAlarms, "Greek", 2, 1, 1, 0, 0, 2, 2},           // missing
        {"CT400", KindAlarms, "Russian", 2, 0, 2, 0, 0, 1, 1},         // nothing translated
        {"CT400", KindWarnings, "Greek", 2, 1, 1, 1, 0, 1, 2},         // a finding before the missing one
        {"CT400", KindMaterialChange, "Deutsch", 1, 1, 0, 0, 0, 0, 0}, // done
        {"FL220", KindAlarms, "Greek", 1, 1, 0, 0, 0, 0, 0},
        {"FL220", KindMaterialChange, "Russian", 1, 0, 1, 0, 0, 1, 1},
    };
    ASSERT_EQ(full.size(), 18u); // two machines, three kinds, three destination languages
    ASSERT_EQ(quick.size(), full.size());
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.machine) + " " + std::to_string(c.kind) + " " + c.language);
        const auto at = [&](const std::vector<ProgressCell> &cells) {
            return std::find_if(cells.begin(), cells.end(), [&](const ProgressCell &p) {
                return p.machine == c.machine && p.kind == c.kind && p.language == c.language;
            });
        };
        const auto f = at(full), q = at(quick);
        ASSERT_TRUE(f != full.end() && q != quick.end());
        EXPECT_EQ(std::tie(f->items, f->translated, f->missing, f->withFindings, f->needsReview, f->firstToDo),
                  std::tie(c.items, c.translated, c.missing, c.withFindings, c.needsReview, c.firstToDo));
        // The quick step leaves findings uncounted and points at missing and review only.
        EXPECT_EQ(std::make_tuple(q->translated, q->missing, q->withFindings, q->needsReview, q->firstToDo),
                  std::make_tuple(c.translated, c.missing, -1, c.needsReview, c.firstToDoWithoutFindings));
        // One cell counted again after a save equals the whole run's.
        const ProgressCell one = overview.cell(c.machine, c.kind, c.language);
        EXPECT_EQ(std::tie(one.translated, one.missing, one.withFindings, one.needsReview, one.firstToDo),
                  std::tie(f->translated, f->missing, f->withFindings, f->needsReview, f->firstToDo));
    }
}
