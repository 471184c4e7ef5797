#pragma once
// Helpers of the start-up tests: a headless start-up window.

#include "common/StatusDisplay.h"
#include "startup/StartupView.h"
#include "support/DemoFiles.h"

#include <QString>
#include <QStringList>

namespace ht::test
{

class HeadlessView : public StartupView
{
  public:
    QString scopiaVersion;
    QStringList settings;
    bool settingsVisible = false, showSettingsEnabled = false, okEnabled = true;
    int timerInterval = 0;
    QStringList events; // "show:EDIT", "unload", in order
    HeadlessStatus status;

    void setCaption(const QString &) override {}
    void setTitle(const QString &) override {}
    void setVersionText(const QString &) override {}
    void setScopiaVersion(const QString &t) override { scopiaVersion = t; }
    void setSettingsList(const QStringList &lines) override { settings = lines; }
    void showSettingsList() override { settingsVisible = true; }
    void setShowSettingsEnabled(bool e) override { showSettingsEnabled = e; }
    void setOkEnabled(bool e) override { okEnabled = e; }
    void setTimerInterval(int ms) override { timerInterval = ms; }
    void showMainForm(const QString &mode) override { events << QStringLiteral("show:") + mode; }
    void unload() override { events << QStringLiteral("unload"); }
    StatusTarget *statusTarget() override { return &status; }
};

} // namespace ht::test
