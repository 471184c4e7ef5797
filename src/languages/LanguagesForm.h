#pragma once
// The logic of the language form frmLanguages: a language known to the
// language-definition database is created or repaired in the help-text
// database, its settings stored, or a language deleted; the menus lead to the
// program's other forms. The window (LanguagesView) only shows what it is
// told and forwards events.

#include "languages/LanguagesView.h"
#include "startup/FormSwitch.h"

#include <QStringList>
#include <functional>

namespace ht
{

struct Context;
struct LanguageDefinition;

class LanguagesForm
{
  public:
    using Ctl = LanguagesView::Ctl;
    LanguagesForm(Context &ctx, LanguagesView &view);

    void Form_Load();
    void Form_Terminate(); // the databases in use are stored in the settings
    void PossLanguages_Click();
    void CreateLanguage_Click();
    void CommandUpdateLanguageSettings_Click();
    void DeleteLanguageCombo_Fill();
    void DeleteLanguageCombo_Click();
    void DeleteLanguageButton_Click();

    void MenuAlarms_Click();
    void MenuWarnings_Click();
    void MenuMaterialChange_Click();
    void MenuImport_Click();
    void MenuChangeDatabase_Click();
    void MenuLanguageDefinitionDB_Click();
    void MenuExit_Click();

    bool busy() const { return m_busy; }

  private:
    bool connectLookup();
    bool connectHelpText();
    void fillPossLanguages();
    void fillList(Ctl list, const QString &procedure, const QString &database,
                  const std::function<QStringList()> &read);
    void showConnection();
    LanguageDefinition chosen() const;
    void whileBusy(const std::function<void()> &job);
    void goToEditor(int kind);
    void switchTo(FormId form);
    void setStatus(const QString &text);

    Context &ctx;
    LanguagesView &view;
    bool m_busy = false;
};

} // namespace ht
