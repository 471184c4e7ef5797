// Creating or repairing a language in the help-text database, and storing its settings.
#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageRows.h"
#include "languages/LanguageJobRun.h"
#include "languages/LanguageJobs.h"

namespace ht
{

namespace
{

// The number of a chosen language; tells the user when there is none.
std::optional<qlonglong> chosenNumber(Context &ctx, const LanguageDefinition &language)
{
    bool ok = false;
    const qlonglong number = language.number.trimmed().toLongLong(&ok);
    if (ok)
        return number;
    showMessage(ctx, QStringLiteral("No language selected!"), Buttons::OK, Icon::Exclamation);
    return std::nullopt;
}

bool hasAlarmTexts(Database &db, qlonglong number)
{
    return db.query(QStringLiteral("SELECT 1 FROM (AlarmDefinition INNER JOIN AlarmText ON AlarmDefinition.AlarmID "
                                   "= AlarmText.Alarm_ID) INNER JOIN Language ON AlarmText.Language = "
                                   "Language.Language WHERE Language.Language = ? LIMIT 1"),
                    {number})
               .recordCount() > 0;
}

} // namespace

QString languageExistsQuestion(const QString &name)
{
    return QStringLiteral("Language") + name + QStringLiteral(" already exists!") + LFCR +
           QStringLiteral("OK to reset all language information (incl. Alarms, Warnings & MaterialChange)?");
}

std::optional<LanguageCreated> createLanguage(Context &ctx, StatusTarget *status, const LanguageDefinition &language)
{
    const QString procedure = QStringLiteral("CreateLanguage_Click");
    const std::optional<qlonglong> number = chosenNumber(ctx, language);
    if (!number)
        return std::nullopt;
    try {
        auto db = Database::open(ctx.state.helpTextDB);
        if (const QString conflict = languageNumberConflict(*db, ctx.state.langLookupDB); !conflict.isEmpty()) {
            showMessage(ctx, conflict, Buttons::OK, Icon::Exclamation);
            return std::nullopt;
        }
        if (hasAlarmTexts(*db, *number) &&
            showMessage(ctx, languageExistsQuestion(language.name), Buttons::YesNo, Icon::Question,
                        QStringLiteral("Language exists!")) != Answer::Yes)
            return std::nullopt;
        // Older databases have no material change.
        const bool materialChange = db->hasTable(QStringLiteral("MaterialChangeDefinition")) &&
                                    db->hasTable(QStringLiteral("MaterialChangeText"));
        StatusRun run(ctx, status, QStringLiteral("Building Alarms..."), materialChange ? 4 : 3);
        Database::Transaction t(*db);
        writeLanguageRow(*db, *number, language.name, language.font, language.layout);
        const LanguageRowsAdded added = addLanguageTextRows(*db, *number, materialChange, [&](const QString &kind) {
            if (kind != QLatin1String("Alarms"))
                run.tick(QStringLiteral("Building ") + kind + QStringLiteral("..."));
        });
        t.commit();
        run.tick();
        return LanguageCreated{added.alarms, added.warnings, added.materialChanges, added.descriptions};
    } catch (const DbError &e) {
        tellJobFailure(ctx, procedure,
                       QStringLiteral("The language ") + language.name + QStringLiteral(" could not be created:"), e,
                       QStringLiteral("Nothing was changed."));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, procedure, e);
    }
    return std::nullopt;
}

bool updateLanguageSettings(Context &ctx, const LanguageDefinition &language)
{
    const std::optional<qlonglong> number = chosenNumber(ctx, language);
    if (!number)
        return false;
    try {
        auto db = Database::open(ctx.state.helpTextDB);
        if (const QString conflict = languageNumberConflict(*db, ctx.state.langLookupDB); !conflict.isEmpty()) {
            showMessage(ctx, conflict, Buttons::OK, Icon::Exclamation);
            return false;
        }
        Database::Transaction t(*db);
        writeLanguageRow(*db, *number, language.name, language.font, language.layout);
        t.commit();
        return true;
    } catch (const std::exception &e) {
        tellJobFailure(ctx, QStringLiteral("CommandUpdateLanguageSettings_Click"),
                       QStringLiteral("The settings of ") + language.name + QStringLiteral(" could not be stored:"), e,
                       QStringLiteral("Nothing was changed."));
    }
    return false;
}

} // namespace ht
