#pragma once
// Files the program reads by path (settings, databases): only regular files, links
// followed, up to a size cap. A FIFO would block the read for ever and a device such as
// /dev/zero would never end, so neither is opened for reading at all.

#include <QFile>
#include <QString>
#include <optional>

namespace ht
{

// Opens `file` read-only on `path` when that is a regular file of at most maxBytes.
// Otherwise returns false with the reason in *why. Never blocks.
bool openRegularFile(QFile &file, const QString &path, qint64 maxBytes, QString *why = nullptr);

// The whole file as openRegularFile allows it; nullopt (reason in *why) otherwise,
// also when it grew past maxBytes while being read.
std::optional<QByteArray> readRegularFile(const QString &path, qint64 maxBytes, QString *why = nullptr);

} // namespace ht
