#pragma once

#include "WildcardFilter.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace nebra {

// What the user types into the file list's filter box. Text without "*" or
// "?" matches every name that contains it; text with either is a wildcard
// pattern that must match the whole name (as WildcardFilter reads it, so
// "*.apr;*.mlo" works too). Letters match without regard to case. Blanks at
// either end are ignored; empty text matches every name.
class NameFilter
{
public:
    explicit NameFilter(const QString& text = {});

    QString text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }
    bool matches(QStringView name) const;

    // True when every name this filter lets through is also let through by
    // wider, so that only the names wider let through need checking again.
    bool narrows(const NameFilter& wider) const;

private:
    QString m_text;
    std::optional<WildcardFilter> m_wildcard;
};

} // namespace nebra
