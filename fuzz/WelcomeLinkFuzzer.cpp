// The welcome page's links: the command is the decoded target's text after
// its last backslash, so it never holds one, and each of the page's commands
// is found whatever comes before it in the link.
#include "FuzzCheck.h"
#include "WelcomePage.h"

#include <QUrl>

using namespace nebra;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray text = fuzz::bytes(data, size);
    for (const QUrl& target : {QUrl::fromEncoded(text), QUrl(QString::fromUtf8(text))})
        FUZZ_CHECK(!WelcomePage::CommandName(target).contains(QLatin1Char('\\')),
                   "a command holds no backslash");
    // The input as the part before the link's last backslash.
    const QString prefix = QString::fromUtf8(text);
    // The pages' links have no authority ("organiser:\\..."); after "//" the URL
    // parser takes the rest as a host name and folds its case.
    if (prefix.startsWith(QLatin1String("//")))
        return 0;
    for (const QString& name : WelcomePage::linkNames()) {
        const QUrl link(QStringLiteral("organiser:") + prefix + QLatin1Char('\\') + name);
        if (link.isValid())
            FUZZ_CHECK(WelcomePage::CommandName(link) == name, "each command is found after any prefix");
    }
    return 0;
}
