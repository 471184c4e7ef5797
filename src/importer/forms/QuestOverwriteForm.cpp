#include "importer/forms/QuestOverwriteForm.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ht
{

QuestOverwriteForm::QuestOverwriteForm(const QString &kind, const QString &oldValue, const QString &newValue,
                                       QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmQuestOverwrite"));
    setWindowTitle(QStringLiteral("Item exists"));
    auto *question =
        new QLabel(QStringLiteral("Replace existing configuration data for ") + kind + QLatin1Char('?'), this);
    question->setObjectName(QStringLiteral("AlarmsOrWarnings"));
    auto *oldLabel = new QLabel(oldValue, this);
    oldLabel->setObjectName(QStringLiteral("OldVal"));
    oldLabel->setAccessibleName(QStringLiteral("Old value"));
    auto *newLabel = new QLabel(newValue, this);
    newLabel->setObjectName(QStringLiteral("NewVal"));
    newLabel->setAccessibleName(QStringLiteral("New value"));
    for (QLabel *l : {oldLabel, newLabel})
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *values = new QGridLayout;
    values->addWidget(new QLabel(QStringLiteral("old value:"), this), 0, 0);
    values->addWidget(oldLabel, 0, 1);
    values->addWidget(new QLabel(QStringLiteral("new value:"), this), 1, 0);
    values->addWidget(newLabel, 1, 1);

    const struct {
        const char *text, *tip;
    } answers[] = {{"Yes, replace", "Replace only THIS item and ask again next time"},
                   {"Don't replace this item", "Don't replace THIS item. Ask again next time"},
                   {"Replace all", "Replace ALL items, don`t ask again"},
                   {"Never replace", "NEVER replace old items. Don't ask again"}};
    auto *buttons = new QHBoxLayout;
    for (int i = 0; i < 4; ++i) {
        auto *b = new QPushButton(QString::fromUtf8(answers[i].text), this);
        b->setObjectName(QStringLiteral("AnswOverwrite%1").arg(i + 1));
        b->setToolTip(QString::fromUtf8(answers[i].tip));
        b->setAccessibleDescription(b->toolTip());
        connect(b, &QPushButton::clicked, this, [this, i] { done(i + 1); });
        buttons->addWidget(b);
    }
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(question);
    layout->addLayout(values);
    layout->addLayout(buttons);
}

int QuestOverwriteForm::ask(const QString &kind, const QString &oldValue, const QString &newValue, QWidget *parent)
{
    QuestOverwriteForm form(kind, oldValue, newValue, parent);
    return form.exec(); // closing it gives 0: the import is cancelled
}

} // namespace ht
