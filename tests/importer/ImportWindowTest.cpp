// The importer's real window, offscreen: that its controls reach the logic.
#include "ImportTestSupport.h"

#include "importer/forms/DelMachineForm.h"
#include "importer/forms/ImportWindow.h"
#include "importer/forms/QuestOverwriteForm.h"
#include "startup/StartupDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace ht
{
namespace
{

TEST(ImportWindow, ImportsWhatItsFieldsSayAndDeletesTheMachine)
{
    test::ImportWorkspace w;
    StartupSession session{.compileOption = "IMPORT"};
    ImportWindow window(w.t.ctx, session);
    window.show();
    const auto field = [&](const char *name) { return window.findChild<QLineEdit *>(name); };
    auto *import = window.findChild<QPushButton *>("CommandImport");
    EXPECT_FALSE(import->isEnabled()); // no workbook yet

    w.t.ui.push(QString(test::workbook("layout.xlsx")));
    QTest::mouseDClick(field("TextXLFile"), Qt::LeftButton);
    QTest::keyClicks(field("TextMachineID"), "Cartoner");
    field("TextAnzahlFehler")->selectAll();
    QTest::keyClicks(field("TextAnzahlFehler"), "3a"); // the letter is refused with its message
    EXPECT_EQ(field("TextAnzahlFehler")->text(), "3");
    EXPECT_EQ(w.t.ui.messageTexts().value(0), "Nur Zahlen erlaubt");
    window.findChild<QComboBox *>("ComboNrLangXL")->setCurrentText("2");
    auto *language = window.findChild<QComboBox *>("ComboLanguage");
    language->setCurrentIndex(language->findText("Greek"));
    ASSERT_TRUE(import->isEnabled());
    w.t.ui.push(Answer::Yes); // a template for other added rows: import all the same
    QTest::mouseClick(import, Qt::LeftButton);
    EXPECT_TRUE(w.t.ui.messageTexts().last().startsWith("Imported into machine Cartoner"))
        << qPrintable(w.t.ui.messageTexts().join('\n'));
    EXPECT_EQ(w.value("SELECT Device FROM AlarmText WHERE Alarm_ID = 7 AND Language = 1032"), "Συσκευή 7");
    EXPECT_TRUE(import->isEnabled());

    DelMachineForm dialog(w.t.ctx, &window);
    EXPECT_EQ(dialog.findChild<QComboBox *>("ComboExistingMachines")->currentText(), "Cartoner");
    w.t.ui.push(Answer::Yes);
    QTest::mouseClick(dialog.findChild<QPushButton *>("CommandDelete"), Qt::LeftButton);
    EXPECT_EQ(w.t.ui.messageTexts().last(), "Cartoner deleted");
    EXPECT_EQ(w.value("SELECT count(*) FROM AlarmDefinition WHERE MachineType = 'Cartoner'"), "0");
}

// The database the importer starts with is no help-text database.
TEST(ImportWindow, SaysWrongDatabase)
{
    test::ImportWorkspace w;
    test::writeFileBytes(w.t.path("notes.mdb"), "Alarm 1: the motor is hot");
    w.t.ctx.state.helpTextDB.clear();
    test::writeText(w.t.ctx.state.iniPath, "[Setup]\nStandardHelpTextDB=" + w.t.path("notes.mdb") + "\n");
    StartupSession session{.compileOption = "IMPORT"};
    ImportWindow window(w.t.ctx, session);
    ASSERT_FALSE(w.t.ui.shown.empty());
    EXPECT_EQ(w.t.ui.shown.back().text, "Wrong Database!");
    EXPECT_EQ(w.t.ui.shown.back().title, "Fatal Error");
}

TEST(ImportWindow, ClosingTheOverwriteQuestionCancels)
{
    for (const int answer : {0, 3}) { // 0: the window closed; 3: its fourth button
        QTimer::singleShot(0, [answer] {
            if (QWidget *q = QApplication::activeModalWidget())
                answer ? QTest::mouseClick(q->findChild<QPushButton *>("AnswOverwrite3"), Qt::LeftButton)
                       : void(q->close());
        });
        EXPECT_EQ(QuestOverwriteForm::ask("Alarms", "ID: 1, Sensor: B1", "ID: 1, Sensor: B2", nullptr), answer);
    }
}

} // namespace
} // namespace ht
