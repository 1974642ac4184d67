#include "WizardPlugins.h"

#include "AssayProtocolWizard.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>

namespace nebra {

WizardPlugins::WizardPlugins(QString folder) : m_folder(std::move(folder)) {}

QString WizardPlugins::libraryFor(const QString& progId) const
{
    const QDir dir(m_folder);
    for (const QFileInfo& file : dir.entryInfoList(QDir::Files, QDir::Name)) {
        if (!QLibrary::isLibrary(file.fileName()))
            continue;
        // Reading the metadata maps the file but runs none of its code.
        const QJsonObject metaData = QPluginLoader(file.absoluteFilePath()).metaData();
        if (metaData.value(QLatin1String("MetaData")).toObject().value(QLatin1String("ProgID")).toString() ==
            progId)
            return file.absoluteFilePath();
    }
    return {};
}

AssayProtocolWizard* WizardPlugins::Create(const QString& progId, QString* reason) const
{
    const QString library = libraryFor(progId);
    if (library.isEmpty()) {
        *reason = QStringLiteral("No wizard plug-in in \"%1\" declares the ProgID \"%2\".")
                      .arg(QDir::toNativeSeparators(m_folder), progId);
        return nullptr;
    }
    QPluginLoader loader(library);
    loader.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    QObject* root = loader.instance();
    if (!root) {
        *reason = QStringLiteral("The wizard plug-in \"%1\" could not be loaded: %2")
                      .arg(QDir::toNativeSeparators(library), loader.errorString());
        return nullptr;
    }
    auto* wizard = qobject_cast<AssayProtocolWizard*>(root);
    if (!wizard)
        *reason = QStringLiteral("The plug-in \"%1\" does not implement the wizard interface %2.")
                      .arg(QDir::toNativeSeparators(library), QLatin1String(NebraAssayProtocolWizard_iid));
    return wizard;
}

QString WizardPlugins::DefaultFolder()
{
    const QString besideProgram =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../" NEBRA_INSTALL_LIBDIR "/nebra/wizards");
    if (QFileInfo(besideProgram).isDir())
        return QDir::cleanPath(besideProgram);
    if (QFileInfo(QStringLiteral(NEBRA_WIZARD_PLUGIN_INSTALL_DIR)).isDir())
        return QStringLiteral(NEBRA_WIZARD_PLUGIN_INSTALL_DIR);
    return QStringLiteral(NEBRA_WIZARD_PLUGIN_BUILD_DIR);
}

} // namespace nebra
