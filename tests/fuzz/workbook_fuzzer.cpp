// libFuzzer target of the workbook reader: whatever the bytes, it either
// reads a workbook or refuses it with a WorkbookError, and never crashes,
// hangs or reads out of bounds. Built and run by scripts/fuzz.sh workbook.
#include "importer/Workbook.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    try {
        const ht::Workbook book = ht::Workbook::read(
            QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size)), QStringLiteral("fuzz"));
        (void)book.cell(0, 2, 1);
    } catch (const ht::WorkbookError &) {
    }
    return 0;
}
