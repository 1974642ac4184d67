// The assay protocol reader: every refusal carries a reason, an accepted
// protocol has its five values, writing it out reads back the same, and
// CR LF line ends read as LF ones.
#include "AssayProtocol.h"
#include "FuzzCheck.h"

using namespace nebra;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray text = fuzz::bytes(data, size);
    QString error;
    const std::optional<AssayProtocol> protocol = AssayProtocol::Parse(text, error);
    FUZZ_CHECK(protocol.has_value() == error.isEmpty(), "a refusal, and only a refusal, carries a reason");
    QByteArray crlf;
    if (fuzz::toCrLf(text, crlf)) {
        QString crlfError;
        const std::optional<AssayProtocol> again = AssayProtocol::Parse(crlf, crlfError);
        FUZZ_CHECK(again.has_value() == protocol.has_value() && crlfError == error, "CR LF reads as LF");
        FUZZ_CHECK(!protocol || again->Serialise() == protocol->Serialise(), "CR LF gives the same protocol");
    }
    if (!protocol)
        return 0;
    FUZZ_CHECK(!protocol->name.isEmpty() && !protocol->layout.isEmpty() && !protocol->read.isEmpty() &&
                   !protocol->analysis.isEmpty() && !protocol->units.isEmpty(),
               "an accepted protocol has all five values");
    const QByteArray written = protocol->Serialise();
    const std::optional<AssayProtocol> reread = AssayProtocol::Parse(written, error);
    FUZZ_CHECK(reread && reread->Serialise() == written, "a protocol written out reads back the same");
    FUZZ_CHECK(!protocol->PreviewPage().isEmpty(), "an accepted protocol has a preview page");
    return 0;
}
