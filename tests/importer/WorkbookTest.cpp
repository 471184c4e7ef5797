// Workbooks of both formats, as spreadsheet programs wrote them, and files
// that are no workbook at all.
#include "ContainerBytes.h"
#include "ImportTestSupport.h"

#include "importer/ExcelLists.h"
#include "importer/Workbook.h"

#include <QStringEncoder>
#include <cstring>

namespace ht
{
namespace
{

using test::le16;
using test::le32;

// BIFF records, as Excel writes them.
QByteArray rec(quint16 type, const QByteArray &data = {})
{
    return le16(type) + le16(quint16(data.size())) + data;
}
QByteArray cellAt(quint16 row, quint16 column)
{
    return le16(row) + le16(column) + le16(0);
}
QByteArray f64(double value)
{
    QByteArray b(8, '\0');
    std::memcpy(b.data(), &value, 8);
    return b;
}
QByteArray number(quint16 row, quint16 column, double value)
{
    return rec(0x0203, cellAt(row, column) + f64(value));
}
QByteArray label8(quint16 row, quint16 column, const QString &text) // BIFF8: UTF-16
{
    return rec(0x0204, cellAt(row, column) + le16(quint16(text.size())) + '\x01' +
                           QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2));
}
QByteArray bof(quint16 version, quint16 kind) // kind: 0x05 workbook, 0x10 worksheet, 0x20 chart
{
    return rec(0x0809, le16(version) + le16(kind) + QByteArray(4, '\0'));
}
// A workbook stream of one worksheet; `sheetName` is the BOUNDSHEET's name with its length.
QByteArray biff(quint16 version, const QByteArray &cells, const QByteArray &sheetName = QByteArray("\x05\x00Liste", 7))
{
    const quint32 sheetAt = 12 + 4 + 6 + quint32(sheetName.size()) + 4;
    return bof(version, 0x05) + rec(0x0085, le32(sheetAt) + QByteArray(2, '\0') + sheetName) + rec(0x000A) +
           bof(version, 0x10) + cells + rec(0x000A);
}
QByteArray xls(const QByteArray &stream)
{
    return test::compoundFile({{QStringLiteral("Workbook"), stream}});
}
// An .xlsx of one worksheet and its shared texts.
QByteArray xlsx(const QByteArray &sheetData, const QByteArray &sharedStrings)
{
    const QByteArray ns = R"( xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main")";
    const QByteArray rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const QByteArray workbook = R"(<workbook NS xmlns:r="REL"><sheets><sheet name="Liste" sheetId="1" r:id="rId1"/>)"
                                R"(</sheets></workbook>)";
    const QByteArray rels = R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
                            R"(<Relationship Id="rId1" Type="REL/worksheet" Target="worksheets/sheet1.xml"/>)"
                            R"(<Relationship Id="rId2" Type="REL/sharedStrings" Target="sharedStrings.xml"/>)"
                            R"(</Relationships>)";
    return test::storedZip({
        {"xl/workbook.xml", QByteArray(workbook).replace(" NS", ns).replace("REL", rel)},
        {"xl/_rels/workbook.xml.rels", QByteArray(rels).replace("REL", rel)},
        {"xl/worksheets/sheet1.xml", "<worksheet" + ns + "><sheetData>" + sheetData + "</sheetData></worksheet>"},
        {"xl/sharedStrings.xml", sharedStrings},
    });
}
// Shared texts with entities that expand to nothing, `depth` deep, each using the one below ten times.
QByteArray emptyEntityBomb(int depth)
{
    QByteArray x = "<?xml version=\"1.0\"?><!DOCTYPE sst [<!ENTITY e0 \"\">";
    for (int d = 1; d <= depth; ++d)
        x += "<!ENTITY e" + QByteArray::number(d) + " \"" +
             QByteArray("&e" + QByteArray::number(d - 1) + ";").repeated(10) + "\">";
    return x + "]><sst><si><t>" + QByteArray("&e" + QByteArray::number(depth) + ";").repeated(10) + "</t></si></sst>";
}

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
        // A chart on the sheet: its series values are no cells of the sheet.
        {"WithFormattedGraphTitle.xls", 0, 0, "Some Text"},
        {"WithFormattedGraphTitle.xls", 4, 2, "18"},
        // Saved for Excel 97 and 5.0 at once; empty texts are empty cells.
        {"43251.xls", 0, 0, "Header1"},
        {"43251.xls", 1, 7, ""},
        {"43251.xls", 1, 9, "LOCCODE"},
        // Shared-text cells with an empty value.
        {"64508.xlsx", 1, 4, ""},
        {"64508.xlsx", 1, 5, "0630996510285"},
    };
    for (const auto &c : cases) // a refusal throws, and fails the test naming the file
        EXPECT_EQ(Workbook::open(test::realWorkbook(c.file)).cell(0, c.row, c.column), c.text)
            << c.file << " row " << c.row << " column " << c.column;
    const Workbook greek = Workbook::open(test::realWorkbook("54084_-_Greek_-_beyond_BMP.xlsx"));
    EXPECT_TRUE(greek.cell(0, 0, 0).startsWith("𝝊𝝋𝝌")) << qPrintable(greek.cell(0, 0, 0));
    const Workbook far = Workbook::open(test::workbook("far-cell.xls"));
    EXPECT_EQ(far.cell(0, 65000, 200), "far");
    EXPECT_EQ(far.cell(0, 4000000000LL, 3), QString()); // beyond any sheet: empty, not a failure
}

// Records and parts that other writers write, each in a workbook of its own.
TEST(Workbook, ReadsRecordsOtherWritersWrite)
{
    const QByteArray chartBof = bof(0x0600, 0x20);
    const QByteArray textFormula =
        rec(0x0006, cellAt(1, 1) + QByteArray::fromHex("000000000000FFFF") + le16(0) + le32(0) + le16(0));
    const QByteArray biff5Book = biff(0x0500, rec(0x0204, cellAt(0, 1) + le16(8) + "????????"), "\x05Liste");
    const struct {
        const char *what;
        QByteArray bytes;
        int row, column;
        QString text;
    } cases[] = {
        {"chart on the sheet",
         xls(biff(0x0600, label8(0, 0, "Alarms") + chartBof + number(0, 0, 20) + label8(0, 1, "Apple") + rec(0x000A) +
                              number(3, 1, 7))),
         0, 0, "Alarms"},
        {"chart's series value", xls(biff(0x0600, chartBof + label8(0, 1, "Apple") + rec(0x000A))), 0, 1, ""},
        {"cell after the chart", xls(biff(0x0600, chartBof + rec(0x000A) + number(3, 1, 7))), 3, 1, "7"},
        {"BIFF5 LABEL without characters",
         xls(biff(0x0500, rec(0x0204, cellAt(1, 1) + le16(0)) + number(2, 1, 5), "\x05Liste")), 2, 1, "5"},
        {"STRING without characters", xls(biff(0x0600, textFormula + rec(0x0207, le16(0)) + number(2, 1, 5))), 2, 1,
         "5"},
        {"sheet without a name", xls(biff(0x0600, number(2, 1, 5), QByteArray(1, '\0'))), 2, 1, "5"},
        {"FORMULA of Excel 4", xls(biff(0x0600, rec(0x0406, cellAt(4, 1) + f64(42.5) + le16(0) + le16(0)))), 4, 1,
         "42.5"},
        {"Excel 97 and 5.0 copies",
         test::compoundFile({{"Book", biff5Book}, {"Workbook", biff(0x0600, label8(0, 1, "Ελληνικά"))}}), 0, 1,
         "Ελληνικά"},
        {"shared text with an entity",
         xlsx(R"(<row r="1"><c r="B1" t="s"><v>0</v></c></row>)",
              R"(<!DOCTYPE sst [<!ENTITY m "Motor">]><sst><si><t>&m; hot</t></si></sst>)"),
         0, 1, "Motor hot"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(Workbook::read(c.bytes, c.what).cell(0, c.row, c.column), c.text) << c.what;
}

// A file this reader does not understand is not called damaged: the refusal names where reading stopped.
TEST(Workbook, NamesWhereItStopped)
{
    const struct {
        const char *what;
        QByteArray bytes;
        const char *where;
    } cases[] = {
        {"label.xls", xls(biff(0x0600, rec(0x0204, cellAt(0, 0) + le16(5) + QByteArray::fromHex("006162")))),
         "LABEL record (0x0204)"},
        {"sst.xls", xls(biff(0x0600, rec(0x00FD, cellAt(0, 0) + le32(3)))), "LABELSST record (0x00FD)"},
        {"shared.xlsx", xlsx(R"(<row r="2"><c r="B2" t="s"><v>4</v></c></row>)", "<sst/>"),
         "xl/worksheets/sheet1.xml: cell B2 refers to shared text 4"},
        {"bomb.xlsx", xlsx("", emptyEntityBomb(5)),
         "xl/sharedStrings.xml: the XML entities it declares would take too long"},
        {"bomb16.xlsx",
         xlsx("", QStringEncoder(QStringConverter::Utf16LE,
                                 QStringConverter::Flag::WriteBom)(QString::fromLatin1(emptyEntityBomb(5)))),
         "xl/sharedStrings.xml: the XML entities it declares would take too long"},
    };
    for (const auto &c : cases) {
        try {
            Workbook::read(c.bytes, c.what);
            ADD_FAILURE() << c.what << " was read";
        } catch (const WorkbookError &e) {
            const QString message = QString::fromUtf8(e.what());
            EXPECT_TRUE(message.contains(QLatin1String(c.where)) && !message.contains(QLatin1String("damaged")))
                << e.what();
        }
    }
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
    testing::internal::CaptureStderr(); // libgsf's own complaints stay off the user's terminal
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
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
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
