#pragma once
// The status line with its progress bar that long operations drive. The core
// talks to an abstract target; each form that runs long operations provides one.
// Lengths are in twips (15 per pixel).

#include <QString>

namespace ht {

struct Context;

class StatusTarget {
public:
    virtual ~StatusTarget() = default;
    virtual void setStatusText(const QString &text) = 0;
    virtual void setPanelText(const QString &text) { (void)text; }
    virtual int statusBarWidth() const = 0;   // twips
    virtual int innerWidth() const = 0;       // twips
    virtual int innerHeight() const = 0;      // twips
    virtual int textWidth(const QString &text) const = 0; // in the form's font, twips
    virtual int progressLeft() const = 0;
    virtual void setProgressLeft(int twips) = 0;
    virtual void setProgressTop(int twips) = 0;
    virtual int progressWidth() const = 0;
    virtual void setProgressWidth(int twips) = 0;
    virtual bool progressVisible() const = 0;
    virtual void setProgressVisible(bool visible) = 0;
    virtual int progressValue() const = 0;
    virtual void setProgressValue(int value) = 0; // throws std::out_of_range past max
    virtual int progressMax() const = 0;
    virtual void setProgressMax(int max) = 0;
    virtual void bringProgressToFront() {}
    virtual void setBusyCursor(bool busy) { (void)busy; }
    virtual void disableControls(bool disable) { (void)disable; }
};

void StatusStart(Context &ctx, StatusTarget *form, const QString &text, long maximum, bool disable);
void StatusTick(Context &ctx, StatusTarget *form);
void StatusTickNewText(Context &ctx, StatusTarget *form, const QString &text);
void StatusEnd(Context &ctx, StatusTarget *form);
void StatusAndProgessBarReloc(Context &ctx, StatusTarget *form, int offset);
void DisableControls(Context &ctx, StatusTarget *form, bool disable);

// A target without a window: keeps the values so that batch runs and tests can
// drive the same procedures.
class HeadlessStatus : public StatusTarget {
public:
    QString text, panel;
    int barWidth = 9000, formWidth = 9000, formHeight = 6000;
    int left = 0, top = 0, width = 0, value = 0, max = 100;
    bool visible = false, busy = false, disabled = false;

    void setStatusText(const QString &t) override { text = t; }
    void setPanelText(const QString &t) override { panel = t; }
    int statusBarWidth() const override { return barWidth; }
    int innerWidth() const override { return formWidth; }
    int innerHeight() const override { return formHeight; }
    int textWidth(const QString &t) const override { return int(t.size()) * 90; }
    int progressLeft() const override { return left; }
    void setProgressLeft(int v) override { left = v; }
    void setProgressTop(int v) override { top = v; }
    int progressWidth() const override { return width; }
    void setProgressWidth(int v) override { width = v; }
    bool progressVisible() const override { return visible; }
    void setProgressVisible(bool v) override { visible = v; }
    int progressValue() const override { return value; }
    void setProgressValue(int v) override;
    int progressMax() const override { return max; }
    void setProgressMax(int v) override { max = v; }
    void setBusyCursor(bool b) override { busy = b; }
    void disableControls(bool d) override { disabled = d; }
};

} // namespace ht
