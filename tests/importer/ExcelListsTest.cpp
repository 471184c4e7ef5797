// The lists at their places in a machine's workbook, in both formats.
#include "ImportTestSupport.h"

#include "common/StatusDisplay.h"
#include "importer/ExcelLists.h"
#include "importer/Workbook.h"

namespace ht
{
namespace
{

class Lists : public ::testing::TestWithParam<const char *>
{
  protected:
    test::TestContext t;
    HeadlessStatus status;
    Workbook book = Workbook::open(test::workbook(QString("layout") + GetParam()));
    ListSource source{"layout", 1, 1, "3"};
};

TEST_P(Lists, StandardAndAddedBlocks)
{
    AddedCounts added;
    const auto alarms = GetListXLAlarms(t.ctx, &status, book, source, added);
    const auto warnings = GetListXLWarnings(t.ctx, &status, book, source, added);
    // Markers in any case; AnzFehler 3: the added alarms from the first added row, the warnings after them.
    ASSERT_EQ(alarms.size(), 259u);
    ASSERT_EQ(warnings.size(), 259u);
    EXPECT_EQ(added.alarms, 3);
    EXPECT_EQ(added.warnings, 3);
    EXPECT_EQ(alarms[0],
              (AlarmEntry{"1", "Device 1", "Result 1", "Function 1\r\nsecond line", "B1", "K1", "CPU1", "1"}));
    EXPECT_EQ(alarms[11][0], "0"); // "12a" is no number
    EXPECT_EQ(alarms[256][0], "257");
    EXPECT_EQ(alarms[258][1], "Device 259");
    EXPECT_EQ(warnings[4], (WarningEntry{"5", " "})); // an empty text is one blank
    EXPECT_EQ(warnings[256], (WarningEntry{"257", "Warning 257"}));
    EXPECT_EQ(warnings[258][0], "259");
    EXPECT_EQ(status.text, "Reading source layout");

    // Language 2 is the next column of each text.
    source.nrLang = 2;
    EXPECT_EQ(GetListXLAlarms(t.ctx, &status, book, source, added)[1][3], "Λειτουργία 2");
    EXPECT_EQ(GetListDescription(book, source)[0], QString()); // language 2 has no description row
    source.nrLang = 1;
    EXPECT_EQ(GetListDescription(book, source),
              (std::vector<QString>{"Caption 1", "Caption 2", "", "", "", "", "", "Caption 8"}));
}

TEST_P(Lists, WarningsWithoutTheAlarmCounterStartAtTheFirstAddedRow)
{
    AddedCounts added;
    const auto warnings = GetListXLWarnings(t.ctx, &status, book, source, added);
    ASSERT_EQ(warnings.size(), 259u);
    // The first added alarm's row: its number, and its Function in the warnings' column.
    EXPECT_EQ(warnings[256], (WarningEntry{"257", "Function 257\r\nsecond line"}));
    EXPECT_EQ(warnings[257], (WarningEntry{}));
}

INSTANTIATE_TEST_SUITE_P(Formats, Lists, ::testing::Values(".xls", ".xlsx"));

TEST(ListsWithoutMarkers, KeepTheStandardBlocksWhateverAnzFehlerSays)
{
    test::TestContext t;
    AddedCounts added;
    const Workbook plain = Workbook::open(test::workbook("layout-plain.xlsx"));
    const ListSource source{"plain", 1, 1, "999"};
    EXPECT_EQ(GetListXLAlarms(t.ctx, nullptr, plain, source, added).size(), 256u);
    EXPECT_EQ(GetListXLWarnings(t.ctx, nullptr, plain, source, added).size(), 256u);
    EXPECT_FALSE(added.alarms || added.warnings);

    const Workbook formulas = Workbook::open(test::workbook("formulas.xlsx"));
    EXPECT_EQ(GetListXLAlarms(t.ctx, nullptr, formulas, source, added)[1][0], "2"); // the formula's cached value

    const Workbook changes = Workbook::open(test::workbook("material-change.xlsx"));
    const auto greek = GetListXLMaterialChange(t.ctx, nullptr, changes, ListSource{"mc", 1, 3, "0"});
    ASSERT_EQ(greek.size(), 1000u);
    EXPECT_EQ(greek[0], "Αλλαγή 1");
    EXPECT_EQ(greek[111], "Αλλαγή 112");
    EXPECT_EQ(greek[1], QString());
}

} // namespace
} // namespace ht
