#pragma once
#include <QString>

namespace ht
{
// "EDIT" or "IMPORT", fixed when the executable was built.
QString GetCompileOption();
} // namespace ht
