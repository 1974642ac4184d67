#pragma once

#include "AssayProtocolWizard.h"

#include <QObject>

// A wizard for the tests: does what the JSON in NEBRA_TEST_WIZARD_SCRIPT
// says, without a window:
//   { "result": 1, "openInEditor": true, "newFile": "...", "secondFile": "...", "hld": 2 }
// It leaves in the shared state what it was given: "LastRun" (the context's
// WizardName), "Owner" (the owner's object name), "Secured" (whether a
// security manager came with the context), "Modal", and the scratch value
// "run/Scratch".
class ScriptedWizard : public QObject, public nebra::AssayProtocolWizard
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID NebraAssayProtocolWizard_iid FILE "ScriptedWizard.json")
    Q_INTERFACES(nebra::AssayProtocolWizard)
public:
    void Run(QWidget* owner, bool modal, QObject*& context, QObject*& sharedState, int& result) override;
    bool OpenInEditor() const override { return m_openInEditor; }
    QString NewFileName() const override { return m_newFile; }
    bool HasSecondFile() const override { return !m_secondFile.isEmpty(); }
    QString SecondFileName() const override { return m_secondFile; }

private:
    bool m_openInEditor = false;
    QString m_newFile;
    QString m_secondFile;
};
