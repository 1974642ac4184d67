#include "GenericWizard.h"

#include "GenericWizardPages.h"
#include "ProtocolFiles.h"

namespace nebra {

GenericWizard::GenericWizard(const QString& protocolsFolder, const QString& layoutsFolder,
                             const QString& preferredLayout, QWidget* parent)
    : QWizard(parent), m_protocolsFolder(protocolsFolder), m_namePage(new ProtocolNamePage(protocolsFolder)),
      m_layoutPage(new LayoutPage(layoutsFolder, preferredLayout)), m_readPage(new ReadModePage),
      m_timingPage(new TimingPage), m_analysisPage(new AnalysisPage)
{
    setObjectName(QStringLiteral("frmGenericWizard"));
    setWindowTitle(caption());
    setAccessibleName(caption());
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnStartPage);
    for (QWizardPage* page : std::initializer_list<QWizardPage*>{m_namePage, m_layoutPage, m_readPage,
                                                                 m_timingPage, m_analysisPage}) {
        page->setAccessibleName(QStringLiteral("Page: ") + page->title());
        addPage(page);
    }
    resize(720, 520);
}

AssayProtocol GenericWizard::protocol() const
{
    AssayProtocol protocol;
    protocol.name = m_namePage->name();
    protocol.layout = m_layoutPage->layout();
    ReadSettings settings;
    m_readPage->apply(settings);
    m_timingPage->apply(settings);
    protocol.settings = settings;
    protocol.read = settings.Summary();
    protocol.analysis = m_analysisPage->analysis();
    protocol.units = m_analysisPage->units();
    return protocol;
}

bool GenericWizard::OpenInEditor() const
{
    return m_analysisPage->openInEditor();
}

void GenericWizard::accept()
{
    QString error;
    const QString path = ProtocolFiles::Save(m_protocolsFolder, protocol(), error);
    if (path.isEmpty()) {
        // Nothing was written; the answers stay for another try.
        m_analysisPage->showProblem(QStringLiteral("The protocol was not saved. ") + error);
        return;
    }
    m_newFileName = path;
    QWizard::accept();
}

} // namespace nebra
