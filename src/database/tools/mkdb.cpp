// helptext-mkdb: makes a new SQLite database from SQL script files.
//   helptext-mkdb out.sqlite script.sql [script.sql ...]
// The scripts run in the order given, all in one transaction; on any failure
// the new file is removed again and the exit code is 1. An existing output file
// is never touched (exit code 2).
#include "common/Version.h"
#include "database/Database.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

static const char *const kHelp =
    "Usage: helptext-mkdb OUT.sqlite SCRIPT.sql [SCRIPT.sql...]\n"
    "       helptext-mkdb --help | --version\n\n"
    "make a new SQLite database from SQL scripts\n\n"
    "The scripts run in the order given, all in one transaction; on any failure the new file is removed "
    "again. An existing OUT is never touched. The schemas of the help-text, language-definition and "
    "index-text databases are installed in share/helptext/schema:\n"
    "  helptext.sql                  help-text database: five free machine blocks\n"
    "  helptext_materialchange.sql   adds the material-change tables (after helptext.sql)\n"
    "  languages.sql                 language-definition database\n"
    "  indextext.sql                 index-text database\n\n"
    "Exit status:\n"
    "  0   the database is made\n"
    "  1   a script failed (nothing is left behind)\n"
    "  2   wrong arguments, or OUT exists";

int main(int argc, char **argv)
{
    if (ht::answerHelpOrVersion(argc, argv, QStringLiteral("helptext-mkdb"), QString::fromUtf8(kHelp)))
        return 0;
    QCoreApplication app(argc, argv); // Qt Sql needs the application object
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        std::fprintf(stderr, "usage: helptext-mkdb out.sqlite script.sql [script.sql ...]\n");
        return 2;
    }
    const QString out = args[1];
    if (QFileInfo::exists(out)) {
        std::fprintf(stderr, "helptext-mkdb: %s exists, not overwritten\n", qPrintable(out));
        return 2;
    }
    try {
        auto db = ht::Database::create(out);
        ht::Database::Transaction transaction(*db);
        for (qsizetype i = 2; i < args.size(); ++i) {
            QFile script(args[i]);
            if (!script.open(QIODevice::ReadOnly))
                throw ht::DbError(("cannot read " + args[i] + ": " + script.errorString()).toStdString());
            db->execScript(QString::fromUtf8(script.readAll()));
        }
        transaction.commit();
    } catch (const ht::DbError &e) {
        QFile::remove(out);
        std::fprintf(stderr, "helptext-mkdb: %s\n", e.what());
        return 1;
    }
    return 0;
}
