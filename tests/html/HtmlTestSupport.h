#pragma once
// Helpers of the page-generation tests: databases made from SQL scripts and
// reading UTF-16 pages back.

#include <QString>
#include <QStringList>

namespace ht::test
{

// The folder of the golden cases and the shared schema scripts.
QString htmlTestDir();
// Creates a SQLite database at `path` and runs the scripts' statements (split at ";" line ends).
void createDatabaseFromScripts(const QString &path, const QStringList &scriptFiles);
void runSqlScript(const QString &dbPath, const QString &script);
// The bytes a page with these lines has on disk: UTF-16LE, mark, CR LF after every line.
QByteArray pageBytes(const QStringList &lines);

} // namespace ht::test
