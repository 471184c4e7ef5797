// Importing material change: the texts of the chosen language into the
// machine's block, numbered by their row in the workbook, and the block bound.
#include "importer/Importer.h"

#include "common/Context.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/RowsById.h"

namespace ht
{

void Importer::ImportMaterialChange(const QString &machine, bool fromAlarms)
{
    if (!fromAlarms) {
        checkCodePage();
        for (QString &text : m_materialChanges)
            text = convert(text);
    }
    const long length = ctx.state.maxItems[KindMaterialChange];
    const qlonglong first = firstId(QStringLiteral("MaterialChange"), machine, length);
    StatusStart(ctx, m_status, QStringLiteral("Importing: Materialchang..."), 0, false);
    // Binding only, every row of the block; else one row per text read.
    const long entries = fromAlarms ? length : std::min<long>(length, long(m_materialChanges.size()));
    RowsById texts(*m_db, QStringLiteral("MaterialChangeText"), QStringLiteral("MaterialChange_ID"), m_language);
    RowsById definitions(*m_db, QStringLiteral("MaterialChangeDefinition"), QStringLiteral("MaterialChangeID"));
    for (long i = 0; first >= 0 && i < entries; ++i) {
        const long number = i + 1;
        const qlonglong key = first + number - 1;
        const QVariant id = key;
        if (ctx.processEvents)
            ctx.processEvents();
        if (!fromAlarms) {
            StatusTickNewText(ctx, m_status, QStringLiteral("Importing: MaterialChange ") + QString::number(number));
            m_counts.materialChanges +=
                texts.exec(QStringLiteral("UPDATE MaterialChangeText SET Language = ?, Text = ? WHERE Language = ? "
                                          "AND MaterialChange_ID = ?"),
                           {m_language, m_materialChanges[size_t(i)], m_language, id}, key) > 0;
        } else {
            StatusTickNewText(ctx, m_status, QStringLiteral("Binding: MaterialChange ") + QString::number(number));
        }
        definitions.exec(QStringLiteral("UPDATE MaterialChangeDefinition SET MachineType = ?, MaterialChangeNo = ? "
                                        "WHERE MaterialChangeID = ?"),
                         {machine, qlonglong(number), id}, key);
    }
    StatusEnd(ctx, m_status);
    if (!fromAlarms)
        ImportAlarmsWarnings(machine, true);
}

} // namespace ht
