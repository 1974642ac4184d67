// The settings file reader: a file it cannot use leaves the defaults in
// effect and says why, naming the file; a file it uses gives its values; and
// CR LF line ends are judged as LF ones.
#include "FuzzCheck.h"
#include "SettingsStore.h"

#include <QFile>
#include <QTemporaryDir>

using namespace nebra;

namespace {

// A new file name for every read: QSettings keeps what it parsed per file
// and trusts it while size and modification time stay the same, which two
// inputs written within the same millisecond can share.
QString freshSettingsFile()
{
    static QTemporaryDir folder;
    static quint64 count = 0;
    return folder.filePath(QStringLiteral("Suite-%1.ini").arg(++count));
}

QString warningFor(const QByteArray& text)
{
    const QString path = freshSettingsFile();
    QFile file(path);
    FUZZ_CHECK(file.open(QIODevice::WriteOnly) && file.write(text) == text.size(),
               "the input can be written");
    file.close();
    QString warning;
    {
        const SettingsStore store(path);
        const QVariant fallback = QStringLiteral("fallback \x01");
        const QVariant value = store.value(QStringLiteral("Paths/ParentDirectory"), fallback);
        warning = store.warning();
        FUZZ_CHECK(warning.isEmpty() || value == fallback, "an unusable file leaves the defaults");
        FUZZ_CHECK(warning.isEmpty() || warning.contains(path), "the warning names the file");
    }
    QFile::remove(path);
    return warning;
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
