#pragma once
// Excel workbooks as the importer reads them: zero-based sheet, row and
// column, a cell's value as text. Excel 97-2003 (BIFF8) and Excel 5/95
// (BIFF5) files and Office Open XML (.xlsx) files are told apart by their
// content, never by their name.

#include <QHash>
#include <QString>
#include <memory>
#include <stdexcept>
#include <vector>

namespace ht
{

// A workbook that cannot be read; the message names the file and says why.
class WorkbookError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// One worksheet's cells that hold something.
class Sheet
{
  public:
    void set(quint32 row, quint32 column, const QString &text);
    QString cell(quint32 row, quint32 column) const;
    qsizetype size() const { return m_cells.size(); }

  private:
    QHash<quint64, QString> m_cells;
};

class Workbook
{
  public:
    // Throws WorkbookError.
    static Workbook open(const QString &path);
    // The same from the file's bytes; `name` names it in messages.
    static Workbook read(const QByteArray &bytes, const QString &name);

    int sheetCount() const { return int(m_sheets.size()); }
    // "" for an empty cell, a cell beyond the sheet's end or a sheet that does not exist.
    QString cell(int sheet, qint64 row, qint64 column) const;

    std::vector<Sheet> m_sheets; // the worksheets in the workbook's order
};

// A number as the importer shows it: "12" for a whole number, never "12.0".
QString numberText(double value);

// Largest workbook file read: far above any item list.
constexpr qint64 kMaxWorkbookBytes = 128 * 1024 * 1024;

} // namespace ht
