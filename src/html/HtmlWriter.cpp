#include "html/HtmlWriter.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/StatusDisplay.h"
#include "common/StringUtils.h"
#include "database/Database.h"
#include "database/LanguageLookup.h"
#include "html/HelpDirectory.h"
#include "html/HtmlConversions.h"
#include "html/HtmlKinds.h"
#include "html/HtmlTextFile.h"
#include "html/IndexText.h"
#include "html/PageFiller.h"
#include "html/PageWorkers.h"
#include "common/SafePathName.h"

#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <chrono>
#include <cmath>
#include <deque>
#include <vector>

namespace ht
{

namespace
{

const QString kProc = QStringLiteral("WriteHTMLPage");
int eventIntervalMs = 20;
// Two pages are made at once: one thread lays a page out while the other waits for the disk.
constexpr int kWorkerThreads = 2;

// For the length of a run, window events run at most once per interval: a
// bulk run offers them several times per page, and each costs a system call.
class EventThrottle
{
  public:
    explicit EventThrottle(Context &ctx) : m_ctx(ctx), m_original(ctx.processEvents)
    {
        if (!m_original)
            return;
        m_ctx.processEvents = [this] {
            const auto now = std::chrono::steady_clock::now();
            if (m_ranOnce && now - m_last < std::chrono::milliseconds(eventIntervalMs))
                return;
            m_ranOnce = true;
            m_last = now;
            m_original();
        };
    }
    ~EventThrottle() { m_ctx.processEvents = m_original; }
    EventThrottle(const EventThrottle &) = delete;
    EventThrottle &operator=(const EventThrottle &) = delete;

  private:
    Context &m_ctx;
    std::function<void()> m_original;
    std::chrono::steady_clock::time_point m_last;
    bool m_ranOnce = false;
};

QString trimBlanks(const QString &s)
{
    qsizetype b = 0, e = s.size();
    while (b < e && s.at(b) == u' ')
        ++b;
    while (e > b && s.at(e - 1) == u' ')
        --e;
    return (b == 0 && e == s.size()) ? s : s.mid(b, e - b);
}

QString fieldText(const QVariant &v)
{
    // Whole numbers stored as floating point still name "5.html", not "5.0.html".
    if (v.typeId() == QMetaType::Double) {
        const double d = v.toDouble();
        if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 1e15)
            return QString::number(qlonglong(d));
    }
    return trimBlanks(v.toString());
}

// Per-language values that stay the same for the whole run.
struct LanguageCache {
    QHash<QString, QString> codePages;     // language name -> code page
    QHash<QString, QStringList> fontSpecs; // Language.Font -> parts
};

// Whether a folder below the help directory can take pages.
enum class Folder { Ready, Skipped, Failed };

struct FolderInfo {
    Folder state = Folder::Ready;
    bool createdByRun = false;
    QString lastPosted; // the page last posted into it
};

class HtmlRun
{
  public:
    HtmlRun(Context &ctx, StatusTarget *form) : ctx(ctx), form(form) {}

    void run(bool alarms, bool warnings, bool materialChange, const QString &machine, const QString &language,
             long itemNumber);

  private:
    bool createDirectoryTree(Database &db);
    Folder ensureDirectory(const QString &path);
    Folder ensurePageDirectory(const QString &machine, const QString &kindWord, const QString &language);
    bool isUsableName(const QString &what, const QString &name);
    void skipFolder(const QString &path, const QString &why);
    std::shared_ptr<const PreparedTemplate> preparedTemplate(const HtmlKind &kind, const QStringList &templateLines,
                                                             const QString &languageNumber);
    const QStringList &fontSpecOf(const QStringList &row);
    // False when the whole run must stop.
    bool writeKind(Database &db, const HtmlKind &kind, const QString &machine, const QString &language,
                   long itemNumber);
    bool writeRow(const HtmlKind &kind, const QStringList &templateLines, const QStringList &row);
    void post(PageJob job);
    void finishWrites();
    void stop();
    bool indexTextDatabaseLost();

    Context &ctx;
    StatusTarget *form;
    QString mainDir;
    QString realMainDir; // with every link resolved
    QString suffix;
    QString fontSize;
    int lineWidth = 0;
    QHash<QString, FolderInfo> folders; // folders looked at in this run
    QSet<QString> reported;             // names and folders already logged
    LanguageCache languages;
    IndexTextCache indexTexts;
    QHash<QString, std::shared_ptr<const PreparedTemplate>> templates; // per language, for the current kind
    std::unique_ptr<PageWorkers> workers;
    std::deque<QStringList> rows; // the rows of the run
};

bool HtmlRun::indexTextDatabaseLost()
{
    showMessage(ctx, QStringLiteral("Job aborted!") + LFCR + QStringLiteral("Could not connect to Indextext-Database."),
                Buttons::OK, Icon::Critical);
    return false;
}

void HtmlRun::stop()
{
    ctx.state.writingHtml = false;
    ctx.state.abortHtml = false;
    StatusEnd(ctx, form);
}

bool HtmlRun::isUsableName(const QString &what, const QString &name)
{
    if (isSafePathName(name))
        return true;
    ctx.state.htmlRunFailed = true;
    if (!reported.contains(what + name)) {
        reported.insert(what + name);
        LogError(ctx, QStringLiteral("No help pages for ") + what + QStringLiteral(" \"") + shortForLog(name) +
                          QStringLiteral("\": the name cannot be used as a folder name."));
    }
    return false;
}

void HtmlRun::skipFolder(const QString &path, const QString &why)
{
    folders.insert(path, {Folder::Skipped, false, QString()});
    ctx.state.htmlRunFailed = true;
    if (!reported.contains(path)) {
        reported.insert(path);
        LogError(ctx, QStringLiteral("No help pages in \"") + path + QStringLiteral("\": ") + why);
    }
}

// The parent of `path` is known to be a folder of the help directory; a link
// there is followed only when it stays inside.
Folder HtmlRun::ensureDirectory(const QString &path)
{
    if (const auto known = folders.constFind(path); known != folders.constEnd())
        return known->state;
    if (!isPathInside(mainDir, path)) {
        skipFolder(path, QStringLiteral("the folder lies outside the help directory."));
        return Folder::Skipped;
    }
    const QFileInfo info(path);
    if (info.isSymLink()) {
        const QString target = info.canonicalFilePath();
        if (target.isEmpty() || !info.isDir() || !isPathInside(realMainDir, target)) {
            skipFolder(path, QStringLiteral("the folder is a link that leads out of the help directory."));
            return Folder::Skipped;
        }
    } else if (info.exists() && !info.isDir()) {
        skipFolder(path, QStringLiteral("a file of that name is in the way."));
        return Folder::Skipped;
    }
    const bool existed = info.exists();
    if (!GetDirectory(ctx, path)) {
        ctx.state.htmlRunFailed = true;
        folders.insert(path, {Folder::Failed, false, QString()});
        return Folder::Failed;
    }
    folders.insert(path, {Folder::Ready, !existed, QString()});
    return Folder::Ready;
}

Folder HtmlRun::ensurePageDirectory(const QString &machine, const QString &kindWord, const QString &language)
{
    const QChar sep = pathSeparator();
    const QString machineDir = mainDir + machine;
    const QString kindDir = machineDir + sep + kindWord;
    for (const QString &dir : {machineDir, kindDir, kindDir + sep + language}) {
        if (const Folder f = ensureDirectory(dir); f != Folder::Ready)
            return f;
    }
    return Folder::Ready;
}

bool HtmlRun::createDirectoryTree(Database &db)
{
    QStringList machines;
    Recordset rs = db.query(QStringLiteral("SELECT AlarmDefinition.MachineType From AlarmDefinition GROUP BY "
                                           "AlarmDefinition.MachineType ORDER BY AlarmDefinition.MachineType;"));
    for (rs.moveFirst(); !rs.eof(); rs.moveNext())
        machines.append(fieldText(rs.value(0)));
    QStringList languageFolders;
    rs = db.query(QStringLiteral("SELECT Language.Name FROM Language;"));
    for (rs.moveFirst(); !rs.eof(); rs.moveNext())
        languageFolders.append(fieldText(rs.value(0)));
    languageFolders << QStringLiteral("Picture") << QStringLiteral("Video");

    const QStringList kinds{QStringLiteral("Alarms"), QStringLiteral("MaterialChange"), QStringLiteral("Warnings")};
    for (const QString &machine : machines) {
        if (machine == QLatin1String("0") || !isUsableName(QStringLiteral("machine"), machine))
            continue;
        for (const QString &kind : kinds) {
            for (const QString &folder : languageFolders) {
                if (!isUsableName(QStringLiteral("language"), folder))
                    continue;
                // A folder that cannot be had for this name only costs its own pages.
                if (ensurePageDirectory(machine, kind, folder) == Folder::Failed)
                    return false;
            }
        }
    }
    return true;
}

std::shared_ptr<const PreparedTemplate>
HtmlRun::preparedTemplate(const HtmlKind &kind, const QStringList &templateLines, const QString &languageNumber)
{
    if (auto prepared = templates.constFind(languageNumber); prepared != templates.constEnd())
        return *prepared;
    bool indexTextLost = false;
    auto t =
        std::make_shared<const PreparedTemplate>(ctx, kind, templateLines, languageNumber, indexTexts, indexTextLost);
    if (indexTextLost)
        return nullptr;
    templates.insert(languageNumber, t);
    return t;
}

const QStringList &HtmlRun::fontSpecOf(const QStringList &row)
{
    // The code page is looked up once per language; it does not change the
    // page, which is always UTF-16, but stays the program's current one.
    const QString &language = row[ColName];
    auto cp = languages.codePages.find(language);
    if (cp == languages.codePages.end())
        cp = languages.codePages.insert(language, ctx.state.langLookupDB.isEmpty() ? QStringLiteral("-1")
                                                                                   : GetCodePage(ctx, language));
    ctx.state.currentCodePage = *cp;
    auto fontSpec = languages.fontSpecs.find(row[ColFont]);
    if (fontSpec == languages.fontSpecs.end())
        fontSpec = languages.fontSpecs.insert(row[ColFont], GetFontSpecs(row[ColFont]));
    return *fontSpec;
}

void HtmlRun::post(PageJob job)
{
    workers->post(std::move(job), ctx.processEvents);
    if (!workers->failure().isEmpty())
        finishWrites();
}

// Waits for the pages under way; a failure of any of them ends the run.
void HtmlRun::finishWrites()
{
    workers->drain(ctx.processEvents);
    const QString failure = workers->failure();
    if (failure.isEmpty())
        return;
    ctx.state.htmlRunFailed = true;
    if (workers->programEnded())
        EndProgram(ctx, 1);
    throw std::runtime_error(failure.toStdString());
}

bool HtmlRun::writeKind(Database &db, const HtmlKind &kind, const QString &machine, const QString &language,
                        long itemNumber)
{
    const QStringList templateLines = GetTextFileHTML(ctx, mainDir + kind.templateName, true, false);
    if (templateLines.isEmpty() || templateLines.first().isEmpty()) {
        ctx.state.htmlRunFailed = true;
        if (ctx.state.unattended || !ctx.ui)
            LogError(ctx, kind.missingLogged);
        else
            ctx.ui->messageBox(kind.missingShown, Buttons::OK, Icon::Critical, QString());
        return true;
    }

    StatusTickNewText(ctx, form, QStringLiteral("Reading database..."));
    templates.clear(); // the template with the index texts of each language in place
    // Each row goes to the workers as soon as it is read, so that they are
    // busy while the rest is read.
    const RecordQuery q = recordQuery(kind.kind, machine, language, itemNumber);
    const int columns = kind.multiValueFields ? AlarmColumnCount : PlainColumnCount;
    bool carryOn = true;
    db.forEachRow(q.sql, q.params, [&](const QVariantList &record) {
        QStringList row;
        row.reserve(columns);
        for (int c = 0; c < columns; ++c)
            row.append(c < record.size() ? fieldText(record.at(c)) : QString());
        // Kept until the pages are written, so that the thread that made the
        // texts is the one that frees them.
        rows.push_back(std::move(row));
        carryOn = writeRow(kind, templateLines, rows.back());
        return carryOn;
    });
    return carryOn;
}

// False when the whole run must stop.
bool HtmlRun::writeRow(const HtmlKind &kind, const QStringList &templateLines, const QStringList &row)
{
    const QChar sep = pathSeparator();
    const QString &rowMachine = row[ColMachine];
    const QString &rowNumber = row[ColNumber];
    const QString &rowLanguage = row[ColName];
    StatusTickNewText(ctx, form,
                      QStringLiteral("Generating Help-HTML  -  ") + kind.word + QStringLiteral(" (") + rowMachine +
                          QLatin1Char('/') + rowNumber + QStringLiteral(") ") + suffix);
    if (!isUsableName(QStringLiteral("machine"), rowMachine) ||
        !isUsableName(QStringLiteral("language"), rowLanguage) ||
        !isUsableName(QStringLiteral("item"), rowNumber + QStringLiteral(".html")))
        return true;
    PageJob job;
    job.folder = mainDir + rowMachine + sep + kind.word + sep + rowLanguage;
    // Rows of a machine or language that the tree does not know yet get their folders now.
    auto folder = folders.find(job.folder);
    if (folder == folders.end() || folder->state != Folder::Ready) {
        const Folder f = ensurePageDirectory(rowMachine, kind.word, rowLanguage);
        if (f != Folder::Ready)
            return f == Folder::Skipped; // a folder that cannot be had for its name only costs its pages
        folder = folders.find(job.folder);
    }
    job.folder = folder.key(); // shared with the table: the job allocates nothing
    job.kind = &kind;
    job.row = row;
    // A folder this run made holds only the pages it posted: no need to look
    // for others. Rows of one page follow one another in the query's order
    // (machine, number), so a page posted before is the one last posted into
    // its folder.
    const bool again = folder->lastPosted == rowNumber;
    job.mayExist = !folder->createdByRun || again;
    folder->lastPosted = rowNumber;
    if (again)
        workers->drain(ctx.processEvents); // the page's earlier job must be done first

    const bool allEmpty = kind.multiValueFields
                              ? row[ColDevice].isEmpty() && row[ColResult].isEmpty() && row[ColText].isEmpty()
                              : row[ColText].isEmpty();
    if (allEmpty) {
        job.removeOnly = true;
        if (job.mayExist)
            post(std::move(job));
        if (ctx.processEvents)
            ctx.processEvents();
        return true;
    }
    if (ctx.state.abortHtml)
        return false;
    if (ctx.processEvents)
        ctx.processEvents();

    job.fontSpec = fontSpecOf(row);
    job.fontSize = fontSize;
    job.lineWidth = lineWidth;
    job.pageTemplate = preparedTemplate(kind, templateLines, row[ColLanguage]);
    if (!job.pageTemplate)
        return indexTextDatabaseLost();
    post(std::move(job));
    return true;
}

void HtmlRun::run(bool alarms, bool warnings, bool materialChange, const QString &machine, const QString &language,
                  long itemNumber)
{
    if (ctx.state.screenResolution.isEmpty())
        GetScopiaResolution(ctx);
    fontSize = ctx.state.screenResolution == QLatin1String("1280") ? QStringLiteral("18") : QStringLiteral("10");
    lineWidth = int(std::nearbyint(ctx.state.screenResolution.toInt() * 0.9));

    ctx.state.writingHtml = true;
    mainDir = ctx.state.helpMainDir;
    if (!GetDirectory(ctx, mainDir)) {
        ctx.state.writingHtml = false;
        ctx.state.htmlRunFailed = true;
        return;
    }
    if (!mainDir.endsWith(QLatin1Char('/')) && !mainDir.endsWith(QLatin1Char('\\')))
        mainDir += pathSeparator();
    realMainDir = QFileInfo(mainDir).canonicalFilePath();

    std::unique_ptr<Database> db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);

    const QString project = ctx.state.standardIndexTextDB.right(3).toUpper();
    suffix = project == QLatin1String("MDB")   ? QStringLiteral(" (NT)")
             : project == QLatin1String("VWS") ? QStringLiteral(" (XP)")
                                               : QString();
    StatusStart(ctx, form, QStringLiteral("Generating Help-HTML") + suffix, 0, false);
    if (form)
        form->setPanelText(QStringLiteral("   Generating Help-HTML - press ESC to cancel ") + suffix);
    if (ctx.state.abortHtml || !createDirectoryTree(*db)) {
        ctx.state.htmlRunFailed = true;
        stop();
        return;
    }

    workers = std::make_unique<PageWorkers>(ctx, kWorkerThreads);
    const std::pair<bool, ItemKind> kinds[] = {
        {alarms, KindAlarms}, {warnings, KindWarnings}, {materialChange, KindMaterialChange}};
    for (const auto &[wanted, kind] : kinds) {
        if (wanted && !writeKind(*db, htmlKind(kind), machine, language, itemNumber)) {
            ctx.state.htmlRunFailed = true; // cut short
            break;
        }
    }
    // The pages posted before a stop are complete: they are still written.
    finishWrites();
    stop();
}

} // namespace

void WriteHTMLPage(Context &ctx, StatusTarget *form, bool &alarms, bool &warnings, bool &materialChange,
                   const QString &machine, const QString &language, long itemNumber)
{
    ctx.state.htmlRunFailed = false;
    try {
        if (ctx.state.helpTextDB.isEmpty()) {
            ctx.state.htmlRunFailed = true;
            LogError(ctx, QStringLiteral("Helptext-Database not set"));
            return;
        }
        const int kinds = int(alarms) + int(warnings) + int(materialChange);
        if (kinds == 0)
            return;
        const int given = int(!machine.isEmpty()) + int(!language.isEmpty()) + int(itemNumber != 0);
        if ((kinds > 1 && given > 0) || (kinds == 1 && given != 0 && given != 3)) {
            ctx.state.htmlRunFailed = true;
            showMessage(ctx,
                        QStringLiteral("Could not create HTML ") + LFCR + QStringLiteral("Error calling module ") +
                            kProc + QStringLiteral("!"),
                        Buttons::OK, Icon::Critical);
            return;
        }
        EventThrottle throttle(ctx);
        HtmlRun(ctx, form).run(alarms, warnings, materialChange, machine, language, itemNumber);
    } catch (const std::exception &e) {
        ctx.state.writingHtml = false;
        ctx.state.htmlRunFailed = true;
        StatusEnd(ctx, form);
        reportUnexpected(ctx, kProc, e);
    }
}

void setHtmlEventInterval(int milliseconds)
{
    eventIntervalMs = std::max(0, milliseconds);
}

} // namespace ht
