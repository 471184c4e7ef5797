// Times the checks of one alarm while the translator types: every check of its
// three fields (width in the language's font and spelling with the German
// dictionary included) after each key of a Function text typed key by key.
// Usage: bench_review_item [keys]
#include "common/Context.h"
#include "review/ItemChecker.h"
#include "support/Timing.h"

#include <QGuiApplication>
#include <cstdio>

using namespace ht;
using namespace ht::bench;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int keys = argc > 1 ? std::max(1, std::atoi(argv[1])) : 400;
    Context ctx;
    ItemChecker checker(ctx, {922, 922, QStringLiteral("10")});
    const CheckLanguage german{QStringLiteral("1031"), QStringLiteral("Deutsch"), QStringLiteral("Arial 10 400")};
    const QString source =
        QStringLiteral("The main drive reports an overload at 24 V./Check the brake M12 and the belt "
                       "tension, then acknowledge the alarm. ");
    const QString typed = QStringLiteral("Der Hauptantrieb meldet Überlast bei 24 V./Bremse M12 und Riemenspannung "
                                         "prüfen, dann den Alarm quittieren. ")
                              .repeated(4);
    std::vector<FieldTexts> fields{
        {QStringLiteral("Device"), QStringLiteral("Main drive/Brake"), QStringLiteral("Hauptantrieb/Bremse"), {}},
        {QStringLiteral("Result"), QStringLiteral("Emergency stop"), QStringLiteral("Not-Halt"), {}},
        {QStringLiteral("Function"), source.repeated(4), QString(), {}}};
    checker.check(fields, german); // the dictionary is loaded once, when the editor first checks
    std::vector<double> times;
    for (int k = 1; k <= keys; ++k) {
        fields[2].destination = typed.left(k % typed.size() + 1);
        const auto start = Clock::now();
        checker.check(fields, german);
        times.push_back(msSince(start));
    }
    std::printf("checking one alarm while typing (%d keys, German, all checks): median %.3f ms, max %.3f ms\n", keys,
                median(times), *std::max_element(times.begin(), times.end()));
    return 0;
}
