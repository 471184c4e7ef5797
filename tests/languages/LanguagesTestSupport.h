#pragma once
// The language tests' workspace: a help-text database fresh from the template
// (five free blocks of 256 alarms, 256 warnings, 1000 material changes) and a
// language-definition database with the real language numbers; and a headless
// language form.

#include "common/QtPrinters.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "languages/LanguagesView.h"
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

    explicit LanguagesWorkspace(bool withSubstBy = true)
    {
        makeDatabase(db(), {"src/database/schema/helptext.sql", "src/database/schema/helptext_materialchange.sql"});
        // Croatian stands in for Serbian; the panel cannot show Klingon (font "0").
        const char *rows[] = {"1031, 'German', 'Arial 10 400', '00000407', NULL",
                              "1032, 'Greek', 'Arial 10 400', '00000408', NULL",
                              "1033, 'English', 'Arial 10 400', '00000409', NULL",
                              "1036, 'French', 'Arial 10 400', '0000040C', NULL",
                              "1050, 'Croatian', 'Arial 10 400', '0000041A', NULL",
                              "2074, 'Serbian', 'Arial 10 400', '0000081A', 1050",
                              "9999, 'Klingon', '0', '00000409', NULL"};
        auto l = Database::create(lookup());
        l->exec(QStringLiteral("CREATE TABLE LookupLanguages (Language INTEGER, Name TEXT, Font TEXT, KBLayout TEXT, "
                               "CodePage INTEGER%1)")
                    .arg(withSubstBy ? ", SubstBy INTEGER" : ""));
        for (const char *row : rows) {
            const QString values = withSubstBy ? QString(row) : QString(row).section(',', 0, 3);
            l->exec(QStringLiteral("INSERT INTO LookupLanguages (Language, Name, Font, KBLayout%1) VALUES (%2)")
                        .arg(withSubstBy ? ", SubstBy" : "", values));
        }
        l.reset();
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
    std::map<Ctl, Control> controls;
    QString caption;
    int closed = 0;
    bool busy = false;
    HeadlessStatus status;

    Control &at(Ctl c) { return controls[c]; }
    void setCaption(const QString &t) override { caption = t; }
    void setText(Ctl c, const QString &t) override
    {
        const bool list = c == Ctl::PossLanguages || c == Ctl::DeleteLanguageCombo;
        at(c).text = list && !at(c).items.contains(t) ? QString() : t;
    }
    QString text(Ctl c) const override
    {
        const auto found = controls.find(c);
        return found == controls.end() ? QString() : found->second.text;
    }
    void setItems(Ctl c, const QStringList &items) override
    {
        at(c).items = items;
        at(c).text.clear();
    }
    void setEnabled(Ctl c, bool e) override { at(c).enabled = e; }
    void setVisible(Ctl c, bool v) override { at(c).visible = v; }
    void setBusy(bool b) override { busy = b; }
    void closeForm() override { ++closed; }
    StatusTarget *statusTarget() override { return &status; }
};

} // namespace ht::test
