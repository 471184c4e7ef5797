#pragma once
// Files and databases for the database tests: help-text and language-definition
// databases made from the project's own schema scripts through the database layer.

#include "common/QtPrinters.h"
#include "database/Database.h"
#include "support/TestSupport.h"

#include <QStringList>
#include <memory>
#include <vector>

namespace ht::test
{

QString schemaFile(const QString &name);  // src/database/schema/<name>
QString jetTestFile(const QString &name); // tests/data/jet/<name>.mdb, made by Access itself
QString writeIn(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes); // the new file's path
QStringList filesIn(const QString &dir);
QString columnType(Database &db, const QString &table, const QString &column);

// A new help-text database as the importer's templates are: five free blocks.
void makeHelpTextDb(const QString &path, bool materialChange = true);

struct LookupRow {
    int number;
    QString name, font, layout;
    int codePage;
};
void makeLookupDb(const QString &path, const std::vector<LookupRow> &rows, bool withSubstBy = true);

// Adds a language with one text row per definition row of every kind
// ("<kind> <id> <language>" in each text field).
void addLanguage(const QString &path, int number, const QString &name, const QString &font = QString());

// Rebuilds every table without keys or indexes (a customer's own file): only an
// INTEGER PRIMARY KEY, a rowid alias, stays.
void dropIndexes(const QString &path);

std::unique_ptr<Database> openRW(const QString &path);
// Every row of a query, each row's values joined by '|' (NULL as "<null>").
QStringList dump(const QString &path, const QString &sql);

// A TestContext whose settings file lies in its directory.
struct DbTestContext : TestContext {
    DbTestContext() { ctx.state.iniPath = ini(); }
    QString ini() const { return path(QStringLiteral("helptext.ini")); }
    QString savedHelpTextDb() const; // the path remembered in the settings file
    // "Help.mdb" in the directory, made new.
    QString newHelpDb(bool materialChange = true) const;
    // Answers the "Unexpected error ... Continue?" question with Yes, so that a
    // reported failure lets the procedure return its default.
    void continueAfterErrors() { ui.push(Answer::Yes); }
};

} // namespace ht::test
