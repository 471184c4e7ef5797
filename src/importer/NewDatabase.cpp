#include "importer/NewDatabase.h"

#include "common/FileIo.h"
#include "database/Database.h"
#include "database/ItemCounts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

namespace ht
{

namespace
{

constexpr int kStandardItems = 256;

// The alarm and warning tables lengthened to `count` rows per machine, and DBSys saying so.
void lengthen(const QString &path, int count)
{
    auto db = Database::open(path, Database::Mode::ReadWrite);
    Database::Transaction transaction(*db);
    for (const char *kind : {"Alarm", "Warning"}) {
        correctItemLengthIn(*db, QLatin1String(kind), count);
        db->exec(QStringLiteral("UPDATE DBSys SET Data = ? WHERE Item = ?"),
                 {QString::number(count), QStringLiteral("MaxLen") + QLatin1String(kind)});
    }
    transaction.commit();
}

} // namespace

QString templateFileName(bool materialChange)
{
    return materialChange ? QStringLiteral("HelpTextMitMaterialchange.mdb")
                          : QStringLiteral("HelpTextOhneMaterialchange.mdb");
}

QString makeNewDatabase(const QString &templatePath, const NewDatabaseRequest &request)
{
    const QFileInfo target(request.target);
    if (target.exists() || target.isSymLink())
        return QStringLiteral("The file %1 exists already; it is left as it is.").arg(request.target);
    if (!target.absoluteDir().exists())
        return QStringLiteral("The folder %1 does not exist.").arg(target.absolutePath());
    // A name of our own beside the target, so that the rename stays on one file system.
    const QString made = target.absoluteDir().filePath(
        QStringLiteral(".%1.%2.new").arg(target.fileName(), QUuid::createUuid().toString(QUuid::Id128)));
    QString why;
    try {
        if (request.sqlite) {
            convertJetToSqlite(templatePath, made);
        } else {
            QByteArray bytes;
            if (readRegularFile(templatePath, kMaxDatabaseBytes, true, bytes, &why) != FileRead::Ok)
                return QStringLiteral("The template %1 cannot be read: %2").arg(templatePath, why);
            if (!replaceFileDurably(made, bytes.constData(), bytes.size(), &why))
                return QStringLiteral("%1 cannot be written: %2").arg(request.target, why);
        }
        if (request.added > 0) {
            try {
                lengthen(made, kStandardItems + request.added);
            } catch (const DbError &e) {
                if (request.sqlite)
                    throw;
                // The table rebuild deletes and adds rows, which an Access file may not take yet.
                QFile::remove(made);
                return QStringLiteral("The new database %1 was not made: its tables cannot be lengthened for added "
                                      "items in an Access file (%2). Make it with --format sqlite, or without "
                                      "--added.")
                    .arg(request.target, QString::fromUtf8(e.what()));
            }
        }
    } catch (const std::exception &e) {
        QFile::remove(made);
        return QStringLiteral("The new database %1 was not made: %2").arg(request.target, QString::fromUtf8(e.what()));
    }
    // QFile::rename never replaces a file: one made meanwhile under that name stays.
    if (!QFile::rename(made, request.target)) {
        QFile::remove(made);
        return QStringLiteral("The new database cannot be named %1 (a file of that name appeared, or the folder "
                              "refuses it).")
            .arg(request.target);
    }
    return QString();
}

} // namespace ht
