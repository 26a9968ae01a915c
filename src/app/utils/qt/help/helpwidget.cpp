#include "helpwidget.h"

#include "helpbrowser.h"
#include "helpcollection.h"

#include <QAction>
#include <QActionGroup>
#include <QDockWidget>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpIndexWidget>
#include <QHelpLink>
#include <QHelpSearchEngine>
#include <QHelpSearchQueryWidget>
#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

// How long the index may take to say that it has started before searches stop waiting for it.
constexpr int indexingStartLimitMs = 5000;

} // namespace

HelpWidget::HelpWidget(const QString &collectionFile, QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("helpWidget"));
    setWindowTitle(tr("Chromaxis help"));
    m_engine = new QHelpEngine(collectionFile, this);
    m_searchEngine = m_engine->searchEngine();

    // Docks need a main window; a plain one inside keeps this a widget that can live anywhere.
    m_frame = new QMainWindow(this);
    m_frame->setWindowFlags(Qt::Widget);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_frame);

    m_tabs = new QTabWidget;
    m_tabs->setObjectName(QStringLiteral("helpTabs"));
    m_tabs->addTab(m_engine->contentWidget(), tr("Contents"));
    m_tabs->addTab(m_engine->indexWidget(), tr("Index"));
    m_browser = new HelpBrowser(m_engine);
    auto *splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(m_tabs);
    splitter->addWidget(m_browser);
    splitter->setSizes({260, 640});
    m_frame->setCentralWidget(splitter);

    auto *searchPane = new QWidget;
    auto *searchLayout = new QVBoxLayout(searchPane);
    searchLayout->addWidget(m_searchEngine->queryWidget());
    m_searchState = new QLabel(tr("Search results"));
    m_searchState->setObjectName(QStringLiteral("searchState"));
    searchLayout->addWidget(m_searchState);
    m_results = new QListWidget;
    m_results->setObjectName(QStringLiteral("searchResults"));
    m_results->setAccessibleName(tr("Results"));
    searchLayout->addWidget(m_results);
    m_searchDock = new QDockWidget(tr("Search"), m_frame);
    m_searchDock->setObjectName(QStringLiteral("searchDock"));
    m_searchDock->setFeatures(QDockWidget::DockWidgetClosable);
    m_searchDock->setWidget(searchPane);
    m_frame->addDockWidget(Qt::LeftDockWidgetArea, m_searchDock);
    m_frame->resizeDocks({m_searchDock}, {220}, Qt::Horizontal);

    createActions();

    connect(m_engine->contentWidget(), &QHelpContentWidget::linkActivated, this, &HelpWidget::linkActivated);
    connect(m_engine->indexWidget(), &QHelpIndexWidget::documentActivated, this,
            [this](const QHelpLink &link) { linkActivated(link.url); });
    connect(m_engine->indexWidget(), &QHelpIndexWidget::documentsActivated, this,
            [this](const QList<QHelpLink> &links) {
                if (!links.isEmpty())
                    linkActivated(links.first().url);
            });
    connect(m_searchEngine->queryWidget(), &QHelpSearchQueryWidget::search, this, &HelpWidget::startSearch);
    connect(m_searchEngine, &QHelpSearchEngine::searchingFinished, this, &HelpWidget::showResults);
    connect(m_searchEngine, &QHelpSearchEngine::indexingStarted, this, &HelpWidget::indexingStarted);
    connect(m_searchEngine, &QHelpSearchEngine::indexingFinished, this, &HelpWidget::indexingFinished);
    connect(m_results, &QListWidget::itemActivated, this, &HelpWidget::openFoundSite);
    connect(m_browser, &QTextBrowser::sourceChanged, this, &HelpWidget::update);
    connect(m_engine->contentModel(), &QHelpContentModel::contentsCreated, this, [this]() {
        m_engine->contentWidget()->expandToDepth(0);
        update(m_browser->source());
    });
    connect(m_browser, &QTextBrowser::historyChanged, this, &HelpWidget::updateButtons);

    // The search engine brings its index up to date by itself once the setup is done, in a
    // thread that reports its start only later: a search typed meanwhile must wait as well.
    if (m_engine->setupData()) {
        indexingStarted();
        QTimer::singleShot(indexingStartLimitMs, this, [this]() {
            if (!m_indexingReported && m_indexing)
                indexingFinished();
        });
    }
    resize(1120, 720);
    goHome();
    updateButtons();
}

HelpWidget *HelpWidget::open(QWidget *owner, const QString &page, QString *error)
{
    HelpWidget *help = owner ? owner->findChild<HelpWidget *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
    if (!help) {
        if (!HelpCollection::prepare(error))
            return nullptr;
        help = new HelpWidget(HelpCollection::userCollectionFile(), owner);
        help->setWindowFlags(Qt::Window);
    }
    if (!page.isEmpty())
        help->m_browser->setSource(HelpCollection::pageUrl(page));
    help->show();
    help->raise();
    help->activateWindow();
    return help;
}

void HelpWidget::createActions()
{
    auto *group = new QActionGroup(this);
    group->setObjectName(QStringLiteral("Navigate"));
    group->setExclusive(false);
    auto make = [this, group](const QString &name, const QString &text, const QString &tip, const char *icon,
                              void (HelpWidget::*slot)()) {
        auto *a = new QAction(QIcon(QStringLiteral(":res/images/") + QLatin1String(icon)), text, group);
        a->setObjectName(name);
        a->setToolTip(tip);
        a->setStatusTip(tip);
        connect(a, &QAction::triggered, this, slot);
        addAction(a);
        return a;
    };
    m_home = make(QStringLiteral("goHome"), tr("Go to home page"), tr("Go to home page"), "nav_home16x16.png",
                  &HelpWidget::goHome);
    m_home->setShortcut(QKeySequence(QStringLiteral("Ctrl+0")));
    m_back = make(QStringLiteral("goBack"), tr("Go back"), tr("Go to previous page"), "nav_back16x16.png",
                  &HelpWidget::goBack);
    m_back->setShortcuts(QKeySequence::Back);
    m_forward = make(QStringLiteral("goForward"), tr("Go forward"), tr("Go to next page"), "nav_fore16x16.png",
                     &HelpWidget::goForward);
    m_forward->setShortcuts(QKeySequence::Forward);
    m_search = make(QStringLiteral("search"), tr("Search ..."), tr("Search in the help"), "magnify16x16.png",
                    &HelpWidget::showSearchWidget);
    m_search->setShortcuts(QKeySequence::Find);
    for (QAction *a : group->actions())
        a->setShortcutContext(Qt::WindowShortcut);

    auto *bar = m_frame->addToolBar(tr("Navigate"));
    bar->setObjectName(QStringLiteral("navigate"));
    bar->addActions(group->actions());
}

void HelpWidget::startSearch()
{
    const QString query = m_searchEngine->queryWidget()->searchInput().trimmed();
    if (query.isEmpty())
        return;
    if (m_indexing) {
        // A search over a half-built index finds nothing; it runs as soon as the index is done.
        m_searchPending = true;
        m_searchState->setText(tr("Indexing... the search starts when the index is complete."));
        return;
    }
    m_searchPending = false;
    m_searchState->setText(tr("Searching..."));
    m_searchEngine->search(query);
}

void HelpWidget::indexingStarted()
{
    if (sender())
        m_indexingReported = true;
    m_indexing = true;
    m_searchState->setText(tr("Indexing..."));
}

void HelpWidget::indexingFinished()
{
    m_indexing = false;
    m_searchState->setText(tr("Search results"));
    if (m_searchPending)
        startSearch();
}

void HelpWidget::goBack()
{
    m_browser->backward();
}

void HelpWidget::goForward()
{
    m_browser->forward();
}

void HelpWidget::goHome()
{
    m_browser->setSource(HelpCollection::homePage());
}

void HelpWidget::showSearchWidget()
{
    m_searchDock->show();
    m_searchDock->raise();
    m_searchEngine->queryWidget()->setFocus();
}

void HelpWidget::linkActivated(const QUrl &url)
{
    m_browser->setSource(url);
}

void HelpWidget::showFoundSite(const QUrl &url)
{
    m_browser->setSource(url);
}

void HelpWidget::showResults(int hits)
{
    m_results->clear();
    const QString query = m_searchEngine->searchInput();
    for (const QHelpSearchResult &r : m_searchEngine->searchResults(0, hits)) {
        auto *item = new QListWidgetItem(r.title().isEmpty() ? r.url().fileName() : r.title(), m_results);
        item->setData(Qt::UserRole, r.url());
        item->setToolTip(r.url().toString());
    }
    m_searchState->setText(hits > 0 ? tr("Search results: %n page(s)", nullptr, hits)
                                     : tr("Nothing found for \"%1\".").arg(query));
}

void HelpWidget::update(const QUrl &url)
{
    const QModelIndex index = m_engine->contentWidget()->indexOf(url);
    if (index.isValid())
        m_engine->contentWidget()->setCurrentIndex(index);
    const QString title = m_browser->documentTitle();
    setWindowTitle(title.isEmpty() ? tr("Chromaxis help") : tr("Chromaxis help - %1").arg(title));
}

void HelpWidget::openFoundSite(QListWidgetItem *item)
{
    if (item)
        showFoundSite(item->data(Qt::UserRole).toUrl());
}

void HelpWidget::updateButtons()
{
    m_back->setEnabled(m_browser->isBackwardAvailable());
    m_forward->setEnabled(m_browser->isForwardAvailable());
}
