#include "database/Collation.h"

#include <QByteArray>
#include <sqlite3.h>

namespace ht
{

namespace
{

bool isAscii(const char *s, int len)
{
    for (int i = 0; i < len; ++i)
        if (static_cast<unsigned char>(s[i]) >= 0x80)
            return false;
    return true;
}

char asciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? char(c + ('a' - 'A')) : c;
}

// Same order as the Unicode path for pure ASCII input: folded UTF-16 code units
// of ASCII text are its lowered bytes.
int compareAsciiCaseless(const char *a, int lenA, const char *b, int lenB)
{
    const int n = lenA < lenB ? lenA : lenB;
    for (int i = 0; i < n; ++i) {
        const unsigned char ca = static_cast<unsigned char>(asciiLower(a[i]));
        const unsigned char cb = static_cast<unsigned char>(asciiLower(b[i]));
        if (ca != cb)
            return ca < cb ? -1 : 1;
    }
    return lenA == lenB ? 0 : (lenA < lenB ? -1 : 1);
}

int collateCaseless(void *, int lenA, const void *a, int lenB, const void *b)
{
    return compareCaseless(static_cast<const char *>(a), lenA, static_cast<const char *>(b), lenB);
}

void convertCase(sqlite3_context *context, sqlite3_value *arg, bool upper)
{
    if (sqlite3_value_type(arg) == SQLITE_NULL) {
        sqlite3_result_null(context);
        return;
    }
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(arg));
    const int len = sqlite3_value_bytes(arg);
    const QString s = QString::fromUtf8(text, len);
    const QByteArray out = (upper ? s.toUpper() : s.toLower()).toUtf8();
    sqlite3_result_text(context, out.constData(), int(out.size()), SQLITE_TRANSIENT);
}

void upperFunction(sqlite3_context *context, int, sqlite3_value **argv)
{
    convertCase(context, argv[0], true);
}
void lowerFunction(sqlite3_context *context, int, sqlite3_value **argv)
{
    convertCase(context, argv[0], false);
}

} // namespace

int compareCaseless(const char *a, int lenA, const char *b, int lenB)
{
    if (isAscii(a, lenA) && isAscii(b, lenB))
        return compareAsciiCaseless(a, lenA, b, lenB);
    const QString fa = QString::fromUtf8(a, lenA).toCaseFolded();
    const QString fb = QString::fromUtf8(b, lenB).toCaseFolded();
    const int c = fa.compare(fb, Qt::CaseSensitive);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

QString installCaselessText(sqlite3 *db)
{
    const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    if (sqlite3_create_collation(db, "NOCASE", SQLITE_UTF8, nullptr, collateCaseless) != SQLITE_OK ||
        sqlite3_create_function(db, "upper", 1, flags, nullptr, upperFunction, nullptr, nullptr) != SQLITE_OK ||
        sqlite3_create_function(db, "lower", 1, flags, nullptr, lowerFunction, nullptr, nullptr) != SQLITE_OK)
        return QString::fromUtf8(sqlite3_errmsg(db));
    return {};
}

} // namespace ht
