#include "startup/forms/MainForms.h"

#include "common/Context.h"
#include "editor/forms/EditorWindow.h"
#include "importer/forms/ImportWindow.h"
#include "languages/forms/LanguagesWindow.h"
#include "startup/StartupDialog.h"
#include "startup/forms/StartupDialogForm.h"

#include <QPointer>

namespace ht
{

QWidget *QtFormHost::create(FormId form)
{
    // Each main form is added here as it is built; until then a stand-in says so.
    switch (form) {
    case FormId::Edit:
        return new EditorWindow(m_ctx, m_session);
    case FormId::Import:
        return new ImportWindow(m_ctx, m_session);
    case FormId::Languages:
        return new LanguagesWindow(m_ctx);
    }
    return nullptr;
}

bool QtFormHost::available(FormId form) const
{
    return form == FormId::Edit || form == FormId::Import || form == FormId::Languages;
}

QWidget *QtFormHost::form(FormId form) const
{
    return m_forms[int(form)];
}

void QtFormHost::showForm(FormId form)
{
    QPointer<QWidget> &f = m_forms[int(form)];
    if (!f)
        f = create(form);
    f->show();
    f->raise();
    f->activateWindow();
}

void QtFormHost::unloadForm(FormId form)
{
    if (QWidget *f = m_forms[int(form)]) {
        f->hide();
        f->close();
        f->deleteLater();
    }
}

void ShowMainForm(Context &ctx, StartupSession &session, const QString &mode)
{
    (void)session;
    if (ctx.forms)
        ctx.forms->showForm(mode == QLatin1String("IMPORT") ? FormId::Import : FormId::Edit);
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
