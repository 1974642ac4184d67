#pragma once

#include <QVariant>

#include <memory>

struct pg_result;

namespace nebra {

// The rows one statement sent to the security server returned, read one
// row at a time: next() moves to the first row, then to each further one.
// Values come as the column's type says: booleans, integers, bytes (bytea),
// otherwise text; NULL is a null QVariant.
class ServerResult
{
public:
    ServerResult() = default;

    bool next();
    QVariant value(int column) const;
    int size() const;

private:
    friend class ServerConnection;
    explicit ServerResult(std::shared_ptr<pg_result> result) : m_result(std::move(result)) {}

    std::shared_ptr<pg_result> m_result;
    int m_row = -1;
};

} // namespace nebra
