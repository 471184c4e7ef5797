#pragma once
// The context every procedure of the core works in: program-wide state, the
// program's own location and the user-interaction interface.

#include "common/AppState.h"

#include <QString>
#include <functional>

namespace ht {

class UserInterface;
class StatusTarget;
class FormHost;

// Thrown by EndProgram when the program must stop. Deliberately not a
// std::exception, so procedure boundaries that catch std::exception let it pass.
struct ProgramEnded {
    int exitCode = 0;
};

struct Context {
    AppState state;
    QString programDir;  // directory of the running executable, no trailing separator
    QString programName; // file name of the executable without extension
    UserInterface *ui = nullptr;
    FormHost *forms = nullptr; // the main forms, where the program has windows
    // Called by EndProgram; the default throws ProgramEnded, which main() turns into an exit.
    std::function<void(int)> endProgram;
    // Lets pending window events run during long loops (no-op without a GUI).
    std::function<void()> processEvents;
};

// Fills programDir and programName from the running executable.
void initProgramLocation(Context &ctx);

} // namespace ht
