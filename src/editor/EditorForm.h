#pragma once
// The logic of the editor form frmEdit: a translator picks a machine, an item
// kind, an item number, a source and a destination language; the item's texts
// are shown side by side, every change is stored when its box is left, and
// the item's help page is written again when the settings ask for it.
// The form itself (EditorView) only shows what it is told and forwards events.

#include "editor/EditorView.h"
#include "review/ReviewMarks.h"
#include "review/TextChecks.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <array>
#include <functional>
#include <memory>

namespace ht
{

struct Context;
class Database;
struct EditorKind;
struct CheckedItem;
class ItemChecker;

// A language of the help-text database as the editor uses it.
struct LanguageRecord {
    QString number; // Language.Language
    QString font;   // the font specification, "LEER" when there is none
    QString layout; // KBLayout
};

// The machine worked on, shared with dlgMachineSelection.
struct EditorSelection {
    QString machine;      // MachineType; "" or "-1" when there is none
    long firstItemID = 1; // the machine's first definition ID: item n has ID n + firstItemID - 1
};

// The item the destination boxes were filled for. What is typed there is
// stored under it, whatever the lists show by the time a save succeeds.
struct ItemAddress {
    QString machine;
    int kind = 0;
    int number = 0; // 0: no item can be typed for
    long id = 0;    // its database ID
    QString language, languageNumber;
};

// One item's texts in one language: SQL with its values bound.
struct TextQuery {
    QString sql;
    QVariantList params;
};
// The texts of item `id` of `kind` in language number `language`.
TextQuery textQuery(int kind, long id, const QString &language);

// The stored one-line form shown as lines: "/" and "/ " become line breaks (CR LF).
QString slashesToLineBreaks(const QString &text);

class EditorForm
{
  public:
    EditorForm(Context &ctx, EditorView &view);
    ~EditorForm();

    // Form, lists and navigation
    void Form_Load();
    void Form_Activate();
    void SetMenuState();
    void GetMachineFirstIndex();
    void FillLanguageList();
    void GetFormDefaults();
    void SetFormDefaults();
    void ComboIndex_KeyDown(int keyCode); // after every key press in the item number box
    void ComboIndex_Click();
    void ComboLanguageSource_Click();
    void ComboLanguageDestination_Click();
    void ComboLanguageSource_KeyDown(int keyCode);
    void ComboLanguageDestination_KeyDown(int keyCode);
    void Form_KeyDown(int keyCode);
    void Form_Unload(bool &cancel);

    // Menus: each stores pending input first (Menu_GotFocus)
    void Menu_GotFocus();
    void MenuAlarms_Click();
    void MenuWarnings_Click();
    void MenuMaterialChange_Click();
    void MenuMachineSelection_Click();
    void MenuChangeDatabase_Click();
    void MenuConvertToSqlite_Click();
    void MenuLanguage_Click();
    void MenuInfo_Click();
    void MenuExit_Click();
    void MenuGenerateHelpHTML_Click();
    void MenuSelectHelptextdirectory_Click();
    void MenuNextUntranslated_Click();     // Ctrl+J
    void MenuPreviousUntranslated_Click(); // Ctrl+K
    void MenuGoToItem_Click();             // Ctrl+G
    void MenuNextFinding_Click();          // Ctrl+Shift+J
    void MenuPreviousFinding_Click();      // Ctrl+Shift+K
    void MenuCopySource_Click();           // Ctrl+B: the source text into the destination box, stored as typed
    void MenuReviewed_Click();             // Ctrl+R: the item's translation fits its source as it stands now
    void MenuFind_Click();                 // Ctrl+F: the item list shows the items whose texts hold a word

    // The checks of the item shown, run again while the translator types.
    // stored: the boxes hold what was just stored, and the item list's line follows.
    void refreshFindings(bool stored = false);
    void ItemList_Click(int number); // a line of the item list: show that item
    const Findings &findings() const { return m_findings; }
    // Reading an item
    void Source_Read();
    void Destination_Read();
    void Definition_Read();
    TextQuery GetSQLForTextTable(const QString &language) const;
    void SingleLineToMultiLine(Ctl box, int index);

    // Writing an item
    void TextDestination_Change(int index);
    void TextDestination_LostFocus(int index);
    void TextDefinition_Change(int index);
    void TextDefinition_LostFocus(int index);
    void DataBase_Write(int &result);
    void Definition_Write();
    void InitHTML_Write();

    EditorSelection &selection() { return m_selection; }
    int itemNumber() const; // the number in ComboIndex, 0 when none
    long itemID() const;    // its database ID
    bool destinationEditable() const { return m_destinationEditable; }
    bool hasUnsavedInput() const { return m_dirty; }

    // The progress overview's double-click: that machine, kind, destination
    // language and item shown, asking first about unstored input as Ctrl+G does.
    void goToItem(const QString &machine, int kind, const QString &destination, int number);
    QString sourceLanguage() const;
    std::function<void(const ItemAddress &)> onStored; // after every successful save of that item

  private:
    friend class LoadingGuard;
    const EditorKind &kind() const;
    bool connectDatabase();
    void takeIndexTextDatabaseFromSettings();
    void fillItemNumbers();
    void chooseLanguages();
    void showItem();
    void showNoItem();
    bool mayReplaceInput();
    bool storePending(bool quiet);
    void restoreShownSelection();
    void rebuild();
    void runPages(bool wholeKinds, const std::function<void()> &run);
    void lockDestination(bool locked);
    void setTextBoxes(Ctl side, const QStringList &texts);
    QStringList readTexts(Database &db, const QString &language) const;
    bool applyFont(Ctl side, const LanguageRecord *language, const LanguageRecord *fallback);
    void showFontError();
    QString pagePath() const;
    QString boxText(int index) const;
    void writeDefinition(Database &db, long id);
    struct TranslatedFrom {
        QString sourceLanguage; // "" when no source language is chosen
        std::vector<KeptSource> sources;
    };
    TranslatedFrom translatedFrom(Database &db, const ItemAddress &item) const;
    void keepTranslatedFrom(const TranslatedFrom &from);
    void reportWriteFailure(const QString &procedure, const std::exception &e);
    QString pendingItem() const;
    QString pendingWhat() const;
    void findUntranslated(int direction);
    void showNearest(const QList<int> &numbers, int direction);
    QList<int> untranslatedNumbers();
    void refreshStatus();
    void readReviewState();
    void refreshItemList(bool force);
    QString itemListLine(int number, const QString &source, const Findings &findings, bool missing,
                         bool hasSource) const;
    void findWithFindings(int direction);
    void checkShownPair(const std::function<void(const CheckedItem &)> &each);
    ItemChecker &checker();
    void setStatus(const QString &text); // a passing hint in the status line

    Context &ctx;
    EditorView &view;
    EditorSelection m_selection;
    QStringList m_machines;
    QStringList m_languages;
    bool m_loading = false;
    bool m_dirty = false;
    int m_pendingFocus = 0; // 1..3 TextDestination, 4..7 TextDefinition 1..4
    bool m_writeFailed = false;
    bool m_quietFailures = false; // a failed save is told in the question that follows
    QString m_failureReason;      // why the last save failed, in the user's words
    bool m_destinationEditable = false;
    bool m_defaultsRead = false;
    bool m_sourceFontError = false, m_destinationFontError = false;
    bool m_closeWhenRunEnds = false;
    bool m_closing = false;
    bool m_noItemHint = false; // the status line asks for an item number
    ItemAddress m_shownItem;
    std::array<QString, 4> m_definitionRead; // Sensor, Cam, CPU, Rejects as read
    // The checks: the destination's font and the sources as stored and as kept when last saved.
    std::unique_ptr<ItemChecker> m_checker;
    QString m_sourceLanguageNumber, m_destinationName, m_destinationFont;
    QHash<QString, QString> m_storedSource, m_keptSource; // by field
    Findings m_findings;
    QString m_itemListKey;    // the machine, kind and languages the item list was filled for
    QString m_itemListFilter; // what the last search looked for: "" lists every item
    // What the boxes show, so that a refused change can go back to it.
    QString m_shownNumber, m_shownSource, m_shownDestination;
};

} // namespace ht
