#pragma once
// The logic of the importer form frmImport: the workbook, the language and
// its place in the workbook, the machine and the added rows; a fresh database
// made from a template; the import itself (Importer::MainProc).

#include "importer/ImportView.h"

#include <QString>

namespace ht
{

struct Context;
struct ImportRequest;

class ImportForm
{
  public:
    ImportForm(Context &ctx, ImportView &view);

    void Form_Load();
    void Form_Unload(bool &cancel);
    void MenuGotoItem_Click(int mode); // 1 alarms and warnings, 2 material change
    void CommandImport_Click();
    void CommandNeueVorlage_Click();
    void CommandDeleteMachine_Click();
    void TextXLFile_DblClick();
    void TextAnzahlFehler_Change();
    void OptionMaterialChange_Click();
    void MenuChangeDatabase_Click();
    void MenuLanguage_Click();
    void MenuInfo_Click();
    void MenuExit_Click();
    void EnableButtonImport();
    void F_Enable();
    void F_Disable();
    bool DBKopieren(const QString &target);
    void glb_ConnectDBHelptext(); // the settings written back

    int mode() const { return m_mode; }
    ImportRequest request() const;

  private:
    bool connect(const QString &path); // false when `path` could not be connected
    void fillLanguages();
    void rememberWorkbook();
    void showMode();

    Context &ctx;
    ImportView &view;
    int m_mode = 1;
    QString m_workbooks[3];        // by mode: XLAlarmsWarnings, XLMaterialChange
    bool m_templateNeeded = false; // the options call for a new template
    QString m_templateAnzFehler;   // the added rows the current database was made for
    QString m_lastAnzFehler;       // the last valid TextAnzahlFehler
    bool m_busy = false;
};

} // namespace ht
