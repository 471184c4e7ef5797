#pragma once
// Program-wide values shared by every subsystem. Plain state without locking:
// the program has one user-interface thread.

#include <QString>
#include <QStringList>
#include <array>

namespace ht {

enum ItemKind { KindAlarms = 1, KindWarnings = 2, KindMaterialChange = 3 };

struct AppState {
    QString mode;                   // "EDIT" or "IMPORT"
    bool runningOnMachinePC = false;
    QString iniPath;                // the settings file in use

    // Standard paths, read on the machine PC only.
    QString standardHelpTextDB;
    QString standardIndexTextDB;
    QString standardLangLookupDB;
    QString standardHelpDir;

    QString helpTextDB;             // active help-text database
    QString langLookupDB;           // active language-definition database
    bool langLookupHasSubstBy = false; // the language-definition database has the SubstBy column
    QString indexTextDB;            // index-text database used for ###DIREKT: addresses
    QString helpMainDir;            // always ends with a separator when set
    QString lastBackupPath;

    QString xlAlarmsWarnings;
    QString xlMaterialChange;

    bool materialChangePresent = false;
    bool generateAfterEditAlarm = false;
    bool generateAfterEditWarnings = false;
    bool generateAfterEditMaterialChange = false;

    // Messages go to the error log instead of boxes: nobody watches the batch
    // run, a program without a display, or the machine PC's start-up checks.
    bool unattended = false;
    bool noDisplay = false; // nobody can answer a dialog: the program stays unattended
    bool writingHtml = false;
    bool abortHtml = false;
    // Set by a page run that left pages unwritten: a failure, a name that
    // cannot be a folder, a missing template, or the run cut short.
    bool htmlRunFailed = false;
    bool programEnding = false;
    bool pathsRead = false;
    bool startupChecksDone = false;
    bool switchingForm = false;
    bool importerFlag = false;

    int currentKind = KindAlarms;
    QString currentCodePage;
    QString screenResolution;       // screen width in pixels as text, e.g. "1024"
    QStringList commandLine;        // element 0 is the first parameter (may be "")

    std::array<long, 4> maxItems{0, 0, 0, 0}; // index 1..3 by ItemKind
    int anzFehler = -1;             // importer's added-item count
};

} // namespace ht
