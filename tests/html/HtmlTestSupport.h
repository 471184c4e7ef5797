#pragma once
// Helpers of the page-generation tests: databases made from SQL scripts and
// pages as they lie on disk.

#include <QString>
#include <QStringList>

namespace ht::test
{

QString htmlTestDir();                   // tests/html: the golden cases
QString schemaFile(const QString &name); // a script of src/database/schema
QStringList helpTextSchema();
QStringList languagesSchemaAndData(); // the languages the cases' rows use
// Creates a SQLite database at `path` and runs the script files.
void createDatabaseFromScripts(const QString &path, const QStringList &scriptFiles);
void runSqlScript(const QString &dbPath, const QString &script);
// The bytes of a page with these lines: UTF-16LE, mark, CR LF after every line.
QByteArray pageBytes(const QStringList &lines);
// A page's text (UTF-16LE, mark kept).
QString pageText(const QByteArray &bytes);

} // namespace ht::test
