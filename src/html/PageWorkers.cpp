#include "html/PageWorkers.h"

#include "common/ErrorLog.h"
#include "common/Platform.h"
#include "common/StringUtils.h"
#include "database/LanguageLookup.h"
#include "html/HtmlConversions.h"
#include "html/HtmlTextFile.h"
#include "html/PageFiller.h"

#include <QSysInfo>
#include <QtEndian>

namespace ht
{

namespace
{
constexpr std::size_t kQueuedJobs = 64;
// A worker meets the folders of one kind's languages in turn: more than that are seldom open at once.
constexpr qsizetype kOpenFolders = 64;

QString nameOf(const PageJob &job)
{
    return job.row[ColNumber] + QStringLiteral(".html");
}

QString pathOf(const PageJob &job)
{
    return job.folder + pathSeparator() + nameOf(job);
}

// The page as it goes to disk: UTF-16LE.
QByteArrayView pageBytes(const QString &page, QByteArray &swapped)
{
    if (QSysInfo::ByteOrder == QSysInfo::LittleEndian)
        return QByteArrayView(reinterpret_cast<const char *>(page.constData()), page.size() * 2);
    swapped.resize(page.size() * 2);
    qToLittleEndian<char16_t>(page.constData(), page.size(), swapped.data());
    return swapped;
}
} // namespace

std::shared_ptr<OpenFolder> PageWorkers::Worker::folder(const QString &path)
{
    if (auto known = folders.constFind(path); known != folders.constEnd())
        return *known;
    if (folders.size() >= kOpenFolders)
        folders.clear();
    auto opened = std::make_shared<OpenFolder>(path);
    folders.insert(path, opened);
    return opened;
}

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
    m_queue = std::make_unique<WorkQueue<PageJob>>(threads, kQueuedJobs, [this](int worker, PageJob &job) {
        try {
            run(*m_workers[std::size_t(worker)], job);
        } catch (const ProgramEnded &) {
            fail(QString(), true);
        } catch (const std::exception &e) {
            fail(QString::fromStdString(e.what()), false);
        } catch (...) {
            fail(QStringLiteral("Unknown failure while writing ") + pathOf(job), false);
        }
    });
}

PageWorkers::~PageWorkers()
{
    m_queue.reset();
}

void PageWorkers::post(PageJob job, const std::function<void()> &whileWaiting)
{
    m_queue->post(std::move(job), whileWaiting);
}

void PageWorkers::drain(const std::function<void()> &whileWaiting)
{
    m_queue->drain(whileWaiting);
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
    const std::shared_ptr<OpenFolder> folder = worker.folder(job.folder);
    if (!folder->isOpen()) {
        fail(QStringLiteral("Cannot open the folder ") + job.folder, false);
        return;
    }
    const QString name = nameOf(job);
    QByteArray oldBytes;
    const FileRead read = job.mayExist ? folder->read(name, kMaxPageBytes, false, oldBytes) : FileRead::Missing;
    const QStringList existing = existingPageLines(read, oldBytes);
    const bool noPage = read == FileRead::Missing;
    const bool generatedPage = existing.size() == 1 && existing.first().isEmpty();
    if (job.removeOnly) {
        // Only a page this program generated goes; one made by hand stays.
        if (generatedPage)
            folder->remove(name);
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
    QByteArray swapped;
    const QByteArrayView bytes = pageBytes(page, swapped);
    // A page that would come out as it stands is left alone: a rerun over
    // unchanged texts writes nothing.
    if (generatedPage && bytes == QByteArrayView(oldBytes))
        return;
    QString error;
    if (!folder->replace(name, bytes.data(), bytes.size(), &error, noPage))
        fail(QStringLiteral("Cannot write ") + pathOf(job) + QStringLiteral(": ") + error, false);
}

} // namespace ht
