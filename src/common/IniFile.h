#pragma once
// Settings-file access with the classic private-profile rules: section and key
// names compared without case, first match wins, a write keeps the rest of the
// file byte for byte, the file is created on first write, 255-character buffer.

#include <QString>
#include <QVariant>

namespace ht {

struct Context;

QString LoadIniString(Context &ctx, const QString &section, const QString &key, const QString &file,
                      bool reserved = false, bool showMissing = false);
int LoadIniInteger(Context &ctx, const QString &section, const QString &key, const QString &file,
                   bool reserved = false, bool showMissing = false);
bool LoadIniBoolean(Context &ctx, const QString &section, const QString &key, const QString &file,
                    bool reserved = false, bool showMissing = false);
// Returns non-zero when written.
int SaveIni(Context &ctx, const QVariant &value, const QString &section, const QString &key, const QString &file);

QString GetStandardUserIni(Context &ctx);
QString GetStandardApplicationIni(Context &ctx);

namespace profile {
// The raw profile functions (no messages): value or default, and the write.
QString readString(const QString &file, const QString &section, const QString &key, const QString &def,
                   int bufferSize = 255);
int readInt(const QString &file, const QString &section, const QString &key, int def);
bool writeString(const QString &file, const QString &section, const QString &key, const QString &value);
} // namespace profile

} // namespace ht
