#include "ElisaWizardPlugin.h"

#include "ElisaWizard.h"

#include <QMessageBox>
#include <QVariant>

namespace nebra {

void ElisaWizardPlugin::Run(QWidget* owner, bool modal, QObject*& context, QObject*&, int& result)
{
    m_newFileName.clear();
    QObject* companion = context ? context->property("Companion").value<QObject*>() : nullptr;
    if (!companion) {
        result = -1;
        return;
    }
    const QString templatePath = companion->property("WizardsFolder").toString() + QLatin1Char('/') +
                                 context->property("WizardName").toString() + QStringLiteral("/Template.apr");
    QString error;
    const auto templateProtocol = AssayProtocol::Load(templatePath, error);
    if (!templateProtocol) {
        QMessageBox::warning(
            owner, ElisaWizard::caption(),
            QStringLiteral("The template %1 cannot be used.\n\n%2").arg(templatePath, error));
        result = -1;
        return;
    }
    ElisaWizard wizard(*templateProtocol, companion->property("ProtocolsFolder").toString(),
                       companion->property("LayoutsFolder").toString(), owner);
    wizard.setWindowModality(modal ? Qt::ApplicationModal : Qt::NonModal);
    if (wizard.exec() != QDialog::Accepted) {
        result = WizardResult::Abandoned;
        return;
    }
    m_newFileName = wizard.NewFileName();
    result = WizardResult::Created;
}

} // namespace nebra
