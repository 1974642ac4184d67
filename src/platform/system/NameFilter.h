#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace nebra {

// What the user types into the file list's filter box. Text without "*" or
// "?" matches every name that contains it; text with either is a wildcard
// pattern that must match the whole name ("*" any run of characters, "?"
// exactly one), and several patterns may be given separated by ";". Letters
// match without regard to case. Blanks at either end are ignored; empty
// text matches every name. Matching allocates nothing, so that a list of
// 100,000 names can be filtered on every keystroke.
class NameFilter
{
public:
    explicit NameFilter(const QString& text = {});

    QString text() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }
    bool matches(QStringView name) const;
    // The same for a name already case-folded (QString::toCaseFolded()):
    // what a long list keeps beside its names, so that matching is a plain
    // comparison of characters.
    bool matchesFolded(QStringView foldedName) const;

    // True when every name this filter lets through is also let through by
    // wider, so that only the names wider let through need checking again.
    bool narrows(const NameFilter& wider) const;

private:
    QString m_text;
    QString m_foldedText;
    QStringList m_patterns; // folded; empty for plain text
};

} // namespace nebra
