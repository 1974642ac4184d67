#include "NameFilter.h"

#include "FoldedNames.h"

#include <algorithm>

namespace nebra {

namespace {

char16_t folded(char16_t c)
{
    if (c < 0x80)
        return c >= u'A' && c <= u'Z' ? char16_t(c + (u'a' - u'A')) : c;
    return char16_t(QChar::toCaseFolded(char32_t(c)));
}

// Iterative matching with one back-tracking point: the last "*" seen. The
// pattern is folded already; raw pointers keep the loop cheap in any build.
template <bool FoldName> bool matchesPattern(const QString& foldedPattern, QStringView name)
{
    const char16_t* pattern = reinterpret_cast<const char16_t*>(foldedPattern.constData());
    const char16_t* const patternEnd = pattern + foldedPattern.size();
    const char16_t* text = name.utf16();
    const char16_t* const textEnd = text + name.size();
    const char16_t* star = nullptr;
    const char16_t* resume = text;
    while (text < textEnd) {
        if (pattern < patternEnd && *pattern == u'*') {
            star = pattern++;
            resume = text;
        } else if (pattern < patternEnd &&
                   (*pattern == u'?' || *pattern == (FoldName ? folded(*text) : *text))) {
            ++pattern;
            ++text;
        } else if (star) {
            pattern = star + 1; // let the "*" take one character more
            text = ++resume;
        } else {
            return false;
        }
    }
    while (pattern < patternEnd && *pattern == u'*')
        ++pattern;
    return pattern == patternEnd;
}

} // namespace

NameFilter::Pattern NameFilter::patternOf(const QString& folded)
{
    Pattern pattern;
    pattern.folded = folded;
    const qsizetype lastStar = folded.lastIndexOf(QLatin1Char('*'));
    pattern.hasStar = lastStar >= 0;
    pattern.tail = folded.size() - lastStar - 1;
    pattern.characters = folded.size() - folded.count(QLatin1Char('*'));
    return pattern;
}

// What a name that cannot match shows soonest: its length, or the end the
// pattern fixes ("*7.apr" needs a name ending in "7.apr"). Most names of a
// long list are turned away here without walking the pattern.
bool NameFilter::endFits(const Pattern& pattern, QStringView foldedName)
{
    if (pattern.hasStar ? foldedName.size() < pattern.characters : foldedName.size() != pattern.characters)
        return false;
    const QChar* tail = pattern.folded.constData() + pattern.folded.size() - pattern.tail;
    const QChar* name = foldedName.data() + foldedName.size() - pattern.tail;
    for (qsizetype i = 0; i < pattern.tail; ++i)
        if (tail[i] != name[i] && tail[i] != QLatin1Char('?'))
            return false;
    return true;
}

NameFilter::NameFilter(const QString& text) : m_text(text.trimmed()), m_foldedText(m_text.toCaseFolded())
{
    const qsizetype length = m_foldedText.size();
    m_skip.fill(quint8(std::min<qsizetype>(length, 255)));
    for (qsizetype i = std::max<qsizetype>(0, length - 255); i + 1 < length; ++i)
        m_skip[m_foldedText.at(i).unicode() & 0xff] = quint8(length - 1 - i);
    if (!m_text.contains(QLatin1Char('*')) && !m_text.contains(QLatin1Char('?')))
        return;
    for (const QString& pattern : m_text.split(QLatin1Char(';'), Qt::SkipEmptyParts))
        if (!pattern.trimmed().isEmpty())
            m_patterns.push_back(patternOf(pattern.trimmed().toCaseFolded()));
}

bool NameFilter::matches(QStringView name) const
{
    if (m_text.isEmpty())
        return true;
    if (m_patterns.empty())
        return name.contains(m_text, Qt::CaseInsensitive);
    for (const Pattern& pattern : m_patterns)
        if (matchesPattern<true>(pattern.folded, name))
            return true;
    return false;
}

bool NameFilter::matchesFolded(QStringView foldedName) const
{
    if (m_text.isEmpty())
        return true;
    if (m_patterns.empty())
        return find(foldedName) >= 0;
    return matchesPatterns(foldedName);
}

// A search that moves on by the last character of the window (Horspool):
// text a few characters long is found in a long list in a few steps per
// name. Characters sharing a low byte share a skip, which only shortens it.
qsizetype NameFilter::find(QStringView text, qsizetype from) const
{
    const char16_t* const needle = reinterpret_cast<const char16_t*>(m_foldedText.constData());
    const qsizetype length = m_foldedText.size();
    const char16_t* const characters = text.utf16();
    const char16_t last = needle[length - 1];
    for (qsizetype end = from + length - 1; end < text.size();) {
        const char16_t c = characters[end];
        if (c == last && std::equal(needle, needle + length - 1, characters + end - length + 1))
            return end - length + 1;
        end += m_skip[c & 0xff];
    }
    return -1;
}

bool NameFilter::matchesPatterns(QStringView foldedName) const
{
    for (const Pattern& pattern : m_patterns)
        if (endFits(pattern, foldedName) && matchesPattern<false>(pattern.folded, foldedName))
            return true;
    return false;
}

void NameFilter::select(const FoldedNames& names, std::vector<qint32>& hits) const
{
    hits.clear();
    const qint32 count = names.count();
    if (m_text.isEmpty() || !m_patterns.empty()) {
        for (qint32 name = 0; name < count; ++name)
            if (m_text.isEmpty() || matchesPatterns(names.at(name)))
                hits.push_back(name);
        return;
    }
    // Plain text: one search through all names; after a hit the search goes
    // on at the next name. Text with an End in it would match across two.
    if (m_foldedText.contains(QChar(FoldedNames::End)))
        return;
    const QStringView all = names.characters();
    qint32 name = 0;
    for (qsizetype hit = find(all); hit >= 0; hit = find(all, names.endOf(name++) + 1)) {
        while (names.endOf(name) < hit)
            ++name;
        hits.push_back(name);
    }
}

void NameFilter::select(const FoldedNames& names, const std::vector<qint32>& among,
                        std::vector<qint32>& hits) const
{
    hits.clear();
    for (const qint32 name : among)
        if (matchesFolded(names.at(name)))
            hits.push_back(name);
}

bool NameFilter::narrows(const NameFilter& wider) const
{
    if (wider.isEmpty())
        return true;
    // Only plain text is easy to compare: a longer text containing the
    // shorter one can only match fewer names.
    return m_patterns.empty() && wider.m_patterns.empty() &&
           m_text.contains(wider.m_text, Qt::CaseInsensitive);
}

} // namespace nebra
