#pragma once
// Readable failure output for Qt strings in GoogleTest assertions.

#include <QByteArray>
#include <QString>
#include <gtest/gtest.h>
#include <ostream>

inline void PrintTo(const QByteArray &b, std::ostream *os)
{
    *os << '"';
    for (const char ch : b) {
        const auto u = static_cast<unsigned char>(ch);
        if (u < 0x20 || u >= 0x7F)
            *os << "\\x" << std::hex << int(u) << std::dec;
        else
            *os << ch;
    }
    *os << '"';
}

// Control characters shown as escapes, the rest as UTF-8.
inline void PrintTo(const QString &s, std::ostream *os)
{
    *os << '"';
    for (const QChar c : s) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            *os << "\\x" << std::hex << int(c.unicode()) << std::dec;
        else
            *os << QString(c).toStdString();
    }
    *os << '"';
}
