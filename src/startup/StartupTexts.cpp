// Texts of the start-up dialog and the check of the build's variant.
#include "startup/StartupDialog.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/Version.h"

namespace ht
{

namespace
{
const QString kCopyrightYear = QStringLiteral("2002");
const QString kCompany = QStringLiteral("Harko & Co");

QString quoted(const QString &value)
{
    return QLatin1Char('"') + value + QLatin1Char('"');
}
} // namespace

QString ValidateCompileOption(Context &ctx, const QString &option)
{
    if (option == QLatin1String("EDIT") || option == QLatin1String("IMPORT"))
        return option;
    showMessage(ctx, QStringLiteral("CompileOption not set"), Buttons::OK, Icon::Critical);
    EndProgram(ctx, 1);
}

QString VersionLabelText()
{
    return QStringLiteral("Version ") + programVersion() + QStringLiteral("  ") + QChar(169) + QLatin1Char(' ') +
           kCopyrightYear + QStringLiteral(" by ") + kCompany;
}

QString ScopiaVersionLabel(const QString &indexTextDB)
{
    if (indexTextDB.endsWith(QLatin1String("MDB"), Qt::CaseInsensitive))
        return QStringLiteral("NT");
    if (indexTextDB.endsWith(QLatin1String("VWS"), Qt::CaseInsensitive))
        return QStringLiteral("XP");
    return QString();
}

QStringList SettingsListLines(const Context &ctx)
{
    const AppState &s = ctx.state;
    QStringList lines{QStringLiteral("User-ini-file :"),     quoted(s.iniPath),
                      QStringLiteral("Helptext-Database :"), quoted(s.helpTextDB),
                      QStringLiteral("Language-Database :"), quoted(s.langLookupDB)};
    if (s.mode == QLatin1String("EDIT"))
        lines << QStringLiteral("Helptext-Directory :") << quoted(s.helpMainDir);
    lines << (s.materialChangePresent ? QStringLiteral("Materialchange present")
                                      : QStringLiteral("Materialchange not present"));
    if (s.runningOnMachinePC)
        lines << QStringLiteral("Application running on Machine-PC");
    return lines;
}

} // namespace ht
