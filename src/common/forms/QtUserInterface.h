#pragma once
// The user-interaction interface with real Qt dialogs.

#include "common/UserInterface.h"

class QWidget;

namespace ht
{

class QtUserInterface : public UserInterface
{
  public:
    Answer messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title) override;
    std::optional<QString> inputBox(const QString &prompt, const QString &title, const QString &defaultValue) override;
    std::optional<OpenFileChoice> openFile(const QString &title, const QString &filter,
                                           const QString &startPath) override;
    std::optional<QString> saveFile(const QString &title, const QString &filter, const QString &startPath) override;
    std::optional<QString> chooseDirectory(const QString &title, const QString &preset) override;
    std::optional<int> chooseScreenWidth(int preset) override;
    std::optional<int> chooseOption(const QString &name, const QString &title, const QStringList &options) override;
};

// "Desc|*.mdb|Desc2|*.vws" to Qt's "Desc (*.mdb);;Desc2 (*.vws)".
QString qtFileFilter(const QString &classicFilter);

} // namespace ht
