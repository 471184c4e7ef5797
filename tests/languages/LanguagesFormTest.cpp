// The language form's load, settings and menus through a headless window.
#include "LanguagesTestSupport.h"

#include "common/IniFile.h"
#include "languages/LanguagesForm.h"
#include "startup/FormSwitch.h"

#include <QFile>

namespace ht
{
namespace
{

using Ctl = LanguagesView::Ctl;

// The program's main forms as far as the language form sees them.
struct RecordingForms : FormHost {
    QStringList calls;
    void showForm(FormId f) override { calls << QString("show %1").arg(int(f)); }
    void unloadForm(FormId f) override { calls << QString("unload %1").arg(int(f)); }
    bool available(FormId f) const override { return f != FormId::Import; }
};

TEST(LanguagesForm, OffersWhatTheDefinitionsAllow)
{
    const struct {
        bool substBy;
        QStringList offered;
    } cases[] = {{true, {"Croatian", "English", "French", "German", "Greek"}},
                 {false, {"Croatian", "English", "French", "German", "Greek", "Serbian"}}};
    for (const auto &c : cases) {
        test::LanguagesWorkspace w(c.substBy);
        test::HeadlessLanguagesView view;
        LanguagesForm form(w.t.ctx, view);
        form.Form_Load();
        EXPECT_EQ(view.at(Ctl::PossLanguages).items, c.offered);
        EXPECT_EQ(view.caption, "Helptext editor Languages - connected to " + w.db());
        EXPECT_FALSE(view.at(Ctl::CreateLanguage).enabled || view.at(Ctl::DeleteLanguageButton).enabled);
        view.setText(Ctl::PossLanguages, "French");
        form.PossLanguages_Click();
        EXPECT_EQ(view.text(Ctl::LCode) + ' ' + view.text(Ctl::LFont) + ' ' + view.text(Ctl::LKeybd),
                  "1036 Arial 10 400 0000040C");
        EXPECT_TRUE(view.at(Ctl::CreateLanguage).enabled && view.at(Ctl::CommandUpdateLanguageSettings).enabled);
        EXPECT_TRUE(w.t.ui.shown.empty());
    }
}

TEST(LanguagesForm, WithoutLanguageDefinitionsTheProgramEnds)
{
    test::LanguagesWorkspace w;
    w.t.ctx.state.langLookupDB = w.t.path("gone.mdb");
    w.t.ui.push(std::monostate{}); // no other file picked
    test::HeadlessLanguagesView view;
    LanguagesForm form(w.t.ctx, view);
    EXPECT_THROW(form.Form_Load(), ProgramEnded);
    EXPECT_EQ(w.t.ui.messageTexts(), QStringList{"Cannot find languagedefinition"});
}

TEST(LanguagesForm, SettingsUpdateWritesTheLanguageRowOnly)
{
    test::LanguagesWorkspace w;
    test::HeadlessLanguagesView view;
    LanguagesForm form(w.t.ctx, view);
    form.Form_Load();
    view.setText(Ctl::PossLanguages, "French");
    form.PossLanguages_Click();
    for (const char *font : {"Arial 10 400", "Tahoma 12 700"}) {
        view.setText(Ctl::LFont, font);
        form.CommandUpdateLanguageSettings_Click();
        EXPECT_EQ(w.rowsOf(1036), 1);
        EXPECT_EQ(w.count("SELECT COUNT(*) FROM Language WHERE Name = 'French' AND Font = ? AND KBLayout = "
                          "'0000040C'",
                          {font}),
                  1);
    }
    EXPECT_TRUE(view.at(Ctl::DeleteLanguageCombo).items.isEmpty()); // no texts: nothing to delete
}

TEST(LanguagesForm, ClosingStoresTheDatabasesInTheSettings)
{
    test::LanguagesWorkspace w;
    test::HeadlessLanguagesView view;
    LanguagesForm form(w.t.ctx, view);
    form.Form_Load();
    form.Form_Terminate();
    const QString ini = w.t.ctx.state.iniPath;
    EXPECT_EQ(LoadIniString(w.t.ctx, "Setup", "StandardHelpTextDB", ini), w.db());
    EXPECT_EQ(LoadIniString(w.t.ctx, "Setup", "StandardLangLookupDB", ini), w.lookup());

    // The machine PC's settings are never rewritten.
    QFile::remove(ini);
    w.t.ctx.state.runningOnMachinePC = true;
    form.Form_Terminate();
    EXPECT_FALSE(QFile::exists(ini));
}

TEST(LanguagesForm, MenusLeadToTheVariantsForms)
{
    test::LanguagesWorkspace w;
    RecordingForms forms;
    w.t.ctx.forms = &forms;
    test::HeadlessLanguagesView view;
    LanguagesForm form(w.t.ctx, view);
    form.Form_Load();
    EXPECT_TRUE(view.at(Ctl::MenuWarnings).visible);
    EXPECT_FALSE(view.at(Ctl::MenuImport).visible);

    form.MenuWarnings_Click();
    EXPECT_EQ(forms.calls, (QStringList{"unload 2", "show 0"}));
    EXPECT_EQ(w.t.ctx.state.currentKind, KindWarnings);
    EXPECT_EQ(LoadIniString(w.t.ctx, "Defaults", "Item", w.t.ctx.state.iniPath), "2");

    w.t.ctx.state.mode = "IMPORT";
    form.Form_Load();
    EXPECT_FALSE(view.at(Ctl::MenuWarnings).visible);
    EXPECT_TRUE(view.at(Ctl::MenuImport).visible);
    form.MenuImport_Click(); // not in this version yet: says so
    EXPECT_EQ(forms.calls.size(), 2);
    EXPECT_EQ(w.t.ui.messageTexts(), QStringList{"This version of the program does not have that form yet."});
}

} // namespace
} // namespace ht
