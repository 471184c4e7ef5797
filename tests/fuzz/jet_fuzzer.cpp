// libFuzzer target of the Access (Jet 4) page code: whatever the bytes, reading
// every table, checking the structure, changing, adding and deleting a row in
// memory and rebuilding every index either work or end in a DbError, and never
// crash, hang or read out of bounds.
// Built and run by scripts/fuzz.sh jet.
#include "database/Database.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetEditor.h"
#include "database/jet/JetIndex.h"

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
                    editor.insertRow(table, values);
                    editor.deleteRow(table, slot);
                } catch (const ht::DbError &) {
                }
            });
        }
    } catch (const ht::DbError &) {
    }
    try {
        ht::jet::Image image(bytes, QStringLiteral("fuzz"));
        for (const ht::jet::CatalogEntry &entry : ht::jet::readCatalog(image, true)) {
            const ht::jet::TableDef table = ht::jet::readTableDef(image, entry.tableDefPage, entry.name);
            for (int i = 0; i < int(table.indexRoots.size()); ++i) {
                try {
                    ht::jet::rebuildIndex(image, table, i);
                } catch (const ht::DbError &) {
                }
            }
        }
        ht::jet::checkStructure(image);
    } catch (const ht::DbError &) {
    }
    return 0;
}
