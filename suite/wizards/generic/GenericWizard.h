#pragma once

#include "AssayProtocol.h"

#include <QWizard>

namespace nebra {

class AnalysisPage;
class LayoutPage;
class ProtocolNamePage;
class ReadModePage;
class TimingPage;

// The Generic wizard: asks for a protocol's name, plate layout, read mode,
// timing and conditions, analysis and units, and on Finish writes the
// protocol and its preview into the Protocols folder. A protocol that cannot
// be written keeps the wizard open with the reason on its last page.
class GenericWizard : public QWizard
{
    Q_OBJECT
public:
    // preferredLayout: the layout chosen first (the one used last time), if it is still there.
    GenericWizard(const QString& protocolsFolder, const QString& layoutsFolder,
                  const QString& preferredLayout, QWidget* parent = nullptr);

    // The protocol as the pages describe it now.
    AssayProtocol protocol() const;

    // After Finish: the new protocol's path, and whether to open it.
    QString NewFileName() const { return m_newFileName; }
    bool OpenInEditor() const;

    static QString caption() { return QStringLiteral("New Assay Protocol - Generic"); }

    void accept() override;

private:
    QString m_protocolsFolder;
    ProtocolNamePage* m_namePage;
    LayoutPage* m_layoutPage;
    ReadModePage* m_readPage;
    TimingPage* m_timingPage;
    AnalysisPage* m_analysisPage;
    QString m_newFileName;
};

} // namespace nebra
