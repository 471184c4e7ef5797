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
#include "html/SafePathName.h"
#include "html/TextWidthBreaker.h"

#include <QFile>
#include <QHash>
#include <QSet>
#include <chrono>
#include <cmath>
#include <map>
#include <vector>

namespace ht
{

namespace
{

const QString kProc = QStringLiteral("WriteHTMLPage");
int eventIntervalMs = 20;

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

class HtmlRun
{
  public:
    HtmlRun(Context &ctx, StatusTarget *form) : ctx(ctx), form(form) {}

    void run(bool alarms, bool warnings, bool materialChange, const QString &machine, const QString &language,
             long itemNumber);

  private:
    bool createDirectoryTree(Database &db);
    bool ensureDirectory(const QString &path);
    bool ensurePageDirectory(const QString &machine, const QString &kindWord, const QString &language);
    bool isUsableName(const QString &what, const QString &name);
    std::vector<QStringList> loadRows(Database &db, const HtmlKind &kind, const QString &machine,
                                      const QString &language, long itemNumber);
    PageData pageData(const HtmlKind &kind, const QStringList &row);
    // False when the whole run must stop.
    bool writeKind(Database &db, const HtmlKind &kind, const QString &machine, const QString &language,
                   long itemNumber);
    void stop();
    bool indexTextDatabaseLost();

    Context &ctx;
    StatusTarget *form;
    QString mainDir;
    QString suffix;
    QString fontSize;
    int lineWidth = 0;
    QSet<QString> existingDirs;
    QSet<QString> readyPageDirs; // page folders whose whole path was made sure of
    QSet<QString> createdDirs;   // folders this run made
    QSet<QString> writtenPages;  // pages this run wrote into such folders
    QSet<QString> reportedNames;
    LanguageCache languages;
    IndexTextCache indexTexts;
    TextWidthBreaker breaker;
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
    if (!reportedNames.contains(what + name)) {
        reportedNames.insert(what + name);
        LogError(ctx, QStringLiteral("No help pages for ") + what + QStringLiteral(" \"") + name +
                          QStringLiteral("\": the name cannot be used as a folder name."));
    }
    return false;
}

bool HtmlRun::ensureDirectory(const QString &path)
{
    if (existingDirs.contains(path))
        return true;
    if (!isPathInside(mainDir, path))
        return false;
    const bool existed = directoryExists(path);
    if (!GetDirectory(ctx, path))
        return false;
    existingDirs.insert(path);
    if (!existed)
        createdDirs.insert(path);
    return true;
}

bool HtmlRun::ensurePageDirectory(const QString &machine, const QString &kindWord, const QString &language)
{
    const QChar sep = pathSeparator();
    const QString machineDir = mainDir + machine;
    const QString kindDir = machineDir + sep + kindWord;
    return ensureDirectory(machineDir) && ensureDirectory(kindDir) && ensureDirectory(kindDir + sep + language);
}

bool HtmlRun::createDirectoryTree(Database &db)
{
    QStringList machines;
    Recordset rs = db.query(QStringLiteral("SELECT AlarmDefinition.MachineType From AlarmDefinition GROUP BY "
                                           "AlarmDefinition.MachineType ORDER BY AlarmDefinition.MachineType;"));
    for (rs.moveFirst(); !rs.eof(); rs.moveNext())
        machines.append(fieldText(rs.value(0)));
    QStringList folders;
    rs = db.query(QStringLiteral("SELECT Language.Name FROM Language;"));
    for (rs.moveFirst(); !rs.eof(); rs.moveNext())
        folders.append(fieldText(rs.value(0)));
    folders << QStringLiteral("Picture") << QStringLiteral("Video");

    const QStringList kinds{QStringLiteral("Alarms"), QStringLiteral("MaterialChange"), QStringLiteral("Warnings")};
    for (const QString &machine : machines) {
        if (machine == QLatin1String("0") || !isUsableName(QStringLiteral("machine"), machine))
            continue;
        for (const QString &kind : kinds) {
            for (const QString &folder : folders) {
                if (!isUsableName(QStringLiteral("language"), folder))
                    continue;
                if (!ensurePageDirectory(machine, kind, folder))
                    return false;
            }
        }
    }
    return true;
}

std::vector<QStringList> HtmlRun::loadRows(Database &db, const HtmlKind &kind, const QString &machine,
                                           const QString &language, long itemNumber)
{
    const RecordQuery q = recordQuery(kind.kind, machine, language, itemNumber);
    const Recordset rs = db.query(q.sql, q.params);
    const int columns = kind.multiValueFields ? AlarmColumnCount : PlainColumnCount;
    std::vector<QStringList> rows;
    rows.reserve(rs.recordCount());
    for (const QVariantList &r : rs.rows()) {
        QStringList row;
        row.reserve(columns);
        for (int c = 0; c < columns; ++c)
            row.append(c < r.size() ? fieldText(r.at(c)) : QString());
        rows.push_back(std::move(row));
        if (ctx.processEvents)
            ctx.processEvents();
    }
    return rows;
}

PageData HtmlRun::pageData(const HtmlKind &kind, const QStringList &row)
{
    // Without a language-definition database there is nothing to look up; the
    // code page does not change the page, which is always UTF-16.
    const QString &language = row[ColName];
    auto cp = languages.codePages.find(language);
    if (cp == languages.codePages.end())
        cp = languages.codePages.insert(language, ctx.state.langLookupDB.isEmpty() ? QStringLiteral("-1")
                                                                                   : GetCodePage(ctx, language));
    ctx.state.currentCodePage = *cp;
    auto fontSpec = languages.fontSpecs.find(row[ColFont]);
    if (fontSpec == languages.fontSpecs.end())
        fontSpec = languages.fontSpecs.insert(row[ColFont], GetFontSpecs(row[ColFont]));

    PageData data;
    data.fontName = fontSpec->value(0);
    data.fontSize = fontSize;
    data.fontWeight = fontSpec->value(2);
    data.languageNumber = row[ColLanguage];
    if (kind.multiValueFields) {
        for (int f = 0; f < 6; ++f)
            data.multiValues[f] = StringToStringArray(ctx, row[ColSensor + f], QStringLiteral("/"));
    }
    const QString html = SingleLineDBToMultiLineHTML(ctx, row[ColText]);
    data.textLines = breaker.TextSingleLineToArray(ctx, html, data.fontName, data.fontSize, data.fontWeight, lineWidth);
    return data;
}

bool HtmlRun::writeKind(Database &db, const HtmlKind &kind, const QString &machine, const QString &language,
                        long itemNumber)
{
    const QStringList templateLines = GetTextFileHTML(ctx, mainDir + kind.templateName, true, false);
    if (templateLines.isEmpty() || templateLines.first().isEmpty()) {
        if (ctx.state.unattended || !ctx.ui)
            LogError(ctx, kind.missingLogged);
        else
            ctx.ui->messageBox(kind.missingShown, Buttons::OK, Icon::Critical, QString());
        return true;
    }

    StatusTickNewText(ctx, form, QStringLiteral("Reading database..."));
    const std::vector<QStringList> rows = loadRows(db, kind, machine, language, itemNumber);

    // The template with the index texts of each language in place, and one page buffer for the run.
    std::map<QString, PreparedTemplate> templates;
    QString page;
    const QChar sep = pathSeparator();
    const QString tickPrefix = QStringLiteral("Generating Help-HTML  -  ") + kind.word + QStringLiteral(" (");
    for (const QStringList &row : rows) {
        const QString &rowMachine = row[ColMachine];
        const QString &rowNumber = row[ColNumber];
        const QString &rowLanguage = row[ColName];
        StatusTickNewText(ctx, form,
                          tickPrefix + rowMachine + QLatin1Char('/') + rowNumber + QStringLiteral(") ") + suffix);
        if (!isUsableName(QStringLiteral("machine"), rowMachine) ||
            !isUsableName(QStringLiteral("language"), rowLanguage) || !isUsableName(QStringLiteral("item"), rowNumber))
            continue;
        const QString pageDir = mainDir + rowMachine + sep + kind.word + sep + rowLanguage;
        const QString pagePath = pageDir + sep + rowNumber + QStringLiteral(".html");
        // A folder this run made holds only the pages it wrote: no need to look for others.
        const bool newFolder = createdDirs.contains(pageDir);
        const QStringList existing = newFolder && !writtenPages.contains(pagePath)
                                         ? QStringList{QStringLiteral("-1")}
                                         : GetTextFileHTML(ctx, pagePath, false, true);
        const bool noPage = existing.size() == 1 && existing.first() == QLatin1String("-1");
        const bool generatedPage = existing.size() == 1 && existing.first().isEmpty();

        const bool allEmpty = kind.multiValueFields
                                  ? row[ColDevice].isEmpty() && row[ColResult].isEmpty() && row[ColText].isEmpty()
                                  : row[ColText].isEmpty();
        if (allEmpty) {
            if (generatedPage && isPathInside(mainDir, pagePath))
                QFile::remove(pagePath);
            continue;
        }
        if (ctx.state.abortHtml)
            return false;
        if (ctx.processEvents)
            ctx.processEvents();
        if (!noPage && !generatedPage)
            continue; // made by hand: never overwritten

        const PageData data = pageData(kind, row);
        auto prepared = templates.find(data.languageNumber);
        if (prepared == templates.end()) {
            bool indexTextLost = false;
            PreparedTemplate t(ctx, kind, templateLines, data.languageNumber, indexTexts, indexTextLost);
            if (indexTextLost)
                return indexTextDatabaseLost();
            prepared = templates.emplace(data.languageNumber, std::move(t)).first;
        }
        page.resize(0);
        page += QChar(0xFEFF);
        if (!prepared->second.appendPage(data, page)) {
            bool indexTextLost = false;
            const QStringList lines = fillPageTemplate(ctx, kind, templateLines, data, indexTexts, indexTextLost);
            if (indexTextLost)
                return indexTextDatabaseLost();
            appendTextLines(lines, page);
        }
        // Rows of a machine or language that the tree does not know yet get their folders now.
        if (!readyPageDirs.contains(pageDir)) {
            if (!ensurePageDirectory(rowMachine, kind.word, rowLanguage))
                return false;
            readyPageDirs.insert(pageDir);
        }
        // The folder was checked to lie inside the help directory, the file name is a safe name.
        if (!writeHtmlPageText(pagePath, page))
            throw std::runtime_error(("Cannot write " + pagePath).toStdString());
        if (createdDirs.contains(pageDir))
            writtenPages.insert(pagePath);
    }
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
        return;
    }
    if (!mainDir.endsWith(QLatin1Char('/')) && !mainDir.endsWith(QLatin1Char('\\')))
        mainDir += pathSeparator();

    std::unique_ptr<Database> db = Database::open(ctx.state.helpTextDB, Database::Mode::ReadOnly);

    const QString project = ctx.state.standardIndexTextDB.right(3).toUpper();
    suffix = project == QLatin1String("MDB")   ? QStringLiteral(" (NT)")
             : project == QLatin1String("VWS") ? QStringLiteral(" (XP)")
                                               : QString();
    StatusStart(ctx, form, QStringLiteral("Generating Help-HTML") + suffix, 0, false);
    if (form)
        form->setPanelText(QStringLiteral("   Generating Help-HTML - press ESC to cancel ") + suffix);
    if (ctx.state.abortHtml || !createDirectoryTree(*db)) {
        stop();
        return;
    }

    const std::pair<bool, ItemKind> kinds[] = {
        {alarms, KindAlarms}, {warnings, KindWarnings}, {materialChange, KindMaterialChange}};
    for (const auto &[wanted, kind] : kinds) {
        if (wanted && !writeKind(*db, htmlKind(kind), machine, language, itemNumber))
            break;
    }
    stop();
}

} // namespace

void WriteHTMLPage(Context &ctx, StatusTarget *form, bool &alarms, bool &warnings, bool &materialChange,
                   const QString &machine, const QString &language, long itemNumber)
{
    try {
        if (ctx.state.helpTextDB.isEmpty()) {
            LogError(ctx, QStringLiteral("Helptext-Database not set"));
            return;
        }
        const int kinds = int(alarms) + int(warnings) + int(materialChange);
        if (kinds == 0)
            return;
        const int given = int(!machine.isEmpty()) + int(!language.isEmpty()) + int(itemNumber != 0);
        if ((kinds > 1 && given > 0) || (kinds == 1 && given != 0 && given != 3)) {
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
        StatusEnd(ctx, form);
        reportUnexpected(ctx, kProc, e);
    }
}

void setHtmlEventInterval(int milliseconds)
{
    eventIntervalMs = std::max(0, milliseconds);
}

} // namespace ht
