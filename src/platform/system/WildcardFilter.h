#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace nebra {

// A file-name filter of one or more wildcard patterns separated by ";"
// ("*.apr", "*.daq;*.txt"). "*" matches any run of characters, "?" exactly
// one character; letters match without regard to case, as file-name filters
// always have. "*.*" (and an empty filter) matches every name, including
// names without an extension, and a pattern ending in ".*" also matches the
// name without any extension ("Plate.*" matches "Plate").
//
// Matching works on the UTF-8 bytes that readdir(3) returns, so names that
// do not match are never converted to text.
class WildcardFilter
{
public:
    explicit WildcardFilter(const QString& patterns = QStringLiteral("*.*"));

    QString text() const { return m_text; }
    bool matchesEverything() const { return m_all; }

    bool matches(const char* name, size_t length) const;
    bool matches(const QString& name) const;

private:
    static bool matchOne(const QByteArray& pattern, const char* name, size_t length);

    QString m_text;
    std::vector<QByteArray> m_patterns;
    bool m_all = false;
};

} // namespace nebra
