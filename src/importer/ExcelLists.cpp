#include "importer/ExcelLists.h"

#include "common/Context.h"
#include "common/StatusDisplay.h"
#include "importer/Workbook.h"

#include <cmath>

namespace ht
{

namespace
{

constexpr int kSheet = 0;
constexpr qint64 kAlarmFirstRow = 2, kWarningFirstRow = 259; // row indexes
constexpr qint64 kAlarmMarkerRow = 515, kWarningMarkerRow = 516, kAddedFirstRow = 516;
constexpr qint64 kDescriptionRowBase = 1999;

// A column given as a floating-point sum, as the workbook's language number is.
qint64 column(double value)
{
    return std::isfinite(value) ? std::llround(value) : -1;
}

void yield(Context &ctx)
{
    if (ctx.processEvents)
        ctx.processEvents();
}

void startReading(Context &ctx, StatusTarget *status, const ListSource &source)
{
    StatusStart(ctx, status, QStringLiteral("Reading source ") + source.path, 0, false);
}

AlarmEntry alarmRow(const Workbook &book, qint64 row, double nrLang)
{
    const qint64 columns[8] = {1, column(nrLang + 5 - 2), column(nrLang + 17 - 2), column(nrLang + 44 - 2), 3, 12, 15,
                               54};
    AlarmEntry entry;
    for (int f = 0; f < 8; ++f)
        entry[f] = book.cell(kSheet, row, columns[f]);
    if (!isNumeric(entry[0]))
        entry[0] = QStringLiteral("0");
    return entry;
}

WarningEntry warningRow(const Workbook &book, qint64 row, double nrLang)
{
    WarningEntry entry{book.cell(kSheet, row, 1), book.cell(kSheet, row, column(nrLang + 44 - 2))};
    if (!isNumeric(entry[0]))
        entry[0] = QStringLiteral("0");
    if (entry[1].isEmpty())
        entry[1] = QStringLiteral(" ");
    return entry;
}

// The added count when the marker is there: AnzFehler, 0 when it is no number.
std::optional<int> addedCount(const Workbook &book, qint64 markerRow, const QString &marker, const QString &anzFehler)
{
    if (book.cell(kSheet, markerRow, 0).toUpper() != marker)
        return std::nullopt;
    bool ok = false;
    const int count = anzFehler.trimmed().toInt(&ok);
    return ok && count > 0 ? count : 0;
}

} // namespace

bool isNumeric(const QString &text)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    return ok && std::isfinite(value);
}

std::vector<AlarmEntry> GetListXLAlarms(Context &ctx, StatusTarget *status, const Workbook &book,
                                        const ListSource &source, AddedCounts &added)
{
    startReading(ctx, status, source);
    std::vector<AlarmEntry> table;
    table.reserve(kStandardItems);
    for (qint64 r = 0; r < kStandardItems; ++r) {
        yield(ctx);
        table.push_back(alarmRow(book, kAlarmFirstRow + r, source.nrLang));
    }
    const std::optional<int> count = addedCount(book, kAlarmMarkerRow, QStringLiteral("ALARMSADDED"), source.anzFehler);
    if (count)
        added.alarms = *count;
    for (int i = 0; count && i < *count; ++i) {
        yield(ctx);
        table.push_back(alarmRow(book, kAddedFirstRow + i, source.nrLang));
    }
    return table;
}

std::vector<WarningEntry> GetListXLWarnings(Context &ctx, StatusTarget *status, const Workbook &book,
                                            const ListSource &source, AddedCounts &added)
{
    startReading(ctx, status, source);
    std::vector<WarningEntry> table;
    table.reserve(kStandardItems);
    for (qint64 r = 0; r < kStandardItems; ++r) {
        yield(ctx);
        table.push_back(warningRow(book, kWarningFirstRow + r, source.nrLang));
    }
    const std::optional<int> count =
        addedCount(book, kWarningMarkerRow, QStringLiteral("WARNINGSADDED"), source.anzFehler);
    if (count)
        added.warnings = *count;
    if (!count || *count == 0)
        return table;
    // The added warnings follow the added alarms, placed by the alarms' count on
    // purpose: both blocks have the same length. Entries past the warnings'
    // count are dropped; entries no row was read for stay empty.
    table.resize(size_t(kStandardItems + *count));
    const int afterAlarms = added.alarms.value_or(0);
    for (int k = 0; k <= afterAlarms && kStandardItems + k < int(table.size()); ++k) {
        yield(ctx);
        table[size_t(kStandardItems + k)] = warningRow(book, kAddedFirstRow + afterAlarms + k, source.nrLang);
    }
    return table;
}

AddedCounts addedRowsInWorkbook(const Workbook &book)
{
    // Rows numbered in place from `first` on: 257, 258, ...
    const auto inPlace = [&](qint64 first) {
        int n = 0;
        while (n < 1000) {
            const QString number = book.cell(kSheet, first + n, 1).trimmed();
            bool ok = false;
            if (number.toDouble(&ok) != double(kStandardItems + n + 1) || !ok)
                break;
            ++n;
        }
        return n;
    };
    AddedCounts found;
    if (book.cell(kSheet, kAlarmMarkerRow, 0).toUpper() == QLatin1String("ALARMSADDED"))
        found.alarms = inPlace(kAddedFirstRow);
    if (book.cell(kSheet, kWarningMarkerRow, 0).toUpper() == QLatin1String("WARNINGSADDED"))
        found.warnings = inPlace(kAddedFirstRow + found.alarms.value_or(0));
    return found;
}

std::vector<QString> GetListXLMaterialChange(Context &ctx, StatusTarget *status, const Workbook &book,
                                             const ListSource &source)
{
    startReading(ctx, status, source);
    std::vector<QString> list;
    list.reserve(kMaterialChangeItems);
    for (qint64 r = 1; r <= kMaterialChangeItems; ++r) {
        yield(ctx);
        list.push_back(book.cell(kSheet, r, qint64(source.posLang) - 1));
    }
    return list;
}

std::vector<QString> GetListDescription(const Workbook &book, const ListSource &source)
{
    static const qint64 columns[kDescriptionEntries] = {1, 27, 15, 3, 4, 16, 54, 12};
    std::vector<QString> list;
    const qint64 row = column(source.nrLang + 2000 - 1);
    for (qint64 c : columns)
        list.push_back(book.cell(kSheet, row, c));
    return list;
}

} // namespace ht
