// Backup copies of the help-text database before it is rebuilt.
#include "database/HelpTextDatabase.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"

#include <QFile>
#include <QFileInfo>

namespace ht
{

namespace
{

// The path without the extension of its file name ("x/Help.mdb" -> "x/Help").
QString withoutExtension(const QString &path)
{
    const QFileInfo info(path);
    const QString name = info.fileName();
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= 0)
        return path;
    return path.left(path.size() - (name.size() - dot));
}

} // namespace

bool CreateDBBackup(Context &ctx)
{
    return CreateDBBackup(ctx, ctx.state.helpTextDB);
}

bool CreateDBBackup(Context &ctx, const QString &path)
{
    QString backupPath, cause;
    try {
        const QString base = withoutExtension(path);
        backupPath = base + QStringLiteral("_BACKUP.sav");
        // The first free number, however many backups there are. QFile::copy never
        // replaces a file, so a backup that appears between the test and the copy is
        // not lost either: the next number is tried.
        QFile source(path);
        for (qint64 n = 1;; ++n) {
            if (!QFileInfo::exists(backupPath)) {
                if (source.copy(backupPath)) {
                    ctx.state.lastBackupPath = backupPath;
                    return true;
                }
                if (!QFileInfo::exists(backupPath))
                    break; // the copy itself failed
            }
            backupPath = base + QStringLiteral("_BACKUP") + QString::number(n) + QStringLiteral(".sav");
        }
        cause = source.errorString();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CreateDBBackup"), e);
        return false;
    }
    const QString text = QStringLiteral("Could not create backup-database") + LFCR +
                         QStringLiteral("Error on copying ") + LFCR + path + QStringLiteral(" to ") + LFCR +
                         backupPath + LFCR + cause;
    if (ctx.state.runningOnMachinePC)
        LogError(ctx, text);
    else
        showMessage(ctx, text, Buttons::OK, Icon::Critical);
    return false;
}

} // namespace ht
