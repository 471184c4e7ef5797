#pragma once
// A UserInterface that answers from a script and records what was asked.
// Used by tests and by anything that must run without a display.

#include "common/UserInterface.h"

#include <QStringList>
#include <deque>
#include <variant>
#include <vector>

namespace ht {

class ScriptedUserInterface : public UserInterface {
public:
    struct Shown {
        QString kind; // "message", "input", "openFile", "chooseDirectory", "screenWidth", "option"
        QString text; // message text or prompt
        QString title;
        Buttons buttons = Buttons::OK;
        Icon icon = Icon::None;
    };
    using Reply = std::variant<Answer, QString, OpenFileChoice, int, std::monostate>;

    // Queue a reply; std::monostate means "cancel" for dialogs.
    void push(Reply reply) { replies.push_back(std::move(reply)); }

    Answer messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title) override;
    std::optional<QString> inputBox(const QString &prompt, const QString &title, const QString &defaultValue) override;
    std::optional<OpenFileChoice> openFile(const QString &title, const QString &filter, const QString &startPath) override;
    std::optional<QString> saveFile(const QString &title, const QString &filter, const QString &startPath) override;
    std::optional<QString> chooseDirectory(const QString &title, const QString &preset) override;
    std::optional<int> chooseScreenWidth(int preset) override;
    std::optional<int> chooseOption(const QString &name, const QString &title, const QStringList &options) override;

    std::vector<Shown> shown;
    std::deque<Reply> replies;

    QStringList messageTexts() const;

private:
    std::optional<Reply> next();
};

} // namespace ht
