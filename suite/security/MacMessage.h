#pragma once

#include <QByteArray>
#include <QString>
#include <QtEndian>

namespace nebra {

// Builds the message that a MAC is made over: a fixed label, then each field
// with its length first (texts) or at a fixed width (numbers), so that no
// two different sets of fields give the same message.
class MacMessage
{
public:
    explicit MacMessage(const char* label) : m_bytes(label) {}

    MacMessage& add(qint64 value)
    {
        char bytes[8];
        qToBigEndian<qint64>(value, bytes);
        m_bytes.append(bytes, sizeof bytes);
        return *this;
    }
    MacMessage& add(const QByteArray& bytes)
    {
        add(qint64(bytes.size()));
        m_bytes.append(bytes);
        return *this;
    }
    MacMessage& add(const QString& text) { return add(text.toUtf8()); }

    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

} // namespace nebra
