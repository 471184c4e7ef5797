#include "common/ConsoleCommand.h"

#include "common/ConsoleUserInterface.h"
#include "common/Context.h"

#include <algorithm>
#include <cstdio>

namespace ht
{

CommandArgs CommandArgs::parse(const QStringList &args, const QStringList &withValue, const QStringList &flags)
{
    CommandArgs parsed;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args[i];
        const QString name = arg.startsWith(QLatin1String("--")) ? arg.mid(2) : QString();
        if (flags.contains(name)) {
            parsed.m_values.insert(name, QString());
        } else if (withValue.contains(name)) {
            if (i + 1 >= args.size()) {
                parsed.m_error = arg + QStringLiteral(" needs a value");
                break;
            }
            parsed.m_values.insert(name, args[++i]);
        } else {
            parsed.m_error = QStringLiteral("unknown option ") + arg;
            break;
        }
    }
    return parsed;
}

bool runConsoleCommand(Context &ctx, const std::vector<ConsoleCommand> &commands, const QStringList &args,
                       int &exitCode)
{
    if (args.isEmpty())
        return false;
    const QString program = ctx.programName;
    if (args[0] == QLatin1String("--help") || args[0] == QLatin1String("help")) {
        std::fprintf(stdout, "Commands of %s (each with --help):\n", qPrintable(program));
        for (const ConsoleCommand &c : commands)
            std::fprintf(stdout, "  %s %s %s\n", qPrintable(program), qPrintable(c.name), qPrintable(c.usage));
        exitCode = kCommandDone;
        return true;
    }
    const auto command =
        std::find_if(commands.begin(), commands.end(), [&](const ConsoleCommand &c) { return c.name == args[0]; });
    if (command == commands.end())
        return false;
    const QStringList rest = args.mid(1);
    if (rest.contains(QStringLiteral("--help"))) {
        std::fprintf(stdout, "%s %s %s\n\n%s\n", qPrintable(program), qPrintable(command->name),
                     qPrintable(command->usage), qPrintable(command->help));
        exitCode = kCommandDone;
        return true;
    }
    const CommandArgs parsed = CommandArgs::parse(rest, command->withValue, command->flags);
    if (!parsed.ok()) {
        std::fprintf(stderr, "%s %s: %s\nusage: %s %s %s\n", qPrintable(program), qPrintable(command->name),
                     qPrintable(parsed.error()), qPrintable(program), qPrintable(command->name),
                     qPrintable(command->usage));
        exitCode = kCommandUsage;
        return true;
    }
    const auto *console = dynamic_cast<const ConsoleUserInterface *>(ctx.ui);
    const int failuresBefore = console ? console->failures() : 0;
    exitCode = command->run(ctx, parsed);
    // A job that ran through but had to tell of an error has not done what was asked.
    if (exitCode == kCommandDone && console && console->failures() > failuresBefore)
        exitCode = kCommandFailed;
    return true;
}

} // namespace ht
