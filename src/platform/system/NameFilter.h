#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <vector>

namespace nebra {

class FoldedNames;

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

    // Sets hits to the index of every name in names this filter lets
    // through, in order: the same as matchesFolded() on each, in one pass.
    void select(const FoldedNames& names, std::vector<qint32>& hits) const;
    // The same for only the names at among (ascending indexes).
    void select(const FoldedNames& names, const std::vector<qint32>& among, std::vector<qint32>& hits) const;

private:
    bool matchesPatterns(QStringView foldedName) const;
    // Where the folded text first occurs in text at or after from; -1 if nowhere.
    qsizetype find(QStringView text, qsizetype from = 0) const;

    QString m_text;
    QString m_foldedText;
    // How far a search may move on past each character (by its low byte)
    // that does not end a match: made once per filter, not once per name.
    std::array<quint8, 256> m_skip{};
    struct Pattern
    {
        QString folded;
        qsizetype characters = 0; // those not "*": the shortest name it can match
        qsizetype tail = 0;       // the characters after its last "*", which must end the name
        bool hasStar = false;
    };
    static Pattern patternOf(const QString& folded);
    static bool endFits(const Pattern& pattern, QStringView foldedName);
    std::vector<Pattern> m_patterns; // empty for plain text
};

} // namespace nebra
