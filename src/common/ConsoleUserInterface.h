#pragma once
// The user interface of a command run from a script: every message goes to
// stderr, questions get the answers the command line gave, or the safe one,
// and no dialog is ever shown.

#include "common/StatusDisplay.h"
#include "common/UserInterface.h"

#include <QElapsedTimer>
#include <cstdio>
#include <functional>

namespace ht
{

class ConsoleUserInterface : public UserInterface
{
  public:
    explicit ConsoleUserInterface(FILE *out = stderr) : m_out(out) {}

    // Answers a question (any message with more than an OK button); without an
    // answer the question gets the safe default (No, Cancel).
    std::function<std::optional<Answer>(const QString &text, Buttons buttons)> answer;

    Answer messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title) override;
    std::optional<QString> inputBox(const QString &prompt, const QString &title, const QString &defaultValue) override;
    std::optional<OpenFileChoice> openFile(const QString &title, const QString &filter,
                                           const QString &startPath) override;
    std::optional<QString> saveFile(const QString &title, const QString &filter, const QString &startPath) override;
    std::optional<QString> chooseDirectory(const QString &title, const QString &preset) override;
    std::optional<int> chooseScreenWidth(int preset) override;
    std::optional<int> chooseOption(const QString &name, const QString &title, const QStringList &options) override;

    // Errors and warnings told so far: the command has not done all it was asked.
    int failures() const { return m_failures; }
    void print(const QString &line);

  private:
    FILE *m_out;
    int m_failures = 0;
};

// Progress on stderr: each new status text, at most a few times a second.
class ConsoleStatus : public HeadlessStatus
{
  public:
    explicit ConsoleStatus(ConsoleUserInterface &ui) : m_ui(ui) {}
    void setStatusText(const QString &t) override;

  private:
    ConsoleUserInterface &m_ui;
    QElapsedTimer m_sincePrinted;
};

} // namespace ht
