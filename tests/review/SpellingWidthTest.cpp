// Spelling against the system's Hunspell dictionaries, and the width check
// against the page writer's own line breaker.
#include "common/Context.h"
#include "html/TextWidthBreaker.h"
#include "review/ItemChecker.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace ht;
using namespace ht::test;

namespace
{
FieldTexts destination(const char *field, const char *text)
{
    return {QLatin1String(field), QStringLiteral("source"), QString::fromUtf8(text), std::nullopt};
}
} // namespace

TEST(Spelling, UnknownWordsPerLanguage)
{
    SpellCheck spell;
    if (!spell.hasDictionary(QStringLiteral("1031")) || !spell.hasDictionary(QStringLiteral("1032")))
        GTEST_SKIP() << "Hunspell dictionaries not installed (scripts/install-deps.sh)";
    struct Case {
        const char *language, *text;
        QStringList unknown;
    } cases[] = {
        // German nouns, compounds and capitalised sentence starts are words.
        {"1031", "Das Faltschachtelmagazin ist leer. Magazin auffüllen und Alarm quittieren.", {}},
        {"1031", "Der Hauptantrieb meldet Überlast.", {}},
        {"1031", "Die Maschiene hält an.", {QStringLiteral("Maschiene")}},
        // Codes, numbers and words in capitals are names, not spelling.
        {"1031", "Sensor M12 an SPS-Eingang X1.3, 24 V prüfen.", {}},
        {"1033", "Check the brake and the belt tension.", {}},
        {"1033", "Check the brkae.", {QStringLiteral("brkae")}},
        {"1032", "Η αποθήκη κουτιών είναι άδεια.", {}}, // a dictionary in ISO 8859-7
        {"1032", "Η αποθίκη", {QStringLiteral("αποθίκη")}},
        {"1032", "Πατήστε Stop.", {}}, // a Latin word in a Greek text is a name
        {"1049", "Проверьте питание 24 В.", {}},
    };
    for (const Case &c : cases)
        EXPECT_EQ(spell.unknownWords(QString::fromUtf8(c.text), QLatin1String(c.language)), c.unknown) << c.text;
    EXPECT_TRUE(
        spell.suggestions(QStringLiteral("Maschiene"), QStringLiteral("1031")).contains(QStringLiteral("Maschine")));
}

TEST(Spelling, LanguageWithoutDictionaryIsNamedOnce)
{
    TestContext t;
    ItemChecker checker(t.ctx, {}, {QStringLiteral("spelling")});
    const CheckLanguage klingon{QStringLiteral("9999"), QStringLiteral("Klingon"), QStringLiteral("Arial 10 400")};
    EXPECT_TRUE(checker.check({destination("Function", "tlhIngan Hol")}, klingon).empty());
    EXPECT_TRUE(checker.check({destination("Function", "Qapla'")}, klingon).empty());
    EXPECT_EQ(checker.takeNotes(), QStringList{QStringLiteral("no dictionary for Klingon")});
}

// The check reports a line exactly when the page writer, measuring it in the
// same font, size and limit, cannot keep it on one line.
TEST(Width, AgreesWithThePageWritersMeasurement)
{
    TestContext t;
    const WidthLimits limits{200, 300, QStringLiteral("10")};
    WidthCheck check(t.ctx, limits);
    TextWidthBreaker breaker;
    breaker.setMeasureEveryJoin(true);
    const QString font = QStringLiteral("Liberation Sans 10 700");
    const char *lines[] = {"Main drive",
                           "Main drive of the carton magazine conveyor belt",
                           "Hauptantriebsüberwachungseinrichtungen",
                           "Αποθήκη κουτιών",
                           "W W W W W W W W W W W W W W W W W",
                           "a"};
    int wide = 0;
    for (const char *field : {"Device", "Result"}) {
        const int limit = QLatin1String(field) == QLatin1String("Device") ? limits.device : limits.result;
        for (const char *line : lines) {
            const QString text = QString::fromUtf8(line);
            const QStringList broken = breaker.TextSingleLineToArray(
                t.ctx, text, QStringLiteral("Liberation Sans"), QStringLiteral("10"), QStringLiteral("700"), limit);
            const bool tooWide = broken.size() > 1 || breaker.textWidthTwips(text) >= limit * 15;
            wide += tooWide;
            const Findings found = check.check(destination(field, line), font);
            EXPECT_EQ(found.size(), tooWide ? 1u : 0u) << field << ": " << line;
        }
    }
    EXPECT_GT(wide, 2); // the table holds lines on both sides of the limit
    EXPECT_LT(wide, 10);
    // Each line of a broken text is measured by itself and named.
    const Findings two =
        check.check(destination("Device", "Main drive/Main drive of the carton magazine conveyor belt"), font);
    ASSERT_EQ(two.size(), 1u);
    EXPECT_TRUE(two[0].message.startsWith(QStringLiteral("Device: line 2 is "))) << two[0].message.toStdString();
    EXPECT_TRUE(check.check(destination("Function", "Main drive of the carton magazine conveyor belt"), font).empty());
}

TEST(Width, LimitsFromTheSettingsFile)
{
    TestContext t;
    t.ctx.state.iniPath = t.path(QStringLiteral("helptext.ini"));
    writeFileBytes(t.ctx.state.iniPath, "[Setup]\nScreenResolution=1280\n[Check]\nResultWidth=500\n");
    const WidthLimits limits = widthLimitsFromSettings(t.ctx);
    EXPECT_EQ(limits.device, 1152); // 90 % of the screen
    EXPECT_EQ(limits.result, 500);
    EXPECT_EQ(limits.fontSize, QStringLiteral("18"));
}
