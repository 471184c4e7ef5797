// The same jobs run once on an Access help-text database and once on an SQLite
// copy of it: afterwards every row of every table is the same in both, the
// Access file is sound by the check with its indexes, and libmdb reads from it
// what the program's own page code reads.
#include "ImportTestSupport.h"

#include "common/ConsoleUserInterface.h"
#include "database/JetFile.h"
#include "database/jet/JetCheck.h"
#include "database/jet/JetEditor.h"
#include "importer/ImportCommands.h"
#include "languages/LanguageCommands.h"

#include <cstdio>
#include <cstdlib>

namespace ht
{
namespace
{

// A value as both kinds of file give it. Converting to SQLite stores an empty
// text as NULL, so the two are taken as one.
QString plain(const QVariant &v)
{
    return v.isNull() ? QString() : v.toString();
}

using Rows = QStringList; // each row's values joined by '|', sorted

// Every table of the Access file, with its columns in column-number order.
std::vector<std::pair<QString, QStringList>> accessTables(const QString &path)
{
    std::vector<std::pair<QString, QStringList>> tables;
    jet::Editor file(path);
    for (const QString &name : file.tableNames()) {
        QStringList columns;
        for (const jet::Column *c : file.columnsOf(name))
            columns << c->name;
        tables.push_back({name, columns});
    }
    return tables;
}

Rows throughDatabase(const QString &path, const QString &table, const QStringList &columns)
{
    QStringList quoted;
    for (const QString &c : columns)
        quoted << quoteIdentifier(c);
    Rows rows;
    auto db = Database::open(path, Database::Mode::ReadOnly);
    for (const QVariantList &row :
         db->query(QStringLiteral("SELECT %1 FROM %2").arg(quoted.join(u','), quoteIdentifier(table))).rows()) {
        QStringList values;
        for (const QVariant &v : row)
            values << plain(v);
        rows << values.join(u'|');
    }
    rows.sort();
    return rows;
}

Rows throughLibmdb(const QString &path, const QString &table, const QStringList &columns)
{
    QList<int> at;
    Rows rows;
    JetFile::open(path)->readTable(
        table,
        [&](const std::vector<JetColumn> &read) {
            for (const QString &c : columns)
                at << int(std::find_if(read.begin(), read.end(), [&](const JetColumn &r) { return r.name == c; }) -
                          read.begin());
        },
        [&](const QVariantList &row) {
            QStringList values;
            for (int i : at)
                values << plain(row.value(i));
            rows << values.join(u'|');
        });
    rows.sort();
    return rows;
}

class AccessAndSqlite : public ::testing::Test
{
  protected:
    // One workspace per file: each job connects to its database as a script would.
    test::ImportWorkspace access, sqlite;

    int run(test::ImportWorkspace &w, QStringList args)
    {
        args.insert(1, "--database");
        args.insert(2, w.db());
        if (!args[0].endsWith("-machine"))
            args << "--languages" << w.t.path("Languages.mdb");
        std::vector<ConsoleCommand> commands = importerCommands();
        for (ConsoleCommand &c : languageCommands())
            commands.push_back(std::move(c));
        char *bytes = nullptr;
        size_t size = 0;
        FILE *out = open_memstream(&bytes, &size);
        ConsoleUserInterface console(out);
        w.t.ctx.ui = &console;
        int code = -1;
        EXPECT_TRUE(runConsoleCommand(w.t.ctx, commands, args, code));
        std::fclose(out);
        said = QString::fromLocal8Bit(bytes, qsizetype(size));
        std::free(bytes);
        w.t.ctx.ui = &w.t.ui;
        return code;
    }

    // `start` as the Access file, and its SQLite copy.
    void begin(const QString &start)
    {
        test::writeFileBytes(access.db(), test::readFileBytes(start));
        QFile::remove(sqlite.db());
        convertJetToSqlite(access.db(), sqlite.db());
    }

    void runOnBoth(const QStringList &args)
    {
        for (test::ImportWorkspace *w : {&access, &sqlite}) {
            const QString on = w == &access ? "Access: " : "SQLite: ";
            EXPECT_EQ(run(*w, args), 0) << qPrintable(on + args.join(' ') + "\n" + said);
        }
    }

    void expectSameRows()
    {
        EXPECT_EQ(jet::checkStructure(jet::Image(test::readFileBytes(access.db()), access.db())), QStringList());
        for (const auto &[table, columns] : accessTables(access.db())) {
            const Rows mine = throughDatabase(access.db(), table, columns);
            EXPECT_EQ(mine, throughDatabase(sqlite.db(), table, columns)) << qPrintable(table);
            EXPECT_EQ(mine, throughLibmdb(access.db(), table, columns)) << qPrintable(table);
        }
    }

    QString said;
};

const QString kWorkbook = QStringLiteral("layout.xls"); // 3 added rows, texts in column 2

QStringList importOf(const QString &machine, const QString &language)
{
    return {"import",     "--machine",  machine,
            "--language", language,     "--column",
            "2",          "--workbook", test::workbook(kWorkbook),
            "--added",    "3"};
}

TEST_F(AccessAndSqlite, AKeyedAccessFileTakesEveryJobAsSqliteDoes)
{
    begin(test::sourceDir() + "/tests/data/jet/helptext_keys.mdb");
    // Its machines go first: longer blocks would move them.
    runOnBoth({"delete-machine", "--machine", "P100"});
    runOnBoth({"delete-machine", "--machine", "P200"});
    runOnBoth(importOf("P900", "Russian"));
    expectSameRows();
    runOnBoth({"create-language", "--language", "Francais"});
    runOnBoth({"delete-language", "--language", "Francais", "--with-configuration"});
    runOnBoth({"rename-machine", "--machine", "P900", "--to", "P910"});
    expectSameRows();
    EXPECT_EQ(access.value("SELECT count(*) FROM AlarmDefinition WHERE MachineType = 'P910'"), "259");
    EXPECT_EQ(access.value("SELECT count(*) FROM AlarmText WHERE Language = 1049"),
              access.value("SELECT count(*) FROM AlarmDefinition"));
    EXPECT_EQ(access.value("SELECT count(*) FROM Language WHERE Language = 1036"), "0");
}

TEST_F(AccessAndSqlite, AFileTheBuilderMadeTakesEveryJobAsSqliteDoes)
{
    // The template as the builder writes it in Access form.
    const QString made = access.t.path("made.mdb"), from = test::binDir() + "/HelpTextMitMaterialchange.mdb";
    if (detectDatabaseFormat(from) == DbFormat::Jet)
        test::writeFileBytes(made, test::readFileBytes(from));
    else
        test::makeAccessCopy(from, made);
    begin(made);
    runOnBoth(importOf("M1", "Russian"));
    runOnBoth({"create-language", "--language", "Francais"});
    expectSameRows();
    runOnBoth(importOf("M2", "Greek"));
    runOnBoth({"delete-language", "--language", "Francais", "--with-configuration"});
    runOnBoth({"delete-machine", "--machine", "M1"});
    runOnBoth({"rename-machine", "--machine", "M2", "--to", "Line 2"});
    expectSameRows();
    EXPECT_EQ(access.value("SELECT count(*) FROM WarningDefinition WHERE MachineType = 'Line 2'"), "259");
}

} // namespace
} // namespace ht
