// Finding and reading the language-definition database.
#include "database/LanguageLookup.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "database/Database.h"

#include <QFileInfo>

namespace ht
{

namespace
{

const QString Q = QStringLiteral("\"");

// The first record's field as text, or "-1" when there is none or it is empty.
QString firstValueOr(const Recordset &rs, const QString &field)
{
    if (rs.recordCount() == 0 || rs.value(field).isNull())
        return QStringLiteral("-1");
    return rs.value(field).toString();
}

} // namespace

QString ConnectToLookup(Context &ctx)
{
    try {
        if (!ctx.ui)
            return {};
        const QString start =
            ctx.state.langLookupDB.isEmpty() ? QString() : QFileInfo(ctx.state.langLookupDB).absolutePath();
        const auto choice = ctx.ui->openFile(QStringLiteral("Looking for language definition database"),
                                             QStringLiteral("MS Access *.mdb|*.mdb|SQLite *.sqlite|*.sqlite"), start);
        if (!choice || choice->path.isEmpty())
            return {};
        return CheckLanguageLookup(ctx, choice->path);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("ConnectToLookup"), e);
    }
    return {};
}

QString CheckLanguageLookup(Context &ctx, const QString &path)
{
    try {
        bool hasSubstBy = false;
        try {
            auto db = Database::open(path, Database::Mode::ReadOnly);
            db->query(QStringLiteral("SELECT LookupLanguages.Language, LookupLanguages.Name, LookupLanguages.Font, "
                                     "LookupLanguages.KBLayout FROM LookupLanguages LIMIT 0"));
            db->checkIntact(); // garbled values must not reach the help-text database
            hasSubstBy = db->hasColumn(QStringLiteral("LookupLanguages"), QStringLiteral("SubstBy"));
        } catch (const DbError &) {
            return {}; // not a language-definition database: the caller says so
        }
        ctx.state.langLookupDB = path;
        ctx.state.langLookupHasSubstBy = hasSubstBy;
        if (!hasSubstBy && ctx.state.runningOnMachinePC) {
            // Still usable, but the machine's operator panel expects the newer version.
            const QString text =
                QStringLiteral("Language-definition database ") + Q + path + Q + QStringLiteral(": Old Version!");
            LogError(ctx, text);
            if (!ctx.state.unattended && ctx.ui)
                ctx.ui->messageBox(text, Buttons::OK, Icon::Exclamation, QString());
        }
        return path;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("CheckLanguageLookup"), e);
    }
    return {};
}

QString GetCodePage(Context &ctx, const QString &name)
{
    try {
        auto db = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
        const Recordset rs = db->query(QStringLiteral("SELECT LookupLanguages.Language, LookupLanguages.Name, "
                                                      "LookupLanguages.CodePage FROM LookupLanguages "
                                                      "WHERE LookupLanguages.Name = ? COLLATE NOCASE"),
                                       {name});
        return firstValueOr(rs, QStringLiteral("CodePage"));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetCodePage"), e);
    }
    return QStringLiteral("-1");
}

QString GetLanguageID(Context &ctx, const QString &number)
{
    try {
        bool ok = false;
        const qlonglong value = number.trimmed().toLongLong(&ok);
        if (!ok)
            return QStringLiteral("-1"); // not a language number at all
        auto db = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
        const Recordset rs = db->query(QStringLiteral("SELECT LookupLanguages.Language, LookupLanguages.Name, "
                                                      "LookupLanguages.CodePage FROM LookupLanguages "
                                                      "WHERE LookupLanguages.Language = ?"),
                                       {value});
        return firstValueOr(rs, QStringLiteral("Language"));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetLanguageID"), e);
    }
    return QStringLiteral("-1");
}

QList<ExistingLanguage> GetExistingLanguages(Context &ctx)
{
    QList<ExistingLanguage> result;
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);
        const Recordset rs = db->query(QStringLiteral("SELECT Language.Language, Language.Name FROM Language"));
        for (const QVariantList &row : rs.rows())
            result.append({row[0].toString(), row[1].toString()});
        return result;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetExistingLanguages"), e);
    }
    return {};
}

} // namespace ht
