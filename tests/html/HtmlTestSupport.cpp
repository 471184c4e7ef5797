#include "HtmlTestSupport.h"

#include "database/Database.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QRegularExpression>
#include <stdexcept>

namespace ht::test
{

QString htmlTestDir()
{
    return sourceDir() + QStringLiteral("/tests/html");
}

void runSqlScript(const QString &dbPath, const QString &script)
{
    auto db = Database::open(dbPath, Database::Mode::ReadWrite);
    Database::Transaction t(*db);
    static const QRegularExpression end(QStringLiteral(";\\s*(\\n|$)"));
    for (QString statement : script.split(end)) {
        // Comment lines are dropped; SQL text itself never starts a line with "--".
        QStringList kept;
        for (const QString &line : statement.split(QLatin1Char('\n'))) {
            if (!line.trimmed().startsWith(QLatin1String("--")))
                kept.append(line);
        }
        statement = kept.join(QLatin1Char('\n')).trimmed();
        if (!statement.isEmpty())
            db->exec(statement);
    }
    t.commit();
}

void createDatabaseFromScripts(const QString &path, const QStringList &scriptFiles)
{
    Database::create(path);
    for (const QString &file : scriptFiles) {
        QFile f(file);
        if (!f.open(QIODevice::ReadOnly))
            throw std::runtime_error(("missing script " + file).toStdString());
        runSqlScript(path, QString::fromUtf8(f.readAll()));
    }
}

QByteArray pageBytes(const QStringList &lines)
{
    QString text(QChar(0xFEFF));
    for (const QString &l : lines)
        text += l + QStringLiteral("\r\n");
    QByteArray bytes;
    for (QChar c : text) {
        bytes.append(char(c.unicode() & 0xFF));
        bytes.append(char(c.unicode() >> 8));
    }
    return bytes;
}

} // namespace ht::test
