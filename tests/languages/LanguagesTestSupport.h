#pragma once
// The language tests' workspace: a help-text database fresh from the template
// (five free blocks of 256 alarms, 256 warnings, 1000 material changes) and a
// language-definition database with the real language numbers; the language
// form's logic in a headless window.

#include "common/QtPrinters.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "languages/LanguagesForm.h"
#include "support/DemoFiles.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <map>

namespace ht::test
{

constexpr int kGreek = 1032, kEnglish = 1033, kGerman = 1031;

struct LanguagesWorkspace {
    TestContext t;
    QString db() const { return t.path("Helptext.sqlite"); }
    QString lookup() const { return t.path("Languages.sqlite"); }

    LanguagesWorkspace()
    {
        makeDatabase(db(), {"src/database/schema/helptext.sql", "src/database/schema/helptext_materialchange.sql"});
        makeDatabase(lookup(), {"src/database/schema/languages.sql"});
        // Croatian stands in for Serbian; the panel cannot show Klingon (font "0").
        Database::open(lookup())->execScript(
            "INSERT INTO LookupLanguages (Language, Name, Font, KBLayout, SubstBy) VALUES "
            "(1031, 'German', 'Arial 10 400', '00000407', NULL), (1032, 'Greek', 'Arial 10 400', '00000408', NULL), "
            "(1033, 'English', 'Arial 10 400', '00000409', NULL), (1036, 'French', 'Arial 10 400', '0000040C', NULL), "
            "(1050, 'Croatian', 'Arial 10 400', '0000041A', NULL), (2074, 'Serbian', 'Arial 10 400', '0000081A', "
            "1050), (9999, 'Klingon', '0', '00000409', NULL)");
        AppState &s = t.ctx.state;
        s.mode = QStringLiteral("EDIT");
        s.iniPath = t.path("helptext.ini");
        EXPECT_EQ(CheckLanguageLookup(t.ctx, lookup()), lookup());
        EXPECT_EQ(CheckConnection(t.ctx, db()), db());
    }

    int count(const QString &sql, const QVariantList &params = {}) const
    {
        return Database::open(db(), Database::Mode::ReadOnly)->query(sql, params).value(0).toInt();
    }
    // All rows of a language in the text tables, the Language table and Discription.
    int rowsOf(int language) const
    {
        int n = 0;
        for (const char *table : {"AlarmText", "WarningText", "MaterialChangeText", "Language", "Discription"})
            n += count(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Language = ?").arg(table), {language});
        return n;
    }
    void exec(const QString &sql, const QVariantList &params = {}) const { Database::open(db())->exec(sql, params); }
};

class HeadlessLanguagesView : public LanguagesView
{
  public:
    struct Control {
        QString text;
        QStringList items;
        bool enabled = true, visible = true;
    };
    mutable std::map<Ctl, Control> controls;
    QString caption;
    bool busy = false;
    HeadlessStatus status;

    Control &at(Ctl c) const { return controls[c]; }
    void setCaption(const QString &t) override { caption = t; }
    void setText(Ctl c, const QString &t) override
    {
        const bool list = c == Ctl::PossLanguages || c == Ctl::DeleteLanguageCombo;
        at(c).text = list && !at(c).items.contains(t) ? QString() : t;
    }
    QString text(Ctl c) const override { return at(c).text; }
    void setItems(Ctl c, const QStringList &items) override
    {
        at(c).items = items;
        at(c).text.clear();
    }
    void setEnabled(Ctl c, bool e) override { at(c).enabled = e; }
    void setVisible(Ctl c, bool v) override { at(c).visible = v; }
    void setBusy(bool b) override { busy = b; }
    void closeForm() override {}
    StatusTarget *statusTarget() override { return &status; }
};

// The form's logic in a headless window, loaded.
class LanguagesCore : public ::testing::Test
{
  protected:
    using Ctl = LanguagesView::Ctl;
    LanguagesWorkspace w;
    HeadlessLanguagesView view;
    LanguagesForm form{w.t.ctx, view};
    ScriptedUserInterface &ui = w.t.ui;

    void SetUp() override { form.Form_Load(); }
    void choose(const QString &name)
    {
        view.setText(Ctl::PossLanguages, name);
        form.PossLanguages_Click();
    }
    void create(const QString &name)
    {
        choose(name);
        form.CreateLanguage_Click();
    }
    void remove(const QString &name, const QString &option)
    {
        view.setText(Ctl::DeleteLanguageCombo, name);
        form.DeleteLanguageCombo_Click();
        view.setText(Ctl::DeleteLangOption, option);
        form.DeleteLanguageButton_Click();
    }
};

} // namespace ht::test
