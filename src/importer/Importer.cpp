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
        m_alarms.clear();
        m_warnings.clear();
        m_materialChanges.clear();
        if (request.mode == ImportRequest::AlarmsAndWarnings) {
            const Workbook book = Workbook::open(request.source.path);
            m_alarms = GetListXLAlarms(ctx, m_status, book, request.source, m_added);
            m_warnings = GetListXLWarnings(ctx, m_status, book, request.source, m_added);
            if (!looksLikeLists())
                return refuse(QStringLiteral("The workbook \"") + request.source.path +
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

bool Importer::MainProc(const ImportRequest &request)
{
    m_request = request;
    m_counts = {};
    m_lastingAnswer = 0;
    const QString machine = request.machine;
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
                                         "kept in a folder of its name."));
        }
        if (ctx.state.helpTextDB.isEmpty())
            return refuse(QStringLiteral("No help-text database is connected."));
        if (!readLists(request))
            return false;

        AppState &s = ctx.state;
        s.anzFehler = anzFehler();
        s.maxItems[KindAlarms] = s.maxItems[KindWarnings] = s.anzFehler + kStandardItems;
        m_db = Database::open(s.helpTextDB, Database::Mode::ReadWrite);
        // Longer blocks mean a rebuild: the copy is made before the transaction begins.
        if (dbLengthTooShort(ctx, *m_db)) {
            m_db.reset();
            if (!CreateDBBackup(ctx))
                return false;
            m_db = Database::open(s.helpTextDB, Database::Mode::ReadWrite);
        }
        Database::Transaction transaction(*m_db);
        const int machines = GetCountMachinesInDatabase(machine);
        SpeichereAnzFehler();
        if (machines != 0 && machines >= kMaxMachines)
            return refuse(QStringLiteral("There are already %1 machines defined!\r\nPlease delete a machine before "
                                         "creating a new one")
                              .arg(machines));
        m_language = GetActLanguage(request.language);
        if (m_language < 0)
            return refuse(QStringLiteral("The language \"") + request.language +
                          QStringLiteral("\" is known neither to the help-text database nor to the "
                                         "language-definition database."));
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
        QString done = QStringLiteral("Imported into machine %1: %2 alarms, %3 warnings, %4 material changes.")
                           .arg(machine)
                           .arg(m_counts.alarms)
                           .arg(m_counts.warnings)
                           .arg(m_counts.materialChanges);
        if (m_counts.outsideBlock > 0)
            done += QStringLiteral(" %1 rows were left out: their numbers lie outside the machine's block.")
                        .arg(m_counts.outsideBlock);
        showMessage(ctx, done, Buttons::OK, Icon::Information, kTitle);
        return true;
    } catch (const Cancelled &) {
        m_db.reset();
        StatusEnd(ctx, m_status);
        return refuse(QStringLiteral("Import cancelled: nothing has been changed."));
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
