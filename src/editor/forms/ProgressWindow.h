#pragma once
// The progress overview in a window of its own: a row per machine, kind and
// destination language. Double-clicking a row shows its first item that needs
// work in the editor. The rows come from ProgressOverview; this only shows them.

#include "review/ProgressOverview.h"

#include <QWidget>
#include <memory>

class QLabel;
class QTableWidget;

namespace ht
{

class EditorForm;
struct ItemAddress;

class ProgressWindow : public QWidget
{
    Q_OBJECT
  public:
    ProgressWindow(Context &ctx, EditorForm &editor, QWidget *parent);
    ~ProgressWindow() override;
    // Every row read again: the counts at once, "with findings" right after.
    void refresh();
    void countFindings();
    // The row of a saved item counted again.
    void refreshRow(const ItemAddress &item);

  private:
    void showCells();
    void showRow(int row, const ProgressCell &cell);
    void openRow(int row);

    Context &m_ctx;
    EditorForm &m_editor;
    std::unique_ptr<ProgressOverview> m_overview;
    std::vector<ProgressCell> m_cells;
    QTableWidget *m_table;
    QLabel *m_note;
};

} // namespace ht
