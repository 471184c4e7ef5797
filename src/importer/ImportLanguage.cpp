// The language an import writes into: found by its name, and made present in
// the help-text database with a text row for every item when it has none.
#include "importer/Importer.h"

#include "common/Context.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/LanguageRows.h"

namespace ht
{

// The help-text database's number of the language, else the language
// definitions'; -1 when neither knows the name. Names compare without case, and
// the numbers agree (checked before): either gives the same number.
qlonglong Importer::findLanguage(const QString &name)
{
    const Recordset own = m_db->query(
        QStringLiteral("SELECT Language.Language FROM Language WHERE Language.Name = ? ORDER BY Language.Language"),
        {name});
    if (own.recordCount() > 0)
        return own.value(0).toLongLong();
    if (ctx.state.langLookupDB.isEmpty())
        return -1;
    auto lookup = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
    const QString sql =
        ctx.state.langLookupHasSubstBy
            ? QStringLiteral("SELECT LookupLanguages.Language FROM LookupLanguages WHERE "
                             "LookupLanguages.Name = ? COLLATE NOCASE AND LookupLanguages.SubstBy IS NULL")
            : QStringLiteral("SELECT LookupLanguages.Language FROM LookupLanguages WHERE "
                             "LookupLanguages.Name = ? COLLATE NOCASE");
    const Recordset known = lookup->query(sql, {name});
    return known.recordCount() == 0 ? -1 : known.value(0).toLongLong();
}

qlonglong Importer::GetActLanguage(const QString &name)
{
    const qlonglong language = findLanguage(name);
    if (language < 0)
        return -1;
    const Recordset texts = m_db->query(
        QStringLiteral("SELECT Language.Language, Language.Name, Language.Font, Language.KBLayout FROM "
                       "(AlarmDefinition INNER JOIN AlarmText ON AlarmDefinition.AlarmID = AlarmText.Alarm_ID) "
                       "INNER JOIN Language ON AlarmText.Language = Language.Language WHERE "
                       "(((Language.Language)=?)) LIMIT 1;"),
        {language});
    if (texts.recordCount() == 0)
        CreateLanguage(language);
    else // rows a language lacks would silently take no text: they are made first
        addLanguageTextRows(*m_db, language, ctx.state.materialChangePresent);
    return language;
}

void Importer::CreateLanguage(qlonglong language)
{
    StatusStart(ctx, m_status, QStringLiteral("Creating new language"), 0, false);
    if (!ctx.state.langLookupDB.isEmpty()) {
        auto lookup = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
        const Recordset known = lookup->query(
            QStringLiteral("SELECT LookupLanguages.Language, LookupLanguages.Name, LookupLanguages.Font, "
                           "LookupLanguages.KBLayout FROM LookupLanguages WHERE (((LookupLanguages.Language)=?));"),
            {language});
        // A language the definitions do not know keeps the row it has.
        if (known.recordCount() > 0)
            writeLanguageRow(*m_db, language, known.value(QStringLiteral("Name")), known.value(QStringLiteral("Font")),
                             known.value(QStringLiteral("KBLayout")));
    }
    // Rows already there keep their texts, descriptions included.
    addLanguageTextRows(*m_db, language, ctx.state.materialChangePresent, [&](const QString &kind) {
        StatusTickNewText(ctx, m_status, QStringLiteral("Creating new language: ") + kind);
    });
    StatusEnd(ctx, m_status);
}

} // namespace ht
