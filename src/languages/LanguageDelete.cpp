// Deleting a language from the help-text database.
#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageRows.h"
#include "languages/LanguageJobRun.h"
#include "languages/LanguageJobs.h"

#include <vector>

namespace ht
{

namespace
{

// Tells why a deletion is refused; nothing has been changed then.
std::optional<LanguageDeleted> refuse(Context &ctx, const QString &text)
{
    showMessage(ctx, text, Buttons::OK, Icon::Exclamation);
    return std::nullopt;
}

} // namespace

QStringList deletableLanguages(Context &ctx)
{
    auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
    QStringList names;
    for (const QVariantList &row :
         db->query(QStringLiteral("SELECT Language.Language, Language.Name FROM Language WHERE EXISTS (SELECT 1 FROM "
                                  "AlarmText WHERE AlarmText.Language = Language.Language) ORDER BY Language.Language"))
             .rows())
        names << row[1].toString();
    return names;
}

QString deleteLanguageQuestion(const QString &name, int option)
{
    const QString what =
        option == DeleteWithConfiguration
            ? QStringLiteral("You are about to delete all entries of alarms and warnings for the language as well as "
                             "the whole language configuration for ")
            : QStringLiteral("You are about to delete all entries of alarms and warnings for ");
    return what + name + QStringLiteral("?") + LFCR + LFCR + QStringLiteral("Click OK to continue!");
}

std::optional<LanguageDeleted> deleteLanguage(Context &ctx, StatusTarget *status, const QString &name, int option)
{
    const QString procedure = QStringLiteral("DeleteLanguageButton_Click");
    try {
        const std::optional<LanguageDefinition> found =
            name.isEmpty() ? std::nullopt : lookupLanguage(ctx, name.trimmed());
        const QString numberText = found ? found->number : QString();
        if (numberText == QLatin1String("1031") || numberText == QLatin1String("1033"))
            return refuse(ctx, QStringLiteral("English or German cannot be deleted!"));
        if (option != DeleteTextsOnly && option != DeleteWithConfiguration)
            return refuse(ctx, QStringLiteral("Select an option!"));
        if (name.isEmpty())
            return refuse(ctx, QStringLiteral("No language selected!"));
        // Without its number nothing can be told apart safely: nothing is deleted.
        if (!found)
            return refuse(ctx, QStringLiteral("The language-definition database has no language named \"") + name +
                                   QStringLiteral("\" that could be deleted.") + LFCR +
                                   QStringLiteral("Nothing was deleted."));
        auto db = Database::open(ctx.state.helpTextDB);
        if (const QString conflict = languageNumberConflict(*db, ctx.state.langLookupDB); !conflict.isEmpty())
            return refuse(ctx, conflict);
        const qlonglong number = found->number.toLongLong();
        LanguageDeleted deleted;
        std::vector<std::pair<const char *, long *>> tables{{"WarningText", &deleted.warnings},
                                                            {"AlarmText", &deleted.alarms}};
        if (db->hasTable(QStringLiteral("MaterialChangeText")))
            tables.push_back({"MaterialChangeText", &deleted.materialChanges});
        if (option == DeleteWithConfiguration) {
            tables.push_back({"Language", &deleted.languageRows});
            tables.push_back({"Discription", &deleted.descriptions});
        }
        qlonglong rows = 0;
        for (const auto &table : tables)
            rows +=
                db->query(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE Language = ?").arg(QLatin1String(table.first)),
                          {number})
                    .value(0)
                    .toLongLong();
        if (rows == 0)
            return refuse(ctx, QStringLiteral("The help-text database holds nothing of the language ") + name +
                                   QStringLiteral(" (number ") + found->number +
                                   QStringLiteral(") to delete: nothing has been changed."));
        if (showMessage(ctx, deleteLanguageQuestion(name, option), Buttons::OKCancel, Icon::Exclamation,
                        QStringLiteral("Delete language?")) != Answer::OK)
            return std::nullopt;

        StatusRun run(ctx, status, QStringLiteral("Deleting..."), long(tables.size()));
        Database::Transaction t(*db);
        for (const auto &[table, count] : tables) {
            *count = db->exec(QStringLiteral("DELETE FROM %1 WHERE Language = ?").arg(QLatin1String(table)), {number});
            run.tick();
        }
        t.commit();
        return deleted;
    } catch (const DbError &e) {
        tellJobFailure(ctx, procedure,
                       QStringLiteral("The language ") + name + QStringLiteral(" could not be deleted:"), e,
                       QStringLiteral("Nothing was deleted."));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, procedure, e);
    }
    return std::nullopt;
}

} // namespace ht
