// The driver catalogue: a catalogue that is not valid yields no drivers and
// says why; every driver listed has a name; the 1-based items are the list.
#include "FuzzCheck.h"
#include "HLDCollection.h"

using namespace nebra;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const HLDCollection drivers =
        HLDCollection::Parse(fuzz::bytes(data, size), QStringLiteral("drivers.json"));
    FUZZ_CHECK(drivers.errorString().isEmpty() || drivers.Count() == 0, "a refused catalogue lists nothing");
    FUZZ_CHECK(drivers.errorString().isEmpty() ||
                   drivers.errorString().contains(QLatin1String("drivers.json")),
               "a refusal names the catalogue");
    for (int i = 1; i <= drivers.Count(); ++i)
        FUZZ_CHECK(!drivers.Item(i).FullName.isEmpty() && &drivers.Item(i) == &drivers.Items().at(i - 1),
                   "every driver listed has a name, in the file's order");
    return 0;
}
