#pragma once
// What the editor's window offers to its logic (EditorForm). The Qt form
// implements it; tests use a headless one. Controls are named as the form's
// own, arrays with their index (TextDestination 1..3, TextDefinition 1..4);
// single controls take index 0.

#include <QList>
#include <QString>
#include <QStringList>

namespace ht
{

class StatusTarget;

enum class Ctl {
    ComboIndex,          // item number, typed into or picked
    ComboLanguageSource, // drop-down lists of language names
    ComboLanguageDestination,
    TextSource,       // 1..3, read only
    TextDestination,  // 1..3
    TextDefinition,   // 1..4: Sensor, Cam, CPU, Rejects
    LabelSource,      // 1..3
    LabelDestination, // 1..3
    LabelItem,
    LabelDefinition,
    FrameDef,
    LabelMachine,
    LabelTestVersion,
    LabelFontError,
    LabelKeyboardLayout, // the layout to type the destination language with
    LabelTranslated,     // in the status line: "translated n of m"
    LabelFindings,       // under the boxes: the checks' findings of the item, one a line
    MenuAlarms,
    MenuWarnings,
    MenuMaterialChange,
    MenuGenerateHelpHTML,
    MenuSelectHelptextdirectory,
    MenuLanguage,
    MenuMachineSelection,
    MenuChangeDatabase,
    MenuConvertToSqlite,
    MenuInfo,
    MenuExit,
    MenuNextUntranslated,
    MenuPreviousUntranslated,
    MenuGoToItem,
    MenuNextFinding,     // Ctrl+Shift+J
    MenuPreviousFinding, // Ctrl+Shift+K
    MenuCopySource,      // Ctrl+B
    MenuReviewed,        // Ctrl+R
    MenuFind,            // Ctrl+F
};

// A text box's font, from a language's font specification.
struct BoxFont {
    QString family;
    double pointSize = 0; // 0: keep the size
    int weight = 400;     // 400 normal, 700 bold
    bool italic = false, underline = false, strikeOut = false;
    bool operator==(const BoxFont &) const = default;
};

class EditorView
{
  public:
    virtual ~EditorView() = default;
    virtual void setCaption(const QString &text) = 0;
    // Labels, text boxes and the item number's edit line show `text`; a
    // drop-down list selects the entry equal to it (none for "").
    // Line breaks are CR LF. Setting a text box to the text it shows keeps its caret.
    virtual void setText(Ctl c, int index, const QString &text) = 0;
    virtual QString text(Ctl c, int index) const = 0;
    virtual void setItems(Ctl c, const QStringList &items) = 0; // a list's entries, nothing selected
    // A text box filled for another item: Ctrl+Z must not bring back what it showed before.
    virtual void clearUndo(Ctl c, int index) = 0;
    virtual void setVisible(Ctl c, int index, bool visible) = 0;
    virtual void setEnabled(Ctl c, int index, bool enabled) = 0; // a menu entry is available or not
    virtual void setLocked(Ctl c, int index, bool locked) = 0;   // a text box refuses typing, and looks it
    virtual void setMarked(Ctl c, int index, bool marked) = 0;   // a text box with a finding: a marked border
    // The item list beside the boxes: a line for each of `numbers` (every item,
    // or those a search found); the line of the item shown is selected.
    virtual void setItemList(const QList<int> &numbers, const QStringList &lines) = 0;
    virtual void setItemListLine(int number, const QString &line) = 0; // nothing when it is not listed
    virtual void selectItemListLine(int number) = 0;                   // none when it is not listed
    virtual bool hasFocus(Ctl c, int index) const = 0;
    virtual int cursorPosition(Ctl c, int index) const = 0;
    virtual void setCursorPosition(Ctl c, int index, int position) = 0;
    virtual void setFont(Ctl c, int index, const BoxFont &font) = 0;
    // The destination language's keyboard layout (a Windows layout identifier
    // such as "00000408"): switched to where the platform can switch it for
    // this program alone, and shown in LabelKeyboardLayout in any case.
    virtual void activateKeyboardLayout(const QString &layoutId, const QString &text) = 0;
    // While a page run goes on only Esc and closing the window are taken.
    virtual void setBusy(bool busy) = 0;
    virtual void showMachineSelection() = 0; // dlgMachineSelection, modal
    virtual void showInfoBox() = 0;          // dlgStartup as the Info box, modal
    virtual void closeForm() = 0;            // unloads the form: the program ends
    virtual StatusTarget *statusTarget() = 0;

    // Single controls.
    void setText(Ctl c, const QString &t) { setText(c, 0, t); }
    QString text(Ctl c) const { return text(c, 0); }
    void setVisible(Ctl c, bool v) { setVisible(c, 0, v); }
    void setEnabled(Ctl c, bool e) { setEnabled(c, 0, e); }
};

} // namespace ht
