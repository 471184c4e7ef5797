// The checks in the editor: findings while typing, copying the source, going to
// items with findings; review marks kept by the save and found by the checks.
#include "EditorTestSupport.h"

#include "review/DatabaseCheck.h"
#include "review/ReviewMarks.h"

#include <QFile>

namespace ht
{
namespace
{

class ReviewMarks : public test::EditorOn<>
{
  protected:
    void SetUp() override
    {
        open();
        go(QStringLiteral("1"));
    }
    void typeResult(const QString &text) { type(Ctl::TextDestination, 2, text); }
    void saveResult(const QString &text)
    {
        typeResult(text);
        leave();
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

TEST_F(ReviewMarks, FindingsAreListedAndTheirBoxMarkedWhileTyping)
{
    EXPECT_EQ(view.shown(Ctl::LabelFindings), QString());
    typeResult(QStringLiteral("Η μηχανή/σταματά"));
    EXPECT_EQ(view.shown(Ctl::LabelFindings), QStringLiteral("Result: 0 line breaks in the source, 1 here"));
    EXPECT_TRUE(view.at(Ctl::TextDestination, 2).marked);
    EXPECT_FALSE(view.at(Ctl::TextDestination, 1).marked);
    typeResult(QStringLiteral("Η μηχανή σταματά"));
    EXPECT_EQ(view.shown(Ctl::LabelFindings), QString());
    EXPECT_FALSE(view.at(Ctl::TextDestination, 2).marked);
}

TEST_F(ReviewMarks, TheItemListMarksEachItemAndFollowsSavesAndClicks)
{
    ASSERT_EQ(view.itemList.size(), 256); // every alarm of the machine
    EXPECT_EQ(view.itemList[0], QStringLiteral("1  ✓  Carton magazine"));
    EXPECT_EQ(view.itemList[1], QStringLiteral("2  ○  Main drive Brake"));
    EXPECT_EQ(view.selectedLine, 1);
    saveResult(QStringLiteral("Η μηχανή σταματά!"));
    EXPECT_EQ(view.itemList[0], QStringLiteral("1  !  Carton magazine"));
    form.ItemList_Click(2);
    EXPECT_EQ(view.shown(Ctl::ComboIndex), QStringLiteral("2"));
    EXPECT_EQ(view.shown(Ctl::TextSource, 2), QStringLiteral("Emergency stop"));
    EXPECT_EQ(view.selectedLine, 2);
}

TEST_F(ReviewMarks, SearchListsTheItemsWhoseTextsHoldTheWord)
{
    w.t.ui.push(QStringLiteral("BRAKE")); // in the source of alarm 2, in any case
    form.MenuFind_Click();
    EXPECT_EQ(view.itemNumbers, QList<int>{2});
    EXPECT_EQ(view.selectedLine, 0); // item 1 shown, not found
    form.ItemList_Click(2);
    EXPECT_EQ(view.shown(Ctl::ComboIndex), QStringLiteral("2"));
    w.t.ui.push(QStringLiteral("κουτιών")); // in the destination of alarm 1
    form.MenuFind_Click();
    EXPECT_EQ(view.itemNumbers, QList<int>{1});
    w.t.ui.push(QString()); // nothing: every item again
    form.MenuFind_Click();
    EXPECT_EQ(view.itemNumbers.size(), 256);
}

TEST_F(ReviewMarks, CopyingTheSourceStoresItAsTypedWithACue)
{
    view.focused = {Ctl::TextDestination, 2};
    form.MenuCopySource_Click();
    EXPECT_EQ(w.greek("Result", 1), QStringLiteral("Machine stops"));
    EXPECT_EQ(view.shown(Ctl::TextDestination, 1), QStringLiteral("Αποθήκη κουτιών")); // the other box as it was
    EXPECT_EQ(view.status.text, QStringLiteral("Stored: the Greek text of alarm 1"));
    EXPECT_TRUE(view.shown(Ctl::LabelFindings).contains(QStringLiteral("Result: the same as the source")));
}

TEST_F(ReviewMarks, NextAndPreviousItemWithFindings)
{
    w.exec("UPDATE AlarmText SET Result = 'Η μηχανή σταματά.' WHERE Alarm_ID = 2 AND Language = 1032");
    form.MenuNextFinding_Click();
    EXPECT_EQ(view.shown(Ctl::ComboIndex), QStringLiteral("2"));
    EXPECT_FALSE(view.shown(Ctl::LabelFindings).isEmpty());
    form.MenuPreviousFinding_Click(); // item 1 has none: round to the last with findings
    EXPECT_NE(view.shown(Ctl::ComboIndex), QStringLiteral("1"));
}

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

    // The editor shows the old and the new source, the difference in brackets.
    go(QStringLiteral("1"));
    EXPECT_TRUE(view.shown(Ctl::LabelFindings)
                    .endsWith(QStringLiteral("source before: \"Machine stops\"; now: \"Machine stops [at once]\"")))
        << view.shown(Ctl::LabelFindings).toStdString();

    saveResult(QStringLiteral("Η μηχανή σταματά αμέσως"));
    EXPECT_TRUE(reviewFindings().isEmpty());

    // Marked as reviewed without a change to the text.
    w.exec("UPDATE AlarmText SET Result = 'Machine stops at once!' WHERE Alarm_ID = 1 AND Language = 1033");
    form.ComboIndex_KeyDown(13);
    EXPECT_EQ(reviewFindings(), QStringList{QStringLiteral("1 Result")});
    form.MenuReviewed_Click();
    EXPECT_TRUE(reviewFindings().isEmpty());
    EXPECT_EQ(w.greek("Result", 1), QStringLiteral("Η μηχανή σταματά αμέσως"));
}

TEST_F(ReviewMarks, ACompanionFileThatCannotBeWrittenCostsTheMarkNotTheText)
{
    // A folder where the file would be: nothing can be kept there.
    ASSERT_TRUE(QDir().mkpath(reviewMarksPath(w.db())));
    saveResult(QStringLiteral("Η μηχανή σταματά τώρα"));
    EXPECT_EQ(w.greek("Result", 1), QStringLiteral("Η μηχανή σταματά τώρα"));
    EXPECT_TRUE(w.t.ui.messageTexts().isEmpty());
    EXPECT_TRUE(w.t.errorLog().contains(QStringLiteral("review mark")));
}

} // namespace
} // namespace ht
