#pragma once
// A full help-text database for the benchmarks: five machines of 256 alarms,
// 256 warnings and 1000 material-change items, with texts in `languages`
// languages named "LANGUAGE 1", ... and machines named "Machine 1", ...

#include <QString>

namespace ht::bench
{

void makeFullDatabase(const QString &path, int languages);
// Rebuilds every table of the SQLite file without keys or indexes, as a customer's
// own file may be: only an INTEGER PRIMARY KEY (a rowid alias) stays.
void dropIndexes(const QString &path);
QString schemaScript(const char *name); // a script of src/database/schema
QString templatesDir();                 // samples/templates
QString sourceDir();                    // the repository
// A full keyed Access help-text database: the keyed one of the tests (made by
// another Jet library, blocks of 256 alarms, 256 warnings, 1000 material
// changes, languages 1031-1033) grown to 10 languages, its blocks 3 to
// `machines` bound to "Machine 3", ... (block 5 stays free below 5).
void makeFullAccessDatabase(const QString &path, int machines);
// The language-definition database of the demo (samples/demo/languages_demo.sql).
void makeLanguageDatabase(const QString &path);

} // namespace ht::bench
