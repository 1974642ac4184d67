#include "ServerResult.h"

#include <libpq-fe.h>

namespace nebra {

namespace {

// Type ids of the server's catalogue (pg_type) that the store's functions return.
constexpr Oid BoolType = 16;
constexpr Oid ByteaType = 17;
constexpr Oid Int8Type = 20;
constexpr Oid Int2Type = 21;
constexpr Oid Int4Type = 23;

} // namespace

bool ServerResult::next()
{
    if (!m_result || m_row + 1 >= PQntuples(m_result.get()))
        return false;
    ++m_row;
    return true;
}

int ServerResult::size() const
{
    return m_result ? PQntuples(m_result.get()) : 0;
}

QVariant ServerResult::value(int column) const
{
    PGresult* result = m_result.get();
    if (!result || m_row < 0 || column < 0 || column >= PQnfields(result) ||
        PQgetisnull(result, m_row, column))
        return {};
    const char* text = PQgetvalue(result, m_row, column);
    switch (PQftype(result, column)) {
    case BoolType:
        return text[0] == 't';
    case Int2Type:
    case Int4Type:
        return QByteArray(text).toInt();
    case Int8Type:
        return QByteArray(text).toLongLong();
    case ByteaType: {
        size_t length = 0;
        unsigned char* bytes = PQunescapeBytea(reinterpret_cast<const unsigned char*>(text), &length);
        const QByteArray value(reinterpret_cast<const char*>(bytes), qsizetype(length));
        PQfreemem(bytes);
        return value;
    }
    default:
        return QString::fromUtf8(text, PQgetlength(result, m_row, column));
    }
}

} // namespace nebra
