#include "importer/forms/ImportWindow.h"

#include "common/Context.h"
#include "common/forms/QtStatusTarget.h"
#include "importer/forms/DelMachineForm.h"
#include "importer/forms/QuestOverwriteForm.h"
#include "startup/forms/MainForms.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QStatusBar>
#include <QVBoxLayout>

namespace ht
{

ImportWindow::ImportWindow(Context &ctx, StartupSession &session) : m_ctx(ctx), m_session(session), m_logic(ctx, *this)
{
    setObjectName(QStringLiteral("frmImport"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    auto *mode = new QLabel(central);
    QFont bold = mode->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    mode->setFont(bold);
    m_controls.insert(ImportCtl::LabelImportMode, mode);
    layout->addWidget(mode);
    layout->addWidget(buildInputs());
    layout->addStretch();

    const struct {
        ImportCtl ctl;
        const char *name, *text;
        void (ImportForm::*handler)();
    } commands[] = {
        {ImportCtl::CommandDeleteMachine, "CommandDeleteMachine", "&Delete or rename machine...",
         &ImportForm::CommandDeleteMachine_Click},
        {ImportCtl::CommandNeueVorlage, "CommandNeueVorlage", "&New database from template...",
         &ImportForm::CommandNeueVorlage_Click},
        {ImportCtl::CommandImport, "CommandImport", "&Import", &ImportForm::CommandImport_Click},
    };
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    for (const auto &c : commands) {
        auto *b = new QPushButton(QString::fromUtf8(c.text), central);
        b->setObjectName(QLatin1String(c.name));
        connect(b, &QPushButton::clicked, this, [this, h = c.handler] { (m_logic.*h)(); });
        m_controls.insert(c.ctl, b);
        buttons->addWidget(b);
    }
    qobject_cast<QPushButton *>(m_controls.value(ImportCtl::CommandImport))->setDefault(true);
    layout->addLayout(buttons);
    setCentralWidget(central);
    m_status = std::make_unique<QtStatusTarget>(this, statusBar());
    buildMenus();
    resize(760, 440);
    m_logic.Form_Load();
}

ImportWindow::~ImportWindow()
{
    for (QObject *child : findChildren<QObject *>()) {
        QObject::disconnect(child, nullptr, this, nullptr);
        child->removeEventFilter(this);
    }
}

QWidget *ImportWindow::buildInputs()
{
    auto *inputs = new QWidget(this);
    auto *form = new QFormLayout(inputs);
    const auto line = [&](ImportCtl ctl, const char *name, const char *accessible) {
        auto *edit = new QLineEdit(inputs);
        edit->setObjectName(QLatin1String(name));
        edit->setAccessibleName(QLatin1String(accessible));
        m_controls.insert(ctl, edit);
        return edit;
    };
    const auto caption = [&](ImportCtl ctl, const char *name, QWidget *buddy) {
        auto *label = new QLabel(inputs);
        label->setObjectName(QLatin1String(name));
        label->setBuddy(buddy);
        m_controls.insert(ctl, label);
        return label;
    };

    QLineEdit *file = line(ImportCtl::TextXLFile, "TextXLFile", "Workbook");
    file->installEventFilter(this); // a double-click opens the file dialog
    auto *browse = new QPushButton(QStringLiteral("..."), inputs);
    browse->setObjectName(QStringLiteral("CommandBrowseXLFile"));
    browse->setAccessibleName(QStringLiteral("Choose the workbook"));
    connect(browse, &QPushButton::clicked, this, [this] { m_logic.TextXLFile_DblClick(); });
    connect(file, &QLineEdit::textEdited, this, [this] { m_logic.EnableButtonImport(); });
    auto *fileRow = new QHBoxLayout;
    fileRow->addWidget(file, 1);
    fileRow->addWidget(browse);
    form->addRow(caption(ImportCtl::LabelXLFile, "LabelXLFile", file), fileRow);

    auto *number = new QComboBox(inputs);
    number->setObjectName(QStringLiteral("ComboNrLangXL"));
    number->setAccessibleName(QStringLiteral("Language number in the workbook"));
    number->setEditable(true);
    number->setInsertPolicy(QComboBox::NoInsert);
    m_controls.insert(ImportCtl::ComboNrLangXL, number);
    QLineEdit *column = line(ImportCtl::TextPosLangXL, "TextPosLangXL", "Column of the material-change texts");
    column->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,3}")), column));
    auto *positionRow = new QHBoxLayout;
    positionRow->addWidget(number);
    positionRow->addWidget(column);
    positionRow->addStretch();
    form->addRow(caption(ImportCtl::LabelLanguagePosition, "LabelLanguagePosition", number), positionRow);

    auto *language = new QComboBox(inputs);
    language->setObjectName(QStringLiteral("ComboLanguage"));
    language->setAccessibleName(QStringLiteral("Language in the database"));
    m_controls.insert(ImportCtl::ComboLanguage, language);
    auto *languageLabel = new QLabel(QStringLiteral("&Language in the database:"), inputs);
    languageLabel->setBuddy(language);
    form->addRow(languageLabel, language);

    QLineEdit *machine = line(ImportCtl::TextMachineID, "TextMachineID", "Machine");
    auto *machineLabel = new QLabel(QStringLiteral("&Machine:"), inputs);
    machineLabel->setBuddy(machine);
    form->addRow(machineLabel, machine);
    QLineEdit *added = line(ImportCtl::TextAnzahlFehler, "TextAnzahlFehler", "Added alarms and warnings");
    auto *addedLabel = new QLabel(QStringLiteral("&Added alarms and warnings:"), inputs);
    addedLabel->setBuddy(added);
    form->addRow(addedLabel, added);
    auto *option = new QCheckBox(QStringLiteral("New databases with material &change"), inputs);
    option->setObjectName(QStringLiteral("OptionMaterialChange"));
    m_controls.insert(ImportCtl::OptionMaterialChange, option);
    form->addRow(QString(), option);
    QLineEdit *database = line(ImportCtl::TextConnectedDatabase, "TextConnectedDatabase", "Connected database");
    database->setReadOnly(true);
    form->addRow(QStringLiteral("Database:"), database);

    connect(number, &QComboBox::currentTextChanged, this, [this] { m_logic.EnableButtonImport(); });
    connect(column, &QLineEdit::textEdited, this, [this] { m_logic.EnableButtonImport(); });
    connect(language, &QComboBox::activated, this, [this] { m_logic.EnableButtonImport(); });
    connect(machine, &QLineEdit::textEdited, this, [this] { m_logic.EnableButtonImport(); });
    connect(added, &QLineEdit::textEdited, this, [this] { m_logic.TextAnzahlFehler_Change(); });
    connect(option, &QCheckBox::clicked, this, [this] { m_logic.OptionMaterialChange_Click(); });
    return inputs;
}

void ImportWindow::buildMenus()
{
    const auto add = [this](QMenu *menu, ImportCtl ctl, const char *name, const char *text, auto handler) {
        QAction *a = menu->addAction(QString::fromUtf8(text));
        a->setObjectName(QLatin1String(name));
        connect(a, &QAction::triggered, this, handler);
        m_controls.insert(ctl, a);
    };
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    add(file, ImportCtl::MenuChangeDatabase, "MenuChangeDatabase", "Change &database...",
        [this] { m_logic.MenuChangeDatabase_Click(); });
    file->addSeparator();
    add(file, ImportCtl::MenuExit, "MenuExit", "E&xit", [this] { m_logic.MenuExit_Click(); });
    QMenu *import = menuBar()->addMenu(QStringLiteral("&Import"));
    add(import, ImportCtl::MenuAlarmsWarnings, "MenuGotoItem1", "&Alarms and Warnings",
        [this] { m_logic.MenuGotoItem_Click(1); });
    add(import, ImportCtl::MenuMaterialChange, "MenuGotoItem2", "&MaterialChange",
        [this] { m_logic.MenuGotoItem_Click(2); });
    QMenu *languages = menuBar()->addMenu(QStringLiteral("&Languages"));
    add(languages, ImportCtl::MenuLanguage, "MenuLanguage", "&Languages...", [this] { m_logic.MenuLanguage_Click(); });
    QMenu *help = menuBar()->addMenu(QStringLiteral("&Help"));
    add(help, ImportCtl::MenuInfo, "MenuInfo", "&Info", [this] { m_logic.MenuInfo_Click(); });
}

QObject *ImportWindow::control(ImportCtl c) const
{
    return m_controls.value(c);
}

bool ImportWindow::eventFilter(QObject *watched, QEvent *e)
{
    if (e->type() == QEvent::MouseButtonDblClick && watched == control(ImportCtl::TextXLFile)) {
        m_logic.TextXLFile_DblClick();
        return true;
    }
    return QMainWindow::eventFilter(watched, e);
}

void ImportWindow::setCaption(const QString &text)
{
    setWindowTitle(text);
}

void ImportWindow::setText(ImportCtl c, const QString &text)
{
    QObject *o = control(c);
    if (auto *line = qobject_cast<QLineEdit *>(o))
        line->setText(text);
    else if (auto *label = qobject_cast<QLabel *>(o))
        label->setText(text);
    else if (auto *combo = qobject_cast<QComboBox *>(o)) {
        const int at = combo->findText(text, Qt::MatchExactly);
        if (combo->isEditable() && at < 0)
            combo->setEditText(text);
        else
            combo->setCurrentIndex(at);
    }
}

QString ImportWindow::text(ImportCtl c) const
{
    QObject *o = control(c);
    if (auto *line = qobject_cast<QLineEdit *>(o))
        return line->text();
    if (auto *label = qobject_cast<QLabel *>(o))
        return label->text();
    if (auto *combo = qobject_cast<QComboBox *>(o))
        return combo->currentText();
    return {};
}

void ImportWindow::setItems(ImportCtl c, const QStringList &items)
{
    if (auto *combo = qobject_cast<QComboBox *>(control(c))) {
        combo->clear();
        combo->addItems(items);
        combo->setCurrentIndex(-1);
    }
}

void ImportWindow::setChecked(ImportCtl c, bool checked)
{
    if (auto *box = qobject_cast<QCheckBox *>(control(c)))
        box->setChecked(checked);
}

bool ImportWindow::checked(ImportCtl c) const
{
    auto *box = qobject_cast<QCheckBox *>(control(c));
    return box && box->isChecked();
}

void ImportWindow::setEnabled(ImportCtl c, bool enabled)
{
    if (auto *a = qobject_cast<QAction *>(control(c)))
        a->setEnabled(enabled);
    else if (auto *w = qobject_cast<QWidget *>(control(c)))
        w->setEnabled(enabled);
}

void ImportWindow::setVisible(ImportCtl c, bool visible)
{
    if (auto *a = qobject_cast<QAction *>(control(c)))
        a->setVisible(visible);
    else if (auto *w = qobject_cast<QWidget *>(control(c)))
        w->setVisible(visible);
}

int ImportWindow::askOverwrite(const QString &kind, const QString &oldValue, const QString &newValue)
{
    return QuestOverwriteForm::ask(kind, oldValue, newValue, this);
}

void ImportWindow::showDeleteMachine()
{
    DelMachineForm dialog(m_ctx, this);
    dialog.exec();
}

void ImportWindow::showInfoBox()
{
    ShowInfoBox(m_ctx, m_session, this);
}

void ImportWindow::closeForm()
{
    close();
}

StatusTarget *ImportWindow::statusTarget()
{
    return m_status.get();
}

void ImportWindow::resizeEvent(QResizeEvent *e)
{
    QMainWindow::resizeEvent(e);
    m_status->relayout();
}

void ImportWindow::closeEvent(QCloseEvent *e)
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

} // namespace ht
