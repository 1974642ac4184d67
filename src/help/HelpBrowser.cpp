#include "HelpBrowser.h"

#include <QHelpEngineCore>

namespace nebra {

HelpBrowser::HelpBrowser(QHelpEngineCore& engine, QWidget* parent) : QTextBrowser(parent), m_engine(engine)
{
    setOpenExternalLinks(true);
    setAccessibleName(QStringLiteral("Help page"));
}

bool HelpBrowser::hasPage(const QUrl& page) const
{
    return page.scheme() == QLatin1String("qthelp") &&
           !m_engine.fileData(page.adjusted(QUrl::RemoveFragment)).isEmpty();
}

// The text browser hands over addresses already resolved against the page.
QVariant HelpBrowser::loadResource(int type, const QUrl& name)
{
    if (name.scheme() == QLatin1String("qthelp"))
        return m_engine.fileData(name.adjusted(QUrl::RemoveFragment));
    return QTextBrowser::loadResource(type, name);
}

} // namespace nebra
