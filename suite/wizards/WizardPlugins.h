#pragma once

#include <QString>

namespace nebra {

class AssayProtocolWizard;

// Finds and loads wizard plug-ins in the suite's wizard plug-in folder.
//
// A plug-in is matched to a catalogue entry by the "ProgID" of its metadata
// (Q_PLUGIN_METADATA), read without loading the library. Loading resolves
// every symbol at once, so a library that cannot be linked is reported as a
// failure instead of failing later in a call. A loaded plug-in stays loaded
// for the life of the process and its root object is the wizard.
class WizardPlugins
{
public:
    explicit WizardPlugins(QString folder);

    QString folder() const { return m_folder; }

    // The wizard whose plug-in declares progId, or nullptr with reason set
    // to one sentence saying why none could be had (no such plug-in, the
    // loader's own reason, or the wrong interface).
    AssayProtocolWizard* Create(const QString& progId, QString* reason) const;

    // The installed plug-in folder: beside the program ("../lib/nebra/wizards"),
    // then the installation's, then the build tree's.
    static QString DefaultFolder();

private:
    QString libraryFor(const QString& progId) const;

    QString m_folder;
};

} // namespace nebra
