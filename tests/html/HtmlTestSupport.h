#pragma once
// Helpers of the page-generation tests: databases made from SQL scripts and
// reading UTF-16 pages back.

#include <QString>
#include <QStringList>

namespace ht::test
{

// The folder of the golden cases and the shared schema scripts.
QString htmlTestDir();
// The schema scripts of the three databases (the languages with the cases' rows).
QStringList helpTextSchema();
QStringList languagesSchemaAndData();
QString indexTextSchema();
// Creates a SQLite database at `path` and runs the scripts.
void createDatabaseFromScripts(const QString &path, const QStringList &scriptFiles);
void runSqlScript(const QString &dbPath, const QString &script);
// The bytes a page with these lines has on disk: UTF-16LE, mark, CR LF after every line.
QByteArray pageBytes(const QStringList &lines);

} // namespace ht::test
