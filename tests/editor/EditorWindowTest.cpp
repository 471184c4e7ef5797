// The editor's real window, offscreen: that its controls reach the logic.
#include "EditorTestSupport.h"

#include "editor/forms/EditorWindow.h"
#include "editor/forms/MachineSelectionForm.h"
#include "editor/forms/ProgressWindow.h"
#include "startup/StartupDialog.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>

namespace ht
{
namespace
{

class EditorWindowTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        w.t.ctx.processEvents = [] { QCoreApplication::processEvents(); };
        test::writeText(w.t.ctx.state.iniPath,
                        "[Defaults]\nItem=1\nIndex=1\nMachine=CT400\nLanguageDestination=Greek\n");
        window = new EditorWindow(w.t.ctx, session);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    void TearDown() override { delete window.data(); }

    template <typename T> T *find(const QString &name) const
    {
        T *child = window->findChild<T *>(name);
        EXPECT_TRUE(child) << qPrintable(name);
        return child;
    }
    QPlainTextEdit *destination(int i) const { return find<QPlainTextEdit>(QString("TextDestination%1").arg(i)); }
    // Types like a keyboard would, any script (a character outside the BMP arrives as one key).
    static void typeText(QWidget *target, const QString &text)
    {
        for (qsizetype i = 0; i < text.size(); ++i) {
            const qsizetype n = text[i].isHighSurrogate() ? 2 : 1;
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, text.mid(i, n));
            QApplication::sendEvent(target, &press);
            i += n - 1;
        }
    }
    void typeInto(QPlainTextEdit *box, const QString &text)
    {
        box->setFocus();
        box->selectAll();
        typeText(box, text);
    }
    void activate() const
    {
        QEvent e(QEvent::WindowActivate);
        QApplication::sendEvent(window, &e);
    }

    test::EditorWorkspace w;
    StartupSession session{.compileOption = "EDIT"};
    QPointer<EditorWindow> window;
};

TEST_F(EditorWindowTest, ALeftBoxIsStoredAndItsPageWritten)
{
    EXPECT_EQ(destination(1)->toPlainText(), "Αποθήκη κουτιών");
    typeInto(destination(3), "Νέα εξήγηση 😀");
    QTest::keyClick(destination(3), Qt::Key_Tab); // on to the definition boxes
    EXPECT_EQ(w.greek("Function", 1), "Νέα εξήγηση 😀");
    EXPECT_EQ(QApplication::focusWidget(), find<QLineEdit>("TextDefinition1")); // writing the page took no focus
    EXPECT_TRUE(window->centralWidget()->isEnabled());
    EXPECT_TRUE(w.pageText("CT400/Alarms/Greek/1.html").contains("Νέα εξήγηση"));
    EXPECT_EQ(find<QLabel>("LabelTranslated")->text(), "translated 1 of 2");
}

TEST_F(EditorWindowTest, OpeningAMenuStoresTheTextFirst)
{
    typeInto(destination(2), "Σταματά");
    QMenu *items = window->menuBar()->actions().at(1)->menu();
    items->popup(window->mapToGlobal(QPoint(10, 10)));
    EXPECT_EQ(w.greek("Result", 1), "Σταματά");
    items->close();
}

TEST_F(EditorWindowTest, TypedItemNumbersAreCorrectedAtEveryKey)
{
    QLineEdit *number = find<QComboBox>("ComboIndex")->lineEdit();
    number->setFocus();
    number->selectAll();
    QTest::keyClicks(number, "300");
    EXPECT_EQ(number->text(), "256");
    number->selectAll();
    QTest::keyClicks(number, "2");
    EXPECT_EQ(find<QPlainTextEdit>("TextSource1")->toPlainText(), "Main drive\nBrake");
    number->selectAll();
    QTest::keyClicks(number, " 1"); // a blank first is no item 1 yet
    EXPECT_EQ(number->text(), " 1");
    EXPECT_EQ(find<QPlainTextEdit>("TextSource1")->toPlainText(), "Carton magazine");
}

// The database held by another program while alarm 1's Device is left; once
// it is free, typing another item number stores the text under alarm 1.
TEST_F(EditorWindowTest, ATextThatFailedIsStoredUnderItsOwnItemWhenTheNumberChanges)
{
    struct ShortWait {
        ShortWait() { Database::setBusyTimeout(50); }
        ~ShortWait() { Database::setBusyTimeout(5000); }
    } shortWait;
    auto other = Database::open(w.db());
    other->exec("BEGIN EXCLUSIVE");
    typeInto(destination(1), "Κρατημένο");
    QLineEdit *number = find<QComboBox>("ComboIndex")->lineEdit();
    number->setFocus(); // leaves the box for the item number
    ASSERT_EQ(w.t.ui.messageTexts().size(), 1);
    other.reset();
    number->selectAll();
    QTest::keyClicks(number, "2");
    EXPECT_EQ(w.greek("Device", 1), "Κρατημένο");
    EXPECT_EQ(w.greek("Device", 2) + w.greek("Result", 2) + w.greek("Function", 2), "");
    EXPECT_FALSE(QFile::exists(w.page("CT400/Alarms/Greek/2.html")));
    EXPECT_EQ(find<QPlainTextEdit>("TextSource1")->toPlainText(), "Main drive\nBrake");
    EXPECT_EQ(destination(1)->toPlainText(), "");
}

TEST_F(EditorWindowTest, UndoNeverReachesBackIntoTheItemBefore)
{
    typeInto(destination(3), "Νέο κείμενο");
    QTest::keyClick(destination(3), Qt::Key_J, Qt::ControlModifier);
    ASSERT_EQ(find<QComboBox>("ComboIndex")->currentText(), "2");
    QTest::keyClick(destination(3), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(destination(3)->toPlainText(), "");
    QTest::keyClick(destination(3), Qt::Key_Tab);
    EXPECT_EQ(w.greek("Function", 1), "Νέο κείμενο");
    EXPECT_EQ(w.greek("Function", 2), "");
}

// Boxes that cannot be typed into are drawn as the platform draws read-only
// boxes (a hand-made page's: in AHandMadePageLocksTheItemUntilItIsDeleted).
TEST_F(EditorWindowTest, BoxesThatCannotBeTypedIntoLookReadOnly)
{
    const auto looksReadOnly = [](QWidget *box) {
        auto *text = qobject_cast<QPlainTextEdit *>(box);
        const QColor base = (text ? text->viewport() : box)->palette().color(QPalette::Base);
        return base == QApplication::palette().color(QPalette::Window);
    };
    EXPECT_TRUE(looksReadOnly(find<QWidget>("TextSource3")));
    EXPECT_FALSE(looksReadOnly(destination(3)) || looksReadOnly(find<QWidget>("TextDefinition1")));
    window->setText(Ctl::ComboLanguageDestination, 0, ""); // no destination language
    window->logic().ComboIndex_Click();
    EXPECT_TRUE(looksReadOnly(destination(3)) && looksReadOnly(find<QWidget>("TextDefinition1")));
}

// Device and Result show two lines in the language's own font, any size, without a scroll bar.
TEST_F(EditorWindowTest, DeviceAndResultShowTwoLinesWithoutAScrollBar)
{
    QLineEdit *number = find<QComboBox>("ComboIndex")->lineEdit();
    number->setFocus();
    number->selectAll();
    QTest::keyClicks(number, "2"); // English Device: two lines
    for (int size : {10, 14, 20, 28}) {
        SCOPED_TRACE(size);
        w.exec("UPDATE Language SET Font = ? WHERE Name IN ('English', 'Greek')", {QString("Arial %1 400").arg(size)});
        activate();
        window->setText(Ctl::TextDestination, 2, "Πρώτη\r\nΔεύτερη");
        QApplication::processEvents();
        for (const char *name : {"TextSource1", "TextDestination2"}) {
            auto *box = find<QPlainTextEdit>(name);
            EXPECT_EQ(box->font().pointSize(), size);
            EXPECT_EQ(box->document()->blockCount(), 2);
            EXPECT_EQ(box->verticalScrollBar()->maximum(), 0) << name << " " << box->height();
        }
    }
}

TEST_F(EditorWindowTest, AHandMadePageLocksTheItemUntilItIsDeleted)
{
    const QString path = w.page("CT400/Alarms/Greek/1.html");
    test::writeText(path, "<html><body>Written by the customer</body></html>");
    activate();
    EXPECT_TRUE(destination(1)->isReadOnly() && destination(3)->isReadOnly());
    EXPECT_EQ(destination(3)->viewport()->palette().color(QPalette::Base),
              QApplication::palette().color(QPalette::Window)); // looks it
    EXPECT_EQ(destination(1)->toPlainText(), "HTML file modified by Costumer.");
    EXPECT_EQ(destination(3)->toPlainText(), "To reset original values delete file " + path + "!");
    destination(3)->setFocus();
    typeText(destination(3), "ignored");
    QTest::keyClick(destination(3), Qt::Key_Tab);
    EXPECT_EQ(w.greek("Function", 1).left(8), "Η αποθήκ");

    QFile::remove(path);
    activate();
    EXPECT_FALSE(destination(3)->isReadOnly());
    EXPECT_EQ(destination(1)->toPlainText(), "Αποθήκη κουτιών");
}

TEST_F(EditorWindowTest, CtrlJGoesToTheNextUntranslatedItemFromAnyBox)
{
    destination(3)->setFocus();
    QTest::keyClick(destination(3), Qt::Key_J, Qt::ControlModifier);
    EXPECT_EQ(find<QComboBox>("ComboIndex")->currentText(), "2");
    typeInto(destination(3), "Υπερφόρτωση");
    QTest::keyClick(destination(3), Qt::Key_K, Qt::ControlModifier); // stores first, then finds none left
    EXPECT_EQ(w.greek("Function", 2), "Υπερφόρτωση");
    EXPECT_EQ(window->statusBar()->currentMessage(), "Every item with a source text is translated");
}

TEST_F(EditorWindowTest, RenameRefusesADuplicateName)
{
    MachineSelectionForm dialog(w.t.ctx, window->logic().selection(), window);
    w.t.ui.push(QString("FL220"));
    QTest::mouseClick(dialog.findChild<QPushButton *>("CommandRename"), Qt::LeftButton);
    EXPECT_EQ(w.t.ui.messageTexts(), QStringList{"A machine named \"FL220\" already exists."});
    EXPECT_EQ(w.value("SELECT count(*) FROM AlarmDefinition WHERE MachineType = 'CT400'"), "256");
}

TEST_F(EditorWindowTest, EscStopsAPageRunBetweenPages)
{
    w.t.ui.push(1);           // dlgSelectHTMLOption: all kinds
    w.t.ui.push(Answer::Yes); // abort
    QKeyEvent *esc = new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::postEvent(window, esc); // the boxes are disabled while pages are written
    window->menuAction(Ctl::MenuGenerateHelpHTML)->trigger();
    ASSERT_GE(w.t.ui.shown.size(), 2u);
    EXPECT_EQ(w.t.ui.shown[1].title, "Abort writing HTML-files?");
    EXPECT_TRUE(w.t.ctx.state.htmlRunFailed); // cut short
    EXPECT_FALSE(QFile::exists(w.page("FL220/MaterialChange/English/1.html")));
    EXPECT_TRUE(window->menuBar()->isEnabled() && window->centralWidget()->isEnabled());
}

// The findings of the item under the boxes as the translator types, and
// Ctrl+B, in the real window. With HELPTEXT_SCREENSHOTS set to a folder the
// window is saved there as a picture for the README.
TEST_F(EditorWindowTest, FindingsFollowTheTypingAndCtrlBCopiesTheSource)
{
    auto *findings = find<QLabel>("LabelFindings");
    typeInto(destination(2), "Η μηχανή/σταματά");
    typeInto(destination(3), "Η αποθήκη είναι άδεια");
    EXPECT_EQ(findings->text(), "Result: 0 line breaks in the source, 1 here\n"
                                "Function: 2 lines in the source, 1 here\n"
                                "Function: the source ends with \".\", this text with no mark");
    EXPECT_TRUE(destination(2)->property("marked").toBool());
    EXPECT_FALSE(destination(1)->property("marked").toBool());
    if (const QString folder = qEnvironmentVariable("HELPTEXT_SCREENSHOTS"); !folder.isEmpty()) {
        QCoreApplication::processEvents(); // the layout makes room for the lines
        window->grab().save(folder + "/editor-findings.png");
    }

    destination(2)->setFocus();
    QTest::keyClick(destination(2), Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(w.greek("Result", 1), "Machine stops");
    EXPECT_EQ(window->statusBar()->currentMessage(), "Stored: the Greek text of alarm 1");
}

TEST_F(EditorWindowTest, OverviewDoubleClickShowsTheFirstItemToDoAndASaveCountsItsRowAgain)
{
    window->findChild<QAction *>("MenuProgressOverview")->trigger();
    auto *overview = window->findChild<ProgressWindow *>("ProgressWindow");
    ASSERT_TRUE(overview && overview->isVisible());
    QTest::qWait(0); // the findings follow the counts
    auto *table = overview->findChild<QTableWidget *>("ProgressTable");
    const auto rowOf = [&](const QString &machine, const QString &kind, const QString &language) {
        for (int r = 0; r < table->rowCount(); ++r)
            if (table->item(r, 0)->text() == machine && table->item(r, 1)->text() == kind &&
                table->item(r, 2)->text() == language)
                return r;
        return -1;
    };
    const int row = rowOf("CT400", "warnings", "Russian");
    ASSERT_GE(row, 0);
    EXPECT_EQ(table->item(row, 5)->text(), "1"); // missing: warning 2

    ASSERT_TRUE(QTest::qWaitForWindowExposed(overview));
    const QPoint at = table->visualItemRect(table->item(row, 4)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(find<QComboBox>("ComboIndex")->currentText(), "2");
    EXPECT_EQ(find<QComboBox>("ComboLanguageDestination")->currentText(), "Russian");
    EXPECT_TRUE(window->windowTitle().contains("Warnings")) << window->windowTitle().toStdString();
    QApplication::setActiveWindow(window); // as the translator clicks into it (offscreen: by hand)

    typeInto(destination(3), "Перегрузка");
    QTest::keyClick(destination(3), Qt::Key_Tab);
    EXPECT_EQ(w.value("SELECT COUNT(*) FROM WarningText WHERE Function = 'Перегрузка'"), "1");
    EXPECT_EQ(table->item(row, 4)->text(), "2"); // translated
    EXPECT_EQ(table->item(row, 5)->text(), "0");
}

} // namespace
} // namespace ht
