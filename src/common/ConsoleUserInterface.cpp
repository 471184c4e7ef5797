#include "common/ConsoleUserInterface.h"

#include <QRegularExpression>

namespace ht
{

namespace
{
constexpr qint64 kProgressEveryMs = 250;

// One message, one line on stderr, whatever kind of line break the message
// has (the classic ones break as LF CR): a script's log reads a line per cause.
QString oneLine(const QString &text)
{
    return text.split(QRegularExpression(QStringLiteral("[\r\n]+")), Qt::SkipEmptyParts).join(QLatin1Char(' '));
}
} // namespace

void ConsoleUserInterface::print(const QString &line)
{
    std::fprintf(m_out, "%s\n", oneLine(line).toLocal8Bit().constData());
    std::fflush(m_out);
}

Answer ConsoleUserInterface::messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    if (buttons != Buttons::OK) {
        const std::optional<Answer> given = answer ? answer(text, buttons) : std::nullopt;
        const Answer a = given.value_or(defaultAnswer(buttons));
        print(text + QStringLiteral(" -> ") +
              QLatin1String(a == Answer::Yes     ? "yes"
                            : a == Answer::No    ? "no"
                            : a == Answer::OK    ? "ok"
                            : a == Answer::Retry ? "retry"
                                                 : "cancel"));
        return a;
    }
    if (icon == Icon::Critical || icon == Icon::Exclamation)
        ++m_failures;
    print(title.isEmpty() ? text : title + QStringLiteral(": ") + text);
    return Answer::OK;
}

std::optional<QString> ConsoleUserInterface::inputBox(const QString &prompt, const QString &, const QString &)
{
    print(prompt + QStringLiteral(" -> no answer"));
    return std::nullopt;
}

std::optional<OpenFileChoice> ConsoleUserInterface::openFile(const QString &title, const QString &, const QString &)
{
    ++m_failures; // a file the command line did not name cannot be picked
    print(title + QStringLiteral(": no file given"));
    return std::nullopt;
}

std::optional<QString> ConsoleUserInterface::saveFile(const QString &title, const QString &, const QString &)
{
    ++m_failures;
    print(title + QStringLiteral(": no file given"));
    return std::nullopt;
}

std::optional<QString> ConsoleUserInterface::chooseDirectory(const QString &title, const QString &)
{
    ++m_failures;
    print(title + QStringLiteral(": no directory given"));
    return std::nullopt;
}

std::optional<int> ConsoleUserInterface::chooseScreenWidth(int)
{
    return std::nullopt;
}

std::optional<int> ConsoleUserInterface::chooseOption(const QString &, const QString &, const QStringList &)
{
    return std::nullopt;
}

void ConsoleStatus::setStatusText(const QString &t)
{
    HeadlessStatus::setStatusText(t);
    if (t.isEmpty() || (m_sincePrinted.isValid() && m_sincePrinted.elapsed() < kProgressEveryMs))
        return;
    m_sincePrinted.start();
    m_ui.print(t.trimmed());
}

} // namespace ht
