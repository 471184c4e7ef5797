#pragma once
// The language form frmLanguages. Everything it decides is in LanguagesForm;
// the window only shows what it is told and forwards its events.

#include "languages/LanguagesForm.h"
#include "languages/LanguagesView.h"

#include <QMainWindow>
#include <QMap>
#include <memory>

class QAction;
class QButtonGroup;
class QComboBox;
class QListWidget;
class QMenu;

namespace ht
{

class QtStatusTarget;

class LanguagesWindow : public QMainWindow, public LanguagesView
{
    Q_OBJECT
  public:
    explicit LanguagesWindow(Context &ctx);
    ~LanguagesWindow() override;

    LanguagesForm &logic() { return m_logic; }
    QAction *menuAction(Ctl c) const { return m_actions.value(c); }

    // LanguagesView
    void setCaption(const QString &text) override;
    void setText(Ctl c, const QString &text) override;
    QString text(Ctl c) const override;
    void setItems(Ctl c, const QStringList &items) override;
    void setEnabled(Ctl c, bool enabled) override;
    void setVisible(Ctl c, bool visible) override;
    void setBusy(bool busy) override;
    void closeForm() override;
    StatusTarget *statusTarget() override;

  protected:
    void resizeEvent(QResizeEvent *e) override;
    void closeEvent(QCloseEvent *e) override;

  private:
    QWidget *buildCreate();
    QWidget *buildDelete();
    void buildMenus();
    QAction *addMenuAction(QMenu *menu, Ctl c, const QString &name, const QString &text,
                           void (LanguagesForm::*handler)());
    template <typename T> T *control(Ctl c, const QString &name, const QString &accessibleName, QWidget *parent);

    Context &m_ctx;
    LanguagesForm m_logic;
    QMap<Ctl, QWidget *> m_widgets;
    QMap<Ctl, QAction *> m_actions;
    QListWidget *m_possLanguages;
    QComboBox *m_deleteCombo;
    QButtonGroup *m_deleteOption;
    std::unique_ptr<QtStatusTarget> m_status;
};

} // namespace ht
