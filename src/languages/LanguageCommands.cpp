#include "languages/LanguageCommands.h"

#include "common/ConsoleUserInterface.h"
#include "common/Context.h"
#include "common/IniFile.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageLookup.h"
#include "languages/LanguageJobs.h"

#include <memory>

namespace ht
{

namespace
{

const QString kUsageTail = QStringLiteral(" [--languages FILE]");

// The user's answer to one question of the job, for as long as it runs.
class Answered
{
  public:
    Answered(Context &ctx, const QString &question, Answer answer)
        : m_console(dynamic_cast<ConsoleUserInterface *>(ctx.ui))
    {
        if (!m_console)
            return;
        m_before = m_console->answer;
        m_console->answer = [question, answer, before = m_before](const QString &text,
                                                                  Buttons buttons) -> std::optional<Answer> {
            if (text == question)
                return answer;
            return before ? before(text, buttons) : std::nullopt;
        };
    }
    ~Answered()
    {
        if (m_console)
            m_console->answer = m_before;
    }
    Answered(const Answered &) = delete;
    Answered &operator=(const Answered &) = delete;

  private:
    ConsoleUserInterface *m_console;
    std::function<std::optional<Answer>(const QString &, Buttons)> m_before;
};

// Progress on stderr when run from a script.
std::unique_ptr<StatusTarget> progress(Context &ctx)
{
    if (auto *console = dynamic_cast<ConsoleUserInterface *>(ctx.ui))
        return std::make_unique<ConsoleStatus>(*console);
    return std::make_unique<HeadlessStatus>();
}

void fail(Context &ctx, const QString &text)
{
    showMessage(ctx, text, Buttons::OK, Icon::Critical);
}

// Both databases made active, or the user told why not (the exit code: done when ready).
int connectDatabases(Context &ctx, const CommandArgs &args)
{
    if (args.value(QStringLiteral("database")).isEmpty() || args.value(QStringLiteral("language")).isEmpty()) {
        fail(ctx, QStringLiteral("--database and --language are needed"));
        return kCommandUsage;
    }
    const QString lookup =
        args.has(QStringLiteral("languages"))
            ? args.value(QStringLiteral("languages"))
            : LoadIniString(ctx, QStringLiteral("Setup"), QStringLiteral("StandardLangLookupDB"), ctx.state.iniPath);
    if (lookup.isEmpty() || CheckLanguageLookup(ctx, lookup).isEmpty()) {
        fail(ctx, QStringLiteral("Cannot find languagedefinition") + LFCR +
                      (lookup.isEmpty() ? QStringLiteral("Name one with --languages FILE.") : lookup));
        return kCommandFailed;
    }
    // CheckConnection says itself why a database cannot be used.
    return CheckConnection(ctx, args.value(QStringLiteral("database"))).isEmpty() ? kCommandFailed : kCommandDone;
}

int createLanguageCommand(Context &ctx, const CommandArgs &args)
{
    if (const int connected = connectDatabases(ctx, args); connected != kCommandDone)
        return connected;
    const QString name = args.value(QStringLiteral("language"));
    std::optional<LanguageDefinition> language;
    try {
        // Only a language the form would offer can be created.
        if (offeredLanguages(ctx).contains(name, Qt::CaseInsensitive))
            language = lookupLanguage(ctx, name);
    } catch (const DbError &e) {
        fail(ctx,
             QStringLiteral("The language-definition database cannot be read:") + LFCR + QString::fromUtf8(e.what()));
        return kCommandFailed;
    }
    if (!language) {
        fail(ctx, QStringLiteral("The language-definition database offers no language named \"") + name +
                      QStringLiteral("\".") + LFCR + QStringLiteral("Nothing was created."));
        return kCommandFailed;
    }
    Answered repair(ctx, languageExistsQuestion(language->name), Answer::Yes);
    const auto status = progress(ctx);
    const std::optional<LanguageCreated> created = createLanguage(ctx, status.get(), *language);
    if (!created)
        return kCommandFailed;
    showMessage(ctx,
                QStringLiteral("%1 (%2): text rows added: %3 alarms, %4 warnings, %5 material changes, %6 descriptions")
                    .arg(language->name, language->number)
                    .arg(created->alarms)
                    .arg(created->warnings)
                    .arg(created->materialChanges)
                    .arg(created->descriptions),
                Buttons::OK, Icon::Information);
    return kCommandDone;
}

int deleteLanguageCommand(Context &ctx, const CommandArgs &args)
{
    if (const int connected = connectDatabases(ctx, args); connected != kCommandDone)
        return connected;
    const QString name = args.value(QStringLiteral("language"));
    const int option = args.has(QStringLiteral("with-configuration")) ? DeleteWithConfiguration : DeleteTextsOnly;
    Answered confirmed(ctx, deleteLanguageQuestion(name, option), Answer::OK);
    const auto status = progress(ctx);
    const std::optional<LanguageDeleted> deleted = deleteLanguage(ctx, status.get(), name, option);
    if (!deleted)
        return kCommandFailed;
    QString text = QStringLiteral("%1: text rows deleted: %2 alarms, %3 warnings, %4 material changes")
                       .arg(name)
                       .arg(deleted->alarms)
                       .arg(deleted->warnings)
                       .arg(deleted->materialChanges);
    if (option == DeleteWithConfiguration)
        text += QStringLiteral("; configuration rows deleted: %1 Language, %2 descriptions")
                    .arg(deleted->languageRows)
                    .arg(deleted->descriptions);
    showMessage(ctx, text, Buttons::OK, Icon::Information);
    return kCommandDone;
}

} // namespace

std::vector<ConsoleCommand> languageCommands()
{
    const QString common =
        QStringLiteral("  --database DB          the help-text database\n"
                       "  --language NAME        the language's name in the language-definition database\n"
                       "  --languages FILE       the language-definition database; default: the settings\n"
                       "                         file's Setup/StandardLangLookupDB\n");
    return {
        {QStringLiteral("create-language"),
         QStringLiteral("--database DB --language NAME") + kUsageTail,
         QStringLiteral("Creates the language in the help-text database: its Language row, and an empty text row\n"
                        "for every alarm, warning and material change that has none, and its eight descriptions.\n"
                        "A language that is there already is repaired: every text written is kept.\n\n") +
             common,
         {QStringLiteral("database"), QStringLiteral("language"), QStringLiteral("languages")},
         {},
         createLanguageCommand},
        {QStringLiteral("delete-language"),
         QStringLiteral("--database DB --language NAME [--with-configuration]") + kUsageTail,
         QStringLiteral("Deletes the language's alarm, warning and material-change texts from the help-text\n"
                        "database. German (1031) and English (1033) are never deleted.\n\n") +
             common + QStringLiteral("  --with-configuration   also delete its Language row and its descriptions\n"),
         {QStringLiteral("database"), QStringLiteral("language"), QStringLiteral("languages")},
         {QStringLiteral("with-configuration")},
         deleteLanguageCommand},
    };
}

} // namespace ht
