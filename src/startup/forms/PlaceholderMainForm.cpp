#include "startup/forms/PlaceholderMainForm.h"

#include "common/Context.h"
#include "startup/forms/MainForms.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QMenuBar>

namespace ht
{

PlaceholderMainForm::PlaceholderMainForm(Context &ctx, StartupSession &session, const QString &formName)
    : m_ctx(ctx), m_session(session)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(ctx.state.mode == QLatin1String("IMPORT") ? QStringLiteral("Helptext Importer")
                                                             : QStringLiteral("Helptext Editor"));

    auto *text = new QLabel(this);
    text->setWordWrap(true);
    text->setMargin(24);
    text->setAlignment(Qt::AlignCenter);
    text->setText(QStringLiteral("Start-up has finished.\n\nThe %1 arrives in a later version of this program; "
                                 "this window only stands in for it.\n\nHelp > Info shows the settings in use.\n\n"
                                 "Help pages can already be generated from the command line:\n/html/Alarms/Warnings/"
                                 "MaterialChange")
                      .arg(formName));
    setCentralWidget(text);

    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("E&xit"), this, &QWidget::close);
    QMenu *help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("&Info"), this, [this] { ShowInfoBox(m_ctx, m_session, this); });

    resize(640, 360);
}

void PlaceholderMainForm::closeEvent(QCloseEvent *e)
{
    e->accept();
    if (!m_ctx.state.switchingForm)
        QCoreApplication::exit(0);
}

} // namespace ht
