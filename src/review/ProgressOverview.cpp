#include "review/ProgressOverview.h"

namespace ht
{

void countProgress(std::vector<ProgressCell> &cells, const CheckedItem &item, const QString &language)
{
    if (cells.empty() || cells.back().machine != item.machine || cells.back().kind != item.kind ||
        cells.back().language != language)
        cells.push_back({item.machine, item.kind, language});
    ProgressCell &cell = cells.back();
    if (!item.hasSource)
        return;
    ++cell.items;
    const bool findings = !item.missing && item.hasOtherFindings();
    const bool review = item.needsReview();
    if (item.missing)
        ++cell.missing;
    else
        ++cell.translated;
    if (findings)
        ++cell.withFindings;
    if (review)
        ++cell.needsReview;
    if (cell.firstToDo == 0 && (item.missing || findings || review))
        cell.firstToDo = item.number;
}

std::vector<ProgressCell> progressCells(DatabaseCheck &check, const CheckLanguage &source)
{
    std::vector<ProgressCell> cells;
    for (const CheckLanguage &destination : check.languages()) {
        if (destination.number == source.number)
            continue;
        check.run(destination, source, {},
                  [&](const CheckedItem &item) { countProgress(cells, item, destination.name); });
    }
    // Rows by machine, kind, language, whatever order the languages were run in.
    std::stable_sort(cells.begin(), cells.end(), [](const ProgressCell &a, const ProgressCell &b) {
        return std::tie(a.machine, a.kind) < std::tie(b.machine, b.kind);
    });
    return cells;
}

ProgressOverview::ProgressOverview(Context &ctx, const QString &databasePath, const QString &sourceLanguage)
    : ctx(ctx), m_path(databasePath)
{
    DatabaseCheck check(ctx, databasePath, WidthLimits{}, {QStringLiteral("review")});
    const CheckLanguage *source = check.language(sourceLanguage);
    if (!source)
        source = check.language(QStringLiteral("English"));
    if (!source && !check.languages().isEmpty())
        source = &check.languages().first();
    if (source)
        m_source = source->name;
}

ProgressOverview::~ProgressOverview() = default;

QString ProgressOverview::sourceLanguage() const
{
    return m_source;
}

QStringList ProgressOverview::findingChecks()
{
    return {QStringLiteral("same"),        QStringLiteral("breaks"),  QStringLiteral("blanks"),
            QStringLiteral("punctuation"), QStringLiteral("numbers"), QStringLiteral("review")};
}

std::vector<ProgressCell> ProgressOverview::counts()
{
    std::vector<ProgressCell> out = cells({QStringLiteral("review")});
    for (ProgressCell &cell : out)
        cell.withFindings = -1;
    return out;
}

std::vector<ProgressCell> ProgressOverview::findings()
{
    return cells(findingChecks());
}

ProgressCell ProgressOverview::cell(const QString &machine, int kind, const QString &language)
{
    DatabaseCheck check(ctx, m_path, WidthLimits{}, findingChecks());
    const CheckLanguage *source = check.language(m_source), *destination = check.language(language);
    std::vector<ProgressCell> one;
    if (source && destination)
        check.run(*destination, *source, {machine, kind, {}},
                  [&](const CheckedItem &item) { countProgress(one, item, destination->name); });
    return one.empty() ? ProgressCell{machine, kind, language} : one.front();
}

std::vector<ProgressCell> ProgressOverview::cells(const QStringList &checks)
{
    DatabaseCheck check(ctx, m_path, WidthLimits{}, checks);
    const CheckLanguage *source = check.language(m_source);
    return source ? progressCells(check, *source) : std::vector<ProgressCell>{};
}

} // namespace ht
