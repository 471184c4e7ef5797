#pragma once
// Every message box, question and file dialog of the program goes through this
// interface: the Qt forms implement it with real dialogs, tests with a script.

#include <QString>
#include <QStringList>
#include <optional>

namespace ht {

// RetryDiscardCancel: try again, give the input up, or stay where one is.
enum class Buttons { OK, OKCancel, YesNo, YesNoCancel, RetryCancel, RetryDiscardCancel };
enum class Icon { None, Critical, Question, Exclamation, Information };
// Numeric values as the classic message-box results.
enum class Answer { OK = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7, Discard = 8 };

struct OpenFileChoice {
    QString path;
    bool readOnlyTicked = false; // the dialog's "open read-only" box
};

class UserInterface {
public:
    virtual ~UserInterface() = default;
    virtual Answer messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title) = 0;
    virtual std::optional<QString> inputBox(const QString &prompt, const QString &title,
                                            const QString &defaultValue) = 0;
    // filter uses the classic "Description|*.ext|Description|*.ext" form.
    virtual std::optional<OpenFileChoice> openFile(const QString &title, const QString &filter,
                                                   const QString &startPath) = 0;
    // A file to write: existing or new; "" is never returned.
    virtual std::optional<QString> saveFile(const QString &title, const QString &filter, const QString &startPath) = 0;
    virtual std::optional<QString> chooseDirectory(const QString &title, const QString &preset) = 0;
    // Screen width in pixels for page layout when not on the machine PC.
    virtual std::optional<int> chooseScreenWidth(int preset) = 0;
    // One of `options` (a group of option buttons, the first preset) with OK and
    // Cancel: the 0-based index chosen, nothing when cancelled. `name` names the
    // dialog for tools that look for it ("dlgSelectHTMLOption").
    virtual std::optional<int> chooseOption(const QString &name, const QString &title, const QStringList &options) = 0;
};

// The answer an unattended run or an exhausted script gives: the safe, negative one.
Answer defaultAnswer(Buttons buttons);

} // namespace ht
