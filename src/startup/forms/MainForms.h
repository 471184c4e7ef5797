#pragma once
// The main forms of the program's windows and the Info box they open.

#include "startup/FormSwitch.h"

#include <QPointer>
#include <QString>

class QWidget;

namespace ht
{

struct Context;
struct StartupSession;

// The Qt forms behind FormHost: one instance of each main form at a time,
// made when first shown. Closing a main form ends the program, unless it is
// being switched for another.
class QtFormHost : public FormHost
{
  public:
    QtFormHost(Context &ctx, StartupSession &session) : m_ctx(ctx), m_session(session) {}
    void showForm(FormId form) override;
    void unloadForm(FormId form) override;
    bool available(FormId form) const override;
    QWidget *form(FormId form) const;

  private:
    QWidget *create(FormId form);
    Context &m_ctx;
    StartupSession &m_session;
    QPointer<QWidget> m_forms[3];
};

// Shows the main form of `mode` ("EDIT": frmEdit, "IMPORT": frmImport), modeless.
void ShowMainForm(Context &ctx, StartupSession &session, const QString &mode);
// Shows the start-up dialog modally as the Info box of `caller`.
void ShowInfoBox(Context &ctx, StartupSession &session, QWidget *caller);

} // namespace ht
