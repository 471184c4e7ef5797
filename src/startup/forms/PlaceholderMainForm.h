#pragma once
// Stands in for frmEdit / frmImport until those forms are built: names the form
// that is coming and offers the Info box and Exit, nothing else.

#include <QMainWindow>

namespace ht
{

struct Context;
struct StartupSession;

class PlaceholderMainForm : public QMainWindow
{
    Q_OBJECT
  public:
    PlaceholderMainForm(Context &ctx, StartupSession &session, const QString &mode);

  protected:
    void closeEvent(QCloseEvent *e) override;

  private:
    Context &m_ctx;
    StartupSession &m_session;
};

} // namespace ht
