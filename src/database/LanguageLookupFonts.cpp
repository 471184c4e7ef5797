// Font specifications of the languages and their copy in the help-text database.
#include "database/LanguageLookup.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "database/Database.h"

#include <QRegularExpression>

namespace ht
{

namespace
{

constexpr int kFontSpecParts = 8; // the name and up to seven numbers
constexpr int kFontColumnWidth = 255;

bool isNumber(const QString &part)
{
    static const QRegularExpression number(QStringLiteral("^[+-]?\\d+(\\.\\d+)?$"));
    return number.match(part).hasMatch();
}

QStringList unusableFontSpec()
{
    QStringList parts(kFontSpecParts);
    parts[FontName] = QStringLiteral("-1");
    return parts;
}

// A Font column declared narrower than 255 characters ("VARCHAR(50)") is declared
// anew at that width; the values stay as they are.
void widenFontColumn(Database &db)
{
    if (db.format() == DbFormat::Jet)
        return; // a design change, never made in an Access file: its values are written all the same
    static const QRegularExpression size(QStringLiteral("\\(\\s*(\\d+)\\s*\\)"));
    for (const ColumnInfo &c : db.columns(QStringLiteral("Language"))) {
        if (c.name.compare(QLatin1String("Font"), Qt::CaseInsensitive) != 0)
            continue;
        const auto m = size.match(c.type);
        if (m.hasMatch() && m.captured(1).toInt() < kFontColumnWidth)
            db.changeColumnType(QStringLiteral("Language"), c.name,
                                QStringLiteral("VARCHAR(%1)").arg(kFontColumnWidth));
        return;
    }
}

bool sameValue(const QVariant &a, const QVariant &b)
{
    if (a.isNull() || b.isNull())
        return a.isNull() == b.isNull();
    return a.toString() == b.toString();
}

} // namespace

QStringList GetFontSpecs(const QString &fontSpec)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    const QStringList parts = fontSpec.split(blanks, Qt::SkipEmptyParts);
    qsizetype firstNumber = 0;
    while (firstNumber < parts.size() && !isNumber(parts[firstNumber]))
        ++firstNumber;
    const qsizetype numbers = parts.size() - firstNumber;
    if (firstNumber == 0 || numbers > kFontSpecParts - 1)
        return unusableFontSpec();
    QStringList result(kFontSpecParts);
    result[FontName] = parts.mid(0, firstNumber).join(u' ');
    for (qsizetype i = 0; i < numbers; ++i) {
        if (!isNumber(parts[firstNumber + i]))
            return unusableFontSpec();
        result[1 + i] = parts[firstNumber + i];
    }
    return result;
}

void UpdateLangFontSettings(Context &ctx)
{
    try {
        auto db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadWrite);
        std::unique_ptr<Database> lookup;
        if (!ctx.state.langLookupDB.isEmpty())
            lookup = Database::open(ctx.state.langLookupDB, Database::Mode::ReadOnly);

        Database::Transaction transaction(*db);
        widenFontColumn(*db);
        if (lookup) {
            const Recordset languages = db->query(QStringLiteral(
                "SELECT Language.Language, Language.Name, Language.Font, Language.KBLayout FROM Language"));
            for (const QVariantList &language : languages.rows()) {
                const Recordset known = lookup->query(
                    QStringLiteral("SELECT LookupLanguages.Language, LookupLanguages.Name, LookupLanguages.Font, "
                                   "LookupLanguages.KBLayout FROM LookupLanguages WHERE LookupLanguages.Language = ?"),
                    {language[0]});
                if (known.recordCount() == 0)
                    continue;
                const QVariant font = known.value(QStringLiteral("Font"));
                const QVariant layout = known.value(QStringLiteral("KBLayout"));
                if (sameValue(language[2], font) && sameValue(language[3], layout))
                    continue; // already up to date: not rewritten
                db->exec(QStringLiteral("UPDATE Language SET Font = ?, KBLayout = ? WHERE Language = ?"),
                         {font, layout, language[0]});
            }
        }
        transaction.commit();
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("UpdateLangFontSettings"), e);
    }
}

} // namespace ht
