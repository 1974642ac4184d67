#include "NameFilter.h"

namespace nebra {

NameFilter::NameFilter(const QString& text) : m_text(text.trimmed())
{
    if (m_text.contains(QLatin1Char('*')) || m_text.contains(QLatin1Char('?')))
        m_wildcard.emplace(m_text);
}

bool NameFilter::matches(QStringView name) const
{
    if (m_text.isEmpty())
        return true;
    if (m_wildcard)
        return m_wildcard->matches(name.toString());
    return name.contains(m_text, Qt::CaseInsensitive);
}

bool NameFilter::narrows(const NameFilter& wider) const
{
    if (wider.isEmpty())
        return true;
    // Only plain text is easy to compare: a longer text containing the
    // shorter one can only match fewer names.
    return !m_wildcard && !wider.m_wildcard && m_text.contains(wider.m_text, Qt::CaseInsensitive);
}

} // namespace nebra
