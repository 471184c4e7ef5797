#pragma once
// Where the machine PC's fixed paths live on this platform. On Windows the
// root is C:\Scopia; elsewhere HELPTEXT_MACHINE_ROOT (default /opt/Scopia).

#include <QString>

namespace ht {

QChar pathSeparator();              // '\\' on Windows, '/' elsewhere
QString joinPath(const QString &dir, const QString &name); // one separator between
QString withTrailingSeparator(const QString &dir);

QString machineRoot();                          // C:\Scopia or $HELPTEXT_MACHINE_ROOT
QString machineToolsDir();                      // <root>/Program/Tools
QString constHelpTextDB();                      // <root>/Program/Helptext.mdb
QString constIndexTextDBMdb();                  // <root>/Program/Scopia.mdb
QString constIndexTextDBVws();                  // <root>/Program/Scopia.vws
QString constLangLookupDB();                    // <root>/Program/Tools/Languages.mdb
QString constHelpDir();                         // <root>/Program/Help/ (trailing separator)

bool fileExists(const QString &path);
bool directoryExists(const QString &path);

} // namespace ht
