// The language form's load, its settings and what it offers, through a headless window.
#include "LanguagesTestSupport.h"

#include "common/IniFile.h"

#include <QFile>

namespace ht
{
namespace
{

using LanguagesFormTest = test::LanguagesCore;

TEST_F(LanguagesFormTest, OffersWhatTheDefinitionsAllow)
{
    EXPECT_EQ(view.caption, "Helptext editor Languages - connected to " + w.db());
    EXPECT_EQ(view.at(Ctl::PossLanguages).items, (QStringList{"Croatian", "English", "French", "German", "Greek"}));
    EXPECT_FALSE(view.at(Ctl::CreateLanguage).enabled || view.at(Ctl::DeleteLanguageButton).enabled);
    choose("French");
    EXPECT_EQ(view.text(Ctl::LCode) + ' ' + view.text(Ctl::LFont) + ' ' + view.text(Ctl::LKeybd),
              "1036 Arial 10 400 0000040C");
    EXPECT_TRUE(view.at(Ctl::CreateLanguage).enabled && view.at(Ctl::CommandUpdateLanguageSettings).enabled);
    EXPECT_TRUE(view.at(Ctl::MenuWarnings).visible && !view.at(Ctl::MenuImport).visible); // back to the editor

    // An older language-definition database has no substitutions; the importer's form leads back to it.
    Database::open(w.lookup())->exec("ALTER TABLE LookupLanguages DROP COLUMN SubstBy");
    ASSERT_FALSE(CheckLanguageLookup(w.t.ctx, w.lookup()).isEmpty());
    w.t.ctx.state.mode = "IMPORT";
    form.Form_Load();
    EXPECT_TRUE(!view.at(Ctl::MenuWarnings).visible && view.at(Ctl::MenuImport).visible);
    EXPECT_TRUE(view.at(Ctl::PossLanguages).items.contains("Serbian"));
    EXPECT_FALSE(view.at(Ctl::PossLanguages).items.contains("Klingon"));
    EXPECT_TRUE(ui.shown.empty());
}

TEST_F(LanguagesFormTest, WithoutLanguageDefinitionsTheProgramEnds)
{
    w.t.ctx.state.langLookupDB = w.t.path("gone.mdb");
    ui.push(std::monostate{}); // no other file picked
    EXPECT_THROW(form.Form_Load(), ProgramEnded);
    EXPECT_EQ(ui.messageTexts(), QStringList{"Cannot find languagedefinition"});
}

TEST_F(LanguagesFormTest, SettingsUpdateWritesTheLanguageRowOnly)
{
    choose("French");
    for (const char *font : {"Arial 10 400", "Tahoma 12 700"}) {
        view.setText(Ctl::LFont, font);
        form.CommandUpdateLanguageSettings_Click();
        EXPECT_EQ(w.rowsOf(1036), 1);
        EXPECT_EQ(w.count("SELECT COUNT(*) FROM Language WHERE Name = 'French' AND Font = ? AND KBLayout = '0000040C'",
                          {font}),
                  1);
    }
    EXPECT_TRUE(view.at(Ctl::DeleteLanguageCombo).items.isEmpty()); // no texts: nothing to delete
}

TEST_F(LanguagesFormTest, ClosingStoresTheDatabasesInTheSettings)
{
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

} // namespace
} // namespace ht
