#pragma once

#include "DocumentState.h"

#include <QWidget>

class QVBoxLayout;

namespace nebra {

// The band above the preview that shows a document's signatures, one line
// each, oldest first: who signed with which meaning and when, or, with the
// warning icon, that the signature is void. Hidden for a document without
// signatures. Each line's text is its accessible name.
class SignatureBand : public QWidget
{
    Q_OBJECT
public:
    explicit SignatureBand(QWidget* parent = nullptr);

    void showSignatures(const QList<DocumentState::Signature>& signatures);
    // The lines shown, for a reader of the band.
    QStringList lines() const;

    // A line of the band: the signature's caption as every human-readable form
    // shows it (SignatureEntries::caption), with the reason before it when void.
    static QString lineText(const DocumentState::Signature& signature);

private:
    QVBoxLayout* m_lines;
};

} // namespace nebra
