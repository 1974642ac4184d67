#pragma once

#include "DocumentSignature.h"

#include <QHash>
#include <QStringList>
#include <QVariantList>

#include <functional>

namespace nebra {

class AuditTrail;
class SecurityDatabase;
class SiteKey;
class StoreState;

// The electronic signatures of documents in the embedded security database.
// Each row is written with its audit entry (area SignatureEntries::Area), in
// its transaction, and carries the sequence number of that entry and a MAC
// made with the site key over its fields: a row edited (moved onto another
// document, another meaning, another signer) fails its MAC, and a row that
// does not say what its entry says is not the signature the trail records.
// Rows are never updated or deleted (the table refuses it).
class SignatureTable
{
public:
    SignatureTable(SecurityDatabase& database, const SiteKey& key, StoreState& state, AuditTrail& trail);

    // Records the entry and the row, in one transaction: the result's
    // sequence is above 0 when both are committed, and its signature then
    // holds the sequence and time recorded.
    SignResult record(const DocumentSignature& signature);

    // The signatures of path, oldest first, each with intact checked against
    // its seal and its entry.
    bool read(const QString& path, QList<DocumentSignature>* signatures, QString* error) const;
    // Every path's signatures, the same way.
    bool read(QHash<QString, QList<DocumentSignature>>* signatures, QString* error) const;

    // One sentence per row that fails its seal or its entry, and per
    // signature entry of the trail whose row is missing.
    QStringList alteredRows(QString* error) const;

private:
    QByteArray seal(const DocumentSignature& signature) const;
    bool select(const QString& where, const QVariantList& values,
                const std::function<void(const DocumentSignature&)>& visit, QString* error) const;

    SecurityDatabase& m_database;
    const SiteKey& m_key;
    StoreState& m_state;
    AuditTrail& m_trail;
};

} // namespace nebra
