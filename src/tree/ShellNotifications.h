#pragma once

namespace nebra {

// The switch for change notifications of the data folders: it records
// whether they are on and writes the start-up's block line when switched
// on. It does not watch anything yet; today the file list's own watcher
// brings changes of the folder shown into the tree.
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
