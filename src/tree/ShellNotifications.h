#pragma once

namespace nebra {

// Keeps the folder tree in step with folders made, removed and renamed on
// disk by other programs.
class ShellNotifications
{
public:
    void ActivateSHCNENotification();
    void TerminateSHCNENotification();
    bool isActive() const { return m_active; }

private:
    bool m_active = false;
};

} // namespace nebra
