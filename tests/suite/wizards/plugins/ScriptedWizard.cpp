#include "ScriptedWizard.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>
#include <QWidget>

namespace {

void remember(QObject* state, const QString& key, const QVariant& value)
{
    QMetaObject::invokeMethod(state, "SetValue", Q_ARG(QString, key), Q_ARG(QVariant, value));
}

} // namespace

void ScriptedWizard::Run(QWidget* owner, bool modal, QObject*& context, QObject*& sharedState, int& result)
{
    const QJsonObject script = QJsonDocument::fromJson(qgetenv("NEBRA_TEST_WIZARD_SCRIPT")).object();
    remember(sharedState, QStringLiteral("LastRun"), context->property("WizardName"));
    remember(sharedState, QStringLiteral("Owner"), owner ? owner->objectName() : QString());
    remember(sharedState, "Secured", context->property("SecurityManager").value<QObject*>() != nullptr);
    remember(sharedState, QStringLiteral("Modal"), modal);
    remember(sharedState, QStringLiteral("run/Scratch"), 1);
    if (script.contains(QLatin1String("hld"))) {
        QObject* companion = context->property("Companion").value<QObject*>();
        companion->setProperty("CurrentHLD", script.value(QLatin1String("hld")).toInt());
    }
    m_openInEditor = script.value(QLatin1String("openInEditor")).toBool();
    m_newFile = script.value(QLatin1String("newFile")).toString();
    m_secondFile = script.value(QLatin1String("secondFile")).toString();
    result = script.value(QLatin1String("result")).toInt();
}
