// The wizard catalogue: a catalogue that is not valid yields no wizards and
// says why; every wizard listed has a name and a plug-in; skipped entries
// are named in the reason.
#include "FuzzCheck.h"
#include "WizardCatalogue.h"

using namespace nebra;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const WizardCatalogue catalogue =
        WizardCatalogue::Parse(fuzz::bytes(data, size), QStringLiteral("wizards.json"));
    const WizardCollection& wizards = catalogue.Wizards();
    const QString error = catalogue.errorString();
    FUZZ_CHECK(error.isEmpty() || error.contains(QLatin1String("wizards.json")),
               "a reason names the catalogue");
    FUZZ_CHECK(!error.contains(QLatin1String("not a valid")) || wizards.Count() == 0,
               "an invalid catalogue lists nothing");
    for (int i = 1; i <= wizards.Count(); ++i)
        FUZZ_CHECK(!wizards.Item(i).Name.isEmpty() && !wizards.Item(i).ProgID.isEmpty(),
                   "every wizard listed has a name and a plug-in");
    return 0;
}
