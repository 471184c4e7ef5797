// Entry point of both variants (see CompileOption.cpp). Start-up logic lives in
// src/startup; this file only creates the application object.
#include "common/Context.h"
#include "startup/CompileOption.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    std::printf("helptext %s: start-up not built yet\n", qPrintable(ht::GetCompileOption()));
    return 0;
}
