#pragma once
// Names from the database (machine types, language names, item numbers) become
// folder and file names below the help main directory; these checks keep every
// such path inside it.

#include <QString>

namespace ht
{

// False for "", ".", "..", names of dots only, names with "/", "\", ":" (drive
// letters, streams), NUL or other control characters, absolute paths, and
// names longer than a file name may be (255 bytes).
bool isSafePathName(const QString &name);

// True when `path` lies inside `baseDir` after resolving "." and "..".
bool isPathInside(const QString &baseDir, const QString &path);

} // namespace ht
