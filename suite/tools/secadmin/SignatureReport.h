#pragma once

#include "DocumentSignature.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace nebra {

// Reads the signatures of a path from the store of a back end.
using SignatureReader = std::function<bool(const QString& path, QList<DocumentSignature>*, QString* error)>;
// "signatures PATH" on what a back end's reader gives; returns the exit status.
using SignatureCheck = std::function<int(const SignatureReader&)>;

// nebra-secadmin signatures PATH: each signature of a document against the
// file as it is now, on either back end. One line per signature, oldest
// first: "<meaning> by <full name> (<user>), <local time with zone>: " and
// "valid", "void: document changed", "void: document missing" or "void:
// signature record altered".
class SignatureReport
{
public:
    // The lines for path, whose content now has currentSha256 (none: it cannot be read).
    static QString text(const QString& path, const QList<DocumentSignature>& signatures,
                        const std::optional<QByteArray>& currentSha256);
    // 0 when the document has signatures and every one is valid, 1 otherwise
    // (an unsigned document is no signed one).
    static int exitStatus(const QList<DocumentSignature>& signatures,
                          const std::optional<QByteArray>& currentSha256);
    // The SHA-256 of the file's content; none when it cannot be read.
    static std::optional<QByteArray> sha256Of(const QString& path);

private:
    static QString stateOf(const DocumentSignature& signature,
                           const std::optional<QByteArray>& currentSha256);
};

} // namespace nebra
