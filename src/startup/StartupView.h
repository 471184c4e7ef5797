#pragma once
// What the start-up dialog's window offers to its logic (StartupDialog). The Qt
// dialog implements it; tests use a headless one.

#include <QString>
#include <QStringList>

namespace ht
{

class StatusTarget;

class StartupView
{
  public:
    virtual ~StartupView() = default;
    virtual void setCaption(const QString &text) = 0;
    virtual void setTitle(const QString &text) = 0;             // LabelTitle
    virtual void setVersionText(const QString &text) = 0;       // LabelVersion
    virtual void setScopiaVersion(const QString &text) = 0;     // LabelScopiaVersion: "NT", "XP" or ""
    virtual void setSettingsList(const QStringList &lines) = 0; // ListSettings, cleared and filled
    virtual void showSettingsList() = 0;
    virtual void setShowSettingsEnabled(bool enabled) = 0; // CommandShowSettings
    virtual void setOkEnabled(bool enabled) = 0;           // CommandOK
    virtual void setTimerInterval(int milliseconds) = 0;   // 0 stops the timer
    virtual void refresh() {}
    virtual void showMainForm(const QString &mode) = 0; // frmEdit / frmImport, modeless
    virtual void unload() = 0;                          // hide and unload the dialog
    virtual StatusTarget *statusTarget() = 0;           // the dialog's status bar
};

} // namespace ht
