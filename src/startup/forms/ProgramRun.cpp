#include "startup/forms/ProgramRun.h"

#include "startup/forms/StartupDialogForm.h"

#include <QCoreApplication>
#include <QPointer>

namespace ht
{

int RunProgram(Context &ctx, StartupSession &session, const std::function<int()> &eventLoop)
{
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
    guard.keep = true;
    return eventLoop();
}

} // namespace ht
