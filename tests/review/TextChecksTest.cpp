// One table of cases per check: source, destination, the messages expected.
#include "review/TextChecks.h"

#include <gtest/gtest.h>

using namespace ht;

namespace
{

struct Case {
    const char *field, *source, *destination;
    std::vector<const char *> messages; // empty: nothing to find
};

void runTable(const std::vector<Case> &cases, const std::function<Findings(const FieldTexts &)> &check, const char *id)
{
    for (const Case &c : cases) {
        const FieldTexts t{QString::fromUtf8(c.field), QString::fromUtf8(c.source), QString::fromUtf8(c.destination),
                           std::nullopt};
        QStringList got;
        for (const Finding &f : check(t)) {
            EXPECT_EQ(f.check, QLatin1String(id));
            EXPECT_EQ(f.field, t.field);
            got << f.message;
        }
        QStringList want;
        for (const char *m : c.messages)
            want << QString::fromUtf8(m);
        EXPECT_EQ(got, want) << c.source << " -> " << c.destination;
    }
}

} // namespace

TEST(TextChecks, Missing)
{
    runTable({{"Device", "Main drive", "", {"Device: no text here, the source has one"}},
              {"Device", "Main drive", "   ", {"Device: no text here, the source has one"}},
              {"Device", "", "", {}},
              {"Device", " ", "Hauptantrieb", {}},
              {"Function", "Text", "Text", {}}},
             checkMissing, "missing");
}

TEST(TextChecks, Same)
{
    runTable({{"Result", "Machine stops", "Machine stops", {"Result: the same as the source, not translated yet?"}},
              {"Result", "Machine stops", " Machine stops ", {"Result: the same as the source, not translated yet?"}},
              // Words every language writes alike: German nouns, numbers, codes, names.
              {"Device", "Motor", "Motor", {}},
              {"Device", "24 V", "24 V", {}},
              {"Device", "M12 / S7-300", "M12 / S7-300", {}},
              {"Device", "PLC CPU", "PLC CPU", {}},
              {"Device", "Siemens", "Siemens", {}},
              {"Result", "Machine stops", "Maschine hält an", {}},
              {"Result", "", "", {}}},
             checkSame, "same");
}

TEST(TextChecks, Breaks)
{
    runTable({{"Result", "a/b/c", "a/b", {"Result: 2 line breaks in the source, 1 here"}},
              {"Device", "Main drive/Brake", "Hauptantrieb", {"Device: 1 line break in the source, 0 here"}},
              {"Device", "Main drive/ Brake", "Hauptantrieb/Bremse", {}}, // "/ " is one break
              {"Function", "one\r\ntwo\r\nthree", "eins/zwei", {"Function: 3 lines in the source, 2 here"}},
              {"Function", "one\r\ntwo", "eins/zwei", {}}, // either form of a line break
              {"Text", "one", "eins\r\n", {}},             // a trailing break is no line of text
              {"Result", "a/b", "", {}}},                  // that one is missing
             checkBreaks, "breaks");
}

TEST(TextChecks, Blanks)
{
    runTable({{"Device", "Drive", " Antrieb", {"Device: a blank at the start that the source does not have"}},
              {"Device", "Drive ", "Antrieb", {"Device: the source ends with a blank, this text does not"}},
              {"Function", "Check the drive.", "Antrieb  prüfen.", {"Function: two blanks in a row"}},
              {"Function", "Col A  Col B", "Sp A  Sp B", {}}, // laid out by hand in the source as well
              {"Device", "Main drive/ Brake", "Hauptantrieb/ Bremse", {}},
              {"Device", "Drive", "Antrieb", {}}},
             checkBlanks, "blanks");
}

TEST(TextChecks, Punctuation)
{
    runTable(
        {{"Function",
          "Refill the magazine.",
          "Magazin auffüllen",
          {"Function: the source ends with \".\", this text with no mark"}},
         {"Function", "Check:", "Prüfen!", {"Function: the source ends with \":\", this text with \"!\""}},
         {"Function", "Refill the magazine.", "补充料仓。", {}}, // full-width forms are the same marks
         {"Function", "Continue?", "続行しますか？", {}},
         {"Function", "Note:", "注意：", {}},
         {"Function", "Stop!", "停止！", {}},
         {"Function", "Continue…", "Weiter.", {}},
         {"Device", "Drive", "Antrieb", {}}},
        [](const FieldTexts &t) { return checkPunctuation(t); }, "punctuation");
    // Greek writes its question mark as a semicolon.
    const FieldTexts greek{QStringLiteral("Function"), QStringLiteral("Continue?"), QStringLiteral("Συνέχεια;"),
                           std::nullopt};
    EXPECT_TRUE(checkPunctuation(greek, QStringLiteral("1032")).empty());
    EXPECT_EQ(checkPunctuation(greek, QStringLiteral("1031")).size(), 1u);
}

TEST(TextChecks, Numbers)
{
    runTable(
        {{"Function", "Check the 24 V supply.", "Versorgung prüfen.", {"Function: \"24 V\" of the source is not here"}},
         {"Function", "Check the 24 V supply.", "24-V-Versorgung prüfen.", {}},
         {"Function", "Check the 24 V supply.", "Проверьте питание 24 В.", {}}, // the unit in its own script
         {"Function", "Gap 3.5 mm", "Spalt 3,5 mm", {}},                        // decimal comma
         {"Function", "Gap 3.5 mm", "Spalt 35 mm", {"Function: \"3.5 mm\" of the source is not here"}},
         {"Device", "Sensor M12", "Sensor", {"Device: \"M12\" of the source is not here"}},
         {"Device", "Sensor M12", "Sensor M12", {}},
         {"Device", "Station 3, station 3", "Station", {"Device: \"3\" of the source is not here"}},
         {"Function", "No numbers", "Keine Zahlen 5", {}}},
        checkNumbers, "numbers");
}

TEST(TextChecks, Review)
{
    FieldTexts t{QStringLiteral("Result"), QStringLiteral("Machine stops now"), QStringLiteral("Maschine hält an"),
                 QStringLiteral("Machine stops")};
    ASSERT_EQ(checkReview(t).size(), 1u);
    EXPECT_EQ(checkReview(t)[0].message,
              QStringLiteral("Result: the source changed since this text was saved; needs review"));
    t.keptSource = t.source;
    EXPECT_TRUE(checkReview(t).empty());
    t.keptSource.reset(); // saved before marks were kept
    EXPECT_TRUE(checkReview(t).empty());
}

TEST(TextChecks, WordDifferenceOfAChangedSource)
{
    const struct {
        const char *before, *after, *markedBefore, *markedAfter;
    } cases[] = {
        {"Machine stops", "Machine stops at once", "Machine stops", "Machine stops [at once]"},
        {"Machine halts now", "Machine stops now", "Machine [halts] now", "Machine [stops] now"},
        {"Check the brake", "Check", "Check [the brake]", "Check"},
        {"", "New text", "", "[New text]"},
        {"Same", "Same", "Same", "Same"},
    };
    for (const auto &c : cases) {
        const auto [before, after] = markWordDifference(QString::fromUtf8(c.before), QString::fromUtf8(c.after));
        EXPECT_EQ(before, QString::fromUtf8(c.markedBefore));
        EXPECT_EQ(after, QString::fromUtf8(c.markedAfter));
    }
}
