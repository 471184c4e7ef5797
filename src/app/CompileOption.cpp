// Compiled once per executable: the variant is a build-time constant.
#include "startup/CompileOption.h"

#ifndef HELPTEXT_COMPILE_OPTION
#define HELPTEXT_COMPILE_OPTION ""
#endif

namespace ht {
QString GetCompileOption() { return QStringLiteral(HELPTEXT_COMPILE_OPTION); }
} // namespace ht
