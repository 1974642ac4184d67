#pragma once

#include <QString>
#include <QUrl>

#include <span>

namespace nebra {

// The help topics the program opens by number, and the page of the user guide
// that answers each. The topics of the folders are those of the document type
// table; the build checks that each has its page here. The numbers are those the suite's programs and dialogs
// use for context help; the guide's index gives each page the same number as its id, and the build checks
// both against the compiled collection.
class HelpTopics
{
public:
    enum Topic : int
    {
        GettingStarted = 9000,
        Protocols = 9001,
        Results = 9002,
        Reports = 9003,
        InstrumentData = 9005,
        Layouts = 9006,
        NewProtocolWizard = 9007,
        Options = 9019
    };

    struct Entry
    {
        int topic;
        const char* page; // file name inside the guide
    };

    // Every topic with its page.
    static std::span<const Entry> all();

    // The page's address inside the compiled guide; empty for an unknown topic.
    static QUrl pageUrl(int topic);
    // The guide's first page, shown with the table of contents.
    static QUrl contentsUrl();
    // The address of a page of the guide by file name.
    static QUrl guideUrl(const QString& page);
};

} // namespace nebra
