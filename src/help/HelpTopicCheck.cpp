// Build step: fails when a context topic of the program has no page in the
// compiled help collection, or when the guide's index does not give that page
// the topic's number as its id, or when a document type's topic has no page.

#include "DocumentTypes.h"
#include "HelpTopics.h"

#include <QCoreApplication>
#include <QHelpEngineCore>
#include <QHelpLink>

#include <cstdio>

using nebra::HelpTopics;

namespace {

bool check(const QHelpEngineCore& engine, const HelpTopics::Entry& entry)
{
    const QUrl page = HelpTopics::pageUrl(entry.topic);
    if (engine.fileData(page).isEmpty()) {
        std::fprintf(stderr, "help topic %d: page %s is not in the collection\n", entry.topic, entry.page);
        return false;
    }
    const QList<QHelpLink> links = engine.documentsForIdentifier(QString::number(entry.topic));
    for (const QHelpLink& link : links) {
        if (link.url.adjusted(QUrl::RemoveFragment) == page)
            return true;
    }
    std::fprintf(stderr, "help topic %d: no index keyword with id \"%d\" leads to %s\n", entry.topic,
                 entry.topic, entry.page);
    return false;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s COLLECTION.qhc\n", argv[0]);
        return 2;
    }
    QHelpEngineCore engine(QString::fromLocal8Bit(argv[1]));
    engine.setReadOnly(true);
    if (!engine.setupData()) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(engine.error()));
        return 1;
    }
    bool good = !engine.fileData(HelpTopics::contentsUrl()).isEmpty();
    if (!good)
        std::fprintf(stderr, "the guide's first page is not in the collection\n");
    for (const HelpTopics::Entry& entry : HelpTopics::all())
        good = check(engine, entry) && good;
    for (const nebra::DocumentTypeDescription& type : nebra::DocumentTypes::all()) {
        if (type.helpTopic != 0 && HelpTopics::pageUrl(type.helpTopic).isEmpty()) {
            std::fprintf(stderr, "help topic %d of document type %d has no page\n", type.helpTopic,
                         nebra::toData(type.type));
            good = false;
        }
    }
    return good ? 0 : 1;
}
