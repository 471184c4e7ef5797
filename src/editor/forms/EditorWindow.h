#pragma once
// The editor's window frmEdit. Everything it decides is in EditorForm; the
// window only shows what it is told and forwards its events.

#include "editor/EditorForm.h"
#include "editor/EditorView.h"

#include <QKeySequence>
#include <QMainWindow>
#include <QMap>
#include <QPointer>
#include <array>
#include <memory>

class QAction;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;

namespace ht
{

struct StartupSession;
class EscapeFilter;
class QtStatusTarget;
class ProgressWindow;

class EditorWindow : public QMainWindow, public EditorView
{
    Q_OBJECT
  public:
    EditorWindow(Context &ctx, StartupSession &session);
    ~EditorWindow() override;

    EditorForm &logic() { return m_logic; }
    QAction *menuAction(Ctl c) const { return m_actions.value(c); }

    // EditorView
    void setCaption(const QString &text) override;
    void setText(Ctl c, int index, const QString &text) override;
    QString text(Ctl c, int index) const override;
    void setItems(Ctl c, const QStringList &items) override;
    void clearUndo(Ctl c, int index) override;
    void setVisible(Ctl c, int index, bool visible) override;
    void setEnabled(Ctl c, int index, bool enabled) override;
    void setLocked(Ctl c, int index, bool locked) override;
    void setMarked(Ctl c, int index, bool marked) override;
    void setItemList(const QList<int> &numbers, const QStringList &lines) override;
    void setItemListLine(int number, const QString &line) override;
    void selectItemListLine(int number) override;
    bool hasFocus(Ctl c, int index) const override;
    int cursorPosition(Ctl c, int index) const override;
    void setCursorPosition(Ctl c, int index, int position) override;
    void setFont(Ctl c, int index, const BoxFont &font) override;
    void activateKeyboardLayout(const QString &layoutId, const QString &text) override;
    void setBusy(bool busy) override;
    void showMachineSelection() override;
    void showInfoBox() override;
    void closeForm() override;
    StatusTarget *statusTarget() override;

  protected:
    bool event(QEvent *e) override;
    bool eventFilter(QObject *watched, QEvent *e) override;
    void showEvent(QShowEvent *e) override;
    void resizeEvent(QResizeEvent *e) override;
    void keyPressEvent(QKeyEvent *e) override;
    void closeEvent(QCloseEvent *e) override;

  private:
    void buildMenus();
    QWidget *buildTexts();
    QWidget *buildDefinitions();
    void connectEvents();
    void fitShortBoxes();
    QWidget *widget(Ctl c, int index) const;
    QAction *addMenuAction(QMenu *menu, Ctl c, const QString &name, const QString &text, void (EditorForm::*handler)(),
                           const QKeySequence &shortcut = {});

    Context &m_ctx;
    StartupSession &m_session;
    EditorForm m_logic;
    bool m_shownOnce = false;
    QPointer<QWidget> m_focusBeforeBusy;

    QComboBox *m_index, *m_source, *m_destination;
    std::array<QPlainTextEdit *, 4> m_textSource{}, m_textDestination{}; // 1..3
    std::array<QLineEdit *, 5> m_textDefinition{};                       // 1..4
    std::array<QLabel *, 4> m_labelSource{}, m_labelDestination{};       // 1..3
    QLabel *m_labelItem, *m_labelDefinition, *m_labelMachine, *m_labelTestVersion, *m_labelFontError, *m_labelKeyboard,
        *m_labelTranslated, *m_labelFindings;
    QGroupBox *m_frameDef;
    QListWidget *m_itemList;
    QPointer<ProgressWindow> m_overview;
    QMap<Ctl, QAction *> m_actions;
    std::unique_ptr<QtStatusTarget> m_status;
    std::unique_ptr<EscapeFilter> m_escape;
};

} // namespace ht
