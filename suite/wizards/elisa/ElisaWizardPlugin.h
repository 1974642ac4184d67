#pragma once

#include "AssayProtocolWizard.h"

#include <QObject>

namespace nebra {

// The plug-in of the ELISA wizard (ProgID "NebraWizards.Elisa"). Its
// template is "Template.apr" in the wizard's folder; without a readable
// template the run fails (result -1) and says why first.
class ElisaWizardPlugin : public QObject, public AssayProtocolWizard
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID NebraAssayProtocolWizard_iid FILE "ElisaWizardPlugin.json")
    Q_INTERFACES(nebra::AssayProtocolWizard)
public:
    void Run(QWidget* owner, bool modal, QObject*& context, QObject*& sharedState, int& result) override;
    bool OpenInEditor() const override { return false; }
    QString NewFileName() const override { return m_newFileName; }
    bool HasSecondFile() const override { return false; }
    QString SecondFileName() const override { return {}; }

private:
    QString m_newFileName;
};

} // namespace nebra
