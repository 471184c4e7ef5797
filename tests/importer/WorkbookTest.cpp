// Workbooks of both formats, as spreadsheet programs wrote them, and files
// that are no workbook at all.
#include "ImportTestSupport.h"

#include "importer/ExcelLists.h"
#include "importer/Workbook.h"

namespace ht
{
namespace
{

TEST(Workbook, ReadsWhatSpreadsheetProgramsWrote)
{
    const struct {
        const char *file;
        int row, column;
        QString text;
    } cases[] = {
        {"testEXCEL_95.xls", 0, 0, "Sample Excel Worksheet - Numbers and their Squares"}, // BIFF5, code page 1252
        {"chinese-provinces.xls", 1, 1, "安徽省"},
        {"SimpleWithFormula.xls", 2, 0, "replacemereplaceme"}, // a formula's cached text
        {"shared_formulas.xls", 2, 1, "RequiredAcceptanceDate"},
        {"BOOK_in_capitals.xls", 3, 1, "335746476"}, // a whole number, never "335746476.0"
        {"WithVariousData.xlsx", 1, 0, "22.3"},
        {"WithVariousData.xlsx", 1, 2, "This is a really long cell, with lots of text in it"},
        {"54084_-_Greek_-_beyond_BMP.xlsx", 0, 0, "𝝊𝝋𝝌"},
    };
    for (const auto &c : cases) {
        const Workbook book = Workbook::open(test::realWorkbook(c.file));
        EXPECT_TRUE(book.cell(0, c.row, c.column).startsWith(c.text))
            << c.file << ": " << qPrintable(book.cell(0, c.row, c.column));
    }
    const Workbook far = Workbook::open(test::workbook("far-cell.xls"));
    EXPECT_EQ(far.cell(0, 65000, 200), "far");
    EXPECT_EQ(far.cell(0, 4000000000LL, 3), QString()); // beyond any sheet: empty, not a failure
}

TEST(Workbook, RefusesWhatItCannotReadNamingTheFile)
{
    test::TestContext t;
    const QByteArray xlsx = test::readFileBytes(test::realWorkbook("WithVariousData.xlsx"));
    const QByteArray ole = test::readFileBytes(test::realWorkbook("SimpleWithFormula.xls"));
    const struct {
        const char *name;
        QByteArray bytes;
        const char *why;
    } cases[] = {
        {"empty.xls", QByteArray(), "is empty"},
        {"notes.xls", "Alarm 1: the motor is hot\r\n", "is not an Excel workbook"},
        {"broken.xlsx", xlsx.left(xlsx.size() / 2), "is damaged"},
        {"cut.xls", ole.left(3000), "is damaged"},
        {"excel4.xls", QByteArray::fromHex("0904060000001000"), "older than Excel 5"},
        {"password.xls", test::readFileBytes(test::realWorkbook("password.xls")), "protected by a password"},
    };
    for (const auto &c : cases) {
        const QString path = t.path(c.name);
        test::writeFileBytes(path, c.bytes);
        try {
            Workbook::open(path);
            ADD_FAILURE() << c.name << " was read";
        } catch (const WorkbookError &e) {
            const QString message = QString::fromUtf8(e.what());
            EXPECT_TRUE(message.contains(path) && message.contains(c.why)) << c.name << ": " << e.what();
        }
    }
}

TEST(Workbook, NumbersReadAsTheyLook)
{
    const struct {
        double value;
        const char *text;
    } cases[] = {{12, "12"}, {-3, "-3"}, {0, "0"}, {2.5, "2.5"}, {36526.4521064815, "36526.4521064815"}};
    for (const auto &c : cases)
        EXPECT_EQ(numberText(c.value), c.text) << c.value;
}

} // namespace
} // namespace ht
