// Review marks kept by the editor's save in the companion file, and found by the checks.
#include "EditorTestSupport.h"

#include "editor/EditorForm.h"
#include "review/DatabaseCheck.h"
#include "review/ReviewMarks.h"

#include <QFile>

namespace ht
{
namespace
{

class ReviewMarks : public ::testing::Test
{
  protected:
    test::EditorWorkspace w;
    test::HeadlessEditorView view;
    EditorForm form{w.t.ctx, view};

    void SetUp() override
    {
        form.Form_Load();
        view.setText(Ctl::ComboLanguageSource, QStringLiteral("English"));
        view.setText(Ctl::ComboLanguageDestination, QStringLiteral("Greek"));
        form.Form_Activate();
        view.setText(Ctl::ComboIndex, QStringLiteral("1"));
        form.ComboIndex_KeyDown(13);
    }
    void saveResult(const QString &text)
    {
        view.focused = {Ctl::TextDestination, 2};
        view.setText(Ctl::TextDestination, 2, text);
        form.TextDestination_Change(2);
        view.focused = {Ctl::MenuExit, -1};
        form.TextDestination_LostFocus(2);
    }
    // The review findings of the Greek alarms of the first machine.
    QStringList reviewFindings()
    {
        DatabaseCheck check(w.t.ctx, w.db(), {}, {QStringLiteral("review")});
        QStringList out;
        check.run(*check.language("Greek"), *check.language("English"), {{}, KindAlarms, {}},
                  [&](const CheckedItem &item) {
                      for (const Finding &f : item.findings)
                          out << QString::number(item.number) + QLatin1Char(' ') + f.field;
                  });
        return out;
    }
};

TEST_F(ReviewMarks, ASourceChangedAfterTheSaveNeedsReviewUntilSavedAgain)
{
    EXPECT_TRUE(reviewFindings().isEmpty()); // saved before marks were kept: not marked
    EXPECT_FALSE(QFile::exists(reviewMarksPath(w.db())));
    saveResult(QStringLiteral("Η μηχανή σταματά"));
    EXPECT_TRUE(QFile::exists(w.db() + QStringLiteral(".work.sqlite")));
    EXPECT_TRUE(reviewFindings().isEmpty());

    // An import (any program) changes the English source.
    w.exec("UPDATE AlarmText SET Result = 'Machine stops at once' WHERE Alarm_ID = 1 AND Language = 1033");
    EXPECT_EQ(reviewFindings(), QStringList{QStringLiteral("1 Result")});

    saveResult(QStringLiteral("Η μηχανή σταματά αμέσως"));
    EXPECT_TRUE(reviewFindings().isEmpty());
}

TEST_F(ReviewMarks, ACompanionFileThatCannotBeWrittenCostsTheMarkNotTheText)
{
    // A folder where the file would be: nothing can be kept there.
    ASSERT_TRUE(QDir().mkpath(reviewMarksPath(w.db())));
    saveResult(QStringLiteral("Η μηχανή σταματά τώρα"));
    EXPECT_EQ(w.value("SELECT Result FROM AlarmText WHERE Alarm_ID = 1 AND Language = 1032"),
              QStringLiteral("Η μηχανή σταματά τώρα"));
    EXPECT_TRUE(w.t.ui.messageTexts().isEmpty());
    EXPECT_TRUE(w.t.errorLog().contains(QStringLiteral("review mark")));
}

} // namespace
} // namespace ht
