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

// Numbered names go this far; beyond it something is wrong with the directory.
constexpr int kMaxBackupNumber = 9999;

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
    QString backupPath;
    try {
        const QString base = withoutExtension(path);
        backupPath = base + QStringLiteral("_BACKUP.sav");
        // QFile::copy never replaces an existing file, so an earlier backup that
        // appears between the test and the copy is not lost either: the next number is tried.
        bool copied = false;
        for (int n = 1; n <= kMaxBackupNumber; ++n) {
            if (!QFileInfo::exists(backupPath)) {
                copied = QFile::copy(path, backupPath);
                if (copied || !QFileInfo::exists(backupPath))
                    break; // done, or the copy itself failed: reported below
            }
            backupPath = base + QStringLiteral("_BACKUP") + QString::number(n) + QStringLiteral(".sav");
        }
        if (copied && QFileInfo::exists(backupPath)) {
            ctx.state.lastBackupPath = backupPath;
            return true;
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CreateDBBackup"), e);
        return false;
    }
    const QString text = QStringLiteral("Could not create backup-database") + LFCR +
                         QStringLiteral("Error on copying ") + LFCR + path + QStringLiteral(" to ") + LFCR + backupPath;
    if (ctx.state.runningOnMachinePC)
        LogError(ctx, text);
    else
        showMessage(ctx, text, Buttons::OK, Icon::Critical);
    return false;
}

} // namespace ht
