#include "startup/forms/StartupDialogForm.h"

#include "common/forms/QtStatusTarget.h"
#include "startup/forms/MainForms.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

namespace ht
{

namespace
{

QPixmap logoPixmap()
{
    QPixmap pm(72, 72);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(0x1f, 0x4e, 0x79));
    p.setPen(Qt::NoPen);
    p.drawRoundedRect(QRectF(2, 2, 68, 68), 10, 10);
    QFont f = p.font();
    f.setBold(true);
    f.setPixelSize(30);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(pm.rect(), Qt::AlignCenter, QStringLiteral("HT"));
    return pm;
}

} // namespace

StartupDialogForm::StartupDialogForm(Context &ctx, StartupSession &session, QWidget *infoCaller)
    : QDialog(infoCaller), m_ctx(ctx), m_session(session), m_logic(ctx, session, *this), m_infoBox(infoCaller)
{
    if (!m_infoBox)
        setAttribute(Qt::WA_DeleteOnClose);
    setModal(m_infoBox);

    m_title = new QLabel(this);
    QFont titleFont = m_title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setBold(true);
    m_title->setFont(titleFont);
    m_version = new QLabel(this);
    m_scopiaVersion = new QLabel(this);
    m_logo = new QLabel(this);
    m_logo->setPixmap(logoPixmap());
    for (QLabel *l : {m_title, m_version, m_logo}) {
        l->installEventFilter(this);
        l->setCursor(Qt::PointingHandCursor);
    }

    m_settings = new QListWidget(this);
    m_settings->setVisible(false);
    m_settings->setSelectionMode(QAbstractItemView::NoSelection);
    m_settings->setMinimumHeight(170);

    m_ok = new QPushButton(QStringLiteral("OK"), this);
    m_ok->setDefault(true);
    m_showSettings = new QPushButton(QStringLiteral("Settings..."), this);
    m_showSettings->setEnabled(false); // only the Info box offers the settings list

    m_statusBar = new QStatusBar(this);
    m_statusBar->setSizeGripEnabled(false);
    m_status = std::make_unique<QtStatusTarget>(this, m_statusBar);

    m_timer = new QTimer(this);

    auto *texts = new QVBoxLayout;
    texts->addWidget(m_title);
    texts->addWidget(m_version);
    texts->addWidget(m_scopiaVersion);
    texts->addStretch();
    auto *top = new QHBoxLayout;
    top->addWidget(m_logo, 0, Qt::AlignTop);
    top->addSpacing(12);
    top->addLayout(texts, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_showSettings);
    buttons->addWidget(m_ok);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_settings, 1);
    layout->addLayout(buttons);
    layout->addWidget(m_statusBar);
    setMinimumWidth(480);

    connect(m_ok, &QPushButton::clicked, this, [this] { m_logic.CommandOK_Click(); });
    connect(m_showSettings, &QPushButton::clicked, this, [this] { m_logic.CommandShowSettings_Click(); });
    connect(m_timer, &QTimer::timeout, this, [this] { m_logic.Timer_Timer(); });
}

StartupDialogForm::~StartupDialogForm() = default;

void StartupDialogForm::activateFirst()
{
    m_logic.Form_Activate();
    m_forwardActivation = true;
}

void StartupDialogForm::setCaption(const QString &text)
{
    setWindowTitle(text);
}
void StartupDialogForm::setTitle(const QString &text)
{
    m_title->setText(text);
}
void StartupDialogForm::setVersionText(const QString &text)
{
    m_version->setText(text);
}
void StartupDialogForm::setScopiaVersion(const QString &text)
{
    m_scopiaVersion->setText(text);
}

void StartupDialogForm::setSettingsList(const QStringList &lines)
{
    m_settings->clear();
    m_settings->addItems(lines);
}

void StartupDialogForm::showSettingsList()
{
    m_settings->setVisible(true);
    adjustSize();
}

void StartupDialogForm::setShowSettingsEnabled(bool enabled)
{
    m_showSettings->setEnabled(enabled);
}
void StartupDialogForm::setOkEnabled(bool enabled)
{
    m_ok->setEnabled(enabled);
}

void StartupDialogForm::setTimerInterval(int milliseconds)
{
    if (milliseconds <= 0) {
        m_timer->stop();
        return;
    }
    m_timer->start(milliseconds);
}

void StartupDialogForm::refresh()
{
    repaint();
}

void StartupDialogForm::showMainForm(const QString &mode)
{
    ShowMainForm(m_ctx, m_session, mode);
}

void StartupDialogForm::unload()
{
    if (m_unloaded)
        return;
    m_unloadedByProgram = true;
    close(); // runs Form_Unload; hiding also ends the Info box's modal loop
    if (!m_unloaded)
        m_unloadedByProgram = false;
}

StatusTarget *StartupDialogForm::statusTarget()
{
    return m_status.get();
}

bool StartupDialogForm::event(QEvent *e)
{
    const bool handled = QDialog::event(e);
    if (e->type() == QEvent::WindowActivate && m_forwardActivation && !m_unloaded)
        m_logic.Form_Activate();
    return handled;
}

bool StartupDialogForm::eventFilter(QObject *watched, QEvent *e)
{
    if (e->type() == QEvent::MouseButtonRelease) {
        if (watched == m_title)
            m_logic.LabelTitle_Click();
        else if (watched == m_version)
            m_logic.LabelVersion_Click();
        else if (watched == m_logo)
            m_logic.PictureLogo_Click();
        return true;
    }
    return QDialog::eventFilter(watched, e);
}

void StartupDialogForm::resizeEvent(QResizeEvent *e)
{
    QDialog::resizeEvent(e);
    m_logic.Form_Resize();
    m_status->relayout();
}

void StartupDialogForm::closeEvent(QCloseEvent *e)
{
    if (m_unloaded) {
        e->accept();
        return;
    }
    bool cancel = false;
    m_logic.Form_Unload(cancel);
    if (cancel) {
        m_unloadedByProgram = false;
        e->ignore();
        return;
    }
    m_unloaded = true;
    m_timer->stop();
    e->accept();
    // Closed by the user before any main form was shown: nothing is left to run.
    if (!m_unloadedByProgram && !m_infoBox)
        QCoreApplication::exit(0);
}

void StartupDialogForm::reject()
{
    // Esc goes through the same unload as every other way out.
    close();
}

} // namespace ht
