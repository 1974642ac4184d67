#pragma once

#include "DocumentRecord.h"

#include <QList>
#include <QString>

namespace nebra {

// What the file list and the preview show of a document in a session: the
// record state of its newest fingerprint, joined by its signatures. A
// signature is valid while its row is intact and the document's current
// content is the one it signed; a document with signatures shows its
// newest signature's state instead of the record state.
struct DocumentState
{
    struct Signature
    {
        DocumentSignature signature;
        bool valid = false;
    };

    RecordState record = RecordState::NotRecorded;
    QList<Signature> signatures; // oldest first

    bool isSigned() const { return !signatures.isEmpty() && signatures.constLast().valid; }
    bool isVoid() const { return !signatures.isEmpty() && !signatures.constLast().valid; }
    // The two changed record states and a void signature carry a warning.
    bool warns() const;
    // "Signed (<newest meaning>)", the void text or the record state's caption.
    QString caption() const;

    static QString voidText();
};

} // namespace nebra
