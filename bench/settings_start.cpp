// Times the settings reads and writes of one program start on a large settings file:
// the keys the start-up reads, the three booleans it writes straight back and the
// database path it saves. Prints the time and the peak memory of the process.
// Usage: bench_settings_start [lines|blank|long] [megabytes]
//   lines: [Setup] first, then short key lines; blank: empty lines; long: one comment line.
#include "common/Context.h"
#include "common/IniFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>

using namespace ht;

namespace
{

QByteArray filler(const QByteArray &shape, qint64 bytes)
{
    QByteArray out;
    out.reserve(bytes + 64);
    if (shape == "blank")
        out.fill('\n', bytes);
    else if (shape == "long")
        out = "; " + QByteArray(bytes, 'x') + "\r\n";
    else
        for (int i = 0; out.size() < bytes; ++i)
            out += "[Junk" + QByteArray::number(i / 1000) + "]\r\nKey" + QByteArray::number(i) + "=value\r\n";
    return out;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QByteArray shape = argc > 1 ? QByteArray(argv[1]) : QByteArray("lines");
    const qint64 megabytes = argc > 2 ? std::atoll(argv[2]) : 10;
    QTemporaryDir dir;
    const QString ini = dir.filePath(QStringLiteral("helptext.ini"));
    {
        QFile f(ini);
        if (!f.open(QIODevice::WriteOnly))
            return 1;
        f.write("[Setup]\r\nStandardHelpTextDB=/data/Helptext.mdb\r\nGenerateHTMLAfterEditAlarm=true\r\n"
                "GenerateHTMLAfterEditWarnings=false\r\n");
        f.write(filler(shape, megabytes << 20));
        // A settings file is older than the start that reads it.
        f.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime);
    }
    Context ctx;
    ctx.state.unattended = true;
    const QString setup = QStringLiteral("Setup");
    double readMs = 0, writeMs = 0, firstMs = 0;
    auto timed = [](double &sum, auto &&f) {
        const auto start = std::chrono::steady_clock::now();
        auto result = f();
        sum += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        return result;
    };
    auto read = [&](const char *key) {
        return timed(readMs, [&] { return LoadIniString(ctx, setup, QLatin1String(key), ini); });
    };
    auto write = [&](const QVariant &value, const char *key) {
        return timed(writeMs, [&] { return SaveIni(ctx, value, setup, QLatin1String(key), ini); });
    };
    read("StandardHelpTextDB");
    firstMs = readMs;
    for (const char *key : {"StandardIndexTextDB", "StandardLangLookupDB", "StandardScopiaHelpDir"})
        read(key);
    for (const char *key :
         {"GenerateHTMLAfterEditAlarm", "GenerateHTMLAfterEditWarnings", "GenerateHTMLAfterEditMaterialChange"})
        write(read(key).compare(QLatin1String("true"), Qt::CaseInsensitive) == 0, key);
    read("XLAlarmsWarnings");
    read("XLMaterialChange");
    write(QStringLiteral("/data/Other.mdb"), "StandardHelpTextDB");
    read("HelpMainDir");
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%s, %lld MB settings file: %.0f ms in all; 10 reads %.0f ms (the first %.0f ms), 4 writes %.0f ms "
                "(one changes the file); peak memory of the process %ld MB\n",
                shape.constData(), megabytes, readMs + writeMs, readMs, firstMs, writeMs, usage.ru_maxrss / 1024);
    return 0;
}
