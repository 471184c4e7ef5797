#include "review/DatabaseCheck.h"

#include "common/AppState.h"
#include "database/Database.h"
#include "review/ReviewMarks.h"

#include <QHash>
#include <cmath>

namespace ht
{

namespace
{

struct KindTables {
    int kind;
    const char *definition, *id, *number, *text, *textId;
    QStringList fields;
};

const std::vector<KindTables> &kindTables()
{
    static const std::vector<KindTables> kinds{
        {KindAlarms,
         "AlarmDefinition",
         "AlarmID",
         "AlarmNo",
         "AlarmText",
         "Alarm_ID",
         {QStringLiteral("Device"), QStringLiteral("Result"), QStringLiteral("Function")}},
        {KindWarnings,
         "WarningDefinition",
         "WarningID",
         "WarningNo",
         "WarningText",
         "Warning_ID",
         {QStringLiteral("Function")}},
        {KindMaterialChange,
         "MaterialChangeDefinition",
         "MaterialChangeID",
         "MaterialChangeNo",
         "MaterialChangeText",
         "MaterialChange_ID",
         {QStringLiteral("Text")}},
    };
    return kinds;
}

QString numberText(const QVariant &v)
{
    bool ok = false;
    const double d = v.toDouble(&ok);
    return ok && d == std::floor(d) ? QString::number(qlonglong(d)) : v.toString().trimmed();
}

} // namespace

const char *kindWord(int kind)
{
    return kind == KindWarnings ? "warnings" : kind == KindMaterialChange ? "materialchange" : "alarms";
}

bool CheckedItem::needsReview() const
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding &f) { return f.check == QLatin1String("review"); });
}

bool CheckedItem::hasOtherFindings() const
{
    return std::any_of(findings.begin(), findings.end(), [](const Finding &f) {
        return f.check != QLatin1String("review") && f.check != QLatin1String("missing");
    });
}

struct DatabaseCheck::Impl {
    QString path;
    std::unique_ptr<Database> db;
};

DatabaseCheck::DatabaseCheck(Context &ctx, const QString &databasePath, WidthLimits limits, QStringList only)
    : m_ownChecker(std::make_unique<ItemChecker>(ctx, std::move(limits), std::move(only))),
      m_checker(m_ownChecker.get())
{
    open(databasePath);
}

DatabaseCheck::DatabaseCheck(const QString &databasePath, ItemChecker &checker) : m_checker(&checker)
{
    open(databasePath);
}

void DatabaseCheck::open(const QString &databasePath)
{
    d = std::make_unique<Impl>();
    d->path = databasePath;
    d->db = Database::open(databasePath, Database::Mode::ReadOnly);
    for (const QVariantList &row :
         d->db->query(QStringLiteral("SELECT Language, Name, Font FROM Language ORDER BY Language")).rows())
        m_languages.append({numberText(row[0]), row[1].toString(), row[2].toString()});
}

DatabaseCheck::~DatabaseCheck() = default;

const CheckLanguage *DatabaseCheck::language(const QString &name) const
{
    for (const CheckLanguage &l : m_languages)
        if (l.name.compare(name.trimmed(), Qt::CaseInsensitive) == 0)
            return &l;
    return nullptr;
}

QStringList DatabaseCheck::machines() const
{
    QStringList out;
    for (const QVariantList &row :
         d->db
             ->query(QStringLiteral("SELECT DISTINCT MachineType FROM AlarmDefinition WHERE MachineType <> '0' AND "
                                    "MachineType IS NOT NULL ORDER BY MachineType"))
             .rows())
        out << row[0].toString();
    return out;
}

DatabaseCheck::ItemTexts DatabaseCheck::itemTexts(const QString &machine, int kind, long number,
                                                  const CheckLanguage &language)
{
    ItemTexts item;
    for (const KindTables &k : kindTables()) {
        if (k.kind != kind)
            continue;
        const Recordset def = d->db->query(
            QStringLiteral("SELECT %1 FROM %2 WHERE MachineType = ? COLLATE NOCASE AND %3 = ? AND MachineType <> '0'")
                .arg(QLatin1String(k.id), QLatin1String(k.definition), QLatin1String(k.number)),
            {machine, qlonglong(number)});
        if (def.recordCount() == 0)
            return item;
        item.id = long(def.value(QLatin1String(k.id)).toLongLong());
        const Recordset texts =
            d->db->query(QStringLiteral("SELECT %1 FROM %2 WHERE %3 = ? AND Language = ?")
                             .arg(k.fields.join(QStringLiteral(", ")), QLatin1String(k.text), QLatin1String(k.textId)),
                         {qlonglong(item.id), language.number.toLongLong()});
        for (const QString &field : k.fields)
            item.texts.push_back({field, texts.recordCount() > 0 ? texts.text(field) : QString()});
    }
    return item;
}

void DatabaseCheck::run(const CheckLanguage &destination, const CheckLanguage &source, const CheckScope &scope,
                        const std::function<void(const CheckedItem &)> &each)
{
    // Marks are a help: a companion file that cannot be read leaves them out.
    QHash<MarkKey, QString> kept;
    try {
        kept = readTranslatedFrom(d->path, destination.number, source.number);
    } catch (const DbError &) {
    }
    for (const KindTables &k : kindTables()) {
        if ((scope.kind != 0 && scope.kind != k.kind) || !d->db->hasTable(QLatin1String(k.text)))
            continue;
        // Both languages' texts of the kind, by item ID.
        QHash<qlonglong, QStringList> sourceTexts, destinationTexts;
        const QString fields = k.fields.join(QStringLiteral(", "));
        d->db->forEachRow(QStringLiteral("SELECT %1, Language, %2 FROM %3 WHERE Language IN (?, ?)")
                              .arg(QLatin1String(k.textId), fields, QLatin1String(k.text)),
                          {source.number.toLongLong(), destination.number.toLongLong()}, [&](QVariantList &row) {
                              QStringList texts;
                              for (qsizetype i = 2; i < row.size(); ++i)
                                  texts << row[i].toString();
                              const QString language = numberText(row[1]);
                              if (language == source.number)
                                  sourceTexts.insert(row[0].toLongLong(), texts);
                              if (language == destination.number)
                                  destinationTexts.insert(row[0].toLongLong(), texts);
                              return true;
                          });
        QString sql = QStringLiteral("SELECT MachineType, %1, %2 FROM %3 WHERE MachineType <> '0'")
                          .arg(QLatin1String(k.number), QLatin1String(k.id), QLatin1String(k.definition));
        QVariantList params;
        if (!scope.machine.isEmpty()) {
            sql += QStringLiteral(" AND MachineType = ? COLLATE NOCASE");
            params << scope.machine;
        }
        sql += QStringLiteral(" ORDER BY MachineType, %1").arg(QLatin1String(k.number));
        d->db->forEachRow(sql, params, [&](QVariantList &row) {
            CheckedItem item;
            item.machine = row[0].toString();
            item.kind = k.kind;
            item.number = long(row[1].toLongLong());
            item.id = long(row[2].toLongLong());
            const QStringList src = sourceTexts.value(item.id), dst = destinationTexts.value(item.id);
            std::vector<FieldTexts> texts;
            for (qsizetype f = 0; f < k.fields.size(); ++f) {
                FieldTexts t{k.fields[f], src.value(f), dst.value(f), std::nullopt};
                const auto mark = kept.constFind({k.kind, item.id, k.fields[f]});
                if (mark != kept.constEnd())
                    t.keptSource = *mark;
                const bool sourceHas = !t.source.trimmed().isEmpty();
                if (sourceHas && item.sourceStart.isEmpty())
                    item.sourceStart = t.source.left(120);
                item.hasSource = item.hasSource || sourceHas;
                item.missing = item.missing || (sourceHas && t.destination.trimmed().isEmpty());
                texts.push_back(std::move(t));
            }
            item.findings = m_checker->check(texts, destination);
            item.texts = std::move(texts);
            each(item);
            return true;
        });
    }
}

} // namespace ht
