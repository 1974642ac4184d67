#include "SecretBytes.h"

#include <sodium.h>

namespace nebra {

namespace {
void wipeString(QString& text)
{
    if (!text.isEmpty())
        sodium_memzero(text.data(), size_t(text.size()) * sizeof(QChar));
    text.clear();
}
} // namespace

SecretBytes::SecretBytes(QByteArray bytes) : m_bytes(std::move(bytes))
{
    m_bytes.detach();
}

SecretBytes::~SecretBytes()
{
    wipe();
}

SecretBytes::SecretBytes(SecretBytes&& other) noexcept : m_bytes(std::move(other.m_bytes))
{
    other.m_bytes = QByteArray();
}

SecretBytes& SecretBytes::operator=(SecretBytes&& other) noexcept
{
    if (this != &other) {
        wipe();
        m_bytes = std::move(other.m_bytes);
        other.m_bytes = QByteArray();
    }
    return *this;
}

SecretBytes SecretBytes::fromString(QString& text)
{
    SecretBytes secret(text.toUtf8());
    wipeString(text);
    return secret;
}

qsizetype SecretBytes::characterCount() const
{
    QString text = QString::fromUtf8(m_bytes);
    const qsizetype count = text.size();
    wipeString(text);
    return count;
}

bool SecretBytes::equalsIgnoringCase(const QString& other) const
{
    QString text = QString::fromUtf8(m_bytes);
    const bool equal = text.compare(other, Qt::CaseInsensitive) == 0;
    wipeString(text);
    return equal;
}

bool SecretBytes::operator==(const SecretBytes& other) const
{
    return m_bytes.size() == other.m_bytes.size() &&
           sodium_memcmp(m_bytes.constData(), other.m_bytes.constData(), size_t(m_bytes.size())) == 0;
}

void SecretBytes::wipe()
{
    if (!m_bytes.isEmpty() && !m_bytes.isDetached())
        m_bytes = QByteArray(); // another copy shares the buffer; leave it to that copy
    if (!m_bytes.isEmpty())
        sodium_memzero(m_bytes.data(), size_t(m_bytes.size()));
    m_bytes.clear();
}

} // namespace nebra
