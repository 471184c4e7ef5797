#include "app/ConsoleMain.h"

#include "common/ConsoleUserInterface.h"
#include "common/Context.h"
#include "common/IniFile.h"
#include "common/Version.h"
#include "importer/ImportCommands.h"
#include "languages/LanguageCommands.h"
#include "startup/CompileOption.h"
#include "startup/MachinePC.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cstdio>

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

QString programHelp(const QString &mode, const QString &program)
{
    const bool editor = mode != QLatin1String("IMPORT");
    QString help = QStringLiteral("Usage: ") + program + QLatin1Char('\n');
    if (editor)
        help += QStringLiteral("       ") + program + QStringLiteral(" /html/Alarms/Warnings/MaterialChange\n");
    else
        help += QStringLiteral("       ") + program + QStringLiteral(" COMMAND [OPTION...]\n");
    help += QStringLiteral("       ") + program + QStringLiteral(" --help | --version\n\n");
    help += editor ? QStringLiteral("edit the multilingual help texts of packaging machines\n\n"
                                    "Helptext Editor for Harko-machines: pick a machine, a source and a destination "
                                    "language, walk the alarms, warnings or material changes and write the "
                                    "destination texts. The HTML help pages are written again after each edit and "
                                    "on demand.\n\n")
                   : QStringLiteral("import the help-text lists of packaging machines\n\n"
                                    "Helptext Importer for Harko-machines: import a machine's alarm, warning and "
                                    "material-change lists from Excel workbooks into a help-text database, delete "
                                    "or rename machines, create or delete languages. Every job of the window is "
                                    "also a command for scripts (below).\n\n");
    help += QStringLiteral("Without arguments the window opens; it needs a display.\n\n");
    if (editor)
        help += QStringLiteral(
            "Batch page generation:\n"
            "  /html/Alarms/Warnings/MaterialChange   write the help pages of the kinds named, for all\n"
            "                                         machines and languages, and end without a window\n"
            "The first character is the separator (-html -Alarms works as well); names compare without case. "
            "Messages go to the error log. Exit code 0 when every page was written, 1 when something failed, "
            "2 for html without a kind.\n\n");
    help += QStringLiteral("Files:\n"
                           "  <root>/Program/Tools/%1.ini\n"
                           "      the settings on the machine PC, where the program runs from <root>/Program/Tools\n"
                           "      (<root> is $HELPTEXT_MACHINE_ROOT, default /opt/Scopia)\n"
                           "  $XDG_CONFIG_HOME/%1.ini\n"
                           "      the settings anywhere else (default ~/.config/%1.ini)\n"
                           "  %1Error.log\n"
                           "      the error log: beside the program on the machine PC and in a folder of its own that\n"
                           "      it can write to; for an installed program (or in a folder it cannot write to) in\n"
                           "      $XDG_STATE_HOME/helptext/ (default ~/.local/state/helptext/)\n")
                .arg(program);
    return help;
}

bool runProgramCommand(int argc, char **argv, int &exitCode)
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    const QString mode = GetCompileOption();
    const std::vector<ConsoleCommand> commands = programCommands(mode);
    const QString program = QFileInfo(QString::fromLocal8Bit(argv[0])).fileName();
    if (args.value(0) == QLatin1String("--version") || (args.value(0) == QLatin1String("--help") && commands.empty())) {
        answerHelpOrVersion(argc, argv, program, programHelp(mode, program));
        exitCode = kCommandDone;
        return true;
    }
    if (args.isEmpty() || commands.empty())
        return false;
    if (args[0] == QLatin1String("--help"))
        std::printf("%s\n", qPrintable(programHelp(mode, program)));
    const bool named =
        args[0] == QLatin1String("--help") || args[0] == QLatin1String("help") ||
        std::any_of(commands.begin(), commands.end(), [&](const ConsoleCommand &c) { return c.name == args[0]; });
    if (!named)
        return false;

    QCoreApplication app(argc, argv);
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
