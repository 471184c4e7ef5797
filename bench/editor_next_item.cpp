// Times what the translator waits for when moving to the next item in the
// editor's real window (offscreen): the source texts, the destination texts
// with the look at the item's help page, the definition values and the fonts
// of both languages. A full help-text database: five machines, ten languages;
// every page of the machine shown exists, as written by the page writer.
// Usage: bench_editor_next_item [items]   (default 256: every alarm of a machine)
#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/ScriptedUserInterface.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "editor/forms/EditorWindow.h"
#include "html/HtmlWriter.h"
#include "startup/StartupDialog.h"
#include "support/FullDatabase.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using namespace ht;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int items = argc > 1 ? std::clamp(std::atoi(argv[1]), 2, 256) : 256;
    QTemporaryDir dir;
    Context ctx;
    ScriptedUserInterface ui;
    ctx.ui = &ui;
    ctx.programDir = dir.path();
    ctx.programName = QStringLiteral("bench");
    ctx.processEvents = [] { QCoreApplication::processEvents(); };
    AppState &s = ctx.state;
    s.mode = QStringLiteral("EDIT");
    s.iniPath = dir.filePath(QStringLiteral("bench.ini"));
    s.helpMainDir = dir.filePath(QStringLiteral("help/"));
    s.screenResolution = QStringLiteral("1024");
    QDir().mkpath(s.helpMainDir);
    for (const char *name : {"Source_Alarms.html", "Source_Warnings.html", "Source_MaterialChange.html"})
        QFile::copy(bench::templatesDir() + QLatin1Char('/') + QLatin1String(name),
                    s.helpMainDir + QLatin1String(name));

    // The alarm template's index-text addresses need a database, even an empty one.
    s.indexTextDB = dir.filePath(QStringLiteral("Scopia.mdb"));
    Database::create(s.indexTextDB)->execScript(bench::schemaScript("indextext.sql"));
    const QString db = dir.filePath(QStringLiteral("Helptext.mdb"));
    bench::makeFullDatabase(db, 10);
    if (CheckConnection(ctx, db).isEmpty()) {
        std::fprintf(stderr, "the database was refused\n");
        return 1;
    }
    bool alarms = true, warnings = false, materialChange = false;
    WriteHTMLPage(ctx, nullptr, alarms, warnings, materialChange, QString(), QString(), 0);
    const QString pages = s.helpMainDir + QStringLiteral("Machine 5/Alarms/LANGUAGE 10/");
    if (!QFile::exists(pages + QStringLiteral("2.html"))) {
        QFile log(errorLogPath(ctx));
        log.open(QIODevice::ReadOnly);
        std::fprintf(stderr, "the pages were not written (%s): %s\n", qPrintable(pages), log.readAll().constData());
        return 1;
    }

    // The last machine and language: their rows are the last of every table.
    QFile ini(s.iniPath);
    if (ini.open(QIODevice::WriteOnly))
        ini.write("[Defaults]\nItem=1\nIndex=1\nMachine=Machine 5\nLanguageDestination=LANGUAGE 10\n");
    ini.close();
    StartupSession session;
    EditorWindow window(ctx, session);
    window.show();
    QCoreApplication::processEvents();
    auto *number = window.findChild<QComboBox *>(QStringLiteral("ComboIndex"));

    std::vector<double> times;
    for (int n = 2; n <= items; ++n) {
        const auto start = std::chrono::steady_clock::now();
        number->setEditText(QString::number(n));
        window.logic().ComboIndex_KeyDown(13);
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("Next item in the editor (full database: 5 machines, 10 languages; %zu items, pages present): "
                "median %.2f ms, 90th percentile %.2f ms, max %.2f ms\n",
                times.size(), times[times.size() / 2], times[times.size() * 9 / 10], times.back());
    return 0;
}
