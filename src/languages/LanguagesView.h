#pragma once
// What the language form's window offers to its logic (LanguagesForm). The Qt
// form implements it; tests use a headless one. Controls are named as the
// form's own.

#include <QString>
#include <QStringList>

namespace ht
{

class StatusTarget;

class LanguagesView
{
  public:
    enum class Ctl {
        PossLanguages, // the languages offered for creation, by name
        LCode,         // the chosen language's number, font and keyboard layout, read only
        LFont,
        LKeybd,
        CreateLanguage,
        CommandUpdateLanguageSettings,
        DeleteLanguageCombo, // languages that have alarm texts
        DeleteLangOption,    // "" none chosen, "1" texts only, "2" texts and configuration
        DeleteLanguageButton,
        MenuAlarms,
        MenuWarnings,
        MenuMaterialChange,
        MenuImport,
        MenuChangeDatabase,
        MenuLanguageDefinitionDB,
        MenuExit,
    };

    virtual ~LanguagesView() = default;
    virtual void setCaption(const QString &text) = 0;
    // Fields show `text`; a list selects the entry equal to it (none for "").
    virtual void setText(Ctl c, const QString &text) = 0;
    virtual QString text(Ctl c) const = 0;
    virtual void setItems(Ctl c, const QStringList &items) = 0; // a list's entries, nothing selected
    virtual void setEnabled(Ctl c, bool enabled) = 0;
    virtual void setVisible(Ctl c, bool visible) = 0;
    // While a job runs the menus wait and the form cannot be closed.
    virtual void setBusy(bool busy) = 0;
    virtual void closeForm() = 0;
    virtual StatusTarget *statusTarget() = 0;
};

} // namespace ht
