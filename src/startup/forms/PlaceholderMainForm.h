#pragma once
// Stands in for a main form until it is built: names the form that is coming
// and offers the Info box and Exit, nothing else.

#include <QMainWindow>

namespace ht
{

struct Context;
struct StartupSession;

class PlaceholderMainForm : public QMainWindow
{
    Q_OBJECT
  public:
    PlaceholderMainForm(Context &ctx, StartupSession &session, const QString &formName);

  protected:
    void closeEvent(QCloseEvent *e) override;

  private:
    Context &m_ctx;
    StartupSession &m_session;
};

} // namespace ht
