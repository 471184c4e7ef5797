#pragma once
// What the importer's window offers to its logic (ImportForm). The Qt form
// implements it; tests use a headless one. Controls are named as the form's own.

#include <QString>
#include <QStringList>

namespace ht
{

class StatusTarget;

enum class ImportCtl {
    TextXLFile,            // the workbook of the current mode
    ComboNrLangXL,         // the language's number in the workbook (alarms and warnings)
    TextPosLangXL,         // the column of the material-change texts
    ComboLanguage,         // the help-text database's language that receives the texts
    TextMachineID,         // the machine to import into
    TextAnzahlFehler,      // added rows of each kind, up to three digits
    OptionMaterialChange,  // a new database is made with material change
    TextConnectedDatabase, // the help-text database in use
    LabelImportMode,       // "IMPORT HELPTEXTS: ..."
    LabelXLFile,           // caption of TextXLFile
    LabelLanguagePosition, // caption of ComboNrLangXL or TextPosLangXL
    CommandImport,
    CommandNeueVorlage,
    CommandDeleteMachine,
    MenuAlarmsWarnings, // the two import modes
    MenuMaterialChange,
    MenuChangeDatabase,
    MenuLanguage,
    MenuInfo,
    MenuExit,
};

class ImportView
{
  public:
    virtual ~ImportView() = default;
    virtual void setCaption(const QString &text) = 0;
    // Texts of labels and boxes; a list selects its entry equal to `text`.
    virtual void setText(ImportCtl c, const QString &text) = 0;
    virtual QString text(ImportCtl c) const = 0;
    virtual void setItems(ImportCtl c, const QStringList &items) = 0;
    virtual void setChecked(ImportCtl c, bool checked) = 0;
    virtual bool checked(ImportCtl c) const = 0;
    virtual void setEnabled(ImportCtl c, bool enabled) = 0;
    virtual void setVisible(ImportCtl c, bool visible) = 0;
    // frmQuestOverwrite: 1 replace, 2 keep this one, 3 replace all, 4 never replace, 0 cancelled.
    virtual int askOverwrite(const QString &kind, const QString &oldValue, const QString &newValue) = 0;
    virtual void showDeleteMachine() = 0; // dlgDelMachine, modal
    virtual void showInfoBox() = 0;
    virtual void closeForm() = 0;
    virtual StatusTarget *statusTarget() = 0;
};

} // namespace ht
