// helptext-mkjet: writes the tables of an SQLite database into a new Access
// (Jet 4) file, made from an empty Access-made one.
//   helptext-mkjet out.mdb empty.mdb source.sqlite
// An existing output file is never touched (exit code 2); on failure the exit code is 1.
#include "database/Database.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char **argv)
{
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
