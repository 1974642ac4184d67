#pragma once

namespace nebra {

// The help window: table of contents and context topics.
class HelpSystem
{
public:
    bool IsDisplayingHelp() const { return m_displaying; }
    // Closes the help window when one is open; true when it was.
    bool CloseHelpIfOpen();

private:
    bool m_displaying = false;
};

} // namespace nebra
