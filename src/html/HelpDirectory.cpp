#include "html/HelpDirectory.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/UserInterface.h"

#include <QGuiApplication>
#include <QScreen>

namespace ht
{

QString GetHelpMainDir(Context &ctx, bool &checkOnly, bool &select)
{
    try {
        if (checkOnly) {
            if (!directoryExists(ctx.state.helpMainDir)) {
                LogError(ctx, QStringLiteral("Critical Error: Machine Helpdirectory not found.") + LFCR +
                                  QStringLiteral("Application closing down."));
                EndProgram(ctx, 1);
            }
            return ctx.state.helpMainDir;
        }
        const QString stored =
            LoadIniString(ctx, QStringLiteral("Setup"), QStringLiteral("HelpMainDir"), ctx.state.iniPath, false, false);
        QString dir = stored;
        if ((dir.isEmpty() || select) && ctx.ui) {
            // Cancelling the dialog keeps the directory known so far.
            if (const auto chosen = ctx.ui->chooseDirectory(QStringLiteral("Select help directory"), stored))
                dir = chosen->isEmpty() ? QString() : withTrailingSeparator(*chosen);
        }
        if (!dir.isEmpty() && directoryExists(dir) && !ctx.state.unattended)
            SaveIni(ctx, dir, QStringLiteral("Setup"), QStringLiteral("HelpMainDir"), ctx.state.iniPath);
        return dir;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetHelpMainDir"), e);
        return QString();
    }
}

int Abort_WriteHTML(Context &ctx)
{
    try {
        const QString title = QStringLiteral("Abort writing HTML-files?");
        const Answer a =
            showMessage(ctx, title + LFCR + QStringLiteral("Some HTML files may not correspond to database"),
                        Buttons::YesNo, Icon::Critical, title);
        if (a != Answer::Yes)
            return 0;
        ctx.state.abortHtml = true;
        return 1;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("Abort_WriteHTML"), e);
        return 0;
    }
}

int GetGenerateHTMLOption(Context &ctx, const QString &kindName)
{
    try {
        if (ctx.state.unattended || !ctx.ui)
            return 0;
        const QStringList options{QStringLiteral("Generate HTML-pages for ") + kindName + QStringLiteral(" only"),
                                  QStringLiteral("Generate HTML-pages for Alarms, Warnings and MaterialChange")};
        const std::optional<int> chosen =
            ctx.ui->chooseOption(QStringLiteral("dlgSelectHTMLOption"), QStringLiteral("Generate HTML-pages"), options);
        return chosen && (*chosen == 0 || *chosen == 1) ? *chosen + 1 : 0;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetGenerateHTMLOption"), e);
        return 0;
    }
}

bool hasRealScreen()
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal") &&
           QGuiApplication::primaryScreen() != nullptr;
}

void GetScopiaResolution(Context &ctx)
{
    const int fallback = 1024;
    try {
        // The panel's own screen counts when there is one: its width in pixels (twips / 15).
        if (ctx.state.runningOnMachinePC && hasRealScreen()) {
            ctx.state.screenResolution = QString::number(QGuiApplication::primaryScreen()->geometry().width());
            return;
        }
        // Without one (a batch run without display) the settings file says what the panel has.
        const QString section = QStringLiteral("Setup"), key = QStringLiteral("ScreenResolution");
        const int stored = LoadIniInteger(ctx, section, key, ctx.state.iniPath, false, false);
        if (stored > 0) {
            ctx.state.screenResolution = QString::number(stored);
            return;
        }
        if (ctx.state.unattended || !ctx.ui) {
            ctx.state.screenResolution = QString::number(fallback);
            LogError(ctx, QStringLiteral("No screen resolution in ") + ctx.state.iniPath +
                              QStringLiteral(", pages laid out for ") + ctx.state.screenResolution);
            return;
        }
        const std::optional<int> chosen = ctx.ui->chooseScreenWidth(fallback);
        if (chosen && *chosen > 0) {
            ctx.state.screenResolution = QString::number(*chosen);
            SaveIni(ctx, *chosen, section, key, ctx.state.iniPath);
        } else {
            ctx.state.screenResolution = QString::number(fallback);
        }
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetScopiaResolution"), e);
    }
}

} // namespace ht
