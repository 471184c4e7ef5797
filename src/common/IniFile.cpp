#include "common/IniFile.h"

#include "common/Context.h"
#include "common/ErrorLog.h"
#include "common/Messages.h"
#include "common/Platform.h"

#include <QDir>
#include <QMetaType>
#include <limits>
#include <stdexcept>

namespace ht
{

namespace
{

// The buffer the settings are read with: 254 characters and the NUL.
constexpr int kIniBuffer = 255;

void showNotFound(Context &ctx, const QString &section, const QString &key, const QString &file)
{
    showMessage(ctx,
                QStringLiteral("File '") + file + QStringLiteral("' or Section [") + section +
                    QStringLiteral("] or Entry '") + key + QStringLiteral("' not found"),
                Buttons::OK, Icon::None);
}

// The text SaveIni writes for a value; nullopt for a type it does not store.
std::optional<QString> iniText(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::SChar:
        return QString::number(value.toLongLong());
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UChar:
        return QString::number(value.toULongLong());
    case QMetaType::Float:
        return QString::number(double(value.toFloat()), 'g', 7);
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', 15);
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    default:
        return std::nullopt;
    }
}

} // namespace

QString LoadIniString(Context &ctx, const QString &section, const QString &key, const QString &file, bool reserved,
                      bool showMissing)
{
    (void)reserved; // kept for the callers; it never changed anything
    try {
        const QString value =
            profile::readString(file, section, key, QString(kIniBuffer, QLatin1Char(' ')), kIniBuffer);
        if (value.isEmpty() && showMissing)
            showNotFound(ctx, section, key, file);
        return value;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("LoadIniString"), e);
    }
    return {};
}

int LoadIniInteger(Context &ctx, const QString &section, const QString &key, const QString &file, bool reserved,
                   bool showMissing)
{
    (void)reserved;
    try {
        const int value = profile::readInt(file, section, key, -1);
        // The result is a 16-bit integer: a larger number is an overflow.
        if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
            throw std::overflow_error("Overflow");
        // A stored -1 cannot be told from a missing key.
        if (value == -1 && showMissing)
            showNotFound(ctx, section, key, file);
        return value;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("LoadIniInteger"), e);
    }
    return -1;
}

bool LoadIniBoolean(Context &ctx, const QString &section, const QString &key, const QString &file, bool reserved,
                    bool showMissing)
{
    (void)reserved;
    try {
        const QString text =
            profile::readString(file, section, key, QString(kIniBuffer, QLatin1Char(' ')), kIniBuffer).toUpper();
        const bool isTrue = text == QLatin1String("TRUE");
        if (showMissing && !isTrue && text != QLatin1String("FALSE"))
            showNotFound(ctx, section, key, file);
        return isTrue;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("LoadIniBoolean"), e);
    }
    return false;
}

int SaveIni(Context &ctx, const QVariant &value, const QString &section, const QString &key, const QString &file)
{
    try {
        std::optional<QString> text = iniText(value);
        if (!text) {
            showMessage(ctx, QStringLiteral("Ini Save:  wrong data type"));
            text = QString();
        }
        return profile::writeString(file, section, key, *text) ? 1 : 0;
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("SaveIni"), e);
    }
    return 0;
}

QString GetStandardUserIni(Context &ctx)
{
    try {
        const QString name = ctx.programName + QStringLiteral(".ini");
        const QString systemRoot = qEnvironmentVariable("SystemRoot");
        if (!systemRoot.isEmpty())
            return joinPath(systemRoot, name);
        // Without a Windows directory the per-user configuration directory
        // takes its place; nothing is created here, the first save does that.
        QString configDir = qEnvironmentVariable("XDG_CONFIG_HOME");
        if (configDir.isEmpty() || QDir::isRelativePath(configDir))
            configDir = joinPath(QDir::homePath(), QStringLiteral(".config"));
        return joinPath(configDir, name);
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetStandardUserIni"), e);
    }
    return {};
}

QString GetStandardApplicationIni(Context &ctx)
{
    try {
        return joinPath(ctx.programDir, ctx.programName + QStringLiteral(".ini"));
    } catch (const std::exception &e) {
        reportUnexpected(ctx, QStringLiteral("GetStandardApplicationIni"), e);
    }
    return {};
}

} // namespace ht
