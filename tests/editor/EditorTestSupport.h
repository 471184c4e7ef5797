#pragma once
// The editor tests' workspace: the demo databases, a help directory with the
// page templates and a context that has been through start-up; and a headless
// editor window for the core tests.

#include "common/QtPrinters.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "editor/EditorForm.h"
#include "editor/EditorView.h"
#include "support/DemoFiles.h"
#include "support/TestSupport.h"

#include <QDir>
#include <gtest/gtest.h>
#include <map>

namespace ht::test
{

struct EditorWorkspace {
    TestContext t;
    QString db() const { return t.path("Helptext.mdb"); }
    QString help() const { return t.path("help/"); }
    QString page(const QString &relative) const { return help() + relative; }

    // `access`: the help-text database is an Access file made from the demo's,
    // in which alarm 2 has no Greek text row (an Access file takes no new rows).
    explicit EditorWorkspace(bool access = false)
    {
        if (access) {
            const QString demo = t.path("demo.sqlite");
            makeDemoHelpTextDB(demo);
            Database::open(demo)->exec("DELETE FROM AlarmText WHERE Alarm_ID = 2 AND Language = 1032");
            makeAccessCopy(demo, db());
        } else {
            makeDemoHelpTextDB(db());
        }
        makeDemoLanguageDB(t.path("Languages.mdb"));
        makeDemoIndexTextDB(t.path("Scopia.mdb"));
        copyTemplates(t.path("help"));
        AppState &s = t.ctx.state;
        s.mode = QStringLiteral("EDIT");
        s.iniPath = t.path("helptext.ini");
        s.langLookupDB = t.path("Languages.mdb");
        s.indexTextDB = t.path("Scopia.mdb");
        s.helpMainDir = help();
        s.screenResolution = QStringLiteral("1024");
        s.generateAfterEditAlarm = s.generateAfterEditWarnings = s.generateAfterEditMaterialChange = true;
        EXPECT_EQ(CheckConnection(t.ctx, db()), db());
    }

    // The first value of a query on the help-text database.
    QString value(const QString &sql, const QVariantList &params = {}) const
    {
        auto d = Database::open(db(), Database::Mode::ReadOnly);
        const Recordset rs = d->query(sql, params);
        return rs.recordCount() ? rs.value(0).toString() : QStringLiteral("<none>");
    }
    void exec(const QString &sql, const QVariantList &params = {}) const { Database::open(db())->exec(sql, params); }
    QString greek(const char *field, int alarmId) const
    {
        return value(QString("SELECT %1 FROM AlarmText WHERE Alarm_ID = ? AND Language = 1032").arg(field), {alarmId});
    }
    // A written page's text: pages are UTF-16.
    QString pageText(const QString &relative) const
    {
        const QByteArray b = readFileBytes(page(relative));
        return QString::fromUtf16(reinterpret_cast<const char16_t *>(b.constData()), b.size() / 2);
    }
};

class HeadlessEditorView : public EditorView
{
  public:
    struct Control {
        QString text;
        QStringList items;
        bool visible = true, enabled = true, locked = false, marked = false;
        int cursor = 0;
        BoxFont font;
    };
    using Key = std::pair<Ctl, int>;
    std::map<Key, Control> controls;
    Key focused{Ctl::MenuExit, -1}; // nothing
    QString caption, keyboard, layoutId;
    std::function<void()> machineSelection = [] {};
    HeadlessStatus status;

    Control &at(Ctl c, int i = 0) { return controls[{c, i}]; }
    QString shown(Ctl c, int i = 0) const
    {
        const auto found = controls.find({c, i});
        return found == controls.end() ? QString() : found->second.text;
    }

    using EditorView::setEnabled;
    using EditorView::setText;
    using EditorView::setVisible;
    using EditorView::text;
    void setCaption(const QString &t) override { caption = t; }
    void setText(Ctl c, int i, const QString &t) override
    {
        Control &x = at(c, i);
        const bool list = c == Ctl::ComboLanguageSource || c == Ctl::ComboLanguageDestination;
        x.text = list && !x.items.contains(t) ? QString() : t;
    }
    QString text(Ctl c, int i) const override { return shown(c, i); }
    void setItems(Ctl c, const QStringList &items) override
    {
        at(c).items = items;
        at(c).text.clear();
    }
    void setVisible(Ctl c, int i, bool v) override { at(c, i).visible = v; }
    void setEnabled(Ctl c, int i, bool e) override { at(c, i).enabled = e; }
    void setLocked(Ctl c, int i, bool l) override { at(c, i).locked = l; }
    void setMarked(Ctl c, int i, bool m) override { at(c, i).marked = m; }
    QStringList itemList; // the lines shown
    QList<int> itemNumbers;
    int selectedLine = 0; // the item number of the line selected
    void setItemList(const QList<int> &numbers, const QStringList &lines) override
    {
        itemNumbers = numbers;
        itemList = lines;
    }
    void setItemListLine(int number, const QString &line) override
    {
        if (const qsizetype row = itemNumbers.indexOf(number); row >= 0)
            itemList[row] = line;
    }
    void selectItemListLine(int number) override { selectedLine = itemNumbers.contains(number) ? number : 0; }
    bool hasFocus(Ctl c, int i) const override { return focused == Key{c, i}; }
    int cursorPosition(Ctl c, int i) const override
    {
        const auto found = controls.find({c, i});
        return found == controls.end() ? 0 : found->second.cursor;
    }
    void setCursorPosition(Ctl c, int i, int p) override { at(c, i).cursor = p; }
    void setFont(Ctl c, int i, const BoxFont &f) override { at(c, i).font = f; }
    void activateKeyboardLayout(const QString &id, const QString &t) override
    {
        layoutId = id;
        keyboard = t;
    }
    void clearUndo(Ctl, int) override {}
    void setBusy(bool) override {}
    void showMachineSelection() override { machineSelection(); }
    void showInfoBox() override {}
    void closeForm() override {}
    StatusTarget *statusTarget() override { return &status; }
};

// The editor's logic behind a headless window, and the translator's moves.
template <bool OnAccessFile = false> class EditorOn : public ::testing::Test
{
  protected:
    EditorWorkspace w{OnAccessFile};
    HeadlessEditorView view;
    EditorForm form{w.t.ctx, view};
    ScriptedUserInterface &ui = w.t.ui;

    void open(const QString &destination = QStringLiteral("Greek"))
    {
        form.Form_Load();
        view.setText(Ctl::ComboLanguageDestination, destination);
        form.Form_Activate();
    }
    void go(const QString &number)
    {
        view.setText(Ctl::ComboIndex, number);
        form.ComboIndex_KeyDown(13);
    }
    void type(Ctl box, int index, const QString &text)
    {
        view.focused = {box, index};
        view.setText(box, index, text);
        box == Ctl::TextDestination ? form.TextDestination_Change(index) : form.TextDefinition_Change(index);
    }
    void leave()
    {
        const auto [box, index] = view.focused;
        view.focused = {Ctl::MenuExit, -1};
        box == Ctl::TextDestination ? form.TextDestination_LostFocus(index) : form.TextDefinition_LostFocus(index);
    }
};

} // namespace ht::test
