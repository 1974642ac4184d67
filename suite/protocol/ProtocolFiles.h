#pragma once

#include <QString>

namespace nebra {

class AssayProtocol;

// Where a new protocol goes and how it is written: "<folder>/<name>.apr" and
// its preview "<folder>/<name>.mht". Nothing existing is ever overwritten.
class ProtocolFiles
{
public:
    static constexpr int MaximumNameLength = 100;

    // Empty when name can be a new protocol's name in folder; otherwise one
    // sentence saying why not (empty, too long, a character that file names
    // cannot hold, hidden, or a protocol of that name exists).
    static QString CheckName(const QString& folder, const QString& name);

    static QString ProtocolPath(const QString& folder, const QString& name);
    static QString PreviewPath(const QString& folder, const QString& name);

    // Writes the protocol and then its preview, each all or nothing. Returns
    // the protocol's path, or an empty string with error set; a protocol
    // whose preview could not be written is removed again.
    static QString Save(const QString& folder, const AssayProtocol& protocol, QString& error);
};

} // namespace nebra
