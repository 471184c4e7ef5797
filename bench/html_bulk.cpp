// Bulk page generation against a plain program that writes the same bytes to
// the same paths. Usage: bench_html_bulk [scale [rounds [writer]]]   (scale
// 0 < s <= 1, default 1: five machines x (256 alarms + 256 warnings + 1000
// material changes) x ten languages; rounds per measurement, default 2;
// "writer": one run of the writer alone). The pages go below $TMPDIR (/tmp).

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/StatusDisplay.h"
#include "database/Database.h"
#include "html/HtmlWriter.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sys/resource.h>
#include <sys/vfs.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace ht;
using Clock = std::chrono::steady_clock;

namespace
{

const char *const kLanguages[10] = {"English", "German",  "French", "Italian", "Spanish",
                                    "Dutch",   "Swedish", "Polish", "Czech",   "Russian"};
const char *const kWords[16] = {"check",  "the",    "conveyor", "belt",   "tension", "before",  "restarting", "drive",
                                "sensor", "signal", "missing",  "reject", "station", "cleaned", "carefully",  "now"};

void execAll(Database &db, const QStringList &statements)
{
    for (const QString &s : statements)
        db.exec(s);
}

QString itemText(int machine, int number, int language, int kind)
{
    // 20 to 60 words with a stored line break now and then: one to three panel lines.
    QString text = QStringLiteral("M%1-%2 ").arg(machine).arg(number);
    const int words = 20 + (number * 7 + language * 3 + kind) % 41;
    for (int w = 0; w < words; ++w) {
        text += QString::fromLatin1(kWords[(number + w * 5 + language) % 16]);
        text += (w % 17 == 16) ? QStringLiteral("/ ") : QStringLiteral(" ");
    }
    return text + QString::fromLatin1(kLanguages[language]);
}

void createDatabases(const QString &dir, double scale, Context &ctx)
{
    const int alarms = std::max(1, int(256 * scale)), warnings = alarms, changes = std::max(1, int(1000 * scale));
    ctx.state.helpTextDB = dir + QStringLiteral("/helptext.sqlite");
    auto db = Database::create(ctx.state.helpTextDB);
    Database::Transaction t(*db);
    execAll(*db, {QStringLiteral("CREATE TABLE AlarmDefinition (AlarmID INTEGER PRIMARY KEY, MachineType TEXT COLLATE "
                                 "NOCASE, AlarmNo INTEGER, Sensor TEXT, Cam TEXT, CPU TEXT, Rejects TEXT)"),
                  QStringLiteral("CREATE TABLE AlarmText (Alarm_ID INTEGER, Language INTEGER, Device TEXT, Result "
                                 "TEXT, \"Function\" TEXT)"),
                  QStringLiteral("CREATE TABLE WarningDefinition (WarningID INTEGER PRIMARY KEY, MachineType TEXT "
                                 "COLLATE NOCASE, WarningNo INTEGER)"),
                  QStringLiteral("CREATE TABLE WarningText (Warning_ID INTEGER, Language INTEGER, \"Function\" TEXT)"),
                  QStringLiteral("CREATE TABLE MaterialChangeDefinition (MaterialChangeID INTEGER PRIMARY KEY, "
                                 "MachineType TEXT COLLATE NOCASE, MaterialChangeNo INTEGER)"),
                  QStringLiteral("CREATE TABLE MaterialChangeText (MaterialChange_ID INTEGER, Language INTEGER, Text "
                                 "TEXT)"),
                  QStringLiteral("CREATE TABLE Language (Language INTEGER PRIMARY KEY, Name TEXT COLLATE NOCASE, Font "
                                 "TEXT, KBLayout TEXT)")});
    for (int l = 0; l < 10; ++l)
        db->exec(QStringLiteral("INSERT INTO Language VALUES (?, ?, ?, '')"),
                 {l + 1, QString::fromLatin1(kLanguages[l]),
                  l == 9 ? QStringLiteral("Times New Roman 10 700") : QStringLiteral("Arial 10 400")});
    int id = 0;
    for (int m = 1; m <= 5; ++m) {
        const QString machine = QStringLiteral("Machine%1").arg(m);
        for (int n = 1; n <= alarms; ++n) {
            ++id;
            db->exec(QStringLiteral("INSERT INTO AlarmDefinition VALUES (?, ?, ?, ?, ?, ?, ?)"),
                     {id, machine, n, QStringLiteral("B%1/B%2").arg(n).arg(n + 1), QStringLiteral("K1"), QString(),
                      QStringLiteral("R%1").arg(n % 4)});
            for (int l = 0; l < 10; ++l)
                db->exec(QStringLiteral("INSERT INTO AlarmText VALUES (?, ?, ?, ?, ?)"),
                         {id, l + 1, QStringLiteral("Motor %1").arg(n), QStringLiteral("Stop"), itemText(m, n, l, 1)});
        }
        for (int n = 1; n <= warnings; ++n) {
            ++id;
            db->exec(QStringLiteral("INSERT INTO WarningDefinition VALUES (?, ?, ?)"), {id, machine, n});
            for (int l = 0; l < 10; ++l)
                db->exec(QStringLiteral("INSERT INTO WarningText VALUES (?, ?, ?)"), {id, l + 1, itemText(m, n, l, 2)});
        }
        for (int n = 1; n <= changes; ++n) {
            ++id;
            db->exec(QStringLiteral("INSERT INTO MaterialChangeDefinition VALUES (?, ?, ?)"), {id, machine, n});
            for (int l = 0; l < 10; ++l)
                db->exec(QStringLiteral("INSERT INTO MaterialChangeText VALUES (?, ?, ?)"),
                         {id, l + 1, itemText(m, n, l, 3)});
        }
    }
    t.commit();

    ctx.state.langLookupDB = dir + QStringLiteral("/languages.sqlite");
    auto lookup = Database::create(ctx.state.langLookupDB);
    lookup->exec(QStringLiteral("CREATE TABLE LookupLanguages (Language INTEGER PRIMARY KEY, Name TEXT COLLATE "
                                "NOCASE, Font TEXT, KBLayout TEXT, CodePage INTEGER, SubstBy INTEGER)"));
    for (int l = 0; l < 10; ++l)
        lookup->exec(QStringLiteral("INSERT INTO LookupLanguages VALUES (?, ?, 'Arial 10 400', '', ?, NULL)"),
                     {l + 1, QString::fromLatin1(kLanguages[l]), l == 9 ? 1251 : 1252});

    ctx.state.indexTextDB = dir + QStringLiteral("/index.sqlite");
    auto index = Database::create(ctx.state.indexTextDB);
    QStringList columns;
    for (int l = 1; l <= 10; ++l)
        columns << QStringLiteral("L%1 TEXT").arg(l);
    execAll(*index, {QStringLiteral("CREATE TABLE TidxGroups (ID INTEGER PRIMARY KEY, ParentID INTEGER, Name TEXT)"),
                     QStringLiteral("CREATE TABLE TidxTexts (ID INTEGER PRIMARY KEY, ParentID INTEGER, Name TEXT, ") +
                         columns.join(QStringLiteral(", ")) + QStringLiteral(")"),
                     QStringLiteral("INSERT INTO TidxGroups VALUES (1, 0, 'Feeder')"),
                     QStringLiteral("INSERT INTO TidxGroups VALUES (2, 1, 'Motor')"),
                     QStringLiteral("INSERT INTO TidxTexts (ID, ParentID, Name, L1, L2) VALUES (1, 2, 'Speed', 'Belt "
                                    "speed', 'Bandgeschwindigkeit')")});
}

void writeTemplate(const QString &path, const QStringList &lines)
{
    QString text(QChar(0xFEFF));
    for (const QString &l : lines)
        text += l + QStringLiteral("\r\n");
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

void writeTemplates(const QString &help)
{
    const QStringList head{QStringLiteral("<HTML>"),
                           QStringLiteral("<HEAD>"),
                           QStringLiteral("<TITLE>Help - Harko & Co</TITLE>"),
                           QStringLiteral("<STYLE>BODY { font-family: \"###FONT###\"; font-size: ###SIZE###pt; "
                                          "font-weight: ###WEIGHT###; }</STYLE>"),
                           QStringLiteral("</HEAD>"),
                           QStringLiteral("<BODY>")};
    const QStringList tail{QStringLiteral("</BODY>"), QStringLiteral("</HTML>")};
    QStringList alarms = head;
    for (const char *field : {"SENSOR", "CAM", "CPU", "REJECTS", "DEVICE", "RESULT"}) {
        QString row = QStringLiteral("<TR><TD>%1</TD>").arg(QString::fromLatin1(field));
        for (int i = 1; i <= 4; ++i)
            row += QStringLiteral("<TD>###%1.%2###</TD>").arg(QString::fromLatin1(field)).arg(i);
        alarms << row + QStringLiteral("</TR>");
    }
    alarms << QStringLiteral("<P>Speed: ###DIREKT:Feeder.Motor.Speed###</P>") << QStringLiteral("<P>")
           << QStringLiteral("###FUNCTION###") << QStringLiteral("</P>") << tail;
    writeTemplate(help + QStringLiteral("Source_Alarms.html"), alarms);
    writeTemplate(help + QStringLiteral("Source_Warnings.html"),
                  head + QStringList{QStringLiteral("<P>"), QStringLiteral("###FUNCTION###"), QStringLiteral("</P>")} +
                      tail);
    writeTemplate(help + QStringLiteral("Source_MaterialChange.html"),
                  head + QStringList{QStringLiteral("<P>"), QStringLiteral("###TEXT###"), QStringLiteral("</P>")} +
                      tail);
}

using Pages = std::vector<std::pair<QString, QByteArray>>;

Pages collectPages(const QString &help)
{
    Pages pages;
    QDirIterator it(help, {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (QFileInfo(path).path() + QLatin1Char('/') == help)
            continue; // templates
        QFile f(path);
        f.open(QIODevice::ReadOnly);
        pages.emplace_back(path, f.readAll());
    }
    std::sort(pages.begin(), pages.end()); // a folder lists its files in no fixed order
    return pages;
}

// What any program writing these pages must do at least: make the folders and write the bytes.
void plainWrite(const Pages &pages)
{
    QString lastDir;
    for (const auto &[path, bytes] : pages) {
        const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
        const QString dir = path.left(slash);
        if (dir != lastDir) {
            QDir().mkpath(dir);
            lastDir = dir;
        }
        std::FILE *f = std::fopen(QFile::encodeName(path).constData(), "wb");
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), f);
        std::fclose(f);
    }
}

double seconds(Clock::time_point from)
{
    return std::chrono::duration<double>(Clock::now() - from).count();
}

// User plus system time of this process so far, all threads: the part of a
// run that does not wait for the disk.
double cpuSeconds(bool userOnly = false)
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    const double user = double(u.ru_utime.tv_sec) + double(u.ru_utime.tv_usec) / 1e6;
    return userOnly ? user : user + double(u.ru_stime.tv_sec) + double(u.ru_stime.tv_usec) / 1e6;
}

struct Timing {
    double wall = 1e9, cpu = 1e9, user = 1e9;
    std::vector<double> walls; // every round, to show the spread
};

// Each run starts with the disk's dirty pages written out: the writeback of an
// earlier run must not land on whichever side runs next.
template <typename F> void measure(Timing &t, F &&run)
{
    sync();
    const auto start = Clock::now();
    const double cpu = cpuSeconds(), user = cpuSeconds(true);
    run();
    t.walls.push_back(seconds(start));
    t.wall = std::min(t.wall, t.walls.back());
    t.cpu = std::min(t.cpu, cpuSeconds() - cpu);
    t.user = std::min(t.user, cpuSeconds(true) - user);
}

void runWriter(Context &ctx)
{
    bool alarms = true, warnings = true, materialChange = true;
    HeadlessStatus status;
    WriteHTMLPage(ctx, &status, alarms, warnings, materialChange, QString(), QString(), 0);
}

} // namespace

const char *fileSystemName(const QString &dir)
{
    struct statfs fs {
    };
    if (statfs(QFile::encodeName(dir).constData(), &fs) != 0)
        return "unknown";
    switch (static_cast<unsigned long>(fs.f_type)) {
    case 0xEF53:
        return "ext2/3/4";
    case 0x01021994:
        return "tmpfs";
    case 0x58465342:
        return "xfs";
    case 0x9123683E:
        return "btrfs";
    case 0x794C7630:
        return "overlayfs";
    default:
        return "other";
    }
}

// How the figures came about: they depend on the build, the disk and what
// else the machine is doing, so every run says so.
void printConditions(const QString &dir, double scale, int rounds)
{
    double load[3] = {0, 0, 0};
    getloadavg(load, 3);
    std::printf("build: %s, %s; %u cores, load average %.2f at start\n", HELPTEXT_BUILD_TYPE, __VERSION__,
                std::thread::hardware_concurrency(), load[0]);
    std::printf("pages in %s (%s); scale %.3f; each side %d rounds, alternating, the fastest counts; "
                "sync before every run\n",
                qPrintable(dir), fileSystemName(dir), scale, rounds);
}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const double scale = argc > 1 ? std::clamp(std::atof(argv[1]), 0.001, 1.0) : 1.0;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 2;

    QTemporaryDir tmp;
    Context ctx;
    ctx.programDir = tmp.path();
    ctx.programName = QStringLiteral("bench");
    ctx.state.unattended = true;
    ctx.state.screenResolution = QStringLiteral("1024");
    ctx.processEvents = [] { QCoreApplication::processEvents(); };
    ctx.endProgram = [](int code) { throw ProgramEnded{code}; };

    printConditions(tmp.path(), scale, rounds);
    std::printf("creating databases...\n");
    createDatabases(tmp.path(), scale, ctx);
    const QString help = tmp.path() + QStringLiteral("/help/");
    QDir().mkpath(help);
    writeTemplates(help);
    ctx.state.helpMainDir = help;

    // The file system's cost varies from run to run: each side runs `rounds`
    // times, alternating, and the fastest run of each counts.
    // Earlier trees are moved aside, not deleted: deleting thousands of files
    // leaves the file system work that would land on whichever side runs next.
    int trashCount = 0;
    auto removeTree = [&] {
        const QString trash = tmp.path() + QStringLiteral("/trash%1/").arg(++trashCount);
        QDir().mkpath(trash);
        for (const QString &machine : QDir(help).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            QDir().rename(help + machine, trash + machine);
    };
    // "writer" as the third argument: one fresh run of the writer and nothing
    // else, for a profiler.
    if (argc > 3 && qstrcmp(argv[3], "writer") == 0) {
        Timing t;
        timespec from{}, to{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &from);
        measure(t, [&] { runWriter(ctx); });
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &to);
        const double own = double(to.tv_sec - from.tv_sec) + double(to.tv_nsec - from.tv_nsec) / 1e9;
        std::printf("writer alone: %.2f s, cpu %.2f s (of which the calling thread %.2f s), user %.2f s\n", t.wall,
                    t.cpu, own, t.user);
        return 0;
    }
    Pages pages;
    Timing writerFresh, plainFresh, writerExisting, plainExisting;
    for (int r = 0; r < rounds; ++r) {
        removeTree();
        measure(writerFresh, [&] { runWriter(ctx); });
        if (pages.empty())
            pages = collectPages(help);
        removeTree();
        measure(plainFresh, [&] { plainWrite(pages); });
    }
    bool sameOverExisting = true;
    for (int r = 0; r < rounds; ++r) {
        measure(writerExisting, [&] { runWriter(ctx); });
        // Checked before the plain program writes its copy over the writer's pages.
        if (r == 0)
            sameOverExisting = collectPages(help) == pages;
        measure(plainExisting, [&] { plainWrite(pages); });
    }
    if (!sameOverExisting)
        std::printf("WARNING: the second run wrote different pages\n");
    qint64 bytes = 0;
    for (const auto &p : pages)
        bytes += p.second.size();

    const QByteArray log = [&] {
        QFile f(errorLogPath(ctx));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }();
    std::printf("%zu pages, %.1f MB\n", pages.size(), double(bytes) / 1e6);
    auto rounds_ = [](const Timing &t) {
        QStringList all;
        for (double s : t.walls)
            all << QString::number(s, 'f', 2);
        return all.join(QLatin1Char(' '));
    };
    auto report = [&](const char *what, const Timing &w, const Timing &p, double limit) {
        std::printf("%s writer %.2f s, plain %.2f s, ratio %.2f (limit %.1f); cpu: writer %.2f s, plain %.2f s; "
                    "user: writer %.2f s, plain %.2f s; rounds: writer %s, plain %s\n",
                    what, w.wall, p.wall, w.wall / p.wall, limit, w.cpu, p.cpu, w.user, p.user, qPrintable(rounds_(w)),
                    qPrintable(rounds_(p)));
    };
    report("fresh:   ", writerFresh, plainFresh, 1.5);
    report("existing:", writerExisting, plainExisting, 2.0);
    if (!log.isEmpty())
        std::printf("error log:\n%s\n", log.constData());
    return 0;
}
