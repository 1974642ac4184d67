#include "WildcardFilter.h"

#include <QStringList>

namespace nebra {

namespace {

inline char foldAscii(char c)
{
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

// Length of the UTF-8 sequence that starts at name[i], so that "?" takes one
// character and not one byte of a non-ASCII name.
inline size_t characterLength(const char* name, size_t length, size_t i)
{
    size_t n = 1;
    while (i + n < length && (static_cast<unsigned char>(name[i + n]) & 0xC0) == 0x80)
        ++n;
    return n;
}

} // namespace

WildcardFilter::WildcardFilter(const QString& patterns) : m_text(patterns)
{
    const QStringList parts = patterns.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        const QString trimmed = part.trimmed();
        if (trimmed.isEmpty())
            continue;
        if (trimmed == QLatin1String("*.*") || trimmed == QLatin1String("*"))
            m_all = true;
        QByteArray pattern = trimmed.toUtf8();
        for (char& c : pattern)
            c = foldAscii(c);
        // "Name.*" stands for "Name" with or without an extension.
        if (pattern.endsWith(".*"))
            m_patterns.push_back(pattern.left(pattern.size() - 2));
        m_patterns.push_back(std::move(pattern));
    }
    if (m_patterns.empty())
        m_all = true;
}

bool WildcardFilter::matches(const char* name, size_t length) const
{
    if (m_all)
        return true;
    for (const QByteArray& pattern : m_patterns)
        if (matchOne(pattern, name, length))
            return true;
    return false;
}

bool WildcardFilter::matches(const QString& name) const
{
    const QByteArray bytes = name.toUtf8();
    return matches(bytes.constData(), size_t(bytes.size()));
}

// Iterative glob match with single-star backtracking: linear in practice and
// never recursive, whatever the pattern.
bool WildcardFilter::matchOne(const QByteArray& pattern, const char* name, size_t length)
{
    const char* p = pattern.constData();
    const size_t plen = size_t(pattern.size());
    size_t pi = 0, ni = 0;
    size_t starP = size_t(-1), starN = 0;
    while (ni < length) {
        if (pi < plen && p[pi] == '*') {
            starP = pi++;
            starN = ni;
        } else if (pi < plen && p[pi] == '?') {
            ++pi;
            ni += characterLength(name, length, ni);
        } else if (pi < plen && p[pi] == foldAscii(name[ni])) {
            ++pi;
            ++ni;
        } else if (starP != size_t(-1)) {
            pi = starP + 1;
            starN += characterLength(name, length, starN);
            ni = starN;
        } else {
            return false;
        }
    }
    while (pi < plen && p[pi] == '*')
        ++pi;
    return pi == plen;
}

} // namespace nebra
