#include "startup/StandardPaths.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Platform.h"

#include <QStringList>

namespace ht
{

namespace
{

struct StandardPath {
    QString key;
    QStringList constants; // tried in order; the last one is taken when none exists
    bool directory;
    QString missingText; // follows "Missing parameter in <program>.ini"
};

bool pathExists(const StandardPath &p, const QString &path)
{
    return p.directory ? directoryExists(path) : fileExists(path);
}

QString readStandardPath(Context &ctx, const StandardPath &p)
{
    QString value = LoadIniString(ctx, QStringLiteral("Setup"), p.key, ctx.state.iniPath, false, false);
    if (!pathExists(p, value))
        value.clear();
    if (value.isEmpty()) {
        for (const QString &constant : p.constants) {
            value = constant;
            if (pathExists(p, value))
                break;
        }
    }
    if (value.isEmpty()) {
        if (p.key == QLatin1String("StandardIndexTextDB"))
            LogError(ctx, QStringLiteral("Missing File: StandardIndexTextDB"));
        LogError(ctx, QStringLiteral("Missing parameter in ") + ctx.programName + p.missingText);
        EndProgram(ctx, 1);
    }
    if (!pathExists(p, value)) {
        LogError(ctx,
                 (p.directory ? QStringLiteral("Directory not found: ") : QStringLiteral("File not found: ")) + value);
        EndProgram(ctx, 1);
    }
    return value;
}

} // namespace

void ReadStandardPaths(Context &ctx)
{
    AppState &s = ctx.state;
    s.standardHelpTextDB =
        readStandardPath(ctx, {QStringLiteral("StandardHelpTextDB"),
                               {constHelpTextDB()},
                               false,
                               QStringLiteral(".ini: StandardHelpTextDB or constant path not found")});
    s.standardIndexTextDB =
        readStandardPath(ctx, {QStringLiteral("StandardIndexTextDB"),
                               {constIndexTextDBMdb(), constIndexTextDBVws()},
                               false,
                               QStringLiteral(".ini: StandardIndexTextDB or constant path not found")});
    s.standardLangLookupDB =
        readStandardPath(ctx, {QStringLiteral("StandardLangLookupDB"),
                               {constLangLookupDB()},
                               false,
                               QStringLiteral(".ini: StandardLangLookupDB or constant path not found")});
    // The blank after ".ini:" is missing in this one message; kept as the log readers know it.
    s.standardHelpDir = withTrailingSeparator(
        readStandardPath(ctx, {QStringLiteral("StandardScopiaHelpDir"),
                               {constHelpDir()},
                               true,
                               QStringLiteral(".ini:StandardScopiaHelpDir or constant path not found")}));
}

} // namespace ht
