#pragma once
// The status line of a Qt form: a QStatusBar in simple-text mode with a
// progress bar laid over it. Lengths cross the interface in twips (15 per pixel).

#include "common/StatusDisplay.h"

#include <QList>
#include <QPointer>

class QProgressBar;
class QStatusBar;
class QWidget;

namespace ht
{

class QtStatusTarget : public StatusTarget
{
  public:
    // `form` is the window whose controls are disabled during long operations.
    QtStatusTarget(QWidget *form, QStatusBar *statusBar);

    void setStatusText(const QString &text) override;
    void setPanelText(const QString &text) override;
    int statusBarWidth() const override;
    int innerWidth() const override;
    int innerHeight() const override;
    int textWidth(const QString &text) const override;
    int progressLeft() const override { return m_left; }
    void setProgressLeft(int twips) override;
    void setProgressTop(int twips) override;
    int progressWidth() const override { return m_width; }
    void setProgressWidth(int twips) override;
    bool progressVisible() const override;
    void setProgressVisible(bool visible) override;
    int progressValue() const override;
    void setProgressValue(int value) override; // throws std::out_of_range outside 0..max
    int progressMax() const override;
    void setProgressMax(int max) override;
    void bringProgressToFront() override;
    void setBusyCursor(bool busy) override;
    void disableControls(bool disable) override;

    // Re-places the bar after the status line changed its size.
    void relayout();

  private:
    QPointer<QWidget> m_form;
    QPointer<QStatusBar> m_statusBar;
    QProgressBar *m_bar;
    int m_left = 0, m_top = 0, m_width = 0; // twips, as last set
    QList<QPointer<QWidget>> m_disabled;
};

constexpr int kTwipsPerPixel = 15;

} // namespace ht
