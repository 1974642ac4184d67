#pragma once

#include "HelpSystem.h"
#include "HelpViewer.h"

#include <QWidget>

#include <memory>

class QHelpEngine;
class QLineEdit;
class QTabWidget;
class QToolBar;

namespace nebra {

class HelpBrowser;
class SuiteSettings;

// The help window: the user guide's contents, keyword index and full-text
// search beside the page viewer, with back, forward and text size. It is not
// modal; closing it only hides it. Its size and place, and the text size,
// are kept as the suite's settings' properties when settings are given.
class HelpWindow : public QWidget, public HelpViewer
{
    Q_OBJECT

public:
    HelpWindow(std::unique_ptr<QHelpEngine> engine, SuiteSettings* settings, QWidget* parent = nullptr);
    ~HelpWindow() override;

    // A factory for HelpSystem: opens the collection and makes the window.
    static HelpSystem::ViewerFactory factory(SuiteSettings* settings);

    bool showContents(const QUrl& page) override;
    bool showPage(const QUrl& page) override;
    bool isShown() const override { return isVisible(); }
    void closeWindow() override { close(); }

    // Starts a full-text search as if typed into the search pane.
    void search(const QString& words);

    QHelpEngine& engine() const { return *m_engine; }
    HelpBrowser& browser() const { return *m_browser; }
    QTabWidget& navigation() const { return *m_navigation; }

    enum Pane
    {
        ContentsPane,
        IndexPane,
        SearchPane
    };

protected:
    void hideEvent(QHideEvent* event) override;

private:
    void createToolBar();
    QWidget* createContentsPane();
    QWidget* createIndexPane();
    QWidget* createSearchPane();
    bool display(const QUrl& page);
    void followContents(const QUrl& page);
    void changeTextSize(int steps);
    void restoreSettings();
    void saveSettings();

    std::unique_ptr<QHelpEngine> m_engine;
    SuiteSettings* m_settings;
    HelpBrowser* m_browser = nullptr;
    QTabWidget* m_navigation = nullptr;
    QToolBar* m_toolBar = nullptr;
    QLineEdit* m_indexFilter = nullptr;
    int m_textSteps = 0;
};

} // namespace nebra
