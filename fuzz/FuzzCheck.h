#pragma once

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <cstdlib>

// A property the reader must keep for every input. A broken one ends the run
// like a crash, so libFuzzer keeps the input and minimises it.
#define FUZZ_CHECK(condition, what)                                                                          \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "Property broken: %s (%s) at %s:%d\n", what, #condition, __FILE__,          \
                         __LINE__);                                                                          \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

namespace nebra::fuzz {

inline QByteArray bytes(const uint8_t* data, size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

// The same text with every LF ended by CR LF instead; nothing when the text
// already holds a CR, since then the two are not the same file.
inline bool toCrLf(const QByteArray& text, QByteArray& crlf)
{
    if (text.contains('\r'))
        return false;
    crlf = text;
    crlf.replace("\n", "\r\n");
    return true;
}

} // namespace nebra::fuzz
