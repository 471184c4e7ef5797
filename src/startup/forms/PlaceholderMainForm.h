#pragma once
// Stands in for frmEdit / frmImport until those forms are built: names the form
// that is coming and offers the Info box and Exit, nothing else.

#include <QMainWindow>
#include <memory>

namespace ht
{

struct Context;
struct StartupSession;
class QtStatusTarget;

class PlaceholderMainForm : public QMainWindow
{
    Q_OBJECT
  public:
    PlaceholderMainForm(Context &ctx, StartupSession &session, const QString &mode);
    ~PlaceholderMainForm() override;

  protected:
    void closeEvent(QCloseEvent *e) override;

  private:
    Context &m_ctx;
    StartupSession &m_session;
    std::unique_ptr<QtStatusTarget> m_status;
};

} // namespace ht
