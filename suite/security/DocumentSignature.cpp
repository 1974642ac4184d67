#include "DocumentSignature.h"

namespace nebra {

QString SignatureEntries::text(const DocumentSignature& signature)
{
    return QStringLiteral("Signed: %1 sha256=%2 meaning=%3 by %4 (%5)")
        .arg(signature.path, QString::fromLatin1(signature.sha256.toHex()), signature.meaning,
             signature.fullName, signature.userName);
}

QStringList SignatureEntries::meaningsFrom(const QString& text)
{
    QStringList meanings;
    for (const QString& part : text.split(QLatin1Char(';'))) {
        const QString meaning = part.trimmed();
        if (!meaning.isEmpty() && !meanings.contains(meaning))
            meanings.append(meaning);
    }
    return meanings.isEmpty() ? QString::fromLatin1(DefaultMeanings).split(QLatin1Char(';')) : meanings;
}

QString SignatureEntries::noFullNameText()
{
    return QStringLiteral("Your account has no full name, and a signature must show the signer's printed "
                          "name, so you cannot sign. Ask your security administrator to give your account "
                          "its full name.");
}

QString SignatureEntries::wrongPasswordText()
{
    return QStringLiteral("The password is incorrect. Nothing has been signed.");
}

} // namespace nebra
