#pragma once
// The error log beside the program and the one report every procedure makes
// for an unexpected failure.

#include <QString>

namespace ht {

struct Context;

QString errorLogPath(const Context &ctx);

// Appends exactly text + CR LF. When the log cannot be written, a user at the
// workstation is asked like for any unexpected error (ProgramEnded if the
// answer is stop); on the machine PC and unattended it only goes to stderr.
void LogError(Context &ctx, const QString &text);

// Reports an unexpected failure of `procedure`. Returns 1 (stop) or 2 (go on).
int ShowUnexpectedError(Context &ctx, long number, const QString &source, const QString &description,
                        const QString &procedure);

// Ends the program at once (through ctx.endProgram).
[[noreturn]] void EndProgram(Context &ctx, int exitCode = 0);

void ShowErrorMessage(Context &ctx, const QString &procedure, long number, const QString &description);

// Texts of the unexpected-error report, workstation form (LF CR breaks) and machine-PC form (tabs).
QString unexpectedErrorText(long number, const QString &procedure, const QString &description);
QString unexpectedErrorLogLine(long number, const QString &procedure, const QString &description);

// Procedure-boundary helper for the classic "report and either end or go on":
// reports the failure; ends the program when the answer is 1, otherwise returns.
void reportUnexpected(Context &ctx, const QString &procedure, const std::exception &e);

} // namespace ht
