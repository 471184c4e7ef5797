#pragma once
// The demo databases and a machine-PC tree for the tests, made from the
// project's own schema and demo scripts.

#include <QString>
#include <QStringList>

namespace ht::test
{

// A new SQLite database from scripts below the repository root; fails the current test when one fails.
void makeDatabase(const QString &path, const QStringList &scripts);
void makeDemoHelpTextDB(const QString &path);
void makeDemoLanguageDB(const QString &path);
void makeDemoIndexTextDB(const QString &path);
void copyTemplates(const QString &helpDir); // the three page templates of samples/templates

// <root>/Program/{Helptext.mdb, Scopia.mdb, Tools/Languages.mdb, Help/} with
// the demo data as Access files and the page templates in Help/.
void makeMachineTree(const QString &root);

void writeText(const QString &path, const QString &text);
void copyFile(const QString &from, const QString &to);

} // namespace ht::test
