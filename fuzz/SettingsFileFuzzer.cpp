// The settings file reader: a file it cannot use leaves the defaults in
// effect and says why, naming the file; a file it uses gives its values; and
// CR LF line ends are judged as LF ones.
#include "FuzzCheck.h"
#include "SettingsStore.h"

#include <QFile>
#include <QTemporaryDir>

using namespace nebra;

namespace {

const QString& settingsFile()
{
    static QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("Suite.ini"));
    return path;
}

QString warningFor(const QByteArray& text)
{
    QFile file(settingsFile());
    FUZZ_CHECK(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size(),
               "the input can be written");
    file.close();
    const SettingsStore store(settingsFile());
    const QVariant fallback = QStringLiteral("fallback \x01");
    const QVariant value = store.value(QStringLiteral("Paths/ParentDirectory"), fallback);
    FUZZ_CHECK(store.warning().isEmpty() || value == fallback, "an unusable file leaves the defaults");
    FUZZ_CHECK(store.warning().isEmpty() || store.warning().contains(QLatin1String("Suite.ini")),
               "the warning names the file");
    return store.warning();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray text = fuzz::bytes(data, size);
    const QString warning = warningFor(text);
    QByteArray crlf;
    if (fuzz::toCrLf(text, crlf))
        FUZZ_CHECK(warningFor(crlf).isEmpty() == warning.isEmpty(), "CR LF is judged as LF");
    return 0;
}
