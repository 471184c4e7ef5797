#include "editor/forms/EditorWindow.h"
#include "editor/forms/ProgressWindow.h"

#include "common/Context.h"
#include "common/forms/QtStatusTarget.h"
#include "editor/forms/MachineSelectionForm.h"
#include "startup/forms/MainForms.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStatusBar>
#include <QTextBlock>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace ht
{

namespace
{

constexpr int kEnter = 13;
constexpr int kEscape = 27;

// The program keeps line breaks as CR LF, the text boxes as LF.
QString forDisplay(QString text)
{
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
}
QString fromDisplay(QString text)
{
    return text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
}

bool isOwnShortcut(const QKeyEvent *e)
{
    if (e->modifiers() == (Qt::ControlModifier | Qt::ShiftModifier))
        return e->key() == Qt::Key_J || e->key() == Qt::Key_K;
    if (e->modifiers() != Qt::ControlModifier)
        return false;
    return e->key() == Qt::Key_J || e->key() == Qt::Key_K || e->key() == Qt::Key_G || e->key() == Qt::Key_B ||
           e->key() == Qt::Key_R || e->key() == Qt::Key_F;
}

// A box that cannot be typed into looks it, as the platform draws read-only
// boxes: on the window's background, not the base of an editable box.
void showReadOnly(QWidget *box, bool readOnly)
{
    const QPalette platform = QApplication::palette(box);
    QPalette p = box->palette();
    for (QPalette::ColorGroup g : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        p.setBrush(g, QPalette::Base, platform.brush(g, readOnly ? QPalette::Window : QPalette::Base));
    box->setPalette(p);
}

QPlainTextEdit *textBox(QWidget *parent, const QString &name, bool readOnly)
{
    auto *box = new QPlainTextEdit(parent);
    box->setObjectName(name);
    box->setReadOnly(readOnly);
    showReadOnly(box, readOnly);
    box->setTabChangesFocus(true); // the keyboard moves on from box to box
    box->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    if (readOnly)
        box->setFocusPolicy(Qt::ClickFocus); // the source can be selected and copied, Tab passes it by
    return box;
}

} // namespace

// While pages are written, Esc asks to stop wherever the focus is.
class EscapeFilter : public QObject
{
  public:
    explicit EscapeFilter(EditorForm &logic) : m_logic(logic) {}
    bool eventFilter(QObject *, QEvent *e) override
    {
        if (e->type() != QEvent::KeyPress || static_cast<QKeyEvent *>(e)->key() != Qt::Key_Escape)
            return false;
        m_logic.Form_KeyDown(kEscape);
        return true;
    }

  private:
    EditorForm &m_logic;
};

EditorWindow::EditorWindow(Context &ctx, StartupSession &session) : m_ctx(ctx), m_session(session), m_logic(ctx, *this)
{
    setObjectName(QStringLiteral("frmEdit"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);

    // Item, number and machine.
    m_labelItem = new QLabel(central);
    m_labelItem->setObjectName(QStringLiteral("LabelItem"));
    QFont bold = m_labelItem->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    m_labelItem->setFont(bold);
    m_index = new QComboBox(central);
    m_index->setObjectName(QStringLiteral("ComboIndex"));
    m_index->setAccessibleName(QStringLiteral("Item number"));
    m_index->setEditable(true);
    m_index->setInsertPolicy(QComboBox::NoInsert);
    m_index->setMinimumContentsLength(6);
    m_index->setMaxVisibleItems(20);
    auto *indexLabel = new QLabel(QStringLiteral("Item &number:"), central);
    indexLabel->setBuddy(m_index);
    m_labelMachine = new QLabel(central);
    m_labelMachine->setObjectName(QStringLiteral("LabelMachine"));
    m_labelMachine->setAccessibleName(QStringLiteral("Machine"));
    m_labelMachine->setFont(bold);
    auto *top = new QHBoxLayout;
    top->addWidget(m_labelItem);
    top->addSpacing(16);
    top->addWidget(indexLabel);
    top->addWidget(m_index);
    top->addStretch();
    top->addWidget(new QLabel(QStringLiteral("Machine:"), central));
    top->addWidget(m_labelMachine);
    layout->addLayout(top);

    // The item list beside the boxes, as translation editors have one; Items > Show item list hides it.
    auto *split = new QSplitter(Qt::Horizontal, central);
    m_itemList = new QListWidget(split);
    m_itemList->setObjectName(QStringLiteral("ItemList"));
    m_itemList->setAccessibleName(QStringLiteral("Items"));
    m_itemList->setUniformItemSizes(true); // a thousand lines fill at once
    m_itemList->setToolTip(QStringLiteral("✓ translated   ○ missing   ! with findings   ↻ needs review"));
    split->addWidget(m_itemList);
    split->addWidget(buildTexts());
    split->setStretchFactor(1, 1);
    split->setSizes({220, 780});
    layout->addWidget(split, 1);
    // The checks' findings of the item, in plain words, while the translator types.
    m_labelFindings = new QLabel(central);
    m_labelFindings->setObjectName(QStringLiteral("LabelFindings"));
    m_labelFindings->setAccessibleName(QStringLiteral("Findings"));
    m_labelFindings->setWordWrap(true);
    m_labelFindings->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum); // never squeezed by the boxes
    m_labelFindings->setStyleSheet(QStringLiteral("color: #8a4b00;"));
    layout->addWidget(m_labelFindings);
    layout->addWidget(buildDefinitions());

    m_labelFontError = new QLabel(
        QStringLiteral("The font of this language cannot be used: its texts are shown in a fall-back font."), central);
    m_labelFontError->setObjectName(QStringLiteral("LabelFontError"));
    m_labelFontError->setStyleSheet(QStringLiteral("color: #b00020;"));
    m_labelFontError->setVisible(false);
    m_labelTestVersion = new QLabel(QStringLiteral("Test version"), central);
    m_labelTestVersion->setObjectName(QStringLiteral("LabelTestVersion"));
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_labelFontError, 1);
    bottom->addWidget(m_labelTestVersion);
    layout->addLayout(bottom);
    setCentralWidget(central);

    m_status = std::make_unique<QtStatusTarget>(this, statusBar());
    // Kept apart from the passing messages, which the menus' hints wipe out.
    m_labelTranslated = new QLabel(this);
    m_labelTranslated->setObjectName(QStringLiteral("LabelTranslated"));
    m_labelTranslated->setAccessibleName(QStringLiteral("Translated items"));
    statusBar()->addPermanentWidget(m_labelTranslated);
    buildMenus();
    connectEvents();

    setTabOrder(m_index, m_source);
    setTabOrder(m_source, m_destination);
    setTabOrder(m_destination, m_textDestination[1]);
    setTabOrder(m_textDestination[1], m_textDestination[2]);
    setTabOrder(m_textDestination[2], m_textDestination[3]);
    setTabOrder(m_textDestination[3], m_textDefinition[1]);
    for (int i = 1; i < 4; ++i)
        setTabOrder(m_textDefinition[i], m_textDefinition[i + 1]);

    setMinimumSize(760, 520);
    resize(1000, 700);
    m_logic.Form_Load();
}

EditorWindow::~EditorWindow()
{
    // The controls still send focus and change events as they go; the logic must not hear them.
    for (QObject *child : findChildren<QObject *>()) {
        QObject::disconnect(child, nullptr, this, nullptr);
        child->removeEventFilter(this);
    }
}

QWidget *EditorWindow::buildTexts()
{
    auto *texts = new QWidget(this);
    auto *grid = new QGridLayout(texts);
    grid->setContentsMargins(0, 0, 0, 0);
    m_source = new QComboBox(texts);
    m_source->setObjectName(QStringLiteral("ComboLanguageSource"));
    m_source->setAccessibleName(QStringLiteral("Source language"));
    m_destination = new QComboBox(texts);
    m_destination->setObjectName(QStringLiteral("ComboLanguageDestination"));
    m_destination->setAccessibleName(QStringLiteral("Destination language"));
    auto *sourceLabel = new QLabel(QStringLiteral("&Source language:"), texts);
    sourceLabel->setBuddy(m_source);
    auto *destinationLabel = new QLabel(QStringLiteral("&Destination language:"), texts);
    destinationLabel->setBuddy(m_destination);
    auto *sourceRow = new QHBoxLayout;
    sourceRow->addWidget(sourceLabel);
    sourceRow->addWidget(m_source, 1);
    auto *destinationRow = new QHBoxLayout;
    destinationRow->addWidget(destinationLabel);
    destinationRow->addWidget(m_destination, 1);
    grid->addLayout(sourceRow, 0, 0);
    grid->addLayout(destinationRow, 0, 1);
    m_labelKeyboard = new QLabel(texts);
    m_labelKeyboard->setObjectName(QStringLiteral("LabelKeyboardLayout"));
    m_labelKeyboard->setAccessibleName(QStringLiteral("Keyboard layout"));
    grid->addWidget(m_labelKeyboard, 1, 1);

    for (int i = 1; i <= 3; ++i) {
        m_labelSource[i] = new QLabel(texts);
        m_labelSource[i]->setObjectName(QStringLiteral("LabelSource%1").arg(i));
        m_labelDestination[i] = new QLabel(texts);
        m_labelDestination[i]->setObjectName(QStringLiteral("LabelDestination%1").arg(i));
        m_textSource[i] = textBox(texts, QStringLiteral("TextSource%1").arg(i), true);
        m_textDestination[i] = textBox(texts, QStringLiteral("TextDestination%1").arg(i), false);
        m_labelDestination[i]->setBuddy(m_textDestination[i]);
        const int row = 2 * i;
        grid->addWidget(m_labelSource[i], row, 0);
        grid->addWidget(m_labelDestination[i], row, 1);
        grid->addWidget(m_textSource[i], row + 1, 0);
        grid->addWidget(m_textDestination[i], row + 1, 1);
    }
    fitShortBoxes();
    grid->setRowStretch(7, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    return texts;
}

// Device and Result are short: their boxes show two lines of their
// language's font, without a scroll bar; the explanation takes the room there is.
void EditorWindow::fitShortBoxes()
{
    for (int i = 1; i <= 2; ++i) {
        int height = 0;
        for (QPlainTextEdit *box : {m_textSource[i], m_textDestination[i]}) {
            const int margins = int(std::ceil(2 * box->document()->documentMargin())) + 2 * box->frameWidth();
            // The box lays out each line at the line spacing rounded up; one pixel more, and two to spare.
            const int line = int(std::ceil(QFontMetricsF(box->font()).lineSpacing()));
            height = std::max(height, 2 * line + margins + 3);
        }
        // Both languages' boxes of a row keep one height, so that the rows stay side by side.
        for (QPlainTextEdit *box : {m_textSource[i], m_textDestination[i]})
            box->setFixedHeight(height);
    }
}

QWidget *EditorWindow::buildDefinitions()
{
    m_frameDef = new QGroupBox(this);
    m_frameDef->setObjectName(QStringLiteral("FrameDef"));
    auto *frame = new QVBoxLayout(m_frameDef);
    m_labelDefinition = new QLabel(QStringLiteral("Alarm definition"), m_frameDef);
    m_labelDefinition->setObjectName(QStringLiteral("LabelDefinition"));
    frame->addWidget(m_labelDefinition);
    auto *row = new QHBoxLayout;
    const QString names[] = {QStringLiteral("Sensor"), QStringLiteral("Cam"), QStringLiteral("CPU"),
                             QStringLiteral("Rejects")};
    for (int i = 1; i <= 4; ++i) {
        m_textDefinition[i] = new QLineEdit(m_frameDef);
        m_textDefinition[i]->setObjectName(QStringLiteral("TextDefinition%1").arg(i));
        m_textDefinition[i]->setAccessibleName(names[i - 1]);
        auto *label = new QLabel(names[i - 1] + QLatin1Char(':'), m_frameDef);
        label->setBuddy(m_textDefinition[i]);
        row->addWidget(label);
        row->addWidget(m_textDefinition[i], 1);
    }
    frame->addLayout(row);
    return m_frameDef;
}

QAction *EditorWindow::addMenuAction(QMenu *menu, Ctl c, const QString &name, const QString &text,
                                     void (EditorForm::*handler)(), const QKeySequence &shortcut)
{
    QAction *action = menu->addAction(text);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    // While pages are written the menus wait; only Exit asks whether to stop.
    connect(action, &QAction::triggered, this, [this, handler, c] {
        if (!m_ctx.state.writingHtml || c == Ctl::MenuExit)
            (m_logic.*handler)();
    });
    m_actions.insert(c, action);
    return action;
}

void EditorWindow::buildMenus()
{
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    addMenuAction(file, Ctl::MenuChangeDatabase, QStringLiteral("MenuChangeDatabase"),
                  QStringLiteral("Change &database..."), &EditorForm::MenuChangeDatabase_Click);
    addMenuAction(file, Ctl::MenuConvertToSqlite, QStringLiteral("MenuConvertToSqlite"),
                  QStringLiteral("&Convert to SQLite..."), &EditorForm::MenuConvertToSqlite_Click);
    addMenuAction(file, Ctl::MenuSelectHelptextdirectory, QStringLiteral("MenuSelectHelptextdirectory"),
                  QStringLiteral("Select &help directory..."), &EditorForm::MenuSelectHelptextdirectory_Click);
    addMenuAction(file, Ctl::MenuGenerateHelpHTML, QStringLiteral("MenuGenerateHelpHTML"),
                  QStringLiteral("&Generate help pages..."), &EditorForm::MenuGenerateHelpHTML_Click);
    file->addSeparator();
    addMenuAction(file, Ctl::MenuExit, QStringLiteral("MenuExit"), QStringLiteral("E&xit"), &EditorForm::MenuExit_Click,
                  QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu *items = menuBar()->addMenu(QStringLiteral("&Items"));
    addMenuAction(items, Ctl::MenuAlarms, QStringLiteral("MenuAlarms"), QStringLiteral("&Alarms"),
                  &EditorForm::MenuAlarms_Click);
    addMenuAction(items, Ctl::MenuWarnings, QStringLiteral("MenuWarnings"), QStringLiteral("&Warnings"),
                  &EditorForm::MenuWarnings_Click);
    addMenuAction(items, Ctl::MenuMaterialChange, QStringLiteral("MenuMaterialChange"),
                  QStringLiteral("&Material change"), &EditorForm::MenuMaterialChange_Click);
    items->addSeparator();
    addMenuAction(items, Ctl::MenuGoToItem, QStringLiteral("MenuGoToItem"), QStringLiteral("&Go to item..."),
                  &EditorForm::MenuGoToItem_Click, QKeySequence(Qt::CTRL | Qt::Key_G));
    addMenuAction(items, Ctl::MenuNextUntranslated, QStringLiteral("MenuNextUntranslated"),
                  QStringLiteral("&Next untranslated"), &EditorForm::MenuNextUntranslated_Click,
                  QKeySequence(Qt::CTRL | Qt::Key_J));
    addMenuAction(items, Ctl::MenuPreviousUntranslated, QStringLiteral("MenuPreviousUntranslated"),
                  QStringLiteral("&Previous untranslated"), &EditorForm::MenuPreviousUntranslated_Click,
                  QKeySequence(Qt::CTRL | Qt::Key_K));
    addMenuAction(items, Ctl::MenuNextFinding, QStringLiteral("MenuNextFinding"), QStringLiteral("Next with &findings"),
                  &EditorForm::MenuNextFinding_Click, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_J));
    addMenuAction(items, Ctl::MenuPreviousFinding, QStringLiteral("MenuPreviousFinding"),
                  QStringLiteral("Previous with f&indings"), &EditorForm::MenuPreviousFinding_Click,
                  QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_K));
    items->addSeparator();
    addMenuAction(items, Ctl::MenuCopySource, QStringLiteral("MenuCopySource"), QStringLiteral("&Copy source text"),
                  &EditorForm::MenuCopySource_Click, QKeySequence(Qt::CTRL | Qt::Key_B));
    QAction *showList = items->addAction(QStringLiteral("Show item &list"));
    showList->setObjectName(QStringLiteral("MenuShowItemList"));
    showList->setCheckable(true);
    showList->setChecked(true);
    connect(showList, &QAction::toggled, m_itemList, &QWidget::setVisible);
    addMenuAction(items, Ctl::MenuFind, QStringLiteral("MenuFind"), QStringLiteral("&Find..."),
                  &EditorForm::MenuFind_Click, QKeySequence(Qt::CTRL | Qt::Key_F));
    addMenuAction(items, Ctl::MenuReviewed, QStringLiteral("MenuReviewed"), QStringLiteral("Mark as &reviewed"),
                  &EditorForm::MenuReviewed_Click, QKeySequence(Qt::CTRL | Qt::Key_R));
    QAction *overview = items->addAction(QStringLiteral("Progress &overview..."));
    overview->setObjectName(QStringLiteral("MenuProgressOverview"));
    connect(overview, &QAction::triggered, this, [this] {
        if (m_ctx.state.writingHtml || m_ctx.state.helpTextDB.isEmpty())
            return;
        if (!m_overview) {
            m_overview = new ProgressWindow(m_ctx, m_logic, this);
            m_logic.onStored = [this](const ItemAddress &item) {
                if (m_overview)
                    m_overview->refreshRow(item);
            };
        }
        m_overview->show();
        m_overview->raise();
        m_overview->refresh();
    });

    QMenu *machine = menuBar()->addMenu(QStringLiteral("&Machine"));
    addMenuAction(machine, Ctl::MenuMachineSelection, QStringLiteral("MenuMachineSelection"),
                  QStringLiteral("&Choose or rename machine..."), &EditorForm::MenuMachineSelection_Click);
    QMenu *languages = menuBar()->addMenu(QStringLiteral("&Languages"));
    addMenuAction(languages, Ctl::MenuLanguage, QStringLiteral("MenuLanguage"), QStringLiteral("&Languages..."),
                  &EditorForm::MenuLanguage_Click);
    QMenu *help = menuBar()->addMenu(QStringLiteral("&Help"));
    addMenuAction(help, Ctl::MenuInfo, QStringLiteral("MenuInfo"), QStringLiteral("&Info"),
                  &EditorForm::MenuInfo_Click);

    // Opening a menu stores what was typed, before any entry acts.
    for (QMenu *menu : {file, items, machine, languages, help})
        connect(menu, &QMenu::aboutToShow, this, [this] {
            if (!m_ctx.state.writingHtml)
                m_logic.Menu_GotFocus();
        });
}

void EditorWindow::connectEvents()
{
    connect(m_index, &QComboBox::activated, this, [this] { m_logic.ComboIndex_Click(); });
    connect(m_itemList, &QListWidget::currentItemChanged, this, [this](QListWidgetItem *item) {
        if (item)
            m_logic.ItemList_Click(item->data(Qt::UserRole).toInt());
    });
    connect(m_index->lineEdit(), &QLineEdit::textEdited, this, [this] { m_logic.ComboIndex_KeyDown(0); });
    connect(m_source, &QComboBox::activated, this, [this] { m_logic.ComboLanguageSource_Click(); });
    connect(m_destination, &QComboBox::activated, this, [this] { m_logic.ComboLanguageDestination_Click(); });
    for (int i = 1; i <= 3; ++i) {
        connect(m_textDestination[i], &QPlainTextEdit::textChanged, this,
                [this, i] { m_logic.TextDestination_Change(i); });
        m_textDestination[i]->installEventFilter(this);
        m_textSource[i]->installEventFilter(this);
    }
    for (int i = 1; i <= 4; ++i) {
        connect(m_textDefinition[i], &QLineEdit::textChanged, this, [this, i] { m_logic.TextDefinition_Change(i); });
        m_textDefinition[i]->installEventFilter(this);
    }
    for (QWidget *w : {static_cast<QWidget *>(m_index->lineEdit()), static_cast<QWidget *>(m_source),
                       static_cast<QWidget *>(m_destination)})
        w->installEventFilter(this);
}

bool EditorWindow::eventFilter(QObject *watched, QEvent *e)
{
    const QEvent::Type type = e->type();
    // The boxes' own bindings of the menu's shortcuts give way to the menu's.
    if (type == QEvent::ShortcutOverride && isOwnShortcut(static_cast<QKeyEvent *>(e)))
        return true;
    if (type == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(e)->key();
        const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (enter && watched == m_index->lineEdit()) {
            m_logic.ComboIndex_KeyDown(kEnter);
            return true;
        }
        if (enter && watched == m_source)
            m_logic.ComboLanguageSource_KeyDown(kEnter);
        if (enter && watched == m_destination)
            m_logic.ComboLanguageDestination_KeyDown(kEnter);
        return false;
    }
    if (type != QEvent::FocusOut)
        return false;
    for (int i = 1; i <= 3; ++i)
        if (watched == m_textDestination[i])
            m_logic.TextDestination_LostFocus(i);
    for (int i = 1; i <= 4; ++i)
        if (watched == m_textDefinition[i])
            m_logic.TextDefinition_LostFocus(i);
    return false;
}

bool EditorWindow::event(QEvent *e)
{
    const bool handled = QMainWindow::event(e);
    if (e->type() == QEvent::WindowActivate && m_shownOnce)
        m_logic.Form_Activate();
    return handled;
}

void EditorWindow::showEvent(QShowEvent *e)
{
    QMainWindow::showEvent(e);
    if (m_shownOnce)
        return;
    // The first showing counts as an activation even where the platform never activates windows.
    m_shownOnce = true;
    m_logic.Form_Activate();
}

void EditorWindow::resizeEvent(QResizeEvent *e)
{
    QMainWindow::resizeEvent(e);
    m_status->relayout();
}

void EditorWindow::keyPressEvent(QKeyEvent *e)
{
    if (e->key() == Qt::Key_Escape)
        m_logic.Form_KeyDown(kEscape);
    QMainWindow::keyPressEvent(e);
}

void EditorWindow::closeEvent(QCloseEvent *e)
{
    bool cancel = false;
    m_logic.Form_Unload(cancel);
    if (cancel) {
        e->ignore();
        return;
    }
    e->accept();
    if (!m_ctx.state.switchingForm)
        QCoreApplication::exit(0);
}

QWidget *EditorWindow::widget(Ctl c, int index) const
{
    switch (c) {
    case Ctl::ComboIndex:
        return m_index;
    case Ctl::ComboLanguageSource:
        return m_source;
    case Ctl::ComboLanguageDestination:
        return m_destination;
    case Ctl::TextSource:
        return index >= 1 && index <= 3 ? m_textSource[index] : nullptr;
    case Ctl::TextDestination:
        return index >= 1 && index <= 3 ? m_textDestination[index] : nullptr;
    case Ctl::TextDefinition:
        return index >= 1 && index <= 4 ? m_textDefinition[index] : nullptr;
    case Ctl::LabelSource:
        return index >= 1 && index <= 3 ? m_labelSource[index] : nullptr;
    case Ctl::LabelDestination:
        return index >= 1 && index <= 3 ? m_labelDestination[index] : nullptr;
    case Ctl::LabelItem:
        return m_labelItem;
    case Ctl::LabelDefinition:
        return m_labelDefinition;
    case Ctl::FrameDef:
        return m_frameDef;
    case Ctl::LabelMachine:
        return m_labelMachine;
    case Ctl::LabelTestVersion:
        return m_labelTestVersion;
    case Ctl::LabelFontError:
        return m_labelFontError;
    case Ctl::LabelKeyboardLayout:
        return m_labelKeyboard;
    case Ctl::LabelTranslated:
        return m_labelTranslated;
    case Ctl::LabelFindings:
        return m_labelFindings;
    default:
        return nullptr;
    }
}

void EditorWindow::setCaption(const QString &text)
{
    setWindowTitle(text);
}

void EditorWindow::setText(Ctl c, int index, const QString &text)
{
    QWidget *w = widget(c, index);
    if (auto *box = qobject_cast<QPlainTextEdit *>(w)) {
        const QString shown = forDisplay(text);
        if (box->toPlainText() == shown)
            return; // the caret stays where it is
        if (box->hasFocus()) {
            // Replaced as one step that Ctrl+Z takes back.
            QTextCursor all(box->document());
            all.select(QTextCursor::Document);
            all.insertText(shown);
        } else {
            box->setPlainText(shown);
        }
    } else if (auto *line = qobject_cast<QLineEdit *>(w)) {
        line->setText(text);
    } else if (auto *combo = qobject_cast<QComboBox *>(w)) {
        // An editable list shows its entry as the current one, so that leaving
        // it does not count as picking the entry again.
        const int entry = text.isEmpty() ? -1 : combo->findText(text, Qt::MatchExactly);
        if (combo->isEditable() && entry < 0)
            combo->setEditText(text);
        else if (combo->isEditable())
            combo->setCurrentIndex(entry);
        else
            combo->setCurrentIndex(text.isEmpty() ? -1 : combo->findText(text, Qt::MatchExactly));
    } else if (auto *label = qobject_cast<QLabel *>(w)) {
        label->setText(text);
        // The boxes are named after their captions for screen readers.
        if (c == Ctl::LabelSource)
            m_textSource[index]->setAccessibleName(QStringLiteral("Source ") + text);
        if (c == Ctl::LabelDestination)
            m_textDestination[index]->setAccessibleName(QStringLiteral("Destination ") + text);
    }
}

QString EditorWindow::text(Ctl c, int index) const
{
    QWidget *w = widget(c, index);
    if (auto *box = qobject_cast<QPlainTextEdit *>(w))
        return fromDisplay(box->toPlainText());
    if (auto *line = qobject_cast<QLineEdit *>(w))
        return line->text();
    if (auto *combo = qobject_cast<QComboBox *>(w))
        return combo->currentText();
    if (auto *label = qobject_cast<QLabel *>(w))
        return label->text();
    return {};
}

void EditorWindow::setItems(Ctl c, const QStringList &items)
{
    auto *combo = qobject_cast<QComboBox *>(widget(c, 0));
    if (!combo)
        return;
    combo->clear();
    combo->addItems(items);
    combo->setCurrentIndex(-1);
}

void EditorWindow::clearUndo(Ctl c, int index)
{
    if (auto *box = qobject_cast<QPlainTextEdit *>(widget(c, index)))
        box->document()->clearUndoRedoStacks();
}

void EditorWindow::setVisible(Ctl c, int index, bool visible)
{
    if (QAction *a = m_actions.value(c))
        a->setVisible(visible);
    else if (QWidget *w = widget(c, index))
        w->setVisible(visible);
}

void EditorWindow::setEnabled(Ctl c, int index, bool enabled)
{
    if (QAction *a = m_actions.value(c))
        a->setEnabled(enabled);
    else if (QWidget *w = widget(c, index))
        w->setEnabled(enabled);
}

void EditorWindow::setLocked(Ctl c, int index, bool locked)
{
    QWidget *w = widget(c, index);
    if (auto *box = qobject_cast<QPlainTextEdit *>(w))
        box->setReadOnly(locked);
    else if (auto *line = qobject_cast<QLineEdit *>(w))
        line->setReadOnly(locked);
    if (w)
        showReadOnly(w, locked);
}

void EditorWindow::setItemList(const QList<int> &numbers, const QStringList &lines)
{
    const QSignalBlocker quiet(m_itemList);
    m_itemList->clear();
    m_itemList->addItems(lines);
    for (int row = 0; row < m_itemList->count() && row < numbers.size(); ++row)
        m_itemList->item(row)->setData(Qt::UserRole, numbers[row]);
}

static int itemListRow(const QListWidget *list, int number)
{
    for (int row = 0; row < list->count(); ++row)
        if (list->item(row)->data(Qt::UserRole).toInt() == number)
            return row;
    return -1;
}

void EditorWindow::setItemListLine(int number, const QString &line)
{
    if (QListWidgetItem *item = m_itemList->item(itemListRow(m_itemList, number)))
        item->setText(line);
}

void EditorWindow::selectItemListLine(int number)
{
    const QSignalBlocker quiet(m_itemList);
    m_itemList->setCurrentRow(itemListRow(m_itemList, number));
    if (QListWidgetItem *item = m_itemList->currentItem())
        m_itemList->scrollToItem(item);
}

void EditorWindow::setMarked(Ctl c, int index, bool marked)
{
    QWidget *w = widget(c, index);
    if (!w || w->property("marked").toBool() == marked)
        return; // a style sheet set again lays the box out again: not on every key
    w->setProperty("marked", marked);
    w->setStyleSheet(marked ? QStringLiteral("QPlainTextEdit { border: 2px solid #d08000; }") : QString());
}

bool EditorWindow::hasFocus(Ctl c, int index) const
{
    const QWidget *w = widget(c, index);
    return w && w->hasFocus();
}

int EditorWindow::cursorPosition(Ctl c, int index) const
{
    QWidget *w = widget(c, index);
    if (auto *box = qobject_cast<QPlainTextEdit *>(w))
        return box->textCursor().position();
    if (auto *line = qobject_cast<QLineEdit *>(w))
        return line->cursorPosition();
    return 0;
}

void EditorWindow::setCursorPosition(Ctl c, int index, int position)
{
    QWidget *w = widget(c, index);
    if (auto *box = qobject_cast<QPlainTextEdit *>(w)) {
        QTextCursor cursor = box->textCursor();
        cursor.setPosition(std::clamp(position, 0, box->document()->characterCount() - 1));
        box->setTextCursor(cursor);
    } else if (auto *line = qobject_cast<QLineEdit *>(w)) {
        line->setCursorPosition(position);
    }
}

void EditorWindow::setFont(Ctl c, int index, const BoxFont &font)
{
    QWidget *w = widget(c, index);
    if (!w)
        return;
    QFont f = w->font();
    f.setFamilies({font.family});
    if (font.pointSize > 0)
        f.setPointSizeF(font.pointSize);
    f.setWeight(QFont::Weight(std::clamp(font.weight, 1, 1000)));
    f.setItalic(font.italic);
    f.setUnderline(font.underline);
    f.setStrikeOut(font.strikeOut);
    if (f != w->font()) {
        w->setFont(f);
        if ((c == Ctl::TextSource || c == Ctl::TextDestination) && index < 3)
            fitShortBoxes();
    }
}

void EditorWindow::activateKeyboardLayout(const QString &layoutId, const QString &text)
{
#ifdef Q_OS_WIN
    if (!layoutId.isEmpty()) {
        if (HKL layout = LoadKeyboardLayoutW(reinterpret_cast<LPCWSTR>(layoutId.utf16()), KLF_ACTIVATE))
            ActivateKeyboardLayout(layout, 0);
    }
#else
    (void)layoutId; // one program cannot switch the layout for itself here: the label tells which to use
#endif
    m_labelKeyboard->setText(text);
}

void EditorWindow::setBusy(bool busy)
{
    if (busy) {
        m_focusBeforeBusy = QApplication::focusWidget();
        m_escape = std::make_unique<EscapeFilter>(m_logic);
        qApp->installEventFilter(m_escape.get());
    } else {
        m_escape.reset(); // removes itself from the application
    }
    menuBar()->setEnabled(!busy);
    centralWidget()->setEnabled(!busy);
    if (!busy && m_focusBeforeBusy)
        m_focusBeforeBusy->setFocus();
}

void EditorWindow::showMachineSelection()
{
    MachineSelectionForm dialog(m_ctx, m_logic.selection(), this);
    dialog.exec();
}

void EditorWindow::showInfoBox()
{
    ShowInfoBox(m_ctx, m_session, this);
}

void EditorWindow::closeForm()
{
    close();
}

StatusTarget *EditorWindow::statusTarget()
{
    return m_status.get();
}

} // namespace ht
