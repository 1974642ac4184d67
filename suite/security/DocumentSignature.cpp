#include "DocumentSignature.h"

#include "AuditTrail.h"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>

namespace nebra {

QString SignatureEntries::text(const DocumentSignature& signature)
{
    return QStringLiteral("Signed: %1 sha256=%2 meaning=%3 by %4 (%5)")
        .arg(signature.path, QString::fromLatin1(signature.sha256.toHex()), signature.meaning,
             signature.fullName, signature.userName);
}

QString SignatureEntries::localTime(qint64 msSinceEpoch)
{
    // English month names and the zone's abbreviation, whatever the user's locale.
    return QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(msSinceEpoch, Qt::LocalTime),
                                 QStringLiteral("d MMM yyyy HH:mm:ss t"));
}

QString SignatureEntries::caption(const DocumentSignature& signature)
{
    return QStringLiteral("%1 by %2 (%3), %4")
        .arg(signature.meaning, signature.fullName, signature.userName, localTime(signature.signedMs));
}

QString SignatureEntries::manifestOf(const AuditEntry& entry)
{
    if (entry.area != QLatin1String(Area))
        return {};
    // The signer's user name is the entry's; a meaning may hold " by " ("Approved by QA"), a printed name
    // hardly, so the name is what follows the last one.
    static const QRegularExpression signedText(
        QStringLiteral("^Signed: .+ sha256=[0-9a-f]{64} meaning=(.+) by (.+) \\((.+)\\)$"));
    const QRegularExpressionMatch m = signedText.match(entry.text);
    const QDateTime time = QDateTime::fromString(entry.utc, Qt::ISODateWithMs);
    if (!m.hasMatch() || m.captured(3) != entry.userName || !time.isValid())
        return {};
    DocumentSignature signature;
    signature.meaning = m.captured(1);
    signature.fullName = m.captured(2);
    signature.userName = entry.userName;
    signature.signedMs = time.toMSecsSinceEpoch();
    return caption(signature);
}

QString SignatureEntries::shownText(const AuditEntry& entry)
{
    const QString manifest = manifestOf(entry);
    return manifest.isEmpty() ? entry.text : manifest + QStringLiteral(" \u2014 ") + entry.text;
}

QString SignatureEntries::alteredText(const DocumentSignature& signature)
{
    return QStringLiteral(
               "The signature of document \"%1\" recorded by entry %2 has been changed outside the "
               "suite or does not match its entry.")
        .arg(signature.path)
        .arg(signature.sequence);
}

QString SignatureEntries::removedText(qint64 sequence)
{
    return QStringLiteral("The signature recorded by entry %1 has been removed.").arg(sequence);
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
