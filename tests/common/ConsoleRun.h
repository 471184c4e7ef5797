#pragma once
// One console command run as a script runs it, with what it writes to stderr caught.
#include "common/ConsoleCommand.h"
#include "common/ConsoleUserInterface.h"
#include "common/Context.h"

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <utility>

namespace ht::test
{

inline int runCaptured(Context &ctx, const std::vector<ConsoleCommand> &commands, const QStringList &args, QString &err)
{
    char *bytes = nullptr;
    size_t size = 0;
    FILE *out = open_memstream(&bytes, &size);
    ConsoleUserInterface console(out);
    UserInterface *const before = std::exchange(ctx.ui, &console);
    int code = -1;
    EXPECT_TRUE(runConsoleCommand(ctx, commands, args, code));
    std::fclose(out);
    err = QString::fromLocal8Bit(bytes, qsizetype(size));
    std::free(bytes);
    ctx.ui = before;
    return code;
}

} // namespace ht::test
