// helptext-mkjet: writes the tables of an SQLite database into a new Access
// (Jet 4) file, made from an empty Access-made one.
//   helptext-mkjet out.mdb empty.mdb source.sqlite
// An existing output file is never touched; on failure the exit code is 1.
#include "common/Version.h"
#include "database/Database.h"

#include <QCoreApplication>
#include <cstdio>

static const char *const kHelp =
    "Usage: helptext-mkjet OUT.mdb EMPTY.mdb SOURCE.sqlite\n"
    "       helptext-mkjet --help | --version\n\n"
    "write an SQLite database's tables into a new Access file\n\n"
    "OUT.mdb is made from EMPTY.mdb, an empty Access (Jet 4) file made by Access, and receives the tables "
    "and rows of SOURCE.sqlite. An existing OUT is never touched.\n\n"
    "Exit status:\n"
    "  0   the Access file is made\n"
    "  1   it could not be made, or OUT exists\n"
    "  2   wrong arguments";

int main(int argc, char **argv)
{
    if (ht::answerHelpOrVersion(argc, argv, QStringLiteral("helptext-mkjet"), QString::fromUtf8(kHelp)))
        return 0;
    QCoreApplication app(argc, argv); // Qt Sql needs the application object
    const QStringList args = app.arguments();
    if (args.size() != 4) {
        std::fprintf(stderr, "usage: helptext-mkjet out.mdb empty.mdb source.sqlite\n");
        return 2;
    }
    try {
        ht::convertSqliteToJet(args[3], args[2], args[1]);
    } catch (const ht::DbError &e) {
        std::fprintf(stderr, "helptext-mkjet: %s\n", e.what());
        return 1;
    }
    return 0;
}
