// The editor's logic driven through a headless window on the demo data.
#include "EditorTestSupport.h"

#include "common/IniFile.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetEditor.h"
#include "editor/KeyboardLayouts.h"

#include <QFile>

namespace ht
{
namespace
{

using Editor = test::EditorOn<false>;
using AccessEditor = test::EditorOn<true>;

TEST_F(Editor, ShowsTheItemInBothLanguagesWithTheDestinationsLayout)
{
    open();
    EXPECT_EQ(view.caption, "Helptext editor Alarms - connected to " + w.db());
    EXPECT_EQ(view.shown(Ctl::LabelMachine), "CT400");
    EXPECT_EQ(view.shown(Ctl::ComboLanguageSource), "English");
    EXPECT_EQ(view.shown(Ctl::TextSource, 1), "Carton magazine");
    EXPECT_EQ(view.shown(Ctl::TextSource, 3),
              "The carton magazine is empty.\r\nRefill the magazine and acknowledge the alarm.");
    EXPECT_EQ(view.shown(Ctl::TextDestination, 2), "Η μηχανή σταματά");
    EXPECT_EQ(view.shown(Ctl::TextDefinition, 1), "B1/B2"); // definitions keep their separators
    EXPECT_EQ(view.at(Ctl::TextDestination, 3).font, (BoxFont{"Arial", 10, 400}));
    EXPECT_EQ(view.shown(Ctl::LabelTranslated), "translated 1 of 2");

    form.MenuWarnings_Click();
    EXPECT_FALSE(view.at(Ctl::TextDestination, 1).visible || view.at(Ctl::FrameDef).visible);
    EXPECT_EQ(view.shown(Ctl::LabelDestination, 3), "Function");
    EXPECT_FALSE(view.at(Ctl::MenuWarnings).enabled);
    EXPECT_EQ(view.shown(Ctl::TextDestination, 3), "Χαμηλή στάθμη κόλλας.");

    // A language without font specification is shown in English's, and says so.
    EXPECT_FALSE(view.at(Ctl::LabelFontError).visible);
    w.exec("UPDATE Language SET Font = NULL WHERE Name = 'Greek'");
    w.exec("UPDATE Language SET Font = 'Times New Roman 12 700' WHERE Name = 'English'");
    form.MenuAlarms_Click();
    EXPECT_EQ(view.at(Ctl::TextDestination, 1).font, (BoxFont{"Times New Roman", 12, 700}));
    EXPECT_TRUE(view.at(Ctl::LabelFontError).visible);
}

TEST_F(Editor, WithoutADatabaseTheFormWaitsForOne)
{
    w.t.ctx.state.helpTextDB.clear();
    test::writeText(w.t.ctx.state.iniPath, "[Setup]\nStandardHelpTextDB=" + w.t.path("gone.mdb") + "\n");
    ui.push(std::monostate{}); // the file dialog cancelled
    open();
    EXPECT_EQ(view.shown(Ctl::LabelMachine), "No machines");
    EXPECT_FALSE(view.at(Ctl::MenuGenerateHelpHTML).enabled || view.at(Ctl::MenuMachineSelection).enabled);
    EXPECT_TRUE(view.at(Ctl::MenuChangeDatabase).enabled);
    EXPECT_EQ(ui.messageTexts(), QStringList());

    ui.push(w.db());
    form.MenuChangeDatabase_Click();
    EXPECT_EQ(view.shown(Ctl::LabelMachine), "CT400");
    EXPECT_EQ(view.shown(Ctl::TextSource, 1), "Carton magazine");
    EXPECT_TRUE(view.at(Ctl::MenuGenerateHelpHTML).enabled);
}

TEST_F(Editor, StoredSlashesShowAsLineBreaks)
{
    const struct {
        const char *stored, *shown;
    } cases[] = {{"a/b/ c", "a\r\nb\r\nc"}, {"no break", "no break"}, {"a//b", "a\r\n\r\nb"}, {"end/ ", "end\r\n"}};
    for (const auto &c : cases)
        EXPECT_EQ(slashesToLineBreaks(c.stored), c.shown) << c.stored;
}

TEST_F(Editor, TypedItemNumbersAreCorrected)
{
    open();
    const struct {
        const char *typed, *corrected;
    } cases[] = {{"2", "2"}, {"abc", "1"}, {"2.5", "1"}, {"0", "1"}, {"-4", "1"}, {"300", "256"}, {"256", "256"}};
    for (const auto &c : cases) {
        view.setText(Ctl::ComboIndex, c.typed);
        form.ComboIndex_KeyDown(0);
        EXPECT_EQ(view.shown(Ctl::ComboIndex), c.corrected) << c.typed;
    }
    go("2");
    EXPECT_EQ(view.shown(Ctl::TextSource, 1), "Main drive\r\nBrake"); // every key press shows the item
    ui.push(QString("999"));                                          // Ctrl+G corrects the same way
    form.MenuGoToItem_Click();
    EXPECT_EQ(view.shown(Ctl::ComboIndex), "256");
}

// While the item number box names no item, no box can be typed into: nothing
// typed there could be stored under an item.
TEST_F(Editor, WithoutAnItemNumberNothingCanBeTyped)
{
    open();
    for (const char *typed : {"", "  ", "2.", "1e2"}) {
        go("1");
        view.setText(Ctl::ComboIndex, typed);
        form.ComboIndex_KeyDown(0);
        EXPECT_EQ(view.shown(Ctl::ComboIndex), typed);
        EXPECT_TRUE(view.at(Ctl::TextDestination, 3).locked && view.at(Ctl::TextDefinition, 1).locked) << typed;
        EXPECT_EQ(view.shown(Ctl::TextDestination, 3) + view.shown(Ctl::TextSource, 1), "") << typed;
        EXPECT_EQ(view.status.text, "Type an item number from 1 to 256 to show an item");
    }
    go("2");
    EXPECT_FALSE(view.at(Ctl::TextDestination, 3).locked);
    EXPECT_EQ(view.status.text, "");
}

// A machine's material changes are its own rows of MaterialChangeDefinition,
// which its import bound and its pages are written from.
TEST_F(Editor, MaterialChangeOfTheSecondMachineUsesItsOwnRows)
{
    open();
    form.selection().machine = "FL220";
    form.MenuMaterialChange_Click();
    EXPECT_EQ(form.selection().firstItemID, 1001);
    EXPECT_EQ(form.itemID(), 1001);
    EXPECT_EQ(view.shown(Ctl::TextSource, 3), "Change the bottle size at the star wheel.");
    type(Ctl::TextDestination, 3, "Αλλαγή μεγέθους φιάλης");
    leave();
    const QString sql = "SELECT Text FROM MaterialChangeText WHERE MaterialChange_ID = ? AND Language = 1032";
    EXPECT_EQ(w.value(sql, {1001}), "Αλλαγή μεγέθους φιάλης");
    EXPECT_EQ(w.value(sql, {257}), ""); // CT400's material change 257
}

// KBLayout holds the language identifier as a decimal number or as Windows
// writes a layout identifier: eight hexadecimal digits.
TEST_F(Editor, KeyboardLayoutsAreReadInBothForms)
{
    const struct {
        const char *stored, *id, *named;
    } cases[] = {{"00000408", "00000408", "Greek"},     {"1032", "00000408", "Greek"},
                 {" 1049 ", "00000419", "Russian"},     {"0000040C", "0000040C", "French"},
                 {"00001032", "00001032", "layout"},    {"00010409", "00010409", "English (US)"},
                 {"66569", "00010409", "English (US)"}, {"Greek", "", "layout"}};
    for (const auto &c : cases) {
        EXPECT_EQ(keyboardLayoutId(c.stored), c.id) << c.stored;
        EXPECT_TRUE(keyboardLayoutText(c.stored, "Greek").startsWith(QString("Keyboard for Greek: ") + c.named))
            << c.stored << " " << qPrintable(keyboardLayoutText(c.stored, "Greek"));
    }
    open(); // the demo's Greek: 1032
    EXPECT_EQ(view.layoutId, "00000408");
    EXPECT_EQ(view.keyboard, "Keyboard for Greek: Greek (00000408, X11 layout \"gr\")");
}

TEST_F(Editor, RememberedPositionOnlyForAMachineAndLanguageThatExist)
{
    const struct {
        const char *machine, *language;
        int kind;
        const char *index, *destination;
    } cases[] = {{"FL220", "Greek", 2, "3", "Greek"}, {"Gone", "Greek", 1, "1", ""}, {"FL220", "Klingon", 1, "1", ""}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.machine + std::string("/") + c.language);
        test::HeadlessEditorView v;
        EditorForm f(w.t.ctx, v);
        w.t.ctx.state.currentKind = KindAlarms;
        test::writeText(
            w.t.ctx.state.iniPath,
            QString("[Defaults]\nItem=2\nIndex=3\nMachine=%1\nLanguageDestination=%2\n").arg(c.machine, c.language));
        f.Form_Load();
        EXPECT_EQ(w.t.ctx.state.currentKind, c.kind);
        EXPECT_EQ(v.shown(Ctl::LabelMachine), c.kind == 2 ? "FL220" : "CT400");
        EXPECT_EQ(v.shown(Ctl::ComboIndex), c.index);
        EXPECT_EQ(v.shown(Ctl::ComboLanguageDestination), c.destination);
    }
    open("Russian");
    bool cancel = true;
    form.Form_Unload(cancel);
    EXPECT_FALSE(cancel);
    EXPECT_EQ(LoadIniString(w.t.ctx, "Defaults", "LanguageDestination", w.t.ctx.state.iniPath), "Russian");
    EXPECT_EQ(LoadIniString(w.t.ctx, "Defaults", "Machine", w.t.ctx.state.iniPath), "CT400");
}

TEST_F(Editor, TextsAreStoredExactlyAsTypedInAnyScript)
{
    w.exec("DELETE FROM AlarmText WHERE Alarm_ID = 2 AND Language = 1032");
    open();
    go("2");
    const QString texts[] = {"Ο κινητήρας υπερθερμαίνεται",
                             "Двигатель перегревается",
                             "电机过热",
                             "المحرك ساخن جدا",
                             "e\u0301 a\u0308 combining",
                             "outside the plane: 😀 𝄞 𠜎",
                             "two lines\r\nkept as typed"};
    for (const QString &text : texts) {
        type(Ctl::TextDestination, 3, text);
        leave();
        EXPECT_EQ(w.greek("Function", 2), text); // the first save adds the row, later ones change it
    }
    EXPECT_EQ(w.value("SELECT count(*) FROM AlarmText WHERE Alarm_ID = 2 AND Language = 1032"), "1");

    // A "/" typed into Device is a line break at once, and stored as "/".
    type(Ctl::TextDestination, 1, "Κινητήρας/Φρένο");
    EXPECT_EQ(view.shown(Ctl::TextDestination, 1), "Κινητήρας\r\nΦρένο");
    leave();
    EXPECT_EQ(w.value("SELECT Device FROM AlarmText WHERE Alarm_ID = 2 AND Language = 1032"), "Κινητήρας/Φρένο");
}

TEST_F(Editor, NothingCanBeStoredWithoutADestinationLanguage)
{
    open(QString());
    EXPECT_TRUE(view.at(Ctl::TextDestination, 3).locked);
    EXPECT_EQ(view.shown(Ctl::TextDefinition, 2), "K3"); // definitions are shown all the same
    type(Ctl::TextDefinition, 2, "K9");
    leave();
    EXPECT_EQ(w.value("SELECT Cam FROM AlarmDefinition WHERE AlarmID = 1"), "K3");
}

TEST_F(Editor, RejectsTakesNumbersOnly)
{
    open();
    type(Ctl::TextDefinition, 4, "7");
    leave();
    EXPECT_EQ(w.value("SELECT Rejects FROM AlarmDefinition WHERE AlarmID = 1"), "7");
    type(Ctl::TextDefinition, 4, "7x");
    EXPECT_EQ(view.shown(Ctl::TextDefinition, 4), "7");
    EXPECT_EQ(view.status.text, "Rejects: numbers only");
}

TEST_F(Editor, PageIsWrittenAgainOnlyWhenTheKindsSettingIsOn)
{
    for (bool on : {false, true}) {
        w.t.ctx.state.generateAfterEditAlarm = on;
        open();
        type(Ctl::TextDestination, 3, on ? "Σελίδα" : "Χωρίς σελίδα");
        leave();
        const QString text = w.pageText("CT400/Alarms/Greek/1.html");
        EXPECT_EQ(text.contains("Σελίδα"), on);
        EXPECT_FALSE(text.contains("Χωρίς"));
    }
}

// The database gone or held by another program: the translator hears of it in
// plain words, keeps the text, and it is stored under its own item once the
// database can be had again, whatever item is asked for by then.
TEST_F(Editor, AFailedSaveIsStoredUnderItsOwnItemLater)
{
    const QString db = w.db(), away = w.t.path("away.mdb");
    std::unique_ptr<Database> other;
    const struct {
        const char *name, *reason;
        std::function<void()> breakIt, mend;
    } cases[] = {
        {"deleted", "the database file cannot be found", [&] { QFile::rename(db, away); },
         [&] { QFile::rename(away, db); }},
        {"locked", "another program is using the database",
         [&] {
             other = Database::open(db);
             other->exec("BEGIN EXCLUSIVE");
         },
         [&] { other.reset(); }},
    };
    Database::setBusyTimeout(50);
    open();
    const QString deviceOf2 = w.greek("Device", 2);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ui.shown.clear();
        go("1");
        const QString typed = QString("Kept ") + c.name;
        type(Ctl::TextDestination, 1, typed);
        c.breakIt();
        leave();
        ASSERT_EQ(ui.messageTexts().size(), 1);
        EXPECT_TRUE(ui.messageTexts()[0].startsWith(QString("The Greek text of alarm 1 could not be stored because ") +
                                                    c.reason + "; it stays in its box: "))
            << qPrintable(ui.messageTexts()[0]);
        EXPECT_FALSE(ui.messageTexts()[0].contains('\n')); // one sentence; the driver's words go to the log
        EXPECT_TRUE(w.t.errorLog().contains("DataBase_Write: the Greek text of alarm 1 could not be stored"));
        EXPECT_EQ(view.shown(Ctl::TextDestination, 1), typed);
        // Moving on tries again, then asks; unanswered, the item and its text stay.
        go("2");
        EXPECT_EQ(ui.shown.back().buttons, Buttons::RetryDiscardCancel);
        EXPECT_EQ(ui.shown.back().text, QString("The Greek text of alarm 1 is not stored yet because ") + c.reason +
                                            ".\n\rRetry tries again, Discard gives the text up, Cancel stays with "
                                            "alarm 1.");
        EXPECT_EQ(view.shown(Ctl::ComboIndex), "1");
        EXPECT_EQ(view.shown(Ctl::TextDestination, 1), typed);
        c.mend();
        go("2"); // stored under alarm 1, and alarm 2 shown
        EXPECT_EQ(w.greek("Device", 1), typed);
        EXPECT_EQ(w.greek("Device", 2), deviceOf2);
        EXPECT_EQ(w.greek("Function", 2), "");
        EXPECT_FALSE(QFile::exists(w.page("CT400/Alarms/Greek/2.html")));
        EXPECT_EQ(view.shown(Ctl::TextSource, 1), "Main drive\r\nBrake");
        EXPECT_FALSE(form.hasUnsavedInput());
    }
    Database::setBusyTimeout(5000);
}

TEST_F(Editor, ClosingWhilePagesAreWrittenAsksToAbort)
{
    open();
    w.t.ctx.state.writingHtml = true;
    const struct {
        Answer answer;
        bool aborted;
    } cases[] = {{Answer::No, false}, {Answer::Yes, true}};
    for (const auto &c : cases) {
        ui.push(c.answer);
        bool cancel = false;
        form.Form_Unload(cancel);
        EXPECT_TRUE(cancel); // a run still under way keeps the form until it has stopped
        EXPECT_EQ(w.t.ctx.state.abortHtml, c.aborted);
    }
    EXPECT_EQ(ui.shown.back().title, "Abort writing HTML-files?");
}

TEST_F(Editor, UntranslatedItemsAreFoundAndCounted)
{
    open();
    form.MenuNextUntranslated_Click();
    EXPECT_EQ(view.shown(Ctl::ComboIndex), "2"); // English text, no Greek
    form.MenuPreviousUntranslated_Click();
    EXPECT_EQ(view.shown(Ctl::ComboIndex), "2"); // the only one, found from either side
    type(Ctl::TextDestination, 3, "Υπερφόρτωση");
    leave();
    EXPECT_EQ(view.shown(Ctl::LabelTranslated), "translated 2 of 2");
    form.MenuNextUntranslated_Click();
    EXPECT_EQ(view.status.text, "Every item with a source text is translated");
}

// An Access help-text database takes the translator's work itself: no copy beside it.
TEST_F(AccessEditor, TextsAndDefinitionsAreStoredInTheAccessFileItself)
{
    w.t.ctx.state.helpTextDB.clear(); // connected from the settings as the window loads
    open();
    EXPECT_EQ(w.t.ctx.state.helpTextDB, w.db());
    EXPECT_TRUE(view.at(Ctl::MenuConvertToSqlite).enabled);
    type(Ctl::TextDestination, 3, "Ο κινητήρας υπερθερμαίνεται");
    leave();
    type(Ctl::TextDefinition, 1, "B7");
    leave();
    EXPECT_EQ(ui.messageTexts(), QStringList());
    EXPECT_EQ(w.greek("Function", 1), "Ο κινητήρας υπερθερμαίνεται");
    EXPECT_EQ(w.value("SELECT Sensor FROM AlarmDefinition WHERE AlarmID = 1"), "B7");
    EXPECT_FALSE(QFile::exists(w.t.path("Helptext.sqlite")));
    EXPECT_TRUE(w.pageText("CT400/Alarms/Greek/1.html").contains("υπερθερμαίνεται"));

    // A text row the file lacks is added to it, its indexes with it; the file checks whole after both saves.
    go("2");
    type(Ctl::TextDestination, 3, "Υπερφόρτωση");
    leave();
    EXPECT_EQ(ui.messageTexts(), QStringList());
    EXPECT_EQ(w.greek("Function", 2), "Υπερφόρτωση");
    EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(w.db()), w.db())), QStringList());

    // Converted to SQLite on request, the text is stored there; the Access file stays as it was.
    const QByteArray access = test::readFileBytes(w.db());
    ui.shown.clear();
    form.MenuConvertToSqlite_Click();
    ASSERT_EQ(ui.messageTexts().size(), 1);
    EXPECT_TRUE(ui.messageTexts()[0].contains("which is used from now on")) << qPrintable(ui.messageTexts()[0]);
    EXPECT_FALSE(form.hasUnsavedInput());
    EXPECT_EQ(w.t.ctx.state.helpTextDB, w.t.path("Helptext.sqlite"));
    EXPECT_EQ(Database::open(w.t.ctx.state.helpTextDB, Database::Mode::ReadOnly)
                  ->query("SELECT Function FROM AlarmText WHERE Alarm_ID = 2 AND Language = 1032")
                  .text("Function"),
              "Υπερφόρτωση"); // the row added to the Access file came along
    EXPECT_EQ(test::readFileBytes(w.db()), access);
}

// Every way of moving on asks while a save fails (another program has the Access
// file open): Retry tries again, Discard moves on without the text,
// Cancel stays with everything as it was.
TEST_F(AccessEditor, WhileASaveFailsMovingOnAsksFirst)
{
    using View = test::HeadlessEditorView;
    const struct {
        const char *name;
        std::function<void(EditorForm &, View &)> move;
    } moves[] = {
        {"item", [](EditorForm &f, View &v) { v.setText(Ctl::ComboIndex, "1"), f.ComboIndex_KeyDown(13); }},
        {"kind", [](EditorForm &f, View &) { f.MenuWarnings_Click(); }},
        {"language",
         [](EditorForm &f, View &v) {
             v.setText(Ctl::ComboLanguageDestination, "Russian"), f.ComboLanguageDestination_Click();
         }},
        {"machine", [](EditorForm &f, View &) { f.MenuMachineSelection_Click(); }},
        {"next untranslated", [](EditorForm &f, View &) { f.MenuNextUntranslated_Click(); }},
    };
    bool dialogShown = false;
    view.machineSelection = [&] { dialogShown = true; };
    open();
    test::writeFileBytes(jet::Editor::lockFile(w.db()), "lock");
    go("2");
    type(Ctl::TextDestination, 3, "Σε αναμονή");
    leave();
    for (const auto &m : moves) {
        SCOPED_TRACE(m.name);
        ui.shown.clear();
        ui.push(Answer::Retry);
        ui.push(Answer::Cancel);
        m.move(form, view);
        EXPECT_EQ(ui.shown.size(), 2u); // asked again after the retry failed too
        EXPECT_EQ(w.t.ctx.state.currentKind, KindAlarms);
        EXPECT_EQ(view.shown(Ctl::ComboIndex) + view.shown(Ctl::ComboLanguageDestination), "2Greek");
        EXPECT_EQ(view.shown(Ctl::TextDestination, 3), "Σε αναμονή");
        EXPECT_TRUE(form.hasUnsavedInput());
        EXPECT_FALSE(dialogShown);
    }
    ui.push(Answer::Discard);
    moves[0].move(form, view);
    EXPECT_FALSE(form.hasUnsavedInput());
    EXPECT_EQ(view.shown(Ctl::ComboIndex), "1");
    EXPECT_EQ(w.greek("Function", 1).left(8), "Η αποθήκ");
}

} // namespace
} // namespace ht
