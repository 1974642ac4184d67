#include "FoldedNames.h"

#include <QString>

#include <algorithm>

namespace nebra {

void FoldedNames::clear()
{
    m_characters.clear();
    m_start.assign(1, 0);
}

void FoldedNames::reserve(size_t names, size_t characters)
{
    m_start.reserve(names + 1);
    m_characters.reserve(characters);
}

void FoldedNames::append(QStringView name)
{
    // Most names are plain ASCII: folded here without making a string each.
    const bool ascii = std::all_of(name.begin(), name.end(), [](QChar c) { return c.unicode() < 0x80; });
    if (ascii) {
        const size_t at = m_characters.size();
        m_characters.resize(at + size_t(name.size()));
        std::transform(name.utf16(), name.utf16() + name.size(), m_characters.begin() + qsizetype(at),
                       [](char16_t c) { return c >= u'A' && c <= u'Z' ? char16_t(c + (u'a' - u'A')) : c; });
    } else {
        const QString folded = name.toString().toCaseFolded();
        m_characters.append(reinterpret_cast<const char16_t*>(folded.constData()), size_t(folded.size()));
    }
    m_characters.push_back(End);
    m_start.push_back(qsizetype(m_characters.size()));
}

} // namespace nebra
