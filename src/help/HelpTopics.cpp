#include "HelpTopics.h"

namespace nebra {

namespace {

constexpr HelpTopics::Entry kTopics[] = {
    {HelpTopics::GettingStarted, "getting-started.html"},
    {HelpTopics::Protocols, "protocols.html"},
    {HelpTopics::Results, "results.html"},
    {HelpTopics::Reports, "reports.html"},
    {HelpTopics::InstrumentData, "instrument-data.html"},
    {HelpTopics::Layouts, "layouts.html"},
    {HelpTopics::NewProtocolWizard, "new-protocol-wizard.html"},
    {HelpTopics::Options, "options.html"},
};

// Must match the namespace and virtual folder of docs/help/organiser.qhp.
constexpr char kGuideRoot[] = "qthelp://nebra.organiser.5/guide/";

} // namespace

std::span<const HelpTopics::Entry> HelpTopics::all()
{
    return kTopics;
}

QUrl HelpTopics::guideUrl(const QString& page)
{
    return QUrl(QLatin1String(kGuideRoot) + page);
}

QUrl HelpTopics::pageUrl(int topic)
{
    for (const Entry& entry : kTopics) {
        if (entry.topic == topic)
            return guideUrl(QLatin1String(entry.page));
    }
    return {};
}

QUrl HelpTopics::contentsUrl()
{
    return guideUrl(QStringLiteral("index.html"));
}

} // namespace nebra
