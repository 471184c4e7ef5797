#include "database/LanguageRows.h"

#include "database/Database.h"

#include <QStringList>

namespace ht
{

namespace
{

// Every definition row without a text row in the language gets one. The texts
// present are read once as a set (NOT IN), not probed per definition row: a
// file without indexes would otherwise scan the text table once for every item.
long addMissing(Database &db, const QString &definition, const QString &id, const QString &text, const QString &textId,
                const QString &fields, qlonglong language)
{
    const QString missing = QStringLiteral("FROM %1 d WHERE d.%2 IS NULL OR d.%2 NOT IN (SELECT t.%3 FROM %4 t WHERE "
                                           "t.Language = ? AND t.%3 IS NOT NULL)")
                                .arg(definition, id, textId, text);
    if (db.query(QStringLiteral("SELECT count(*) ") + missing, {language}).value(0).toLongLong() == 0)
        return 0;
    QString empties;
    for (qsizetype i = 0, n = fields.count(u',') + 1; i < n; ++i)
        empties += QStringLiteral(", ''");
    return db.exec(
        QStringLiteral("INSERT INTO %1 (%2, Language, %3) SELECT d.%4, ?%5 ").arg(text, textId, fields, id, empties) +
            missing,
        {language, language});
}

} // namespace

QString languageNumberConflict(Database &helpText, const QString &definitionsPath)
{
    if (definitionsPath.isEmpty())
        return {};
    auto definitions = Database::open(definitionsPath, Database::Mode::ReadOnly);
    const std::vector<QVariantList> known =
        definitions->query(QStringLiteral("SELECT LookupLanguages.Language, LookupLanguages.Name FROM LookupLanguages"))
            .rows();
    for (const QVariantList &own :
         helpText
             .query(QStringLiteral("SELECT Language.Language, Language.Name FROM Language ORDER BY Language.Language"))
             .rows()) {
        const QString name = own[1].toString().trimmed();
        QStringList numbers;
        bool agrees = false;
        for (const QVariantList &row : known) {
            if (row[1].toString().trimmed().compare(name, Qt::CaseInsensitive) != 0)
                continue;
            numbers << row[0].toString();
            agrees = agrees || row[0].toLongLong() == own[0].toLongLong();
        }
        if (!numbers.isEmpty() && !agrees)
            return QStringLiteral("The language \"%1\" has the number %2 in the help-text database but %3 in the "
                                  "language-definition database: a language must have the same number in both, so "
                                  "nothing has been changed.")
                .arg(own[1].toString(), own[0].toString(), numbers.join(QStringLiteral(" or ")));
    }
    return {};
}

void writeLanguageRow(Database &db, qlonglong language, const QVariant &name, const QVariant &font,
                      const QVariant &layout)
{
    const QVariantList values{name, font, layout, language};
    if (db.exec(QStringLiteral("UPDATE Language SET Name = ?, Font = ?, KBLayout = ? WHERE Language = ?"), values) == 0)
        db.exec(QStringLiteral("INSERT INTO Language (Name, Font, KBLayout, Language) VALUES (?, ?, ?, ?)"), values);
}

LanguageRowsAdded addLanguageTextRows(Database &db, qlonglong language, bool materialChange,
                                      const std::function<void(const QString &kind)> &progress)
{
    const auto tell = [&](const char *kind) {
        if (progress)
            progress(QLatin1String(kind));
    };
    LanguageRowsAdded added;
    tell("Alarms");
    added.alarms =
        addMissing(db, QStringLiteral("AlarmDefinition"), QStringLiteral("AlarmID"), QStringLiteral("AlarmText"),
                   QStringLiteral("Alarm_ID"), QStringLiteral("Device, Result, Function"), language);
    tell("Warnings");
    added.warnings =
        addMissing(db, QStringLiteral("WarningDefinition"), QStringLiteral("WarningID"), QStringLiteral("WarningText"),
                   QStringLiteral("Warning_ID"), QStringLiteral("Function"), language);
    if (materialChange) {
        tell("MaterialChange");
        added.materialChanges = addMissing(db, QStringLiteral("MaterialChangeDefinition"),
                                           QStringLiteral("MaterialChangeID"), QStringLiteral("MaterialChangeText"),
                                           QStringLiteral("MaterialChange_ID"), QStringLiteral("Text"), language);
    }
    tell("Descriptions");
    for (int d = 1; d <= kDescriptionRows; ++d)
        if (db.query(QStringLiteral("SELECT count(*) FROM Discription WHERE DiscriptionID = ? AND Language = ?"),
                     {d, language})
                .value(0)
                .toLongLong() == 0)
            added.descriptions +=
                db.exec(QStringLiteral("INSERT INTO Discription (DiscriptionID, Language, Text) VALUES (?, ?, '')"),
                        {d, language});
    return added;
}

} // namespace ht
