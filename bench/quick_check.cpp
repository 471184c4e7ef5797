// Times the integrity check a help-text or language-definition database gets before it
// is used (Database::checkIntact, SQLite's quick_check) on a full help-text database:
// five machines of 256 alarms, 256 warnings and 1000 material-change items, with texts
// in several languages. The file is in the disk cache, as right after it was picked.
// Usage: bench_quick_check [languages] [rounds]
#include "database/Database.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using namespace ht;

namespace
{

QString schemaScript(const char *name)
{
    QFile f(QFileInfo(QStringLiteral(__FILE__)).absolutePath() + QStringLiteral("/../src/database/schema/") +
            QLatin1String(name));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// A help text of about `length` characters, different for every item and language.
QString text(int id, int language, int length)
{
    QString t = QStringLiteral("Item %1, language %2: ").arg(id).arg(language);
    while (t.size() < length)
        t += QStringLiteral("check the sensor at station %1 and the cam setting, then restart the machine. ").arg(id);
    return t.left(length);
}

void makeFullDatabase(const QString &path, int languages)
{
    auto db = Database::create(path);
    Database::Transaction t(*db);
    db->execScript(schemaScript("helptext.sql") + schemaScript("helptext_materialchange.sql"));
    for (const char *table : {"AlarmDefinition", "WarningDefinition", "MaterialChangeDefinition"})
        db->exec(
            QStringLiteral("UPDATE %1 SET MachineType = 'Machine ' || ((rowid - 1) * 5 / (SELECT COUNT(*) FROM %1) "
                           "+ 1)")
                .arg(QLatin1String(table)));
    const auto ids = [&](const char *sql) {
        std::vector<int> out;
        for (const QVariantList &row : db->query(QLatin1String(sql)).rows())
            out.push_back(row[0].toInt());
        return out;
    };
    const std::vector<int> alarms = ids("SELECT AlarmID FROM AlarmDefinition"),
                           warnings = ids("SELECT WarningID FROM WarningDefinition"),
                           changes = ids("SELECT MaterialChangeID FROM MaterialChangeDefinition");
    for (int l = 1; l <= languages; ++l) {
        const int number = 1030 + l;
        db->exec(QStringLiteral("INSERT INTO Language VALUES (?, ?, 'Arial 10 400', '00000407')"),
                 {number, QStringLiteral("LANGUAGE %1").arg(l)});
        for (int id : alarms)
            db->exec(QStringLiteral("INSERT INTO AlarmText VALUES (?, ?, ?, ?, ?)"),
                     {id, number, text(id, l, 60), text(id, l, 200), text(id, l, 300)});
        for (int id : warnings)
            db->exec(QStringLiteral("INSERT INTO WarningText VALUES (?, ?, ?)"), {id, number, text(id, l, 300)});
        for (int id : changes)
            db->exec(QStringLiteral("INSERT INTO MaterialChangeText VALUES (?, ?, ?)"), {id, number, text(id, l, 200)});
    }
    t.commit();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int languages = argc > 1 ? std::max(1, std::atoi(argv[1])) : 6;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 20;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Helptext.mdb"));
    makeFullDatabase(path, languages);
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        auto db = Database::open(path, Database::Mode::ReadOnly);
        const auto start = std::chrono::steady_clock::now();
        db->checkIntact();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("quick_check of a full help-text database (%d languages, %lld bytes): median %.1f ms, min %.1f ms, "
                "max %.1f ms (%d rounds)\n",
                languages, QFileInfo(path).size(), times[times.size() / 2], times.front(), times.back(), rounds);
    return 0;
}
