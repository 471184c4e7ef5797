#pragma once
// frmQuestOverwrite: whether an alarm's stored definition is replaced by the
// workbook's. The pressed button is the answer; closing the window cancels
// the whole import.

#include <QDialog>

namespace ht
{

class QuestOverwriteForm : public QDialog
{
    Q_OBJECT
  public:
    QuestOverwriteForm(const QString &kind, const QString &oldValue, const QString &newValue, QWidget *parent);
    // 1 replace, 2 keep this one, 3 replace all, 4 never replace, 0 cancelled.
    static int ask(const QString &kind, const QString &oldValue, const QString &newValue, QWidget *parent);
};

} // namespace ht
