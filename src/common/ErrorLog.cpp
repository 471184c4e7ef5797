#include "common/ErrorLog.h"

#include "common/Context.h"
#include "common/InstalledFiles.h"
#include "common/Messages.h"
#include "common/Platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <mutex>

namespace ht
{

namespace
{
constexpr long kFileAccessError = 75; // the classic "Path/File access error"
} // namespace

QString errorLogPath(const Context &ctx)
{
    const QString name = ctx.programName + QStringLiteral("Error.log");
    // The machine PC and a copy in a folder of its own keep the log beside the
    // program; an installed copy, or one in a folder the user cannot write to,
    // in the user's state folder.
    if (ctx.state.runningOnMachinePC || (installedDataDir(ctx).isEmpty() && QFileInfo(ctx.programDir).isDir() &&
                                         QFileInfo(ctx.programDir).isWritable()))
        return joinPath(ctx.programDir, name);
    return joinPath(userStateDir(), name);
}

namespace
{
// Says once per run where the log goes when it is not beside the program, and
// makes the folder.
void prepareLogFolder(const Context &ctx, const QString &path)
{
    static std::mutex mutex; // page workers log from their threads
    static QString told;
    const QString dir = QFileInfo(path).path();
    const std::lock_guard<std::mutex> lock(mutex);
    if (dir == QDir::cleanPath(ctx.programDir) || told == path)
        return;
    told = path;
    QDir().mkpath(dir);
    std::fprintf(stderr, "%s: the error log is %s\n", qPrintable(ctx.programName), qPrintable(path));
}
} // namespace

void LogError(Context &ctx, const QString &text)
{
    // Set while a failure of the log itself is being reported: that report
    // writes to the log as well, and must not report its own failure again.
    static thread_local bool reportingLogFailure = false;

    // Opened for appending for each entry and closed at once, so that nothing
    // is lost when the program ends abruptly afterwards.
    const QString path = errorLogPath(ctx);
    prepareLogFolder(ctx, path);
    QFile f(path);
    const QByteArray line = text.toUtf8() + "\r\n";
    // QFile buffers the line: a full disk shows only at the flush, or at the close.
    const bool written = f.open(QIODevice::WriteOnly | QIODevice::Append) && f.write(line) == line.size() && f.flush();
    QString why = f.errorString();
    f.close();
    if (written && f.error() == QFileDevice::NoError)
        return;
    if (written)
        why = f.errorString();
    std::fprintf(stderr, "LogError: cannot write %s (%s): %s\n", qPrintable(f.fileName()), qPrintable(why),
                 qPrintable(text));
    // A user at the workstation hears of it like of any unexpected error; on
    // the machine PC or in a batch run nobody could, and the run goes on.
    if (reportingLogFailure || ctx.state.runningOnMachinePC || ctx.state.unattended || !ctx.ui)
        return;
    reportingLogFailure = true;
    int answer = 2;
    try {
        answer =
            ShowUnexpectedError(ctx, kFileAccessError, QStringLiteral("LogError"), why, QStringLiteral("LogError"));
    } catch (...) {
        reportingLogFailure = false;
        throw;
    }
    reportingLogFailure = false;
    if (answer == 1)
        EndProgram(ctx, 1);
}

QString unexpectedErrorText(long number, const QString &procedure, const QString &description)
{
    return QStringLiteral("Unexpected error!") + LFCR + QStringLiteral("No: ") + QString::number(number) + LFCR +
           QStringLiteral("Source: ") + procedure + LFCR + description;
}

QString unexpectedErrorLogLine(long number, const QString &procedure, const QString &description)
{
    return QStringLiteral("Unexpected error!\tNo: ") + QString::number(number) + QStringLiteral("\tSource: ") +
           procedure + QLatin1Char('\t') + description;
}

int ShowUnexpectedError(Context &ctx, long number, const QString &source, const QString &description,
                        const QString &procedure)
{
    (void)source; // the report names the procedure, as every handler passes its own name
    if (ctx.state.runningOnMachinePC) {
        LogError(ctx, unexpectedErrorLogLine(number, procedure, description));
        return 1;
    }
    const QString text = unexpectedErrorText(number, procedure, description);
    LogError(ctx, text);
    if (ctx.state.unattended || !ctx.ui)
        return 1;
    const Answer a = ctx.ui->messageBox(text + LFCR + QStringLiteral("Continue?"), Buttons::YesNo, Icon::Critical,
                                        QStringLiteral("Unexpected error"));
    return a == Answer::Yes ? 2 : 1;
}

void EndProgram(Context &ctx, int exitCode)
{
    ctx.state.programEnding = true;
    if (ctx.endProgram)
        ctx.endProgram(exitCode);
    throw ProgramEnded{exitCode};
}

void ShowErrorMessage(Context &ctx, const QString &procedure, long number, const QString &description)
{
    showMessage(ctx,
                QStringLiteral("An error has occurred in ") + procedure + QStringLiteral("!") + LFCR +
                    QStringLiteral("No.: ") + QString::number(number) + QStringLiteral(" , ") + description,
                Buttons::OK, Icon::Critical);
}

void reportUnexpected(Context &ctx, const QString &procedure, const std::exception &e)
{
    if (ShowUnexpectedError(ctx, 0, procedure, QString::fromUtf8(e.what()), procedure) == 1)
        EndProgram(ctx, 1);
}

} // namespace ht
