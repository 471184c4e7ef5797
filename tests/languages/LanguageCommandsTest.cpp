// The language jobs as commands for scripts: exit codes and what stderr says.
#include "LanguagesTestSupport.h"

#include "common/ConsoleUserInterface.h"
#include "languages/LanguageCommands.h"

#include <QProcess>
#include <cstdio>
#include <cstdlib>

namespace ht
{
namespace
{

using test::kGreek;

class LanguageCommands : public ::testing::Test
{
  protected:
    test::LanguagesWorkspace w;

    // Runs one command in a console of its own; `err` gets what it wrote.
    int run(const QStringList &args)
    {
        char *bytes = nullptr;
        size_t size = 0;
        FILE *out = open_memstream(&bytes, &size);
        ConsoleUserInterface console(out);
        w.t.ctx.ui = &console;
        int exitCode = -1;
        EXPECT_TRUE(runConsoleCommand(w.t.ctx, languageCommands(), args, exitCode));
        std::fclose(out);
        err = QString::fromLocal8Bit(bytes, qsizetype(size));
        std::free(bytes);
        w.t.ctx.ui = &w.t.ui;
        return exitCode;
    }
    QStringList on(const QStringList &args) const
    {
        return QStringList{"--database", w.db(), "--languages", w.lookup()} + args;
    }
    QString err;
};

TEST_F(LanguageCommands, CreateRepairAndDeleteAsTheFormDoes)
{
    EXPECT_EQ(run({"create-language", "--language", "Greek"}), 2);
    EXPECT_TRUE(err.contains("--database and --language are needed")) << qPrintable(err);

    const struct {
        const char *args;
        int exitCode;
        const char *says;
        int greekRows;
    } steps[] = {
        {"create-language --language Klingon", 1, "offers no language named \"Klingon\"", 1},
        {"create-language --language greek", 0,
         "Greek (1032): text rows added: 1279 alarms, 1280 warnings, 5000 material changes, 8 descriptions", 7569},
        {"create-language --language Greek", 0,
         "already exists! OK to reset all language information (incl. Alarms, Warnings & MaterialChange)? -> yes",
         7569},
        {"delete-language --language English --with-configuration", 1, "English or German cannot be deleted!", 7569},
        {"delete-language --language Greek --languages none.mdb", 1, "Cannot find languagedefinition none.mdb", 7569},
        {"delete-language --language Greek", 0,
         "Greek: text rows deleted: 1280 alarms, 1280 warnings, 5000 material changes", 9},
        {"delete-language --language Greek --with-configuration", 0,
         "configuration rows deleted: 1 Language, 8 descriptions", 0},
        {"delete-language --language Greek --with-configuration", 1,
         "The help-text database holds nothing of the language Greek (number 1032) to delete", 0},
    };
    // A text typed before the language was made is kept.
    w.exec("INSERT INTO AlarmText VALUES (1, ?, 'Συσκευή', '', '')", {kGreek});
    for (const auto &s : steps) {
        const QStringList words = QString(s.args).split(' ');
        EXPECT_EQ(run(words.first(1) + on(words.mid(1))), s.exitCode) << s.args << qPrintable("\n" + err);
        EXPECT_TRUE(err.contains(s.says)) << qPrintable(err);
        EXPECT_EQ(w.rowsOf(kGreek), s.greekRows) << s.args;
        if (s.greekRows == 7569)
            EXPECT_EQ(w.count("SELECT COUNT(*) FROM AlarmText WHERE Device = 'Συσκευή'"), 1);
    }
}

// A language has one number in every database: the demo's agree with their
// definitions (so English is protected), and a database numbering a language
// otherwise is refused by every language job, unchanged.
TEST_F(LanguageCommands, LanguageNumbersAreTheDefinitions)
{
    test::makeDemoHelpTextDB(w.t.path("Demo.mdb"));
    test::makeDemoLanguageDB(w.t.path("DemoLanguages.mdb"));
    const QStringList demo{"--database", w.t.path("Demo.mdb"), "--languages", w.t.path("DemoLanguages.mdb")};
    const QByteArray demoBytes = test::readFileBytes(w.t.path("Demo.mdb"));
    EXPECT_EQ(run(QStringList{"delete-language", "--language", "English", "--with-configuration"} + demo), 1);
    EXPECT_TRUE(err.contains("English or German cannot be deleted!")) << qPrintable(err);
    EXPECT_TRUE(test::readFileBytes(w.t.path("Demo.mdb")) == demoBytes);
    EXPECT_EQ(run(QStringList{"create-language", "--language", "Russian"} + demo), 0) << qPrintable(err);
    EXPECT_TRUE(err.contains("Russian (1049): text rows added: 0 alarms")) << qPrintable(err);

    w.exec("INSERT INTO Language (Language, Name) VALUES (3, 'GREEK')");
    const QByteArray before = test::readFileBytes(w.db());
    for (const char *job : {"create-language", "delete-language"}) {
        EXPECT_EQ(run(QStringList{job, "--language", "Greek"} + on({})), 1) << job;
        EXPECT_TRUE(err.contains("The language \"GREEK\" has the number 3 in the help-text database but 1032 in the "
                                 "language-definition database"))
            << qPrintable(err);
        EXPECT_TRUE(test::readFileBytes(w.db()) == before) << job;
    }
}

// The importer's executable has the commands, needs no display and takes the
// language-definition database from its settings file.
TEST_F(LanguageCommands, TheImporterRunsThem)
{
    test::writeText(w.t.path("config/helptext-importer.ini"), "[Setup]\nStandardLangLookupDB=" + w.lookup() + "\n");
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove("DISPLAY");
    env.insert("XDG_CONFIG_HOME", w.t.path("config"));
    p.setProcessEnvironment(env);
    p.start(test::binDir() + "/helptext-importer", {"create-language", "--database", w.db(), "--language", "Greek"});
    ASSERT_TRUE(p.waitForFinished(60000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().constData();
    EXPECT_EQ(w.rowsOf(kGreek), 7569);
}

} // namespace
} // namespace ht
