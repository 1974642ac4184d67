#include "SignatureReport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace nebra {

namespace {
const QString Valid = QStringLiteral("valid");
} // namespace

std::optional<QByteArray> SignatureReport::sha256Of(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return std::nullopt;
    return hash.result();
}

QString SignatureReport::stateOf(const DocumentSignature& signature,
                                 const std::optional<QByteArray>& currentSha256)
{
    // A record no one can vouch for proves nothing, whatever the file holds.
    if (!signature.intact)
        return QStringLiteral("void: signature record altered");
    if (!currentSha256)
        return QStringLiteral("void: document missing");
    return *currentSha256 == signature.sha256 ? Valid : QStringLiteral("void: document changed");
}

QString SignatureReport::text(const QString& path, const QList<DocumentSignature>& signatures,
                              const std::optional<QByteArray>& currentSha256)
{
    if (signatures.isEmpty())
        return QStringLiteral("No signature of \"%1\" is recorded.").arg(QDir::toNativeSeparators(path));
    QStringList lines;
    for (const DocumentSignature& signature : signatures)
        lines.append(SignatureEntries::caption(signature) + QStringLiteral(": ") +
                     stateOf(signature, currentSha256));
    return lines.join(QLatin1Char('\n'));
}

int SignatureReport::exitStatus(const QList<DocumentSignature>& signatures,
                                const std::optional<QByteArray>& currentSha256)
{
    if (signatures.isEmpty())
        return 1;
    for (const DocumentSignature& signature : signatures)
        if (stateOf(signature, currentSha256) != Valid)
            return 1;
    return 0;
}

} // namespace nebra
