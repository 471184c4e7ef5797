#include "common/forms/QtStatusTarget.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QStatusBar>
#include <QTextEdit>
#include <stdexcept>

namespace ht
{

QtStatusTarget::QtStatusTarget(QWidget *form, QStatusBar *statusBar)
    : m_form(form), m_statusBar(statusBar), m_bar(new QProgressBar(statusBar))
{
    // Laid over the status line by hand, like the classic progress control.
    m_bar->setTextVisible(false);
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    m_bar->hide();
}

void QtStatusTarget::setStatusText(const QString &text)
{
    if (!m_statusBar)
        return;
    m_statusBar->showMessage(text);
    relayout();
}

void QtStatusTarget::setPanelText(const QString &text)
{
    // The status line shows the simple text; the panel text is the hint behind it.
    if (m_statusBar)
        m_statusBar->setToolTip(text);
}

int QtStatusTarget::statusBarWidth() const
{
    return m_statusBar ? m_statusBar->width() * kTwipsPerPixel : 0;
}
int QtStatusTarget::innerWidth() const
{
    return m_form ? m_form->width() * kTwipsPerPixel : 0;
}
int QtStatusTarget::innerHeight() const
{
    return m_form ? m_form->height() * kTwipsPerPixel : 0;
}

int QtStatusTarget::textWidth(const QString &text) const
{
    const QFontMetrics fm(m_statusBar ? m_statusBar->font() : QFont());
    return fm.horizontalAdvance(text) * kTwipsPerPixel;
}

void QtStatusTarget::setProgressLeft(int twips)
{
    m_left = twips;
    relayout();
}

void QtStatusTarget::setProgressTop(int twips)
{
    // The classic vertical offsets assumed the classic window borders; here the
    // bar always stays in the status line, so the value is only remembered.
    m_top = twips;
}

void QtStatusTarget::setProgressWidth(int twips)
{
    m_width = twips;
    relayout();
}

bool QtStatusTarget::progressVisible() const
{
    return !m_bar->isHidden();
}
void QtStatusTarget::setProgressVisible(bool visible)
{
    m_bar->setVisible(visible);
}
int QtStatusTarget::progressValue() const
{
    return m_bar->value();
}

void QtStatusTarget::setProgressValue(int value)
{
    if (value < m_bar->minimum() || value > m_bar->maximum())
        throw std::out_of_range("Invalid property value");
    m_bar->setValue(value);
}

int QtStatusTarget::progressMax() const
{
    return m_bar->maximum();
}
void QtStatusTarget::setProgressMax(int max)
{
    m_bar->setMaximum(max);
}
void QtStatusTarget::bringProgressToFront()
{
    m_bar->raise();
}

void QtStatusTarget::setBusyCursor(bool busy)
{
    if (!m_form)
        return;
    if (busy)
        m_form->setCursor(Qt::WaitCursor);
    else
        m_form->unsetCursor();
}

void QtStatusTarget::disableControls(bool disable)
{
    if (!disable) {
        for (const auto &w : std::as_const(m_disabled))
            if (w)
                w->setEnabled(true);
        m_disabled.clear();
        return;
    }
    if (!m_form)
        return;
    // Input controls only; labels and the status line stay as they are. Only
    // what was enabled is disabled, so re-enabling restores the previous state.
    const auto children = m_form->findChildren<QWidget *>();
    for (QWidget *w : children) {
        const bool input = qobject_cast<QAbstractButton *>(w) || qobject_cast<QLineEdit *>(w) ||
                           qobject_cast<QComboBox *>(w) || qobject_cast<QTextEdit *>(w) ||
                           qobject_cast<QPlainTextEdit *>(w) || qobject_cast<QAbstractSpinBox *>(w) ||
                           qobject_cast<QAbstractItemView *>(w);
        if (input && w->isEnabled()) {
            w->setEnabled(false);
            m_disabled.append(w);
        }
    }
}

void QtStatusTarget::relayout()
{
    if (!m_statusBar)
        return;
    const int height = std::max(8, m_statusBar->height() - 6);
    // A text longer than the one the bar was placed for pushes it right: the
    // text that changes with every step is what shows a long run moving.
    const int textEnd = m_statusBar->fontMetrics().horizontalAdvance(m_statusBar->currentMessage()) + 12;
    const int left = std::max(m_left / kTwipsPerPixel, textEnd);
    const int right = (m_left + m_width) / kTwipsPerPixel;
    m_bar->setGeometry(left, (m_statusBar->height() - height) / 2, std::max(0, right - left), height);
}

} // namespace ht
