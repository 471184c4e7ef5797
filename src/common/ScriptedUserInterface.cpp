#include "common/ScriptedUserInterface.h"

namespace ht {

std::optional<ScriptedUserInterface::Reply> ScriptedUserInterface::next()
{
    if (replies.empty())
        return std::nullopt;
    Reply r = std::move(replies.front());
    replies.pop_front();
    return r;
}

Answer ScriptedUserInterface::messageBox(const QString &text, Buttons buttons, Icon icon, const QString &title)
{
    shown.push_back({QStringLiteral("message"), text, title, buttons, icon});
    if (auto r = next(); r && std::holds_alternative<Answer>(*r))
        return std::get<Answer>(*r);
    return defaultAnswer(buttons);
}

std::optional<QString> ScriptedUserInterface::inputBox(const QString &prompt, const QString &title,
                                                       const QString &defaultValue)
{
    (void)defaultValue;
    shown.push_back({QStringLiteral("input"), prompt, title});
    if (auto r = next(); r && std::holds_alternative<QString>(*r))
        return std::get<QString>(*r);
    return std::nullopt;
}

std::optional<OpenFileChoice> ScriptedUserInterface::openFile(const QString &title, const QString &filter,
                                                              const QString &startPath)
{
    (void)startPath;
    shown.push_back({QStringLiteral("openFile"), filter, title});
    if (auto r = next()) {
        if (std::holds_alternative<OpenFileChoice>(*r))
            return std::get<OpenFileChoice>(*r);
        if (std::holds_alternative<QString>(*r))
            return OpenFileChoice{std::get<QString>(*r), false};
    }
    return std::nullopt;
}

std::optional<QString> ScriptedUserInterface::saveFile(const QString &title, const QString &filter,
                                                       const QString &startPath)
{
    (void)startPath;
    shown.push_back({QStringLiteral("saveFile"), filter, title});
    if (auto r = next(); r && std::holds_alternative<QString>(*r))
        return std::get<QString>(*r);
    return std::nullopt;
}

std::optional<QString> ScriptedUserInterface::chooseDirectory(const QString &title, const QString &preset)
{
    shown.push_back({QStringLiteral("chooseDirectory"), preset, title});
    if (auto r = next(); r && std::holds_alternative<QString>(*r))
        return std::get<QString>(*r);
    return std::nullopt;
}

std::optional<int> ScriptedUserInterface::chooseScreenWidth(int preset)
{
    shown.push_back({QStringLiteral("screenWidth"), QString::number(preset), QString()});
    if (auto r = next(); r && std::holds_alternative<int>(*r))
        return std::get<int>(*r);
    return std::nullopt;
}

std::optional<int> ScriptedUserInterface::chooseOption(const QString &name, const QString &title,
                                                       const QStringList &options)
{
    shown.push_back({QStringLiteral("option"), options.join(u'|'), title.isEmpty() ? name : title});
    if (auto r = next(); r && std::holds_alternative<int>(*r))
        return std::get<int>(*r);
    return std::nullopt;
}

QStringList ScriptedUserInterface::messageTexts() const
{
    QStringList out;
    for (const auto &s : shown)
        if (s.kind == QLatin1String("message"))
            out << s.text;
    return out;
}

} // namespace ht
