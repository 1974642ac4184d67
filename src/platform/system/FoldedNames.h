#pragma once

#include <QStringView>

#include <string>
#include <vector>

namespace nebra {

// A list of names kept case-folded, one after another in one block of
// characters, each ended by a zero (which no file name contains). A filter
// then searches the whole block in one pass instead of one call per name,
// and a long list costs one allocation instead of one per name.
class FoldedNames
{
public:
    static constexpr char16_t End = u'\0';

    void clear();
    void reserve(size_t names, size_t characters);
    // Folds name (QString::toCaseFolded()) and appends it.
    void append(QStringView name);

    qint32 count() const { return qint32(m_start.size()) - 1; }
    bool isEmpty() const { return count() == 0; }
    // The folded name at index, without its end.
    QStringView at(qint32 index) const
    {
        return QStringView(m_characters).mid(m_start[size_t(index)], endOf(index) - m_start[size_t(index)]);
    }
    // Where the name at index ends in characters(): the position of its End.
    qsizetype endOf(qint32 index) const { return m_start[size_t(index) + 1] - 1; }
    // Every name with its End, in order.
    QStringView characters() const { return m_characters; }

private:
    std::u16string m_characters;
    std::vector<qsizetype> m_start{0}; // where each name begins; one more for the end of the last
};

} // namespace nebra
