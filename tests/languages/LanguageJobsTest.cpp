// Creating, repairing and deleting languages through the form's logic on a
// database fresh from the template.
#include "LanguagesTestSupport.h"

#include "languages/LanguageJobs.h"

#include <QRegularExpression>

namespace ht
{
namespace
{

using test::kEnglish;
using test::kGreek;

using LanguageJobs = test::LanguagesCore;

TEST_F(LanguageJobs, CreateGivesEveryItemOfEveryBlockATextRow)
{
    create("Greek");
    EXPECT_EQ(view.text(Ctl::LCode), "1032");
    EXPECT_TRUE(ui.shown.empty()); // a new language asks nothing
    const struct {
        const char *table, *id;
        int block, blocks;
    } kinds[] = {{"AlarmText", "Alarm_ID", 256, 5},
                 {"WarningText", "Warning_ID", 256, 5},
                 {"MaterialChangeText", "MaterialChange_ID", 1000, 5},
                 {"Discription", "DiscriptionID", 8, 1}};
    for (const auto &k : kinds)
        EXPECT_EQ(w.count(QStringLiteral("SELECT COUNT(*) FROM (SELECT COUNT(*) n FROM %1 WHERE Language = ? "
                                         "GROUP BY (%2 - 1) / ? HAVING n = ?)")
                              .arg(k.table, k.id),
                          {kGreek, k.block, k.block}),
                  k.blocks)
            << k.table;
    EXPECT_EQ(w.rowsOf(kGreek), 7560 + 1 + 8);
    EXPECT_EQ(w.count("SELECT COUNT(*) FROM Language WHERE Language = ? AND Name = 'Greek' AND Font = 'Arial 10 400' "
                      "AND KBLayout = '00000408'",
                      {kGreek}),
              1);
    EXPECT_EQ(view.status.value, view.status.max); // the progress display went all the way
    EXPECT_FALSE(view.status.visible || view.status.disabled || view.busy);
    EXPECT_EQ(view.at(Ctl::DeleteLanguageCombo).items, QStringList{"Greek"});
}

TEST_F(LanguageJobs, CreatingAgainRepairsAndKeepsTheTexts)
{
    create("Greek");
    w.exec("UPDATE AlarmText SET Function = 'Η αποθήκη είναι άδεια' WHERE Alarm_ID = 257 AND Language = ?", {kGreek});
    w.exec("DELETE FROM WarningText WHERE Warning_ID <= 10 AND Language = ?", {kGreek});
    w.exec("DELETE FROM Discription WHERE DiscriptionID = 3 AND Language = ?", {kGreek});
    const struct {
        Answer answer;
        int missing;
    } runs[] = {{Answer::No, 11}, {Answer::Yes, 0}};
    for (const auto &run : runs) {
        ui.push(run.answer);
        form.CreateLanguage_Click();
        EXPECT_EQ(ui.shown.back().title, "Language exists!");
        EXPECT_EQ(ui.shown.back().text, "LanguageGreek already exists!\n\rOK to reset all language information "
                                        "(incl. Alarms, Warnings & MaterialChange)?");
        EXPECT_EQ(w.rowsOf(kGreek), 7560 + 1 + 8 - run.missing);
    }
    EXPECT_EQ(w.count("SELECT COUNT(*) FROM AlarmText WHERE Function = 'Η αποθήκη είναι άδεια'"), 1);
}

TEST_F(LanguageJobs, DeleteWithEachOption)
{
    const struct {
        const char *option;
        Answer answer;
        int remaining; // rows of Greek
        const char *question;
    } cases[] = {
        {"1", Answer::Cancel, 7569, "You are about to delete all entries of alarms and warnings for Greek?"},
        {"1", Answer::OK, 9, "You are about to delete all entries of alarms and warnings for Greek?"},
        {"2", Answer::OK, 0,
         "You are about to delete all entries of alarms and warnings for the language as well as the whole language "
         "configuration for Greek?"},
    };
    create("English");
    for (const auto &c : cases) {
        create("Greek");
        ui.push(c.answer);
        remove("Greek", c.option);
        EXPECT_EQ(ui.shown.back().text, QString(c.question) + "\n\r\n\rClick OK to continue!");
        EXPECT_EQ(w.rowsOf(kGreek), c.remaining) << c.option;
        EXPECT_EQ(view.at(Ctl::DeleteLanguageCombo).items.contains("Greek"), c.remaining > 9);
        EXPECT_EQ(w.rowsOf(kEnglish), 7569); // another language is never touched
    }
}

TEST_F(LanguageJobs, RefusalsDeleteNothing)
{
    create("Greek");
    create("English");
    w.exec("INSERT INTO Language VALUES (1031, 'German', 'Arial 10 400', '00000407')");
    const struct {
        const char *name;
        int option;
        const char *message;
    } cases[] = {
        {"English", DeleteWithConfiguration, "English or German cannot be deleted!"},
        {"german", DeleteNoOption, "English or German cannot be deleted!"},
        {"Greek", DeleteNoOption, "Select an option!"},
        {"", DeleteTextsOnly, "No language selected!"},
        {"Elvish", DeleteTextsOnly,
         "The language-definition database has no language named \"Elvish\" that could be deleted.\n\rNothing was "
         "deleted."},
    };
    for (const auto &c : cases) {
        ui.shown.clear();
        EXPECT_FALSE(deleteLanguage(w.t.ctx, &view.status, c.name, c.option)) << c.name;
        ASSERT_EQ(ui.shown.size(), 1u) << c.name;
        EXPECT_EQ(ui.shown[0].text, c.message);
    }
    EXPECT_EQ(w.rowsOf(kGreek) + w.rowsOf(kEnglish) + w.rowsOf(test::kGerman), 2 * 7569 + 1);
}

TEST_F(LanguageJobs, AFailureHalfWayChangesNothing)
{
    create("French");
    const int before = w.count("SELECT COUNT(*) FROM AlarmText");
    // The database refuses the last step of each job.
    w.exec("CREATE TRIGGER refuseDescriptions BEFORE INSERT ON Discription WHEN NEW.Language = 1032 "
           "BEGIN SELECT RAISE(ABORT, 'disk full'); END");
    w.exec("CREATE TRIGGER keepDescriptions BEFORE DELETE ON Discription BEGIN SELECT RAISE(ABORT, 'disk full'); END");
    create("Greek");
    EXPECT_EQ(w.rowsOf(kGreek), 0);
    ui.push(Answer::OK);
    remove("French", "2");
    EXPECT_EQ(w.rowsOf(1036), 7569);
    EXPECT_EQ(w.count("SELECT COUNT(*) FROM AlarmText"), before);

    const QStringList texts = ui.messageTexts();
    ASSERT_EQ(texts.size(), 3);
    EXPECT_TRUE(texts[0].contains(QRegularExpression("^The language Greek could not be created:\n\r.*disk full.*"
                                                     "\n\r\n\rNothing was changed.$",
                                                     QRegularExpression::DotMatchesEverythingOption)))
        << qPrintable(texts[0]);
    EXPECT_TRUE(
        texts[2].contains(QRegularExpression("^The language French could not be deleted:.*Nothing was deleted.$",
                                             QRegularExpression::DotMatchesEverythingOption)));
    EXPECT_TRUE(w.t.errorLog().contains("DeleteLanguageButton_Click: The language French could not be deleted:"));
    EXPECT_FALSE(view.status.visible || view.status.disabled || view.busy);
}

} // namespace
} // namespace ht
