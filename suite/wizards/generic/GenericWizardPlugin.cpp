#include "GenericWizardPlugin.h"

#include "GenericWizard.h"

#include <QVariant>

namespace nebra {

namespace {

constexpr const char* LastLayoutKey = "Generic/LastLayout";

QVariant stateValue(QObject* state, const QString& key)
{
    QVariant value;
    if (state)
        QMetaObject::invokeMethod(state, "Value", Qt::DirectConnection, Q_RETURN_ARG(QVariant, value),
                                  Q_ARG(QString, key));
    return value;
}

} // namespace

void GenericWizardPlugin::Run(QWidget* owner, bool modal, QObject*& context, QObject*& sharedState,
                              int& result)
{
    m_openInEditor = false;
    m_newFileName.clear();
    QObject* companion = context ? context->property("Companion").value<QObject*>() : nullptr;
    if (!companion) {
        result = -1; // nothing to write into: reported as a failed wizard
        return;
    }
    GenericWizard wizard(companion->property("ProtocolsFolder").toString(),
                         companion->property("LayoutsFolder").toString(),
                         stateValue(sharedState, QLatin1String(LastLayoutKey)).toString(), owner);
    wizard.setWindowModality(modal ? Qt::ApplicationModal : Qt::NonModal);
    if (wizard.exec() != QDialog::Accepted) {
        result = WizardResult::Abandoned;
        return;
    }
    m_newFileName = wizard.NewFileName();
    m_openInEditor = wizard.OpenInEditor();
    if (sharedState)
        QMetaObject::invokeMethod(sharedState, "SetValue", Qt::DirectConnection,
                                  Q_ARG(QString, QLatin1String(LastLayoutKey)),
                                  Q_ARG(QVariant, wizard.protocol().layout));
    result = WizardResult::Created;
}

} // namespace nebra
