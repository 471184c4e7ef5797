#include "common/Platform.h"

#include <QDir>
#include <QFileInfo>

namespace ht {

QChar pathSeparator()
{
#ifdef Q_OS_WIN
    return QLatin1Char('\\');
#else
    return QLatin1Char('/');
#endif
}

QString withTrailingSeparator(const QString &dir)
{
    if (dir.isEmpty() || dir.endsWith(pathSeparator()))
        return dir;
    return dir + pathSeparator();
}

QString joinPath(const QString &dir, const QString &name)
{
    if (dir.isEmpty())
        return name;
    return withTrailingSeparator(dir) + name;
}

QString machineRoot()
{
#ifdef Q_OS_WIN
    return QStringLiteral("C:\\Scopia");
#else
    const QString root = qEnvironmentVariable("HELPTEXT_MACHINE_ROOT");
    if (root.isEmpty())
        return QStringLiteral("/opt/Scopia");
    return root.endsWith(QLatin1Char('/')) && root.size() > 1 ? root.chopped(1) : root;
#endif
}

static QString programDir() { return joinPath(machineRoot(), QStringLiteral("Program")); }

QString machineToolsDir() { return joinPath(programDir(), QStringLiteral("Tools")); }
QString constHelpTextDB() { return joinPath(programDir(), QStringLiteral("Helptext.mdb")); }
QString constIndexTextDBMdb() { return joinPath(programDir(), QStringLiteral("Scopia.mdb")); }
QString constIndexTextDBVws() { return joinPath(programDir(), QStringLiteral("Scopia.vws")); }
QString constLangLookupDB() { return joinPath(machineToolsDir(), QStringLiteral("Languages.mdb")); }
QString constHelpDir() { return withTrailingSeparator(joinPath(programDir(), QStringLiteral("Help"))); }

bool fileExists(const QString &path)
{
    if (path.isEmpty())
        return false;
    QFileInfo fi(path);
    return fi.exists() && fi.isFile();
}

bool directoryExists(const QString &path)
{
    if (path.isEmpty())
        return false;
    QFileInfo fi(path);
    return fi.exists() && fi.isDir();
}

} // namespace ht
