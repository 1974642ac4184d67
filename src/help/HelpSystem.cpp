#include "HelpSystem.h"

namespace nebra {

bool HelpSystem::CloseHelpIfOpen()
{
    if (!IsDisplayingHelp())
        return false;
    m_displaying = false;
    return true;
}

} // namespace nebra
