#pragma once
// The part of a page run that needs neither the database nor the user: looking
// at the page that stands there, laying the text out, filling the template and
// writing the file. It runs on worker threads, so that two pages are made at
// once and the file system's waits overlap with the next page's work.

#include "common/Context.h"
#include "common/FileIo.h"
#include "common/WorkQueue.h"
#include "html/HtmlKinds.h"
#include "html/TextWidthBreaker.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <memory>
#include <mutex>
#include <vector>

namespace ht
{

class PreparedTemplate;

struct PageJob {
    const HtmlKind *kind = nullptr;
    QStringList row;         // the record, columns as RecordColumn
    QString folder;          // the page's folder, checked to lie inside the help directory
    QString name;            // "<number>.html"
    bool mayExist = true;    // false: nothing can stand there yet, no need to look
    bool removeOnly = false; // the item has no text: only a generated page goes
    std::shared_ptr<const PreparedTemplate> pageTemplate;
    QStringList fontSpec; // GetFontSpecs of the row's Language.Font
    QString fontSize;
    int lineWidth = 0;
};

class PageWorkers
{
  public:
    // `ctx` gives the program's location for the error log; the workers never
    // ask the user anything and never let events run.
    PageWorkers(const Context &ctx, int threads);
    ~PageWorkers();

    // Jobs run side by side in any order: a job for a page posted before must
    // wait for a drain().
    void post(PageJob job, const std::function<void()> &whileWaiting);
    void drain(const std::function<void()> &whileWaiting);

    // The first failure of any job: "" while all went well.
    QString failure() const;
    // A job's procedure asked to end the program.
    bool programEnded() const;

  private:
    struct Worker {
        Context ctx;
        TextWidthBreaker breaker;
        QString page;
        QHash<QString, std::shared_ptr<OpenFolder>> folders; // the folders met lately
        std::shared_ptr<OpenFolder> folder(const QString &path);
    };
    void run(Worker &worker, const PageJob &job);
    void fail(const QString &text, bool ended);

    std::vector<std::unique_ptr<Worker>> m_workers;
    mutable std::mutex m_mutex;
    QString m_failure;
    bool m_programEnded = false;
    std::unique_ptr<WorkQueue<PageJob>> m_queue; // last: its threads end before the workers go
};

} // namespace ht
