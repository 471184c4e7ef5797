#pragma once
// The importer's window frmImport. Everything it decides is in ImportForm; the
// window only shows what it is told and forwards its events.

#include "importer/ImportForm.h"
#include "importer/ImportView.h"

#include <QMainWindow>
#include <QMap>
#include <memory>

class QAction;

namespace ht
{

struct StartupSession;
class QtStatusTarget;

class ImportWindow : public QMainWindow, public ImportView
{
    Q_OBJECT
  public:
    ImportWindow(Context &ctx, StartupSession &session);
    ~ImportWindow() override;
    ImportForm &logic() { return m_logic; }

    void setCaption(const QString &text) override;
    void setText(ImportCtl c, const QString &text) override;
    QString text(ImportCtl c) const override;
    void setItems(ImportCtl c, const QStringList &items) override;
    void setChecked(ImportCtl c, bool checked) override;
    bool checked(ImportCtl c) const override;
    void setEnabled(ImportCtl c, bool enabled) override;
    void setVisible(ImportCtl c, bool visible) override;
    int askOverwrite(const QString &kind, const QString &oldValue, const QString &newValue) override;
    void showDeleteMachine() override;
    void showInfoBox() override;
    void closeForm() override;
    StatusTarget *statusTarget() override;

  protected:
    bool eventFilter(QObject *watched, QEvent *e) override;
    void resizeEvent(QResizeEvent *e) override;
    void closeEvent(QCloseEvent *e) override;

  private:
    QWidget *buildInputs();
    void buildMenus();
    QObject *control(ImportCtl c) const;

    Context &m_ctx;
    StartupSession &m_session;
    ImportForm m_logic;
    QMap<ImportCtl, QObject *> m_controls;
    std::unique_ptr<QtStatusTarget> m_status;
};

} // namespace ht
