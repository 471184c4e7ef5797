#pragma once
// Jobs of the program that scripts run without a window:
//     helptext-importer <command> --option value ... [--help]
// Each command runs the same procedures as its form. Messages the form would
// show go to stderr; an error or warning among them makes the exit code 1.

#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

namespace ht
{

struct Context;

// "--name value" options and bare "--flag"s, as a command declares them.
class CommandArgs
{
  public:
    static CommandArgs parse(const QStringList &args, const QStringList &withValue, const QStringList &flags);
    bool ok() const { return m_error.isEmpty(); }
    QString error() const { return m_error; }
    bool has(const QString &name) const { return m_values.contains(name); }
    QString value(const QString &name, const QString &fallback = QString()) const
    {
        return m_values.value(name, fallback);
    }

  private:
    QMap<QString, QString> m_values; // a flag has an empty value
    QString m_error;
};

struct ConsoleCommand {
    QString name;  // "import"
    QString usage; // the options, for --help: "--database DB --workbook FILE ..."
    QString help;  // what it does and what each option means
    QStringList withValue, flags;
    std::function<int(Context &ctx, const CommandArgs &args)> run;
    bool drawsText = false; // measures text in fonts: runs with a (headless) GUI application
};

// Exit codes of the commands.
constexpr int kCommandDone = 0;
constexpr int kCommandFailed = 1; // the job failed or was refused; stderr says why
constexpr int kCommandUsage = 2;  // the command line cannot be run

// Runs `args` (the program's arguments after its path) when args[0] names one
// of `commands`; nothing is run and false returned otherwise.
bool runConsoleCommand(Context &ctx, const std::vector<ConsoleCommand> &commands, const QStringList &args,
                       int &exitCode);

} // namespace ht
