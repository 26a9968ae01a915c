#pragma once

#include <QUrl>
#include <QWidget>

class HelpBrowser;
class QAction;
class QDockWidget;
class QHelpEngine;
class QHelpSearchEngine;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QMainWindow;
class QTabWidget;

// The manual's window: contents and index beside the page, a search dock and navigation.
class HelpWidget : public QWidget
{
    Q_OBJECT

public:
    explicit HelpWidget(const QString &collectionFile, QWidget *parent = nullptr);

    // The help window of owner (made on first use), showing page, or the home page when page is
    // empty. Null, with a reason, when the manual cannot be opened.
    static HelpWidget *open(QWidget *owner, const QString &page, QString *error);

    QHelpEngine *helpEngine() const { return m_engine; }
    HelpBrowser *browser() const { return m_browser; }
    bool isIndexing() const { return m_indexing; }

public slots:
    void startSearch();
    void goBack();
    void goForward();
    void goHome();
    void showSearchWidget();
    void linkActivated(const QUrl &url);
    void showFoundSite(const QUrl &url);
    void showResults(int hits);
    void update(const QUrl &url);
    void openFoundSite(QListWidgetItem *item);
    void updateButtons();

private:
    void createActions();
    void indexingStarted();
    void indexingFinished();

    QHelpEngine *m_engine;
    QHelpSearchEngine *m_searchEngine;
    QMainWindow *m_frame;
    QTabWidget *m_tabs;
    HelpBrowser *m_browser;
    QDockWidget *m_searchDock;
    QLabel *m_searchState;
    QListWidget *m_results;
    QAction *m_home = nullptr;
    QAction *m_back = nullptr;
    QAction *m_forward = nullptr;
    QAction *m_search = nullptr;
    bool m_indexing = false;
    bool m_indexingReported = false;
    bool m_searchPending = false;
};
