#include "common/Context.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace ht {

void initProgramLocation(Context &ctx)
{
    QString exe;
    if (QCoreApplication::instance())
        exe = QCoreApplication::applicationFilePath();
    if (exe.isEmpty())
        exe = QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
    const QFileInfo fi(exe);
    ctx.programDir = fi.absolutePath();
    ctx.programName = fi.completeBaseName();
}

} // namespace ht
