// MainProc: reads the lists, then imports them into the machine's block in
// one transaction.
#include "importer/Importer.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/ItemCounts.h"
#include "database/LanguageRows.h"
#include "database/Machines.h"
#include "importer/Workbook.h"

namespace ht
{

namespace
{
constexpr int kMaxMachines = 5;
const QString kTitle = QStringLiteral("Import");
} // namespace

Importer::Importer(Context &c, StatusTarget *status, QuestOverwriteItem ask)
    : ctx(c), m_status(status), m_ask(std::move(ask))
{
}

Importer::~Importer() = default;

bool Importer::refuse(const QString &text)
{
    showMessage(ctx, text, Buttons::OK, Icon::Exclamation, kTitle);
    return false;
}

int Importer::anzFehler() const
{
    bool ok = false;
    const int n = m_request.source.anzFehler.trimmed().toInt(&ok);
    return ok && n > 0 ? n : 0;
}

// A machine's lists number their rows: most numbered rows must carry the
// number of their place (alarm 1 in the first alarm row), else the workbook is
// some other table whose numbers would land on arbitrary items.
bool Importer::looksLikeLists() const
{
    int numbered = 0, inPlace = 0;
    const auto count = [&](const QString &number, size_t index) {
        const double value = number.trimmed().toDouble();
        if (value == 0)
            return;
        ++numbered;
        inPlace += value == double(index + 1);
    };
    for (size_t i = 0; i < m_alarms.size(); ++i)
        count(m_alarms[i][0], i);
    for (size_t i = 0; i < m_warnings.size(); ++i)
        count(m_warnings[i][0], i);
    return numbered > 0 && 2 * inPlace >= numbered;
}

// Everything is read before anything is written: a workbook that cannot be
// read, or that holds nothing where the lists belong, changes nothing.
bool Importer::readLists(const ImportRequest &request)
{
    try {
        m_added = {};
        m_inWorkbook = {};
        m_alarms.clear();
        m_warnings.clear();
        m_materialChanges.clear();
        if (request.mode == ImportRequest::AlarmsAndWarnings) {
            const Workbook book = Workbook::open(request.source.path);
            m_alarms = GetListXLAlarms(ctx, m_status, book, request.source, m_added);
            m_warnings = GetListXLWarnings(ctx, m_status, book, request.source, m_added);
            m_inWorkbook = addedRowsInWorkbook(book);
            if (!looksLikeLists())
                return refuse(
                    QStringLiteral("The workbook \"") + request.source.path +
                    QStringLiteral("\" does not hold a machine's alarm and warning lists: most rows of column "
                                   "B should have the number of the alarm or warning that belongs there "
                                   "(alarm 1 in row 3, warning 1 in row 260). Nothing has been imported."));
        }
        const std::optional<ListSource> changes = request.mode == ImportRequest::MaterialChange
                                                      ? std::optional(request.source)
                                                      : request.materialChangeSource;
        if (changes) {
            const Workbook book = Workbook::open(changes->path);
            m_materialChanges = GetListXLMaterialChange(ctx, m_status, book, *changes);
            if (std::all_of(m_materialChanges.begin(), m_materialChanges.end(),
                            [](const QString &t) { return t.trimmed().isEmpty(); }))
                return refuse(QStringLiteral("The workbook \"") + changes->path +
                              QStringLiteral("\" holds no material-change texts in column %1 (rows 2 to 1001): "
                                             "nothing has been imported.")
                                  .arg(changes->posLang));
        }
        StatusEnd(ctx, m_status);
        return true;
    } catch (const WorkbookError &e) {
        StatusEnd(ctx, m_status);
        return refuse(QString::fromUtf8(e.what()));
    }
}

// The added rows given must be those the workbook has: more would read its
// added warnings as alarms, fewer would leave its last ones out. The added
// warnings follow a block as long as the alarms'; its last rows may be empty.
QString Importer::addedRefusal() const
{
    const int given = anzFehler();
    const int alarms = m_inWorkbook.alarms.value_or(given), warnings = m_inWorkbook.warnings.value_or(0);
    if (alarms == given && warnings <= given)
        return {};
    return QStringLiteral("The workbook \"%1\" has %2 added alarms and %3 added warnings (numbered from 257 in "
                          "column B), but the import is for %4 added alarms and warnings: nothing has been "
                          "imported.")
        .arg(m_request.source.path)
        .arg(alarms)
        .arg(warnings)
        .arg(given);
}

// Every table's five blocks are one machine each. A count that differs from
// their length would leave a machine's rows across two blocks, or move the
// machines there, which could then never be imported again.
QString Importer::blockRefusal(const QString &machine)
{
    const long count = anzFehler() + kStandardItems;
    QStringList others;
    for (const QVariantList &row :
         m_db->query(QStringLiteral("SELECT DISTINCT MachineType FROM AlarmDefinition")).rows())
        if (const QString m = row[0].toString();
            m != QLatin1String("0") && m.compare(machine, Qt::CaseInsensitive) != 0)
            others << m;
    for (const char *table : {"AlarmDefinition", "WarningDefinition"}) {
        const long length = long(
            m_db->query(QStringLiteral("SELECT COUNT(*) FROM %1").arg(QLatin1String(table))).value(0).toLongLong() / 5);
        if (length == count || (length < count && others.isEmpty()))
            continue;
        return QStringLiteral("The database's blocks hold %1 alarms and warnings per machine (256 + %2 added rows); "
                              "with %3 added rows %4. Import with %2 added rows; nothing has been imported.")
            .arg(length)
            .arg(length - kStandardItems)
            .arg(count - kStandardItems)
            .arg(others.isEmpty()
                     ? QStringLiteral("the machines would no longer start where the blocks do")
                     : QStringLiteral("the blocks of the machines there (") + others.join(QStringLiteral(", ")) +
                           QStringLiteral(") would move, and they could not be imported again"));
    }
    return {};
}

// Everything that refuses an import, asked before anything is written. The
// machine becomes the database's spelling of it.
QString Importer::refusalBeforeWriting(QString &machine)
{
    QStringList machines;
    for (const QVariantList &row :
         m_db->query(QStringLiteral("SELECT DISTINCT MachineType FROM AlarmDefinition")).rows())
        machines << row[0].toString();
    if (const QString stored = storedMachineName(machines, machine); !stored.isEmpty())
        machine = stored;
    const int count = GetCountMachinesInDatabase(machine);
    if (count != 0 && count >= kMaxMachines)
        return QStringLiteral("There are already %1 machines defined!\r\nPlease delete a machine before creating a "
                              "new one")
            .arg(count);
    if (const QString conflict = languageNumberConflict(*m_db, ctx.state.langLookupDB); !conflict.isEmpty())
        return conflict;
    if (findLanguage(m_request.language) < 0)
        return QStringLiteral("The language \"") + m_request.language +
               QStringLiteral("\" is known neither to the help-text database nor to the language-definition "
                              "database.");
    if (m_request.mode == ImportRequest::AlarmsAndWarnings)
        if (const QString added = addedRefusal(); !added.isEmpty())
            return added;
    return blockRefusal(machine);
}

// The entry at each list's upper index is never imported; the summary names
// it when it holds anything, so that nobody loses it without knowing.
void Importer::noteLastEntries()
{
    const auto holds = [](const auto &entry) {
        return std::any_of(entry.begin(), entry.end(), [](const QString &f) {
            const QString t = f.trimmed();
            return !t.isEmpty() && t != QLatin1String("0");
        });
    };
    if (!m_alarms.empty() && holds(m_alarms.back()))
        m_counts.lastEntries << QStringLiteral("alarm ") + m_alarms.back()[0].trimmed();
    if (!m_warnings.empty() && holds(m_warnings.back()))
        m_counts.lastEntries << QStringLiteral("warning ") + m_warnings.back()[0].trimmed();
}

QString Importer::summary(const QString &machine) const
{
    QString done = QStringLiteral("Imported into machine %1: %2 alarms, %3 warnings, %4 material changes.")
                       .arg(machine)
                       .arg(m_counts.alarms)
                       .arg(m_counts.warnings)
                       .arg(m_counts.materialChanges);
    if (m_counts.outsideBlock == 1)
        done += QStringLiteral(" 1 row was left out: its number lies outside the machine's block.");
    else if (m_counts.outsideBlock > 1)
        done += QStringLiteral(" %1 rows were left out: their numbers lie outside the machine's block.")
                    .arg(m_counts.outsideBlock);
    if (!m_counts.lastEntries.isEmpty())
        done += QStringLiteral(" Not imported, as the last entry of its list: ") +
                m_counts.lastEntries.join(QStringLiteral(", ")) + QLatin1Char('.');
    return done;
}

bool Importer::MainProc(const ImportRequest &request)
{
    m_request = request;
    m_counts = {};
    m_lastingAnswer = 0;
    QString machine = request.machine;
    try {
        switch (machineNameProblem(machine, {})) {
        case MachineNameProblem::None:
        case MachineNameProblem::Exists:
            break;
        case MachineNameProblem::Empty:
            return refuse(QStringLiteral("Enter the machine to import into."));
        default:
            return refuse(QStringLiteral("The machine name \"") + machine +
                          QStringLiteral("\" cannot be used: \"0\" marks free rows, and the machine's help pages are "
                                         "kept in a folder of its name, which Windows must accept too (no \" * ? < > "
                                         "|, no dot or blank at the end, no device name such as CON or COM1)."));
        }
        AppState &s = ctx.state;
        if (s.helpTextDB.isEmpty())
            return refuse(QStringLiteral("No help-text database is connected."));
        if ((request.mode == ImportRequest::MaterialChange || request.materialChangeSource) && !s.materialChangePresent)
            return refuse(QStringLiteral("The help-text database \"") + s.helpTextDB +
                          QStringLiteral("\" has no material-change tables, so its material-change list cannot be "
                                         "imported: nothing has been imported."));
        if (!readLists(request))
            return false;

        s.anzFehler = anzFehler();
        s.maxItems[KindAlarms] = s.maxItems[KindWarnings] = s.anzFehler + kStandardItems;
        m_db = Database::open(s.helpTextDB, Database::Mode::ReadWrite);
        if (const QString refusal = refusalBeforeWriting(machine); !refusal.isEmpty()) {
            m_db.reset();
            return refuse(refusal);
        }
        // Longer blocks mean a rebuild: the copy is made before the transaction begins.
        if (dbLengthTooShort(ctx, *m_db)) {
            m_db.reset();
            if (!CreateDBBackup(ctx))
                return false;
            m_db = Database::open(s.helpTextDB, Database::Mode::ReadWrite);
        }
        Database::Transaction transaction(*m_db);
        SpeichereAnzFehler();
        m_language = GetActLanguage(request.language);
        noteLastEntries();
        if (request.mode == ImportRequest::MaterialChange) {
            ImportMaterialChange(machine, false);
        } else {
            ImportAlarmsWarnings(machine, false);
            if (request.materialChangeSource && s.materialChangePresent)
                ImportMaterialChange(machine, false);
        }
        transaction.commit();
        m_db.reset();
        StatusEnd(ctx, m_status);
        showMessage(ctx, summary(machine), Buttons::OK, Icon::Information, kTitle);
        return true;
    } catch (const Cancelled &) {
        m_db.reset();
        StatusEnd(ctx, m_status);
        return refuse(QStringLiteral("Import cancelled: nothing has been changed."));
    } catch (const DbError &e) {
        // A failure the database layer explains (a write-protected or busy
        // file, a block taken by another machine) is no unexpected error.
        m_db.reset();
        StatusEnd(ctx, m_status);
        const QString why = QString::fromUtf8(e.what());
        LogError(ctx, QStringLiteral("MainProc: ") + why);
        showMessage(ctx, QStringLiteral("The import failed; nothing has been changed. ") + why, Buttons::OK,
                    Icon::Critical, kTitle);
        return false;
    } catch (const std::exception &e) {
        m_db.reset();
        StatusEnd(ctx, m_status);
        const QString why = QString::fromUtf8(e.what());
        LogError(ctx, unexpectedErrorLogLine(0, QStringLiteral("MainProc"), why));
        showMessage(ctx, QStringLiteral("The import failed; nothing has been changed.") + LFCR + why, Buttons::OK,
                    Icon::Critical, kTitle);
        return false;
    }
}

int Importer::GetCountMachinesInDatabase(const QString &machine)
{
    int count = 0;
    for (const QVariantList &row : m_db->query(QStringLiteral("SELECT AlarmDefinition.MachineType FROM "
                                                              "AlarmDefinition  GROUP BY AlarmDefinition.MachineType;"))
                                       .rows()) {
        const QString type = row[0].toString();
        if (type.compare(machine, Qt::CaseInsensitive) == 0)
            return 0; // the machine is there: no new block needed
        if (type != QLatin1String("0"))
            ++count;
    }
    return count;
}

void Importer::SpeichereAnzFehler()
{
    const QString length = QString::number(anzFehler() + kStandardItems);
    for (const char *item : {"MaxLenAlarm", "MaxLenWarning"}) {
        if (m_db->exec(QStringLiteral("UPDATE DBSys SET Data = ? WHERE Item = ?"), {length, item}) == 0)
            m_db->exec(QStringLiteral("INSERT INTO DBSys (Item, Data) VALUES (?, ?)"), {item, length});
    }
}

} // namespace ht
