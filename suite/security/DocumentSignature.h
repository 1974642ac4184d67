#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace nebra {

struct AuditEntry;

// One electronic signature of a document: who signed which content of which
// path, when, and what the signature means. It is bound to the document's
// path and SHA-256; a later change of the document voids it, and a copy of
// the document elsewhere is not signed.
struct DocumentSignature
{
    QString path;        // absolute, as the data folders name it
    QByteArray sha256;   // the content the signer saw (32 bytes)
    QString meaning;     // one of the site's meanings ("Authored", "Reviewed", "Approved", ...)
    QString userName;    // the signer's log-in name
    QString fullName;    // the signer's printed name, from the user store when signing
    qint64 signedMs = 0; // milliseconds since the epoch, UTC
    qint64 sequence = 0; // the audit entry that records it
    bool intact = true;  // false: the row fails its seal or does not match its entry
};

// What a signing came to. Signed when sequence is above 0; otherwise error
// says why not, in a sentence for the user.
struct SignResult
{
    qint64 sequence = 0;
    QString error;
    bool locked = false;         // the wrong password locked the account and the session has ended
    DocumentSignature signature; // as recorded, when signed
};

// The names and texts of signatures, shared by both stores (the server
// composes the same entry text in its own function).
class SignatureEntries
{
public:
    static constexpr const char* Area = "Signatures"; // the audit entries' area
    static constexpr const char* RightArea = "Documents";
    static constexpr const char* RightOperation = "Sign";
    static constexpr const char* DefaultMeanings = "Authored;Reviewed;Approved";

    // "Signed: <path> sha256=<hex> meaning=<meaning> by <full name> (<user>)"
    static QString text(const DocumentSignature& signature);
    // The meanings a site's [Security] SignatureMeanings lists: ';'-separated,
    // trimmed, each once, in order; the default when none is left.
    static QStringList meaningsFrom(const QString& text);
    // "Approved by Jane Smith (jsmith), 25 Nov 2026 14:03:07 CET": the
    // meaning, the printed name, the user and the local time with its zone,
    // as every human-readable form shows a signature.
    static QString caption(const DocumentSignature& signature);
    // The local time with its zone: "25 Nov 2026 14:03:07 CET".
    static QString localTime(qint64 msSinceEpoch);
    // The caption of the signature a signature entry records, at the entry's
    // time; empty for any other entry. What the audit trail's viewer, its
    // printout and its CSV show beside the entry's text.
    static QString manifestOf(const AuditEntry& entry);
    // The entry's text as the viewer and the printout show it: a signature's
    // caption first (so a narrow column still shows who signed, when and
    // what for), then the text as recorded.
    static QString shownText(const AuditEntry& entry);
    // What verify says of a row that fails its seal or its entry, and of an
    // entry whose row is gone, on either back end.
    static QString alteredText(const DocumentSignature& signature);
    static QString removedText(qint64 sequence);
    // The refusals both stores give, in the same words.
    static QString noFullNameText();
    static QString wrongPasswordText();
};

} // namespace nebra
