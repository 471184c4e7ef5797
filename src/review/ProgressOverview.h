#pragma once
// The progress overview: for every machine, kind and destination language how
// many items are translated, missing, with findings and in need of review, and
// the first item that needs work. `report` prints it; the editor shows it.

#include "review/ReviewReports.h"

namespace ht
{

struct Context;

// Counts one checked item of `language` into the cells; a new cell starts when
// machine, kind or language change (items arrive in machine, kind, number order).
void countProgress(std::vector<ProgressCell> &cells, const CheckedItem &item, const QString &language);

// Every destination language but `source` against it, rows by machine, kind, language.
// Throws DbError when the database cannot be read to the end.
std::vector<ProgressCell> progressCells(DatabaseCheck &check, const CheckLanguage &source);

// The overview window's rows. Opening must be quick on a full database (75,600
// destination texts), so it comes in two steps: `counts` reads translated,
// missing and needs review (no text checks); `findings` adds "with findings" by
// every check but `spelling` and `width`, which measure every word and line
// and are left to `check` and `report`.
class ProgressOverview
{
  public:
    // Throws DbError when the database cannot be read.
    ProgressOverview(Context &ctx, const QString &databasePath, const QString &sourceLanguage);
    ~ProgressOverview();
    QString sourceLanguage() const; // "" when the database has no language
    // withFindings is -1 in every cell: not counted yet. Both throw DbError.
    std::vector<ProgressCell> counts();
    std::vector<ProgressCell> findings();
    // One cell counted again in full, as after a save there; throws DbError.
    ProgressCell cell(const QString &machine, int kind, const QString &language);
    static QStringList findingChecks();

  private:
    std::vector<ProgressCell> cells(const QStringList &checks);
    Context &ctx;
    QString m_path, m_source;
};

} // namespace ht
