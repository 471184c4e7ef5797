// The language form's real window, offscreen: its controls reach the logic,
// and the editor's menu leads to it and back.
#include "LanguagesTestSupport.h"

#include "common/IniFile.h"
#include "languages/forms/LanguagesWindow.h"
#include "startup/StartupDialog.h"
#include "startup/forms/MainForms.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

namespace ht
{
namespace
{

using test::kGreek;

class LanguagesWindowTest : public ::testing::Test
{
  protected:
    test::LanguagesWorkspace w;
    LanguagesWindow window{w.t.ctx};

    void SetUp() override
    {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    template <typename T = QWidget> T *find(const QString &name)
    {
        T *child = window.findChild<T *>(name);
        EXPECT_TRUE(child) << qPrintable(name);
        return child;
    }
    void click(const QString &button) { QTest::mouseClick(find<QAbstractButton>(button), Qt::LeftButton); }
};

TEST_F(LanguagesWindowTest, EveryControlIsNamedAndTheTabKeyWalksThem)
{
    const QStringList chain{"PossLanguages",       "CreateLanguage",    "CommandUpdateLanguageSettings",
                            "DeleteLanguageCombo", "DeleteLangOption1", "DeleteLanguageButton"};
    for (const QString &name : chain + QStringList{"LCode", "LFont", "LKeybd", "DeleteLangOption", "DeleteLangOption2"})
        EXPECT_FALSE(find<QWidget>(name)->accessibleName().isEmpty()) << qPrintable(name);
    // Everything is enabled so that Tab stops everywhere.
    for (QWidget *child : window.findChildren<QWidget *>())
        child->setEnabled(true);
    find<QWidget>("PossLanguages")->setFocus();
    for (const QString &name : chain) {
        EXPECT_EQ(QApplication::focusWidget()->objectName(), name);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
}

TEST_F(LanguagesWindowTest, CreateAndDeleteWithTheMouse)
{
    auto *list = find<QListWidget>("PossLanguages");
    QListWidgetItem *greek = list->findItems("Greek", Qt::MatchExactly).value(0);
    ASSERT_TRUE(greek);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(greek).center());
    EXPECT_EQ(find<QLineEdit>("LCode")->text(), "1032");
    EXPECT_EQ(find<QLineEdit>("LKeybd")->text(), "00000408");
    click("CreateLanguage");
    EXPECT_EQ(w.rowsOf(kGreek), 7569);
    EXPECT_TRUE(window.menuWidget()->isEnabled() && find<QWidget>("CreateLanguage")->isEnabled());

    auto *combo = find<QComboBox>("DeleteLanguageCombo");
    EXPECT_FALSE(find<QWidget>("DeleteLanguageButton")->isEnabled());
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_EQ(combo->currentText(), "Greek");
    click("DeleteLangOption2");
    w.t.ui.push(Answer::OK);
    click("DeleteLanguageButton");
    EXPECT_EQ(w.rowsOf(kGreek), 0);
    EXPECT_EQ(combo->count(), 0);
}

TEST(LanguagesWindowSwitch, TheEditorsMenuLeadsHereAndBack)
{
    test::LanguagesWorkspace w;
    StartupSession session{.compileOption = "EDIT"};
    QtFormHost forms(w.t.ctx, session);
    w.t.ctx.forms = &forms;
    const auto settle = [] { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); };
    const auto menu = [&](FormId form, const char *name) {
        forms.form(form)->findChild<QAction *>(name)->trigger();
        settle();
    };
    forms.showForm(FormId::Edit);
    menu(FormId::Edit, "MenuLanguage");
    ASSERT_FALSE(forms.form(FormId::Edit));
    ASSERT_TRUE(forms.form(FormId::Languages) && forms.form(FormId::Languages)->isVisible());
    EXPECT_EQ(forms.form(FormId::Languages)->objectName(), "frmLanguages");

    menu(FormId::Languages, "MenuWarnings");
    EXPECT_FALSE(forms.form(FormId::Languages));
    ASSERT_TRUE(forms.form(FormId::Edit));
    EXPECT_EQ(w.t.ctx.state.currentKind, KindWarnings);
    EXPECT_EQ(LoadIniString(w.t.ctx, "Defaults", "Item", w.t.ctx.state.iniPath), "2"); // the editor opens on it
    forms.unloadForm(FormId::Edit);
    settle();
}

} // namespace
} // namespace ht
