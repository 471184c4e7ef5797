#pragma once
// Importing a machine's lists into the help-text database: MainProc and the
// procedures it runs. The lists are read from the workbook before anything is
// written, and the whole import is one transaction: a workbook that cannot be
// read, a failure half-way or a cancelled question leaves the database as it was.

#include "importer/ExcelLists.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

namespace ht
{

struct Context;
class Database;
class StatusTarget;

// What the importer form (or the command line) asks for.
struct ImportRequest {
    enum Mode { AlarmsAndWarnings = 1, MaterialChange = 2 };
    QString machine;   // TextMachineID
    QString language;  // ComboLanguage: a language of the help-text or language-definition database
    ListSource source; // the workbook of the mode, the language's place in it, AnzFehler
    int mode = AlarmsAndWarnings;
    // Material change too, from its own workbook, in the same transaction (command line).
    std::optional<ListSource> materialChangeSource;
};

// frmQuestOverwrite's answers (the pressed button's index).
enum OverwriteAnswer {
    AnswerCancel = 0,
    AnswerReplace = 1,
    AnswerKeep = 2,
    AnswerReplaceAll = 3,
    AnswerNeverReplace = 4
};
// Asked with the kind ("Alarms"), the stored and the new definition's summary.
using QuestOverwriteItem = std::function<int(const QString &kind, const QString &oldValue, const QString &newValue)>;

struct ImportCounts {
    int alarms = 0, warnings = 0, materialChanges = 0; // text rows written
    int definitionsKept = 0;                           // stored definitions the user kept
    int outsideBlock = 0;                              // entries whose number lies outside the machine's block
    QStringList lastEntries; // the lists' last entries, never imported, when they hold anything ("alarm 259")
};

class Importer
{
  public:
    Importer(Context &ctx, StatusTarget *status, QuestOverwriteItem ask);
    ~Importer();

    // True when the import was made; otherwise the user has been told why and
    // nothing has changed.
    bool MainProc(const ImportRequest &request);
    const ImportCounts &counts() const { return m_counts; }

    // The procedures MainProc runs, on the open database inside its transaction.
    int GetCountMachinesInDatabase(const QString &machine);
    void SpeichereAnzFehler();
    qlonglong GetActLanguage(const QString &name); // -1 when the language is known nowhere
    qlonglong findLanguage(const QString &name);   // the same, without making it present
    void CreateLanguage(qlonglong language);
    void ImportAlarmsWarnings(const QString &machine, bool fromMaterialChange);
    void ImportMaterialChange(const QString &machine, bool fromAlarms);

  private:
    struct Cancelled {
    };
    bool readLists(const ImportRequest &request);
    bool looksLikeLists() const;
    QString addedRefusal() const;
    QString blockRefusal(const QString &machine);
    QString refusalBeforeWriting(QString &machine);
    void noteLastEntries();
    QString summary(const QString &machine) const;
    bool refuse(const QString &text);
    int anzFehler() const;
    qlonglong firstId(const QString &word, const QString &machine, long count);
    QString convert(const QString &cell);
    void checkCodePage();
    bool replaceDefinition(const QString &oldValue, const QString &newValue, bool storedFree);
    void importAlarms(const QString &machine);
    void importWarnings(const QString &machine);
    void bind(const QString &word, const QString &machine, qlonglong first, long count);

    Context &ctx;
    StatusTarget *m_status;
    QuestOverwriteItem m_ask;
    std::unique_ptr<Database> m_db;
    ImportRequest m_request;
    qlonglong m_language = -1;
    AddedCounts m_added;
    AddedCounts m_inWorkbook; // the added rows the workbook's numbers show
    std::vector<AlarmEntry> m_alarms;
    std::vector<WarningEntry> m_warnings;
    std::vector<QString> m_materialChanges;
    int m_lastingAnswer = 0; // AnswerReplaceAll or AnswerNeverReplace once given
    ImportCounts m_counts;
};

// "ID: 7, Sensor: B1, Cam: K2, RTS: CPU1, Reject: 3": a definition as the
// overwrite question shows it; `stored` false gives the new values' form.
QString definitionSummary(const QString &number, const QString &sensor, const QString &cam, const QString &cpu,
                          const QString &rejects, bool stored);

} // namespace ht
