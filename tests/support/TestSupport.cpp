#include "support/TestSupport.h"

#include "database/Database.h"

#include "common/ErrorLog.h"

#include <QFile>

namespace ht::test {

TestContext::TestContext()
{
    ctx.programDir = dir.path();
    ctx.programName = QStringLiteral("helptext");
    ctx.ui = &ui;
    ctx.endProgram = [](int code) { throw ProgramEnded{code}; };
    ctx.processEvents = [] {};
}

QString TestContext::errorLog() const { return QString::fromUtf8(readFileBytes(errorLogPath(ctx))); }

QByteArray readFileBytes(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

void writeFileBytes(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write(bytes);
}

QString sourceDir() { return QStringLiteral(HELPTEXT_SOURCE_DIR); }
QString binDir() { return QStringLiteral(HELPTEXT_BIN_DIR); }

void makeAccessCopy(const QString &sqlitePath, const QString &jetPath)
{
    convertSqliteToJet(sqlitePath, sourceDir() + QStringLiteral("/tests/data/jet/empty.mdb"), jetPath);
}

} // namespace ht::test
