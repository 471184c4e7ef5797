#include "HtmlTestSupport.h"

#include "database/Database.h"
#include "support/TestSupport.h"

#include <QFile>
#include <stdexcept>

namespace ht::test
{

QString htmlTestDir()
{
    return sourceDir() + QStringLiteral("/tests/html");
}

QString schemaFile(const QString &name)
{
    return sourceDir() + QStringLiteral("/src/database/schema/") + name;
}

QStringList helpTextSchema()
{
    return {schemaFile(QStringLiteral("helptext.sql")), schemaFile(QStringLiteral("helptext_materialchange.sql"))};
}

QStringList languagesSchemaAndData()
{
    return {schemaFile(QStringLiteral("languages.sql")),
            htmlTestDir() + QStringLiteral("/golden/_schema/languages_data.sql")};
}

void runSqlScript(const QString &dbPath, const QString &script)
{
    auto db = Database::open(dbPath, Database::Mode::ReadWrite);
    Database::Transaction t(*db);
    db->execScript(script);
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
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2); // little-endian hosts
}

QString pageText(const QByteArray &bytes)
{
    return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData()), bytes.size() / 2);
}

} // namespace ht::test
