#include "html/PageWorkers.h"

#include "common/ErrorLog.h"
#include "common/StringUtils.h"
#include "database/LanguageLookup.h"
#include "html/HtmlConversions.h"
#include "html/HtmlTextFile.h"
#include "html/PageFiller.h"

#include <QFile>

namespace ht
{

namespace
{
constexpr std::size_t kJobsPerLane = 32;
} // namespace

PageWorkers::PageWorkers(const Context &ctx, int threads)
{
    threads = std::max(1, threads);
    for (int i = 0; i < threads; ++i) {
        auto w = std::make_unique<Worker>();
        w->ctx.programDir = ctx.programDir;
        w->ctx.programName = ctx.programName;
        w->ctx.state.runningOnMachinePC = ctx.state.runningOnMachinePC;
        w->ctx.state.unattended = true;
        // EndProgram still throws ProgramEnded: the job catches it, and the
        // run's own thread ends the program.
        w->ctx.endProgram = [](int) {};
        m_workers.push_back(std::move(w));
    }
    m_lanes = std::make_unique<WorkLanes>(threads, kJobsPerLane);
}

PageWorkers::~PageWorkers()
{
    m_lanes.reset();
}

void PageWorkers::post(PageJob job, const std::function<void()> &whileWaiting)
{
    const qsizetype folderEnd =
        std::max(job.path.lastIndexOf(QLatin1Char('/')), job.path.lastIndexOf(QLatin1Char('\\')));
    const std::size_t key = qHash(QStringView(job.path).left(folderEnd + 1));
    m_lanes->post(
        key,
        [this, job = std::move(job)](int lane) {
            try {
                run(*m_workers[std::size_t(lane)], job);
            } catch (const ProgramEnded &) {
                fail(QString(), true);
            } catch (const std::exception &e) {
                fail(QString::fromStdString(e.what()), false);
            } catch (...) {
                fail(QStringLiteral("Unknown failure while writing ") + job.path, false);
            }
        },
        whileWaiting);
}

void PageWorkers::drain(const std::function<void()> &whileWaiting)
{
    m_lanes->drain(whileWaiting);
}

QString PageWorkers::failure() const
{
    std::lock_guard lock(m_mutex);
    return m_failure;
}

bool PageWorkers::programEnded() const
{
    std::lock_guard lock(m_mutex);
    return m_programEnded;
}

void PageWorkers::fail(const QString &text, bool ended)
{
    std::lock_guard lock(m_mutex);
    if (m_failure.isEmpty())
        m_failure = text.isEmpty() ? QStringLiteral("The page run was ended") : text;
    m_programEnded = m_programEnded || ended;
}

void PageWorkers::run(Worker &worker, const PageJob &job)
{
    Context &ctx = worker.ctx;
    const QStringList existing =
        job.mayExist ? GetTextFileHTML(ctx, job.path, false, true) : QStringList{QStringLiteral("-1")};
    const bool noPage = existing.size() == 1 && existing.first() == QLatin1String("-1");
    const bool generatedPage = existing.size() == 1 && existing.first().isEmpty();
    if (job.removeOnly) {
        // Only a page this program generated goes; one made by hand stays.
        if (generatedPage)
            QFile::remove(job.path);
        return;
    }
    if (!noPage && !generatedPage)
        return; // made by hand: never overwritten

    const QStringList &row = job.row;
    PageData data;
    data.fontName = job.fontSpec.value(FontName);
    data.fontSize = job.fontSize;
    data.fontWeight = job.fontSpec.value(FontWeight);
    data.languageNumber = row[ColLanguage];
    if (job.kind->multiValueFields) {
        for (int f = 0; f < 6; ++f)
            data.multiValues[f] = StringToStringArray(ctx, row[ColSensor + f], QStringLiteral("/"));
    }
    const QString html = SingleLineDBToMultiLineHTML(ctx, row[ColText]);
    data.textLines =
        worker.breaker.TextSingleLineToArray(ctx, html, data.fontName, data.fontSize, data.fontWeight, job.lineWidth);

    QString &page = worker.page; // one buffer for all the worker's pages
    page.resize(0);
    page += QChar(0xFEFF);
    job.pageTemplate->appendFilledPage(ctx, data, page);
    QString error;
    if (!writeHtmlPageText(job.path, page, &error))
        fail(QStringLiteral("Cannot write ") + job.path + QStringLiteral(": ") + error, false);
}

} // namespace ht
