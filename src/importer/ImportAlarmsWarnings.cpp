// Importing alarms and warnings: the texts of the chosen language into the
// rows of the machine's block, the alarm definitions where the user lets
// them be replaced, then the whole block bound to the machine.
#include "importer/Importer.h"

#include "common/Context.h"
#include "common/Messages.h"
#include "common/StatusDisplay.h"
#include "common/StringUtils.h"
#include "database/Database.h"
#include "database/ItemCounts.h"
#include "database/LanguageLookup.h"
#include "database/RowsById.h"
#include "importer/Workbook.h"

#include <cmath>

namespace ht
{

namespace
{

// The number a text starts with, as the classic Val reads it ("3x" is 3, "R1" is 0).
double leadingNumber(const QString &text)
{
    const QString t = text.trimmed();
    qsizetype end = 0;
    if (end < t.size() && (t[end] == u'+' || t[end] == u'-'))
        ++end;
    while (end < t.size() && (t[end].isDigit() || t[end] == u'.'))
        ++end;
    bool ok = false;
    const double value = t.left(end).toDouble(&ok);
    return ok ? value : 0;
}

struct Block {
    qlonglong first = -1;
    long length = 0;
    bool contains(qlonglong number) const { return number >= 1 && number <= length; }
};

} // namespace

QString definitionSummary(const QString &number, const QString &sensor, const QString &cam, const QString &cpu,
                          const QString &rejects, bool stored)
{
    QString s = QStringLiteral("ID: ") + number;
    if (!sensor.trimmed().isEmpty())
        s += QStringLiteral(", Sensor: ") + sensor;
    if (!cam.trimmed().isEmpty())
        s += QStringLiteral(", Cam: ") + cam;
    if (!cpu.trimmed().isEmpty())
        s += QStringLiteral(", RTS: ") + cpu;
    if (!rejects.trimmed().isEmpty())
        s += stored ? QStringLiteral(", Reject: ") + rejects
                    : QStringLiteral(",Reject: ") + numberText(leadingNumber(rejects));
    return s;
}

// A cell as it is stored: line breaks as "/", leading blanks dropped. The
// cells are Unicode already, so no code page is applied; trailing blanks stay,
// as they always have.
QString Importer::convert(const QString &cell)
{
    QString text = ht::SingleLineToMultiLine(ctx, cell);
    qsizetype lead = 0;
    while (lead < text.size() && text[lead] == u' ')
        ++lead;
    return text.mid(lead);
}

void Importer::checkCodePage()
{
    const QString language = m_request.language;
    const QString codePage = ctx.state.langLookupDB.isEmpty() ? QStringLiteral("-1") : GetCodePage(ctx, language);
    if (codePage == QLatin1String("-1"))
        showMessage(ctx, QStringLiteral("CodePage ") + language + QStringLiteral(" ist nicht vorhanden"));
    ctx.state.currentCodePage = codePage;
}

// The first ID of the machine's rows, else of the free rows; -1 when there is
// neither. The block from there must hold only free rows and the machine's own.
qlonglong Importer::firstId(const QString &word, const QString &machine, long count)
{
    const QString sql = QStringLiteral("SELECT %1Definition.%1ID, %1Definition.MachineType From %1Definition WHERE "
                                       "(((%1Definition.MachineType)=?)) ORDER by %1Definition.%1ID;")
                            .arg(word);
    Recordset rs = m_db->query(sql, {machine});
    if (rs.recordCount() == 0)
        rs = m_db->query(sql, {QStringLiteral("0")});
    if (rs.recordCount() == 0)
        return -1;
    const qlonglong first = rs.value(0).toLongLong();
    const Recordset others = m_db->query(
        QStringLiteral("SELECT COUNT(*) FROM %1Definition WHERE %1ID BETWEEN ? AND ? AND MachineType <> ? AND "
                       "MachineType <> '0'")
            .arg(word),
        {first, first + count - 1, machine});
    if (others.value(0).toLongLong() > 0)
        throw DbError(QStringLiteral("There is no free block of %1 rows for machine %2 in %3Definition: the rows "
                                     "from ID %4 on belong to another machine.")
                          .arg(count)
                          .arg(machine, word)
                          .arg(first)
                          .toStdString());
    return first;
}

void Importer::bind(const QString &word, const QString &machine, qlonglong first, long count)
{
    m_db->exec(QStringLiteral("UPDATE %1Definition SET MachineType = ? WHERE %1ID BETWEEN ? AND ? AND "
                              "(MachineType IS NULL OR MachineType <> ?)")
                   .arg(word),
               {machine, first, first + count - 1, machine});
}

bool Importer::replaceDefinition(const QString &oldValue, const QString &newValue, bool storedFree)
{
    // Free rows, bound by this import, hold no machine's configuration: they are
    // simply written. A machine's own row is asked for whenever it differs, even
    // when it holds nothing but its number.
    if (oldValue == newValue || storedFree)
        return true;
    if (m_lastingAnswer == AnswerReplaceAll)
        return true;
    if (m_lastingAnswer == AnswerNeverReplace) {
        ++m_counts.definitionsKept;
        return false;
    }
    const int answer = m_ask ? m_ask(QStringLiteral("Alarms"), oldValue, newValue) : AnswerNeverReplace;
    switch (answer) {
    case AnswerReplace:
        return true;
    case AnswerReplaceAll:
        m_lastingAnswer = answer;
        return true;
    case AnswerNeverReplace:
        m_lastingAnswer = answer;
        [[fallthrough]];
    case AnswerKeep:
        ++m_counts.definitionsKept;
        return false;
    default:
        throw Cancelled{};
    }
}

void Importer::importAlarms(const QString &machine)
{
    const Block block{firstId(QStringLiteral("Alarm"), machine, ctx.state.maxItems[KindAlarms]),
                      ctx.state.maxItems[KindAlarms]};
    if (block.first < 0)
        return;
    // The entry at the list's upper index is not imported, as ever.
    const qsizetype upper = qsizetype(m_alarms.size()) - 1;
    RowsById texts(*m_db, QStringLiteral("AlarmText"), QStringLiteral("Alarm_ID"), m_language);
    RowsById definitions(*m_db, QStringLiteral("AlarmDefinition"), QStringLiteral("AlarmID"));
    for (qsizetype i = 0; i < upper; ++i) {
        StatusTickNewText(ctx, m_status, QStringLiteral("Importing: Alarms ") + QString::number(i));
        if (ctx.processEvents)
            ctx.processEvents();
        const AlarmEntry &e = m_alarms[size_t(i)];
        const qlonglong number = std::llround(leadingNumber(e[0]));
        // A row without a number is an empty row. Rows of another machine are
        // never written: a number outside the block is left out.
        if (number == 0)
            continue;
        if (!block.contains(number)) {
            ++m_counts.outsideBlock;
            continue;
        }
        const qlonglong key = block.first + number - 1;
        const QVariant id = key;
        m_counts.alarms += texts.exec(QStringLiteral("UPDATE AlarmText SET Language = ?, Device = ?, Result = ?, "
                                                     "Function = ? WHERE Language = ? AND Alarm_ID = ?"),
                                      {m_language, e[1], e[2], e[3], m_language, id}, key) > 0;
        const Recordset stored = definitions.query(
            QStringLiteral("SELECT AlarmDefinition.AlarmID, AlarmDefinition.MachineType, AlarmDefinition.AlarmNo, "
                           "AlarmDefinition.Sensor, AlarmDefinition.Cam, AlarmDefinition.CPU, AlarmDefinition.Rejects "
                           "FROM AlarmDefinition WHERE AlarmDefinition.AlarmID =?;"),
            {id}, key);
        const bool exists = stored.recordCount() > 0;
        const QString oldValue =
            exists ? definitionSummary(e[0], stored.text(QStringLiteral("Sensor")), stored.text(QStringLiteral("Cam")),
                                       stored.text(QStringLiteral("CPU")), stored.text(QStringLiteral("Rejects")), true)
                   : QString();
        const QString newValue = definitionSummary(e[0], e[4], e[5], e[6], e[7], false);
        const bool free = !exists || stored.text(QStringLiteral("MachineType")) == QLatin1String("0");
        if (!replaceDefinition(oldValue, newValue, free))
            continue;
        const QVariantList values{machine, number, e[4], e[5], e[6], e[7], id};
        if (exists)
            definitions.exec(QStringLiteral("UPDATE AlarmDefinition SET MachineType = ?, AlarmNo = ?, Sensor = ?, "
                                            "Cam = ?, CPU = ?, Rejects = ? WHERE AlarmID = ?"),
                             values, key);
        else
            definitions.insert(QStringLiteral("INSERT INTO AlarmDefinition (MachineType, AlarmNo, Sensor, Cam, CPU, "
                                              "Rejects, AlarmID) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                               values, key);
    }
    StatusTickNewText(ctx, m_status, QStringLiteral("Binding: Alarms "));
    bind(QStringLiteral("Alarm"), machine, block.first, block.length);
}

void Importer::importWarnings(const QString &machine)
{
    const Block block{firstId(QStringLiteral("Warning"), machine, ctx.state.maxItems[KindWarnings]),
                      ctx.state.maxItems[KindWarnings]};
    if (block.first < 0)
        return;
    const qsizetype upper = qsizetype(m_warnings.size()) - 1;
    RowsById texts(*m_db, QStringLiteral("WarningText"), QStringLiteral("Warning_ID"), m_language);
    RowsById definitions(*m_db, QStringLiteral("WarningDefinition"), QStringLiteral("WarningID"));
    for (qsizetype i = 0; i < upper; ++i) {
        StatusTickNewText(ctx, m_status, QStringLiteral("Importing: Warnings ") + QString::number(i));
        if (ctx.processEvents)
            ctx.processEvents();
        const WarningEntry &e = m_warnings[size_t(i)];
        const qlonglong number = std::llround(leadingNumber(e[0]));
        if (number == 0)
            continue;
        if (!block.contains(number)) {
            ++m_counts.outsideBlock;
            continue;
        }
        const qlonglong key = block.first + number - 1;
        const QVariant id = key;
        if (texts.exec(QStringLiteral("UPDATE WarningText SET Language = ?, Function = ? WHERE Language = ? AND "
                                      "Warning_ID = ?"),
                       {m_language, e[1], m_language, id}, key) == 0)
            texts.insert(QStringLiteral("INSERT INTO WarningText (Warning_ID, Language, Function) VALUES (?, ?, ?)"),
                         {id, m_language, e[1]}, key);
        ++m_counts.warnings;
        if (definitions.exec(
                QStringLiteral("UPDATE WarningDefinition SET MachineType = ?, WarningNo = ? WHERE WarningID = ?"),
                {machine, number, id}, key) == 0)
            definitions.insert(QStringLiteral("INSERT INTO WarningDefinition (WarningID, MachineType, WarningNo) "
                                              "VALUES (?, ?, ?)"),
                               {id, machine, number}, key);
    }
    StatusTickNewText(ctx, m_status, QStringLiteral("Binding: Warnings "));
    bind(QStringLiteral("Warning"), machine, block.first, block.length);
}

void Importer::ImportAlarmsWarnings(const QString &machine, bool fromMaterialChange)
{
    if (!fromMaterialChange) {
        checkCodePage();
        for (AlarmEntry &e : m_alarms)
            for (QString &field : e)
                field = convert(field);
        for (WarningEntry &e : m_warnings)
            for (QString &field : e)
                field = convert(field);
    } else {
        // Only the binding: no entries are imported.
        m_alarms.clear();
        m_warnings.clear();
    }
    correctDBLengthIn(ctx, *m_db);
    StatusStart(ctx, m_status, QStringLiteral("Importing..."), 0, false);
    importAlarms(machine);
    importWarnings(machine);
    StatusEnd(ctx, m_status);
    if (ctx.state.materialChangePresent && !fromMaterialChange)
        ImportMaterialChange(machine, true);
}

} // namespace ht
