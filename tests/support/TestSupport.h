#pragma once
// Shared helpers for the tests: a context with a scripted user interface and a
// program location inside a temporary directory.

#include "common/Context.h"
#include "common/ScriptedUserInterface.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace ht::test {

struct TestContext {
    QTemporaryDir dir;
    ScriptedUserInterface ui;
    Context ctx;
    TestContext();                       // program "helptext" living in dir
    QString path(const QString &name) const { return dir.filePath(name); }
    QString errorLog() const;            // contents of the error log ("" when none)
};

QByteArray readFileBytes(const QString &path);
void writeFileBytes(const QString &path, const QByteArray &bytes);
QString sourceDir();                     // repository root
// An Access (Jet 4) file holding the tables and rows of an SQLite one, made from the
// Access-made empty database in tests/data/jet; `jetPath` must not exist.
void makeAccessCopy(const QString &sqlitePath, const QString &jetPath);
QString binDir();                        // build/bin

} // namespace ht::test
