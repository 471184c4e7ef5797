#include "startup/forms/MainForms.h"

#include "startup/StartupDialog.h"
#include "startup/forms/PlaceholderMainForm.h"
#include "startup/forms/StartupDialogForm.h"

#include <QPointer>

namespace ht
{

void ShowMainForm(Context &ctx, StartupSession &session, const QString &mode)
{
    // One main form per program run, as the classic forms were single instances.
    static QPointer<QWidget> mainForm;
    if (!mainForm) {
        // frmEdit and frmImport are not part of this version yet; the
        // placeholder says so and offers the Info box.
        mainForm = new PlaceholderMainForm(ctx, session, mode);
    }
    mainForm->show();
    mainForm->raise();
    mainForm->activateWindow();
}

void ShowInfoBox(Context &ctx, StartupSession &session, QWidget *caller)
{
    session.infoCaller = caller;
    StartupDialogForm dialog(ctx, session, caller);
    dialog.logic().Form_Load();
    dialog.show();
    dialog.activateFirst();
    if (dialog.isVisible())
        dialog.exec();
    session.infoCaller = nullptr;
}

} // namespace ht
