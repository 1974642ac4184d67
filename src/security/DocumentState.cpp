#include "DocumentState.h"

namespace nebra {

bool DocumentState::warns() const
{
    if (!signatures.isEmpty())
        return isVoid();
    return record == RecordState::ChangedOutside || record == RecordState::ChangedUnwatched;
}

QString DocumentState::caption() const
{
    if (isSigned())
        return QStringLiteral("Signed (%1)").arg(signatures.constLast().signature.meaning);
    return isVoid() ? voidText() : DocumentEntries::caption(record);
}

QString DocumentState::voidText()
{
    return QStringLiteral("Signature void: the document changed after it was signed");
}

} // namespace nebra
