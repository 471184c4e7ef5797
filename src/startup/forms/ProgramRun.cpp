#include "startup/forms/ProgramRun.h"

#include "common/Context.h"
#include "html/HelpDirectory.h"
#include "startup/StartupDialog.h"
#include "startup/forms/MainForms.h"
#include "startup/forms/StartupDialogForm.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPointer>
#include <cstdio>

namespace ht
{

int RunProgram(Context &ctx, StartupSession &session, const std::function<int()> &eventLoop)
{
    // The main forms live as long as the program runs.
    QtFormHost forms(ctx, session);
    ctx.forms = &forms;
    struct Unset {
        Context &ctx;
        ~Unset() { ctx.forms = nullptr; }
    } unset{ctx};

    // Load and first activation run here rather than from window events, so
    // that a failed check or a batch run ends the program straight from this
    // call, on every platform, headless ones included.
    QPointer<StartupDialogForm> dialog = new StartupDialogForm(ctx, session);
    struct DeleteUnlessShown {
        QPointer<StartupDialogForm> &d;
        bool keep = false;
        ~DeleteUnlessShown()
        {
            if (!keep)
                delete d.data();
        }
    } guard{dialog};

    dialog->logic().Form_Load();
    dialog->show();
    QCoreApplication::processEvents();
    if (dialog)
        dialog->activateFirst();
    // Past the checks and the batch run, only windows are left: without a
    // display nobody would ever see them, and the program would wait forever.
    if (!hasRealScreen()) {
        const QString name = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
        std::fprintf(stderr,
                     "%s: a display is needed to show the window, and there is none.\n"
                     "Start it on a desktop, or generate the help pages without a window: %s "
                     "/html/Alarms/Warnings/MaterialChange\n",
                     qPrintable(name), qPrintable(name));
        return kExitWrongStart;
    }
    guard.keep = true;
    return eventLoop();
}

} // namespace ht
