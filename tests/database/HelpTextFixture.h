#pragma once
// Help-text and language-definition databases for the tests, made from the
// project's own schema scripts through the database layer.

#include "common/QtPrinters.h"
#include "database/Database.h"
#include "support/TestSupport.h"

#include <QString>
#include <QVariantList>
#include <memory>
#include <vector>

namespace ht::test
{

QString schemaScript(const QString &name); // contents of src/database/schema/<name>

// A new help-text database as the importer's templates are: five free blocks.
void makeHelpTextDb(const QString &path, bool materialChange = true);

struct LookupRow {
    int number;
    QString name;
    QString font;
    QString layout;
    int codePage;
};
void makeLookupDb(const QString &path, const std::vector<LookupRow> &rows, bool withSubstBy = true);

// Adds a language to a help-text database with one text row per definition row
// of every kind ("<kind> <id> <language>" in each text field).
void addLanguage(const QString &path, int number, const QString &name, const QString &font = QString());

std::unique_ptr<Database> openRW(const QString &path);
// Every row of a query, each row's values joined by '|' (NULL as "<null>").
QStringList dump(const QString &path, const QString &sql);

// A TestContext whose settings file lies in its directory.
struct DbTestContext : TestContext {
    DbTestContext();
    QString ini() const { return path(QStringLiteral("helptext.ini")); }
    // Answers the "Unexpected error ... Continue?" question with Yes, so that a
    // reported failure lets the procedure return its default.
    void continueAfterErrors(int times = 1);
};

} // namespace ht::test
