#include "languages/forms/LanguagesWindow.h"

#include "common/Context.h"
#include "common/forms/QtStatusTarget.h"

#include <QAction>
#include <QButtonGroup>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QVBoxLayout>

namespace ht
{

LanguagesWindow::LanguagesWindow(Context &ctx) : m_ctx(ctx), m_logic(ctx, *this)
{
    setObjectName(QStringLiteral("frmLanguages"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->addWidget(buildCreate(), 1);
    layout->addWidget(buildDelete());
    setCentralWidget(central);
    m_status = std::make_unique<QtStatusTarget>(this, statusBar());
    buildMenus();

    setTabOrder(m_possLanguages, m_widgets[Ctl::CreateLanguage]);
    setTabOrder(m_widgets[Ctl::CreateLanguage], m_widgets[Ctl::CommandUpdateLanguageSettings]);
    setTabOrder(m_widgets[Ctl::CommandUpdateLanguageSettings], m_deleteCombo);
    setTabOrder(m_deleteCombo, m_deleteOption->button(1));
    setTabOrder(m_deleteOption->button(1), m_deleteOption->button(2));
    setTabOrder(m_deleteOption->button(2), m_widgets[Ctl::DeleteLanguageButton]);

    setMinimumSize(560, 440);
    resize(680, 520);
    m_logic.Form_Load();
}

LanguagesWindow::~LanguagesWindow()
{
    // The controls still send signals as they go; the logic must not hear them.
    for (QObject *child : findChildren<QObject *>())
        QObject::disconnect(child, nullptr, this, nullptr);
}

template <typename T>
T *LanguagesWindow::control(Ctl c, const QString &name, const QString &accessibleName, QWidget *parent)
{
    auto *w = new T(parent);
    w->setObjectName(name);
    w->setAccessibleName(accessibleName);
    m_widgets.insert(c, w);
    return w;
}

QWidget *LanguagesWindow::buildCreate()
{
    auto *frame = new QGroupBox(QStringLiteral("Create or repair a language"), this);
    auto *row = new QHBoxLayout(frame);

    auto *list = new QVBoxLayout;
    m_possLanguages = control<QListWidget>(Ctl::PossLanguages, QStringLiteral("PossLanguages"),
                                           QStringLiteral("Languages to create"), frame);
    auto *listLabel = new QLabel(QStringLiteral("&Languages known to the\nlanguage-definition database:"), frame);
    listLabel->setBuddy(m_possLanguages);
    list->addWidget(listLabel);
    list->addWidget(m_possLanguages, 1);
    row->addLayout(list, 1);

    auto *fields = new QFormLayout;
    const struct {
        Ctl c;
        const char *name, *label, *accessible;
    } shown[] = {{Ctl::LCode, "LCode", "Number:", "Language number"},
                 {Ctl::LFont, "LFont", "Font:", "Font"},
                 {Ctl::LKeybd, "LKeybd", "Keyboard layout:", "Keyboard layout"}};
    for (const auto &f : shown) {
        auto *field = control<QLineEdit>(f.c, QLatin1String(f.name), QLatin1String(f.accessible), frame);
        // Taken from the language-definition database as they stand.
        field->setReadOnly(true);
        field->setFocusPolicy(Qt::ClickFocus);
        fields->addRow(QLatin1String(f.label), field);
    }
    auto *create = control<QPushButton>(Ctl::CreateLanguage, QStringLiteral("CreateLanguage"),
                                        QStringLiteral("Create or repair language"), frame);
    create->setText(QStringLiteral("&Create or repair language"));
    create->setToolTip(QStringLiteral("Adds the language and an empty text for every item that has none; "
                                      "texts already written are kept."));
    auto *update =
        control<QPushButton>(Ctl::CommandUpdateLanguageSettings, QStringLiteral("CommandUpdateLanguageSettings"),
                             QStringLiteral("Store font and keyboard layout"), frame);
    update->setText(QStringLiteral("&Store font and keyboard layout"));
    update->setToolTip(QStringLiteral("Stores the language's number, name, font and keyboard layout; no texts."));
    fields->addRow(create);
    fields->addRow(update);
    row->addLayout(fields, 1);

    // Only a language the list shows as chosen is chosen, not one it merely holds the focus on.
    connect(m_possLanguages, &QListWidget::itemSelectionChanged, this, [this] { m_logic.PossLanguages_Click(); });
    connect(create, &QPushButton::clicked, this, [this] { m_logic.CreateLanguage_Click(); });
    connect(update, &QPushButton::clicked, this, [this] { m_logic.CommandUpdateLanguageSettings_Click(); });
    return frame;
}

QWidget *LanguagesWindow::buildDelete()
{
    auto *frame = new QGroupBox(QStringLiteral("Delete a language"), this);
    auto *rows = new QVBoxLayout(frame);

    auto *top = new QHBoxLayout;
    m_deleteCombo = control<QComboBox>(Ctl::DeleteLanguageCombo, QStringLiteral("DeleteLanguageCombo"),
                                       QStringLiteral("Language to delete"), frame);
    m_deleteCombo->setMinimumContentsLength(16);
    m_deleteCombo->setPlaceholderText(QStringLiteral("Choose a language that has texts"));
    auto *comboLabel = new QLabel(QStringLiteral("Language to &delete:"), frame);
    comboLabel->setBuddy(m_deleteCombo);
    top->addWidget(comboLabel);
    top->addWidget(m_deleteCombo, 1);
    rows->addLayout(top);

    auto *options = control<QGroupBox>(Ctl::DeleteLangOption, QStringLiteral("DeleteLangOption"),
                                       QStringLiteral("What to delete"), frame);
    options->setTitle(QStringLiteral("What to delete"));
    auto *optionRow = new QHBoxLayout(options);
    m_deleteOption = new QButtonGroup(this);
    const struct {
        const char *text, *accessible;
    } choices[] = {{"&Texts only", "Delete texts only"},
                   {"Texts and c&onfiguration", "Delete texts and configuration"}};
    for (int i = 1; i <= 2; ++i) {
        auto *choice = new QRadioButton(QLatin1String(choices[i - 1].text), options);
        choice->setObjectName(QStringLiteral("DeleteLangOption%1").arg(i));
        choice->setAccessibleName(QLatin1String(choices[i - 1].accessible));
        m_deleteOption->addButton(choice, i);
        optionRow->addWidget(choice);
    }
    optionRow->addStretch();
    rows->addWidget(options);

    auto *remove = control<QPushButton>(Ctl::DeleteLanguageButton, QStringLiteral("DeleteLanguageButton"),
                                        QStringLiteral("Delete language"), frame);
    remove->setText(QStringLiteral("D&elete language"));
    auto *bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(remove);
    rows->addLayout(bottom);

    connect(m_deleteCombo, &QComboBox::activated, this, [this] { m_logic.DeleteLanguageCombo_Click(); });
    connect(remove, &QPushButton::clicked, this, [this] { m_logic.DeleteLanguageButton_Click(); });
    return frame;
}

QAction *LanguagesWindow::addMenuAction(QMenu *menu, Ctl c, const QString &name, const QString &text,
                                        void (LanguagesForm::*handler)())
{
    QAction *action = menu->addAction(text);
    action->setObjectName(name);
    connect(action, &QAction::triggered, this, [this, handler] {
        if (!m_logic.busy())
            (m_logic.*handler)();
    });
    m_actions.insert(c, action);
    return action;
}

void LanguagesWindow::buildMenus()
{
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    addMenuAction(file, Ctl::MenuChangeDatabase, QStringLiteral("MenuChangeDatabase"),
                  QStringLiteral("Change &database..."), &LanguagesForm::MenuChangeDatabase_Click);
    addMenuAction(file, Ctl::MenuLanguageDefinitionDB, QStringLiteral("MenuLanguageDefinitionDB"),
                  QStringLiteral("&Language-definition database..."), &LanguagesForm::MenuLanguageDefinitionDB_Click);
    file->addSeparator();
    addMenuAction(file, Ctl::MenuExit, QStringLiteral("MenuExit"), QStringLiteral("E&xit"),
                  &LanguagesForm::MenuExit_Click)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));

    QMenu *go = menuBar()->addMenu(QStringLiteral("&Go to"));
    addMenuAction(go, Ctl::MenuAlarms, QStringLiteral("MenuAlarms"), QStringLiteral("&Alarms"),
                  &LanguagesForm::MenuAlarms_Click);
    addMenuAction(go, Ctl::MenuWarnings, QStringLiteral("MenuWarnings"), QStringLiteral("&Warnings"),
                  &LanguagesForm::MenuWarnings_Click);
    addMenuAction(go, Ctl::MenuMaterialChange, QStringLiteral("MenuMaterialChange"), QStringLiteral("&Material change"),
                  &LanguagesForm::MenuMaterialChange_Click);
    addMenuAction(go, Ctl::MenuImport, QStringLiteral("MenuImport"), QStringLiteral("&Import"),
                  &LanguagesForm::MenuImport_Click);
}

void LanguagesWindow::setCaption(const QString &text)
{
    setWindowTitle(text);
}

void LanguagesWindow::setText(Ctl c, const QString &text)
{
    if (c == Ctl::DeleteLangOption) {
        // An exclusive group cannot uncheck its last button itself.
        m_deleteOption->setExclusive(false);
        for (QAbstractButton *b : m_deleteOption->buttons())
            b->setChecked(QString::number(m_deleteOption->id(b)) == text);
        m_deleteOption->setExclusive(true);
        return;
    }
    QWidget *w = m_widgets.value(c);
    const QSignalBlocker quiet(w); // only the user's choices reach the logic
    if (auto *line = qobject_cast<QLineEdit *>(w)) {
        line->setText(text);
    } else if (auto *combo = qobject_cast<QComboBox *>(w)) {
        combo->setCurrentIndex(text.isEmpty() ? -1 : combo->findText(text, Qt::MatchExactly));
    } else if (auto *list = qobject_cast<QListWidget *>(w)) {
        const QList<QListWidgetItem *> found = list->findItems(text, Qt::MatchExactly);
        list->setCurrentItem(text.isEmpty() || found.isEmpty() ? nullptr : found.first());
    }
}

QString LanguagesWindow::text(Ctl c) const
{
    if (c == Ctl::DeleteLangOption) {
        const int id = m_deleteOption->checkedId();
        return id > 0 ? QString::number(id) : QString();
    }
    QWidget *w = m_widgets.value(c);
    if (auto *line = qobject_cast<QLineEdit *>(w))
        return line->text();
    if (auto *combo = qobject_cast<QComboBox *>(w))
        return combo->currentText();
    if (auto *list = qobject_cast<QListWidget *>(w))
        return list->selectedItems().isEmpty() ? QString() : list->selectedItems().first()->text();
    return {};
}

void LanguagesWindow::setItems(Ctl c, const QStringList &items)
{
    QWidget *w = m_widgets.value(c);
    const QSignalBlocker quiet(w);
    if (auto *combo = qobject_cast<QComboBox *>(w)) {
        combo->clear();
        combo->addItems(items);
        combo->setCurrentIndex(-1);
    } else if (auto *list = qobject_cast<QListWidget *>(w)) {
        list->clear();
        list->addItems(items);
        list->setCurrentItem(nullptr);
    }
}

void LanguagesWindow::setEnabled(Ctl c, bool enabled)
{
    if (QAction *a = m_actions.value(c))
        a->setEnabled(enabled);
    else if (QWidget *w = m_widgets.value(c))
        w->setEnabled(enabled);
}

void LanguagesWindow::setVisible(Ctl c, bool visible)
{
    if (QAction *a = m_actions.value(c))
        a->setVisible(visible);
    else if (QWidget *w = m_widgets.value(c))
        w->setVisible(visible);
}

void LanguagesWindow::setBusy(bool busy)
{
    menuBar()->setEnabled(!busy);
}

void LanguagesWindow::closeForm()
{
    close();
}

StatusTarget *LanguagesWindow::statusTarget()
{
    return m_status.get();
}

void LanguagesWindow::resizeEvent(QResizeEvent *e)
{
    QMainWindow::resizeEvent(e);
    m_status->relayout();
}

void LanguagesWindow::closeEvent(QCloseEvent *e)
{
    // A job in its transaction runs to its end first.
    if (m_logic.busy()) {
        e->ignore();
        return;
    }
    m_logic.Form_Terminate();
    e->accept();
    if (!m_ctx.state.switchingForm)
        QCoreApplication::exit(0);
}

} // namespace ht
