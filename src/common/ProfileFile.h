#pragma once
// One settings file as the private-profile functions see it: its bytes and its
// section and key lines. A start reads a dozen keys, so a file is parsed once and
// the parse is kept until the file changes.

#include <QByteArray>
#include <QString>
#include <memory>
#include <vector>

namespace ht::profile
{

enum class LineKind { Section, Key };

struct ProfileLine {
    LineKind kind = LineKind::Key;
    QString name;             // section or key name
    QString value;            // key value, blanks trimmed
    qsizetype contentEnd = 0; // key: end of the line without its CR LF / LF
    qsizetype equalsAt = -1;  // key: byte position of its "="
    // Section: the end of its last non-blank line (the header when there is none) and
    // the start of the line after that, where a new key of the section goes.
    qsizetype tailEnd = 0, tailNext = 0;
};

struct ProfileFile {
    bool readable = true; // false: what is there is no file we may read (FIFO, device, too large)
    QByteArray bytes;
    std::vector<ProfileLine> lines; // section and key lines in file order; other lines are not kept
    QByteArray firstBreak;          // the line break of the first line, "" when it has none
};

constexpr qint64 kMaxSettingsBytes = 16 << 20; // far above any real settings file

ProfileFile parseProfile(QByteArray bytes);
// The file as it is now (a missing one is empty and readable).
std::shared_ptr<const ProfileFile> loadProfile(const QString &file);
// The program has just written `bytes` to `file`.
void rememberProfile(const QString &file, QByteArray bytes);

} // namespace ht::profile
