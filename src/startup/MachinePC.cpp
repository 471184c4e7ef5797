#include "startup/MachinePC.h"

#include "common/Context.h"
#include "common/Platform.h"

#include <QDir>
#include <QFileInfo>

namespace ht
{

// Absolute, cleaned, upper-cased and with one trailing separator, so that the
// comparison ignores case and a trailing separator given or not. An existing
// directory is resolved through symbolic links, as the program's own
// directory is.
static QString comparableDir(const QString &dir)
{
    const QFileInfo fi(dir);
    QString path = fi.exists() ? fi.canonicalFilePath() : QDir::cleanPath(fi.absoluteFilePath());
    return withTrailingSeparator(QDir::toNativeSeparators(path)).toUpper();
}

bool GetAppRunningOnMachinePC(const Context &ctx)
{
    if (ctx.programDir.isEmpty())
        return false;
    return comparableDir(ctx.programDir) == comparableDir(machineToolsDir());
}

} // namespace ht
