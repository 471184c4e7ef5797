#include "app/ConsoleMain.h"

#include "common/ConsoleUserInterface.h"
#include "common/Context.h"
#include "common/IniFile.h"
#include "importer/ImportCommands.h"
#include "languages/LanguageCommands.h"
#include "startup/CompileOption.h"
#include "startup/MachinePC.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <memory>

namespace ht
{

std::vector<ConsoleCommand> programCommands(const QString &mode)
{
    std::vector<ConsoleCommand> commands;
    // The importer's jobs, and the language jobs it shares with the language form.
    if (mode == QLatin1String("IMPORT")) {
        for (ConsoleCommand &c : importerCommands())
            commands.push_back(std::move(c));
        for (ConsoleCommand &c : languageCommands())
            commands.push_back(std::move(c));
    }
    return commands;
}

bool runProgramCommand(int argc, char **argv, int &exitCode)
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    const QString mode = GetCompileOption();
    const std::vector<ConsoleCommand> commands = programCommands(mode);
    if (args.isEmpty() || commands.empty())
        return false;
    const bool named =
        args[0] == QLatin1String("--help") || args[0] == QLatin1String("help") ||
        std::any_of(commands.begin(), commands.end(), [&](const ConsoleCommand &c) { return c.name == args[0]; });
    if (!named)
        return false;

    // Measuring text in a font needs a GUI application; without a display it draws offscreen.
    const auto command =
        std::find_if(commands.begin(), commands.end(), [&](const ConsoleCommand &c) { return c.name == args[0]; });
    std::unique_ptr<QCoreApplication> app;
    if (command != commands.end() && command->drawsText && !args.contains(QStringLiteral("--help"))) {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    Context ctx;
    initProgramLocation(ctx);
    ConsoleUserInterface console;
    ctx.ui = &console;
    ctx.state.mode = mode;
    ctx.state.runningOnMachinePC = GetAppRunningOnMachinePC(ctx);
    ctx.state.iniPath = ctx.state.runningOnMachinePC ? GetStandardApplicationIni(ctx) : GetStandardUserIni(ctx);
    ctx.endProgram = [](int code) { throw ProgramEnded{code}; };
    try {
        return runConsoleCommand(ctx, commands, args, exitCode);
    } catch (const ProgramEnded &ended) {
        exitCode = ended.exitCode == 0 ? kCommandFailed : ended.exitCode;
        return true;
    }
}

} // namespace ht
