#pragma once
// The start-up dialog's window. Everything it decides is in StartupDialog; the
// window only shows what it is told and forwards its events.

#include "startup/StartupDialog.h"
#include "startup/StartupView.h"

#include <QDialog>
#include <memory>

class QLabel;
class QListWidget;
class QPushButton;
class QStatusBar;
class QTimer;

namespace ht
{

class QtStatusTarget;

class StartupDialogForm : public QDialog, public StartupView
{
    Q_OBJECT
  public:
    // With `infoCaller` set the dialog is the Info box of that main form.
    StartupDialogForm(Context &ctx, StartupSession &session, QWidget *infoCaller = nullptr);
    ~StartupDialogForm() override;

    StartupDialog &logic() { return m_logic; }
    // Runs the first activation now instead of waiting for the window system
    // (which may never activate a window on a headless platform).
    void activateFirst();

    // StartupView
    void setCaption(const QString &text) override;
    void setTitle(const QString &text) override;
    void setVersionText(const QString &text) override;
    void setScopiaVersion(const QString &text) override;
    void setSettingsList(const QStringList &lines) override;
    void showSettingsList() override;
    void setShowSettingsEnabled(bool enabled) override;
    void setOkEnabled(bool enabled) override;
    void setTimerInterval(int milliseconds) override;
    void refresh() override;
    void showMainForm(const QString &mode) override;
    void unload() override;
    StatusTarget *statusTarget() override;

  protected:
    bool event(QEvent *e) override;
    bool eventFilter(QObject *watched, QEvent *e) override;
    void resizeEvent(QResizeEvent *e) override;
    void closeEvent(QCloseEvent *e) override;
    void reject() override;

  private:
    Context &m_ctx;
    StartupSession &m_session;
    StartupDialog m_logic;
    bool m_infoBox;
    bool m_forwardActivation = false;
    bool m_unloaded = false;
    bool m_unloadedByProgram = false;

    QLabel *m_title;
    QLabel *m_version;
    QLabel *m_scopiaVersion;
    QLabel *m_logo;
    QListWidget *m_settings;
    QPushButton *m_ok;
    QPushButton *m_showSettings;
    QStatusBar *m_statusBar;
    QTimer *m_timer;
    std::unique_ptr<QtStatusTarget> m_status;
};

} // namespace ht
