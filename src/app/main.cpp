// Entry point of both variants (the variant is fixed per executable, see
// CompileOption.cpp). Everything the program does starts in the start-up dialog.
#include "app/ConsoleMain.h"
#include "common/Context.h"
#include "common/ScriptedUserInterface.h"
#include "common/forms/QtUserInterface.h"
#include "startup/CommandLine.h"
#include "startup/CompileOption.h"
#include "startup/StartupDialog.h"
#include "startup/forms/ProgramRun.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>

namespace
{

// Without any display the batch run must still work: use the platform that
// needs none.
void chooseHeadlessPlatformIfNoDisplay()
{
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

// Headless platforms cannot fit a window to its size hints and say so, in Qt's
// default category, for every window shown: nothing a user could act on. Only
// that one message is dropped; everything else goes on to Qt's handler.
QtMessageHandler qtHandler = nullptr;
void dropSizeHintNotice(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && message == QLatin1String("This plugin does not support propagateSizeHints()"))
        return;
    qtHandler(type, context, message);
}

bool nobodyCanAnswer()
{
    const QString platform = QGuiApplication::platformName();
    return platform == QLatin1String("offscreen") || platform == QLatin1String("minimal");
}

} // namespace

int main(int argc, char **argv)
{
    // A job for scripts needs no window and no display.
    int commandExit = 0;
    if (ht::runProgramCommand(argc, argv, commandExit))
        return commandExit;

    chooseHeadlessPlatformIfNoDisplay();
    QApplication app(argc, argv);
    // Main forms and the start-up dialog decide themselves when the program ends.
    QApplication::setQuitOnLastWindowClosed(false);

    ht::Context ctx;
    ht::initProgramLocation(ctx);
    ht::QtUserInterface dialogs;
    ht::ScriptedUserInterface noAnswers; // every question cancelled, every box logged
    if (nobodyCanAnswer()) {
        // On a headless platform a dialog would wait forever for a click.
        ctx.ui = &noAnswers;
        qtHandler = qInstallMessageHandler(dropSizeHintNotice);
        ctx.state.unattended = true;
        ctx.state.noDisplay = true;
    } else {
        ctx.ui = &dialogs;
    }
    ctx.processEvents = [] { QCoreApplication::processEvents(); };

    // Before the event loop runs, EndProgram's ProgramEnded comes back here.
    // Inside it, the program ends at once, as the classic End did: an
    // exception must not cross Qt's event dispatch.
    bool loopRunning = false;
    ctx.endProgram = [&loopRunning](int code) {
        if (loopRunning) {
            std::fflush(nullptr);
            std::_Exit(code);
        }
    };

    ht::StartupSession session;
    session.compileOption = ht::GetCompileOption();
    session.commandLine = ht::ProgramCommandLine();
    try {
        return ht::RunProgram(ctx, session, [&] {
            loopRunning = true;
            return app.exec();
        });
    } catch (const ht::ProgramEnded &ended) {
        return ended.exitCode;
    }
}
