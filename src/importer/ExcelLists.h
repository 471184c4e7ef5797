#pragma once
// The item lists of a machine as its workbooks hold them, at fixed places of
// the first worksheet:
//   rows 3-258     the 256 standard alarms      rows 260-515  the 256 standard warnings
//   row 516, A     "ALARMSADDED" when added alarms follow from row 517
//   row 517, A     "WARNINGSADDED"; the added warnings follow the added alarms
//   rows 2-1001    material-change texts in the language's column (their own workbook)
//   row 2000 + n   the description row of the workbook's language n
// (row numbers as Excel shows them; the code counts from 0).

#include <QString>
#include <array>
#include <optional>
#include <vector>

namespace ht
{

struct Context;
class StatusTarget;
class Workbook;

// What the importer form says about the workbook.
struct ListSource {
    QString path;      // TextXLFile
    double nrLang = 1; // ComboNrLangXL: the language's number in the workbook
    int posLang = 1;   // TextPosLangXL: the material-change texts' column, from 1
    QString anzFehler; // TextAnzahlFehler: the added rows of each kind, as typed
};

// Number, Device, Result, Function, Sensor, Cam, CPU, Rejects.
using AlarmEntry = std::array<QString, 8>;
// Number, Function.
using WarningEntry = std::array<QString, 2>;

// AddedAlarmsCount and AddedWarningsCount: unset until a reader sets them.
struct AddedCounts {
    std::optional<int> alarms, warnings;
};

std::vector<AlarmEntry> GetListXLAlarms(Context &ctx, StatusTarget *status, const Workbook &book,
                                        const ListSource &source, AddedCounts &added);
std::vector<WarningEntry> GetListXLWarnings(Context &ctx, StatusTarget *status, const Workbook &book,
                                            const ListSource &source, AddedCounts &added);
// The added rows the workbook really has, told by their numbers as the standard
// rows are: the added alarms numbered 257, 258, ... from row 517, then the added
// warnings numbered the same way. Unset where the block's marker is missing.
AddedCounts addedRowsInWorkbook(const Workbook &book);

std::vector<QString> GetListXLMaterialChange(Context &ctx, StatusTarget *status, const Workbook &book,
                                             const ListSource &source);
std::vector<QString> GetListDescription(const Workbook &book, const ListSource &source);

constexpr int kStandardItems = 256;
constexpr int kMaterialChangeItems = 1000;
constexpr int kDescriptionEntries = 8;

// The numeric test the lists apply to item numbers ("12", " 3 ", "1e2" are numbers).
bool isNumeric(const QString &text);

} // namespace ht
