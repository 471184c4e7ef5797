#include "startup/CommandLine.h"

#include "common/Context.h"

#include <QCoreApplication>

namespace ht
{

QStringList ReadCommandLine(const QString &commandLine)
{
    QStringList params{QString()};
    QString rest = commandLine.trimmed();
    if (rest.isEmpty())
        return params;

    // Any character may serve as separator; the first one decides.
    const QChar separator = rest.front();
    for (;;) {
        rest = rest.mid(rest.indexOf(separator) + 1);
        const qsizetype next = rest.indexOf(separator);
        if (next < 0)
            break;
        params.last() = rest.left(next).trimmed();
        params.append(QString());
    }
    params.last() = rest.trimmed();
    return params;
}

QString ProgramCommandLine()
{
    QStringList args = QCoreApplication::arguments();
    if (!args.isEmpty())
        args.removeFirst();
    return args.join(QLatin1Char(' '));
}

bool FindCommandLineParameter(const Context &ctx, const QString &name)
{
    for (const QString &p : ctx.state.commandLine)
        if (p.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

} // namespace ht
