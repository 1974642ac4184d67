#include "NameFilter.h"

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

NameFilter::NameFilter(const QString& text) : m_text(text.trimmed()), m_foldedText(m_text.toCaseFolded())
{
    if (!m_text.contains(QLatin1Char('*')) && !m_text.contains(QLatin1Char('?')))
        return;
    for (const QString& pattern : m_text.split(QLatin1Char(';'), Qt::SkipEmptyParts))
        if (!pattern.trimmed().isEmpty())
            m_patterns.append(pattern.trimmed().toCaseFolded());
}

bool NameFilter::matches(QStringView name) const
{
    if (m_text.isEmpty())
        return true;
    if (m_patterns.isEmpty())
        return name.contains(m_text, Qt::CaseInsensitive);
    for (const QString& pattern : m_patterns)
        if (matchesPattern<true>(pattern, name))
            return true;
    return false;
}

bool NameFilter::matchesFolded(QStringView foldedName) const
{
    if (m_text.isEmpty())
        return true;
    if (m_patterns.isEmpty())
        return foldedName.contains(m_foldedText, Qt::CaseSensitive);
    for (const QString& pattern : m_patterns)
        if (matchesPattern<false>(pattern, foldedName))
            return true;
    return false;
}

bool NameFilter::narrows(const NameFilter& wider) const
{
    if (wider.isEmpty())
        return true;
    // Only plain text is easy to compare: a longer text containing the
    // shorter one can only match fewer names.
    return m_patterns.isEmpty() && wider.m_patterns.isEmpty() &&
           m_text.contains(wider.m_text, Qt::CaseInsensitive);
}

} // namespace nebra
