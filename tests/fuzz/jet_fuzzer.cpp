// libFuzzer target of the Access (Jet 4) page code: whatever the bytes, reading
// every table, checking the structure and changing a row in memory either
// work or end in a DbError, and never crash, hang or read out of bounds.
// Built and run by scripts/fuzz.sh jet.
#include "database/Database.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetEditor.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    try {
        ht::jet::checkStructure(ht::jet::Image(bytes, QStringLiteral("fuzz")));
        ht::jet::Editor editor(QStringLiteral("fuzz"), bytes);
        for (const QString &table : editor.tableNames()) {
            bool changed = false;
            editor.readRows(table, [&](ht::jet::RowPointer slot, QVariantList values) {
                if (changed)
                    return;
                changed = true;
                for (QVariant &v : values)
                    if (v.typeId() == QMetaType::QString)
                        v = QString(v.toString().size() + 70, QLatin1Char('x'));
                try {
                    editor.updateRow(table, slot, values);
                } catch (const ht::DbError &) {
                }
            });
        }
    } catch (const ht::DbError &) {
    }
    return 0;
}
