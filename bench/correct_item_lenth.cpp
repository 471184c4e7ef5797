// Timing of the table rebuild on a full help-text database: five machines,
// ten languages, 5 x 256 alarms and warnings and 5 x 1000 material changes
// with a text in every language, each kind grown by a few rows per machine;
// then the same on a copy without any index (a customer's own file).
//   bench_correct_item_lenth [work directory]
#include "common/Context.h"
#include "database/Database.h"
#include "database/HelpTextDatabase.h"
#include "database/ItemCounts.h"
#include "support/FullDatabase.h"
#include "support/Timing.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <filesystem>

using namespace ht;
using bench::Clock;
using bench::msSince;

namespace
{

const std::filesystem::path kSchemaDir = std::filesystem::path(HELPTEXT_SOURCE_DIR) / "src" / "database" / "schema";

QString script(const char *name)
{
    QFile f(QString::fromStdString((kSchemaDir / name).string()));
    if (!f.open(QIODevice::ReadOnly))
        throw DbError(std::string("cannot read schema script ") + name);
    return QString::fromUtf8(f.readAll());
}

void makeFullDatabase(const QString &path)
{
    auto db = Database::create(path);
    Database::Transaction t(*db);
    db->execScript(script("helptext.sql"));
    db->execScript(script("helptext_materialchange.sql"));
    const char *machines[] = {"PM-1", "PM-2", "Füller 3", "Kartonierer 4", "機械5"};
    const struct {
        const char *definition, *id, *text, *textId, *fields;
        int perBlock;
    } kinds[] = {
        {"AlarmDefinition", "AlarmID", "AlarmText", "Alarm_ID", "Device, Result, Function", 256},
        {"WarningDefinition", "WarningID", "WarningText", "Warning_ID", "Function", 256},
        {"MaterialChangeDefinition", "MaterialChangeID", "MaterialChangeText", "MaterialChange_ID", "Text", 1000}};
    for (const auto &k : kinds) {
        for (int b = 0; b < 5; ++b)
            db->exec(QStringLiteral("UPDATE %1 SET MachineType = ? WHERE %2 BETWEEN ? AND ?").arg(k.definition, k.id),
                     {QString::fromUtf8(machines[b]), b * k.perBlock + 1, (b + 1) * k.perBlock});
    }
    for (int language = 1; language <= 10; ++language) {
        db->exec(QStringLiteral("INSERT INTO Language (Language, Name, Font) VALUES (?, ?, 'Arial 10 400')"),
                 {1030 + language, QStringLiteral("Language %1").arg(language)});
        for (const auto &k : kinds) {
            const int fieldCount = QString::fromLatin1(k.fields).count(u',') + 1;
            QStringList values;
            for (int f = 0; f < fieldCount; ++f)
                values << QStringLiteral("'Help text of item ' || %1 || ' in language %2, long enough to be real'")
                              .arg(QString::fromLatin1(k.id))
                              .arg(language);
            db->exec(QStringLiteral("INSERT INTO %1 (%2, Language, %3) SELECT %4, ?, %5 FROM %6")
                         .arg(k.text, k.textId, k.fields, k.id, values.join(QStringLiteral(", ")), k.definition),
                     {1030 + language});
        }
    }
    t.commit();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir temp;
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : temp.path();
    Context ctx;
    ctx.programDir = dir;
    ctx.programName = QStringLiteral("bench");
    try {
        // Once as the program makes the database, once with no index at all (a customer's own file).
        for (const bool plain : {false, true}) {
            const QString path =
                dir + (plain ? QStringLiteral("/FullNoIndexes.sqlite") : QStringLiteral("/Full.sqlite"));
            QFile::remove(path);
            auto start = Clock::now();
            makeFullDatabase(path);
            if (plain)
                bench::dropIndexes(path);
            std::printf("%s: make full database (%lld bytes): %9.1f ms\n", plain ? "no indexes" : "with indexes",
                        static_cast<long long>(QFile(path).size()), msSince(start));
            ctx.state.helpTextDB = path;

            const struct {
                const char *word;
                long count;
            } runs[] = {{"MaterialChange", 1050}, {"Alarm", 300}, {"Warning", 280}, {"MaterialChange", 1200}};
            for (const auto &r : runs) {
                long count = r.count;
                start = Clock::now();
                const long result = CorrectItemLenth(ctx, QString::fromLatin1(r.word), count);
                std::printf("CorrectItemLenth %-15s to %5ld per machine: %9.1f ms (result %ld)\n", r.word, r.count,
                            msSince(start), result);
            }

            start = Clock::now();
            const QString checked = CheckConnection(ctx, path);
            std::printf("CheckConnection on the rebuilt database:          %9.1f ms (%s)\n", msSince(start),
                        checked == path ? "ok" : "failed");
        }
    } catch (const ProgramEnded &) {
        std::printf("stopped by an unexpected error, see %s/benchError.log\n", qPrintable(dir));
        return 1;
    }
    return 0;
}
