#include "common/InstalledFiles.h"

#include "common/Context.h"
#include "common/Platform.h"

#include <QDir>

namespace ht
{

QString installedDataDir(const Context &ctx)
{
    if (ctx.programDir.isEmpty())
        return QString();
    const QString dir = QDir::cleanPath(ctx.programDir + QStringLiteral("/../share/helptext"));
    return directoryExists(dir) ? dir : QString();
}

QString programDataFile(const Context &ctx, const QString &name)
{
    const QString beside = joinPath(ctx.programDir, name);
    if (fileExists(beside))
        return beside;
    const QString installed = installedDataDir(ctx);
    if (!installed.isEmpty() && fileExists(joinPath(installed, name)))
        return joinPath(installed, name);
    return beside;
}

QString userStateDir()
{
    // A relative XDG_STATE_HOME is invalid and ignored, as the XDG rules say.
    QString base = qEnvironmentVariable("XDG_STATE_HOME");
    if (base.isEmpty() || QDir::isRelativePath(base))
        base = QDir::homePath() + QStringLiteral("/.local/state");
    return QDir::cleanPath(base + QStringLiteral("/helptext"));
}

} // namespace ht
