#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QObject;

namespace nebra {

// What a wizard run needs from the rest of the Organiser, as hooks so that
// the picker stands on its own. A hook left empty does nothing (and answers
// false or null).
struct WizardHooks
{
    // Closes the help window if one is open.
    std::function<bool()> closeHelpIfOpen;
    // Shows a help topic.
    std::function<void(int topic)> displayHelp;
    // True while a security session is open, and that session's manager.
    std::function<bool()> securityEnabled;
    std::function<QObject*()> securityManager;
    // Re-points the instrument driver's folder node after CurrentHLD changed.
    std::function<void()> handleChangedHLD;
    // Refills the tree's Results node from the disk.
    std::function<void()> recreateResultsNode;
    // A wizard made these files (the protocol, and its second file): each is
    // a document the user has used, whether or not it opens in the editor.
    std::function<void(const QStringList& files)> protocolMade;
    // A wizard is about to run (true), and has run (false): what it writes
    // in the meantime the Organiser wrote.
    std::function<void(bool running)> wizardRunning;
    // Starts the assay application on a newly made protocol (and its second file).
    std::function<void(const QStringList& files)> openNewProtocol;
};

} // namespace nebra
