#pragma once

#include <QUrl>
#include <QWidget>

class QWebEngineView;

namespace nebra {

// The embedded browser: an HTML view with the operations the Organiser uses
// (navigate, refresh, ready state). Dropped files are never accepted.
class BrowserControl : public QWidget
{
    Q_OBJECT
public:
    // Ready states, as the Organiser polls them.
    enum ReadyState { Uninitialised = 0, Loading = 1, Loaded = 2, Interactive = 3, Complete = 4 };

    explicit BrowserControl(QWidget* parent = nullptr);

    void Navigate(const QUrl& url);
    void Refresh();
    int ReadyState() const { return m_readyState; }
    QUrl LocationURL() const;

    QWebEngineView* view() const { return m_view; }

Q_SIGNALS:
    // The ready state changed (the Organiser performs pending commands on Complete).
    void CommandStateChange();

private:
    QWebEngineView* m_view;
    int m_readyState = Uninitialised;
};

} // namespace nebra
