// The languages the language-definition database offers for creation.
#include "common/Context.h"
#include "database/Database.h"
#include "languages/LanguageJobs.h"

namespace ht
{

QStringList offeredLanguages(Context &ctx)
{
    auto db = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
    const Recordset rs = db->query(QStringLiteral("SELECT * FROM LookupLanguages Order by LookupLanguages.Name ;"));
    const int name = rs.fieldIndex(QStringLiteral("Name")), font = rs.fieldIndex(QStringLiteral("Font"));
    const int substBy = ctx.state.langLookupHasSubstBy ? rs.fieldIndex(QStringLiteral("SubstBy")) : -1;
    QStringList offered;
    for (const QVariantList &row : rs.rows()) {
        // A font of "0" marks a language the operator panel cannot show.
        if (row[font].toString().trimmed() == QLatin1String("0"))
            continue;
        // A language another one stands in for gets no texts of its own: it
        // cannot be created, and looking its name up finds only unsubstituted rows.
        if (substBy >= 0 && !row[substBy].isNull())
            continue;
        const QString n = row[name].toString();
        if (!n.isEmpty() && !offered.contains(n, Qt::CaseInsensitive))
            offered << n;
    }
    return offered;
}

std::optional<LanguageDefinition> lookupLanguage(Context &ctx, const QString &name)
{
    auto db = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);
    const QString sql =
        ctx.state.langLookupHasSubstBy
            ? QStringLiteral("SELECT * FROM LookupLanguages where ((LookupLanguages.SubstBy IS NULL) and "
                             "(LookupLanguages.Name = ? COLLATE NOCASE));")
            : QStringLiteral("SELECT * FROM LookupLanguages where LookupLanguages.Name = ? COLLATE NOCASE;");
    const Recordset rs = db->query(sql, {name});
    if (rs.recordCount() == 0 || rs.value(QStringLiteral("Language")).isNull())
        return std::nullopt;
    return LanguageDefinition{rs.text(QStringLiteral("Language")), rs.text(QStringLiteral("Name")),
                              rs.text(QStringLiteral("Font")), rs.text(QStringLiteral("KBLayout"))};
}

} // namespace ht
