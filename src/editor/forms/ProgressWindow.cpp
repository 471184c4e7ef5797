#include "editor/forms/ProgressWindow.h"

#include "common/Context.h"
#include "database/Database.h"
#include "editor/EditorForm.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace ht
{

namespace
{
const QStringList kColumns{QStringLiteral("Machine"),       QStringLiteral("Kind"),        QStringLiteral("Language"),
                           QStringLiteral("Items"),         QStringLiteral("Translated"),  QStringLiteral("Missing"),
                           QStringLiteral("With findings"), QStringLiteral("Needs review")};
} // namespace

ProgressWindow::ProgressWindow(Context &ctx, EditorForm &editor, QWidget *parent)
    : QWidget(parent, Qt::Window), m_ctx(ctx), m_editor(editor), m_table(new QTableWidget(this)),
      m_note(new QLabel(this))
{
    setObjectName(QStringLiteral("ProgressWindow"));
    setWindowTitle(QStringLiteral("Progress overview"));
    m_table->setObjectName(QStringLiteral("ProgressTable"));
    m_table->setColumnCount(int(kColumns.size()));
    m_table->setHorizontalHeaderLabels(kColumns);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->verticalHeader()->hide();
    m_note->setObjectName(QStringLiteral("ProgressNote"));
    m_note->setMinimumHeight(m_note->fontMetrics().lineSpacing() * 2);
    m_note->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_table);
    layout->addWidget(m_note);
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row, int) { openRow(row); });
    resize(720, 480);
}

ProgressWindow::~ProgressWindow() = default;

void ProgressWindow::refresh()
{
    try {
        m_overview = std::make_unique<ProgressOverview>(m_ctx, m_ctx.state.helpTextDB, m_editor.sourceLanguage());
        m_cells = m_overview->counts();
        m_note->setText(QStringLiteral("Against %1. Counting findings...").arg(m_overview->sourceLanguage()));
    } catch (const DbError &e) {
        m_overview.reset();
        m_cells.clear();
        m_note->setText(QStringLiteral("The database cannot be read: ") + QString::fromUtf8(e.what()));
    }
    showCells();
    // The findings take longer: the window shows its counts first.
    if (m_overview)
        QTimer::singleShot(0, this, &ProgressWindow::countFindings);
}

void ProgressWindow::countFindings()
{
    if (!m_overview)
        return;
    try {
        m_cells = m_overview->findings();
        m_note->setText(QStringLiteral("Against %1. Findings of every check but spelling and width; "
                                       "double-click a row to show its first item that needs work.")
                            .arg(m_overview->sourceLanguage()));
    } catch (const DbError &e) {
        m_note->setText(QStringLiteral("The findings cannot be counted: ") + QString::fromUtf8(e.what()));
    }
    showCells();
}

void ProgressWindow::refreshRow(const ItemAddress &item)
{
    if (!m_overview || !isVisible())
        return;
    for (size_t row = 0; row < m_cells.size(); ++row) {
        ProgressCell &cell = m_cells[row];
        if (cell.machine.compare(item.machine, Qt::CaseInsensitive) != 0 || cell.kind != item.kind ||
            cell.language != item.language)
            continue;
        try {
            cell = m_overview->cell(cell.machine, cell.kind, cell.language);
            showRow(int(row), cell);
        } catch (const DbError &e) {
            m_note->setText(QStringLiteral("The database cannot be read: ") + QString::fromUtf8(e.what()));
        }
        return;
    }
}

void ProgressWindow::showCells()
{
    m_table->setRowCount(int(m_cells.size()));
    for (size_t row = 0; row < m_cells.size(); ++row)
        showRow(int(row), m_cells[row]);
    m_table->resizeColumnsToContents();
}

void ProgressWindow::showRow(int row, const ProgressCell &cell)
{
    const QStringList values{cell.machine,
                             QString::fromLatin1(kindWord(cell.kind)),
                             cell.language,
                             QString::number(cell.items),
                             QString::number(cell.translated),
                             QString::number(cell.missing),
                             cell.withFindings < 0 ? QStringLiteral("...") : QString::number(cell.withFindings),
                             QString::number(cell.needsReview)};
    for (int column = 0; column < int(values.size()); ++column) {
        auto *item = new QTableWidgetItem(values[column]);
        if (column >= 3)
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_table->setItem(row, column, item);
    }
}

void ProgressWindow::openRow(int row)
{
    if (row < 0 || size_t(row) >= m_cells.size())
        return;
    const ProgressCell &cell = m_cells[size_t(row)];
    // A row with nothing left to do shows its first item.
    m_editor.goToItem(cell.machine, cell.kind, cell.language, cell.firstToDo > 0 ? int(cell.firstToDo) : 1);
    // The translator types on in the editor.
    if (QWidget *editor = parentWidget()) {
        editor->raise();
        editor->activateWindow();
    }
}

} // namespace ht
