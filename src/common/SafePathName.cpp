#include "common/SafePathName.h"

#include <QDir>
#include <QFile>

namespace ht
{

bool isSafePathName(const QString &name)
{
    if (name.isEmpty())
        return false;
    bool onlyDotsAndBlanks = true;
    for (QChar c : name) {
        if (c == u'/' || c == u'\\' || c == u':' || c.unicode() < 0x20)
            return false;
        if (c != u'.' && c != u' ')
            onlyDotsAndBlanks = false;
    }
    // Windows drops trailing dots and blanks, so "..." or ". ." would mean "." or "..".
    // A file name holds 255 bytes at the most.
    // (A UTF-16 unit takes three bytes at the most: short names need no count.)
    return !onlyDotsAndBlanks && (name.size() <= 85 || QFile::encodeName(name).size() <= 255);
}

bool isPathInside(const QString &baseDir, const QString &path)
{
    const QString base = QDir::cleanPath(QDir::fromNativeSeparators(baseDir));
    const QString full = QDir::cleanPath(QDir::fromNativeSeparators(path));
    if (base.isEmpty())
        return false;
    const QString prefix = base.endsWith(QLatin1Char('/')) ? base : base + QLatin1Char('/');
    return full.startsWith(prefix) && full.size() > prefix.size();
}

} // namespace ht
