#pragma once

#include <QTextBrowser>

class QHelpEngineCore;

namespace nebra {

// The page viewer of the help window: a text browser that reads the guide's
// pages and pictures out of the help collection. Links to the web open in
// the desktop's browser.
class HelpBrowser : public QTextBrowser
{
    Q_OBJECT

public:
    HelpBrowser(QHelpEngineCore& engine, QWidget* parent = nullptr);

    // True when the collection holds the page (anchor ignored).
    bool hasPage(const QUrl& page) const;

    QVariant loadResource(int type, const QUrl& name) override;

private:
    QHelpEngineCore& m_engine;
};

} // namespace nebra
