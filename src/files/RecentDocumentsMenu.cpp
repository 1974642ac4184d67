#include "RecentDocumentsMenu.h"

#include "RecentDocuments.h"

#include <QDir>
#include <QFileInfo>

namespace nebra {

RecentDocumentsMenu::RecentDocumentsMenu(RecentDocuments& recent, QWidget* parent)
    : QMenu(tr("Re&cent"), parent), m_recent(recent)
{
    setAccessibleName(QStringLiteral("Recent documents"));
    connect(this, &QMenu::aboutToShow, this, &RecentDocumentsMenu::fill);
    connect(&m_recent, &RecentDocuments::changed, this, &RecentDocumentsMenu::showDocuments);
}

void RecentDocumentsMenu::fill()
{
    showDocuments();
    m_recent.check();
}

void RecentDocumentsMenu::showDocuments()
{
    clear();
    const QStringList paths = m_recent.shown();
    if (paths.isEmpty()) {
        addAction(tr("(No recent documents)"))->setEnabled(false);
        return;
    }
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString& path = paths[i];
        // "&" in a name would otherwise become an access key.
        QString name = QFileInfo(path).fileName();
        name.replace(QLatin1Char('&'), QLatin1String("&&"));
        const QString key = i < 9 ? QStringLiteral("&%1").arg(i + 1) : QStringLiteral("1&0");
        QAction* action = addAction(QStringLiteral("%1  %2").arg(key, name));
        action->setToolTip(QDir::toNativeSeparators(path));
        action->setStatusTip(QDir::toNativeSeparators(path));
        connect(action, &QAction::triggered, this, [this, path] { Q_EMIT documentChosen(path); });
    }
}

} // namespace nebra
