#pragma once

namespace nebra {

// The help window: table of contents and context topics.
class HelpSystem
{
public:
    bool IsDisplayingHelp() const { return m_displaying; }
    // Closes the help window when one is open; true when it was.
    bool CloseHelpIfOpen();

    // Shows the topic of a help context id. The help window itself is not
    // part of this build yet, so the request is only remembered.
    void DisplayHelpContext(int contextId) { m_lastContext = contextId; }
    int lastContext() const { return m_lastContext; }

private:
    bool m_displaying = false;
    int m_lastContext = 0;
};

} // namespace nebra
