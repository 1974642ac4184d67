#pragma once

#include "HelpViewer.h"

#include <QString>

#include <functional>
#include <memory>

namespace nebra {

// The program's entry points to help: the table of contents, context topics
// by number or by the document type of the folder selected, and the help
// window it opened.
//
// The window itself comes from a factory (the widget layer's help window), made
// on the first display and kept, hidden, when the user closes it, so that later
// displays are quick. When it cannot be made (help file missing or damaged) the
// user gets one message naming the file for that request and nothing is
// remembered; the next request tries again.
class HelpSystem
{
public:
    // Makes the help window for a help file; returns null and sets error (a
    // sentence for the user) when it cannot.
    using ViewerFactory = std::function<std::unique_ptr<HelpViewer>(const QString& helpFile, QString& error)>;

    explicit HelpSystem(ViewerFactory factory = {});
    ~HelpSystem();
    HelpSystem(const HelpSystem&) = delete;
    HelpSystem& operator=(const HelpSystem&) = delete;

    // The installed help collection: beside the program, then the install
    // prefix, then the one compiled in this build tree.
    static QString defaultHelpFile();

    void setHelpFilePath(const QString& path) { m_helpFile = path; }
    QString helpFilePath() const { return m_helpFile; }
    void setViewerFactory(ViewerFactory factory) { m_factory = std::move(factory); }

    // Context help reads the selected tree node's Data (its document type) through this.
    void setSelectedDocumentType(std::function<int()> selectedData)
    {
        m_selectedData = std::move(selectedData);
    }

    // True while the help window this object opened is on the screen.
    bool IsDisplayingHelp() const;
    // Closes the help window when it is shown and returns true; otherwise
    // returns false and does nothing.
    bool CloseHelpIfOpen();
    // The table of contents with the guide's first page.
    void DisplayeHelpTOC();
    // The page of a context topic; an unknown topic shows the table of contents.
    void DisplayHelpContext(int topic);
    // Context help: the topic of the selected folder's document type (the
    // document type table's); a type without a topic shows nothing.
    void ShowContextHelp();

    // The topic of the last display request, 0 before any (for the shell's tests).
    int lastContext() const { return m_lastContext; }

private:
    HelpViewer* viewer();
    void remember(bool shown);

    ViewerFactory m_factory;
    QString m_helpFile;
    std::function<int()> m_selectedData;
    std::unique_ptr<HelpViewer> m_viewer;
    bool m_displayed = false;
    int m_lastContext = 0;
};

} // namespace nebra
