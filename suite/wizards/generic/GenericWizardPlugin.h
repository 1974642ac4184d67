#pragma once

#include "AssayProtocolWizard.h"

#include <QObject>

namespace nebra {

// The plug-in of the Generic wizard (ProgID "NebraWizards.Generic"). Reads
// the Protocols and Microplate Layouts folders from the run's companion and
// remembers the layout last used in the shared state ("Generic/LastLayout").
class GenericWizardPlugin : public QObject, public AssayProtocolWizard
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID NebraAssayProtocolWizard_iid FILE "GenericWizardPlugin.json")
    Q_INTERFACES(nebra::AssayProtocolWizard)
public:
    void Run(QWidget* owner, bool modal, QObject*& context, QObject*& sharedState, int& result) override;
    bool OpenInEditor() const override { return m_openInEditor; }
    QString NewFileName() const override { return m_newFileName; }
    bool HasSecondFile() const override { return false; }
    QString SecondFileName() const override { return {}; }

private:
    bool m_openInEditor = false;
    QString m_newFileName;
};

} // namespace nebra
