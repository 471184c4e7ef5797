#include "common/Version.h"

#include <cstdio>
#include <cstring>

#ifndef HELPTEXT_VERSION
#error "HELPTEXT_VERSION comes from the project's version in CMakeLists.txt"
#endif

namespace ht
{

QString programVersion()
{
    return QStringLiteral(HELPTEXT_VERSION);
}

bool answerHelpOrVersion(int argc, char **argv, const QString &program, const QString &help)
{
    if (argc < 2)
        return false;
    if (std::strcmp(argv[1], "--version") == 0) {
        std::printf("%s %s\n", qPrintable(program), HELPTEXT_VERSION);
        return true;
    }
    if (std::strcmp(argv[1], "--help") == 0) {
        std::printf("%s\n", help.toLocal8Bit().constData());
        return true;
    }
    return false;
}

} // namespace ht
