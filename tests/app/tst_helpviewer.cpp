// The built-in manual as a user meets it: the Help menu, the help window with its contents, index,
// search and navigation, links into and out of the manual, and F1 in a dialog.
#include "chromaxismainwindow.h"
#include "dialogs/aboutdialog.h"
#include "guitesting.h"
#include "storage/palettedatabase.h"
#include "utils/qt/help/dialoghelp.h"
#include "utils/qt/help/helpbrowser.h"
#include "utils/qt/help/helpcollection.h"
#include "utils/qt/help/helpwidget.h"

#include <QAction>
#include <QDesktopServices>
#include <QDockWidget>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpLink>
#include <QHelpSearchEngine>
#include <QLabel>
#include <QHelpSearchQueryWidget>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextFragment>

namespace {

// Stands in for the desktop: records the addresses the program hands out.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> urls;

public slots:
    void handle(const QUrl &url) { urls << url; }
};

QUrl manualUrl(const QString &page)
{
    return QUrl(QStringLiteral("qthelp://org.chromaxis.manual/doc/") + page);
}

// Clicks the first link of the shown page whose address ends with hrefEnd, as a user would.
bool clickLink(HelpBrowser *browser, const QString &hrefEnd)
{
    QTextDocument *doc = browser->document();
    for (QTextBlock b = doc->begin(); b.isValid(); b = b.next()) {
        for (auto it = b.begin(); !it.atEnd(); ++it) {
            const QTextFragment f = it.fragment();
            if (!f.charFormat().isAnchor() || !f.charFormat().anchorHref().endsWith(hrefEnd))
                continue;
            QTextCursor cursor(doc);
            cursor.setPosition(f.position() + f.length() / 2);
            browser->setTextCursor(cursor);
            browser->ensureCursorVisible();
            const QPoint at = browser->cursorRect(cursor).center();
            QTest::mouseClick(browser->viewport(), Qt::LeftButton, Qt::NoModifier, at);
            return true;
        }
    }
    return false;
}

HelpWidget *helpOf(QWidget *owner)
{
    return owner->findChild<HelpWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

} // namespace

class TestHelpViewer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void helpOpensTheManual();
    void navigationActions_data();
    void navigationActions();
    void searchFindsPagesOnceIndexed();
    void followLinkAndGoBack();
    void externalLinksGoToTheDesktop();
    void dialogF1OpensItsPage_data();
    void dialogF1OpensItsPage();
    void helpMenuAnswersEveryEntry();
    void everyDialogHasItsSection();
    void missingManualIsSaid_data();
    void missingManualIsSaid();
    void newerManualIsRegisteredAgain();

private:
    PaletteDatabase m_db;
    UrlCatcher m_desktop;
};

void TestHelpViewer::initTestCase()
{
    QVERIFY(QFileInfo::exists(QStringLiteral(CHROMAXIS_MANUAL_DIR "/chromaxis.qch")));
    QDesktopServices::setUrlHandler(QStringLiteral("https"), &m_desktop, "handle");
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &m_desktop, "handle");
}

void TestHelpViewer::init()
{
    HelpCollection::setManualFolder(QStringLiteral(CHROMAXIS_MANUAL_DIR));
    m_desktop.urls.clear();
}

void TestHelpViewer::helpOpensTheManual()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    w.findChild<QAction *>(QStringLiteral("help"))->trigger();
    HelpWidget *help = helpOf(&w);
    QVERIFY(help);
    QVERIFY(help->isVisible());
    QVERIFY(help->isWindow());

    auto *tabs = help->findChild<QTabWidget *>(QStringLiteral("helpTabs"));
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(0), QStringLiteral("Contents"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Index"));
    auto *dock = help->findChild<QDockWidget *>(QStringLiteral("searchDock"));
    QVERIFY(dock);
    QCOMPARE(dock->windowTitle(), QStringLiteral("Search"));
    QCOMPARE(dock->features(), QDockWidget::DockWidgetClosable);

    QCOMPARE(help->browser()->source(), manualUrl(QStringLiteral("index.html")));
    QVERIFY(help->browser()->toPlainText().contains(QStringLiteral("Chromaxis manual")));
    // The contents list every page; the index has the headings as keywords.
    QTRY_VERIFY(help->helpEngine()->contentModel()->rowCount() > 0);
    QVERIFY(!help->helpEngine()->documentsForKeyword(QStringLiteral("Image modes")).isEmpty());

    // "Help..." again shows the same window instead of a second one.
    w.findChild<QAction *>(QStringLiteral("help"))->trigger();
    QCOMPARE(w.findChildren<HelpWidget *>().size(), 1);
}

void TestHelpViewer::navigationActions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tip");
    QTest::addColumn<QString>("shortcut");
    QTest::newRow("home") << "goHome" << "Go to home page" << "Go to home page" << "Ctrl+0";
    QTest::newRow("back") << "goBack" << "Go back" << "Go to previous page" << "";
    QTest::newRow("forward") << "goForward" << "Go forward" << "Go to next page" << "";
    QTest::newRow("search") << "search" << "Search ..." << "Search in the help" << "";
}

void TestHelpViewer::navigationActions()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, tip);
    QFETCH(QString, shortcut);
    QString error;
    std::unique_ptr<HelpWidget> help(HelpWidget::open(nullptr, QString(), &error));
    QVERIFY2(help, qPrintable(error));
    auto *a = help->findChild<QAction *>(name);
    QVERIFY(a);
    QCOMPARE(a->text(), text);
    QCOMPARE(a->toolTip(), tip);
    QVERIFY(!a->icon().isNull());
    if (!shortcut.isEmpty())
        QCOMPARE(a->shortcut(), QKeySequence(shortcut));
}

void TestHelpViewer::searchFindsPagesOnceIndexed()
{
    QString error;
    std::unique_ptr<HelpWidget> help(HelpWidget::open(nullptr, QString(), &error));
    QVERIFY2(help, qPrintable(error));
    auto *state = help->findChild<QLabel *>(QStringLiteral("searchState"));
    auto *results = help->findChild<QListWidget *>(QStringLiteral("searchResults"));
    // The index of a fresh collection is built first, and the pane says so.
    QVERIFY(help->isIndexing());
    QCOMPARE(state->text(), QStringLiteral("Indexing..."));

    help->findChild<QAction *>(QStringLiteral("search"))->trigger();
    QLineEdit *input = nullptr;
    for (QLineEdit *e : help->findChild<QHelpSearchQueryWidget *>()->findChildren<QLineEdit *>()) {
        if (e->isVisible())
            input = e;
    }
    QVERIFY(input);
    // Asked before the index is complete (no event has been handled since the window opened),
    // the search waits for it instead of finding nothing.
    QSignalSpy asked(help->findChild<QHelpSearchQueryWidget *>(), &QHelpSearchQueryWidget::search);
    QTest::keyClicks(input, QStringLiteral("dither"));
    QTest::keyClick(input, Qt::Key_Return);
    QCOMPARE(asked.count(), 1);
    QCOMPARE(state->text(), QStringLiteral("Indexing... the search starts when the index is complete."));
    QCOMPARE(results->count(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(results->count() > 0, 60000);
    QVERIFY(!help->isIndexing());
    QCOMPARE(state->text(), QStringLiteral("Search results: %1 page(s)").arg(results->count()));

    // Every hit is a page of the manual that holds the word.
    for (int i = 0; i < results->count(); ++i) {
        const QUrl url = results->item(i)->data(Qt::UserRole).toUrl();
        QCOMPARE(url.scheme(), QStringLiteral("qthelp"));
        const QString page = QString::fromUtf8(help->helpEngine()->fileData(url));
        QVERIFY2(page.contains(QStringLiteral("dither"), Qt::CaseInsensitive), qPrintable(url.toString()));
    }
    const QUrl first = results->item(0)->data(Qt::UserRole).toUrl();
    emit results->itemActivated(results->item(0));
    QCOMPARE(help->browser()->source(), first);

    // A word the manual does not hold says so.
    input->clear();
    QTest::keyClicks(input, QStringLiteral("xylophonequartz"));
    QTest::keyClick(input, Qt::Key_Return);
    QTRY_COMPARE(state->text(), QStringLiteral("Nothing found for \"xylophonequartz\"."));
    QCOMPARE(results->count(), 0);
}

void TestHelpViewer::followLinkAndGoBack()
{
    QString error;
    std::unique_ptr<HelpWidget> help(HelpWidget::open(nullptr, QString(), &error));
    QVERIFY2(help, qPrintable(error));
    QVERIFY(QTest::qWaitForWindowExposed(help.get()));
    HelpBrowser *browser = help->browser();
    auto *back = help->findChild<QAction *>(QStringLiteral("goBack"));
    auto *forward = help->findChild<QAction *>(QStringLiteral("goForward"));
    QVERIFY(!back->isEnabled());

    QVERIFY(clickLink(browser, QStringLiteral("menus.html")));
    QTRY_COMPARE(browser->source(), manualUrl(QStringLiteral("menus.html")));
    QVERIFY(browser->toPlainText().contains(QStringLiteral("Open PDF docs")));
    QVERIFY(help->windowTitle().endsWith(QStringLiteral("Menu commands")));
    QVERIFY(back->isEnabled());

    back->trigger();
    QCOMPARE(browser->source(), manualUrl(QStringLiteral("index.html")));
    QVERIFY(forward->isEnabled());
    forward->trigger();
    QCOMPARE(browser->source(), manualUrl(QStringLiteral("menus.html")));
    QTest::keyClick(help.get(), Qt::Key_0, Qt::ControlModifier);
    QCOMPARE(browser->source(), manualUrl(QStringLiteral("index.html")));

    // The contents tree follows the page shown.
    help->linkActivated(manualUrl(QStringLiteral("image-modes.html")));
    QCOMPARE(help->helpEngine()->contentWidget()->currentIndex(),
             help->helpEngine()->contentWidget()->indexOf(manualUrl(QStringLiteral("image-modes.html"))));
}

void TestHelpViewer::externalLinksGoToTheDesktop()
{
    QString error;
    std::unique_ptr<HelpWidget> help(HelpWidget::open(nullptr, QString(), &error));
    QVERIFY2(help, qPrintable(error));
    QVERIFY(QTest::qWaitForWindowExposed(help.get()));
    HelpBrowser *browser = help->browser();
    const QString before = browser->toPlainText();

    QVERIFY(clickLink(browser, QStringLiteral("https://chromaxis.org")));
    QTRY_COMPARE(m_desktop.urls, QList<QUrl>{QUrl(QStringLiteral("https://chromaxis.org"))});
    QCOMPARE(browser->source(), manualUrl(QStringLiteral("index.html")));
    QCOMPARE(browser->toPlainText(), before);

    // The same for an address handed to the browser directly; the next page still opens.
    browser->setSource(QUrl(QStringLiteral("https://chromaxis.org/news")));
    QCOMPARE(m_desktop.urls.size(), 2);
    QCOMPARE(browser->source(), manualUrl(QStringLiteral("index.html")));
    QVERIFY(clickLink(browser, QStringLiteral("menus.html")));
    QTRY_COMPARE(browser->source(), manualUrl(QStringLiteral("menus.html")));
}

void TestHelpViewer::dialogF1OpensItsPage_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("page");
    // By the dialog's title, a heading of its page:
    QTest::newRow("tint") << "paletteManipulateTint" << "palette-dialogs.html#tint";
    QTest::newRow("blur") << "paletteManipulateBlur" << "palette-dialogs.html#blur-palette";
    QTest::newRow("cosine") << "paletteGenerateUsingCosini" << "palette-dialogs.html#generate-cosinus-palette";
    // By the dialog's class, where the page names it differently:
    QTest::newRow("sort") << "paletteSortColors" << "palette-commands.html#sort-colors";
    QTest::newRow("selection pattern") << "selectPattern" << "palette-dialogs.html#selection-pattern";
    QTest::newRow("mandelbrot") << "imageGenerateMandelbrot" << "generator-dialogs.html#mandelbrot-julia-ifs-and-plasma";
    QTest::newRow("moiree") << "imageGenerateMoiree" << "generator-dialogs.html#moiré";
}

void TestHelpViewer::dialogF1OpensItsPage()
{
    QFETCH(QString, command);
    QFETCH(QString, page);
    ChromaxisMainWindow w(&m_db);
    w.show();
    QUrl shown;
    bool handled = false;
    handleNextDialog<QDialog>([&](QDialog *d) {
        QWidget *focus = d->focusWidget() ? d->focusWidget() : d;
        QTest::keyClick(focus, Qt::Key_F1);
        if (HelpWidget *help = helpOf(d)) {
            shown = help->browser()->source();
            // A modal dialog blocks every window but its own; the help must be one of its own.
            handled = help->isVisible() && help->isWindow() && help->parentWidget() == d;
            help->close();
        }
        d->reject();
    });
    w.findChild<QAction *>(command)->trigger();
    QVERIFY(handled);
    QCOMPARE(shown, manualUrl(page));
}

void TestHelpViewer::helpMenuAnswersEveryEntry()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QMenu *menu = nullptr;
    for (QAction *a : w.menuBar()->actions()) {
        if (a->text() == QStringLiteral("&Help"))
            menu = a->menu();
    }
    QVERIFY(menu);
    QStringList names;
    for (QAction *a : menu->actions()) {
        if (!a->isSeparator())
            names << a->objectName();
    }
    QCOMPARE(names, (QStringList{"about", "help", "visit", "openPDFdocs"}));

    // Whatever message box comes up is recorded and closed, so none can hide among the answers.
    QStringList boxes;
    QTimer watcher;
    connect(&watcher, &QTimer::timeout, this, [&boxes]() {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            boxes << box->text();
            box->reject();
        }
    });
    watcher.start(10);

    QString aboutText;
    handleNextDialog<AboutDialog>([&](AboutDialog *d) {
        aboutText = d->findChild<QLabel *>(QStringLiteral("aboutText"))->text();
        d->accept();
    });
    menu->actions().at(names.indexOf("about"))->trigger();
    for (const QString &part : {QStringLiteral("Chromaxis 0."), QStringLiteral("Licence"),
                                QStringLiteral("<td>Qt</td><td>&nbsp;") + qVersion(), QStringLiteral("zlib"),
                                QStringLiteral("GIFLIB"), QStringLiteral("libzip"), QStringLiteral("libavcodec"),
                                QStringLiteral("SQLite</td><td>&nbsp;3.")})
        QVERIFY2(aboutText.contains(part), qPrintable(part));

    menu->actions().at(names.indexOf("help"))->trigger();
    QVERIFY(helpOf(&w) && helpOf(&w)->isVisible());

    menu->actions().at(names.indexOf("visit"))->trigger();
    menu->actions().at(names.indexOf("openPDFdocs"))->trigger();
    QCOMPARE(m_desktop.urls, (QList<QUrl>{QUrl(QStringLiteral("https://chromaxis.org")),
                                          QUrl::fromLocalFile(QStringLiteral(CHROMAXIS_MANUAL_DIR
                                                                             "/chromaxis-manual.pdf"))}));
    QTest::qWait(50);
    QVERIFY2(boxes.isEmpty(), qPrintable(boxes.join('|')));
}

void TestHelpViewer::everyDialogHasItsSection()
{
    QString error;
    std::unique_ptr<HelpWidget> help(HelpWidget::open(nullptr, QString(), &error));
    QVERIFY2(help, qPrintable(error));
    QHelpEngine *engine = help->helpEngine();
    // The sections named by class exist, anchor and all.
    for (const auto &[cls, page] : DialogHelp::classPages()) {
        const QUrl url = manualUrl(page);
        const QString html = QString::fromUtf8(engine->fileData(url.adjusted(QUrl::RemoveFragment)));
        QVERIFY2(html.contains(QStringLiteral("<a name=\"%1\">").arg(url.fragment())), qPrintable(cls));
    }
    // The dialogs found by their title have a heading of that title.
    for (const char *title : {"Brightness / contrast", "Hue / saturation / value", "Tint", "Gradient tint",
                              "Blur palette", "Component manipulation", "Shift order",
                              "Generate palette by interpolation", "Generate cosinus palette", "Selection pattern",
                              "Palette text format"})
        QVERIFY2(!engine->documentsForKeyword(QString::fromLatin1(title)).isEmpty(), title);
}

void TestHelpViewer::missingManualIsSaid_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << "help" << "Help" << "The manual cannot be opened.\nThe manual is not installed: %1/chromaxis.qch is missing.";
    QTest::newRow("pdf") << "openPDFdocs" << "Open PDF docs" << "The PDF manual is not installed: %1/chromaxis-manual.pdf is missing.";
}

void TestHelpViewer::missingManualIsSaid()
{
    QFETCH(QString, command);
    QFETCH(QString, title);
    QFETCH(QString, text);
    QTemporaryDir empty;
    HelpCollection::setManualFolder(empty.path());
    ChromaxisMainWindow w(&m_db);
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    w.findChild<QAction *>(command)->trigger();
    QVERIFY(seen.seen);
    QCOMPARE(seen.title, title);
    QCOMPARE(seen.text, text.arg(empty.path()));
    QVERIFY(!helpOf(&w));
    QVERIFY(m_desktop.urls.isEmpty());
}

void TestHelpViewer::newerManualIsRegisteredAgain()
{
    QTemporaryDir a;
    QTemporaryDir b;
    for (const QTemporaryDir *d : {&a, &b})
        QVERIFY(QFile::copy(QStringLiteral(CHROMAXIS_MANUAL_DIR "/chromaxis.qch"), d->filePath("chromaxis.qch")));
    QString error;
    HelpCollection::setManualFolder(a.path());
    QVERIFY2(HelpCollection::prepare(&error), qPrintable(error));
    auto registered = []() {
        QHelpEngineCore engine(HelpCollection::userCollectionFile());
        engine.setupData();
        return engine.documentationFileName(HelpCollection::helpNamespace());
    };
    QCOMPARE(registered(), a.filePath("chromaxis.qch"));

    // Installed elsewhere: the collection follows.
    HelpCollection::setManualFolder(b.path());
    QVERIFY2(HelpCollection::prepare(&error), qPrintable(error));
    QCOMPARE(registered(), b.filePath("chromaxis.qch"));

    // Registered to a's copy behind the program's back: while the installed file is unchanged
    // the collection is left alone, and once it is newer, it is registered again.
    auto registerBehindTheBack = [&]() {
        QHelpEngineCore engine(HelpCollection::userCollectionFile());
        engine.setupData();
        engine.unregisterDocumentation(HelpCollection::helpNamespace());
        return engine.registerDocumentation(a.filePath("chromaxis.qch"));
    };
    QVERIFY(registerBehindTheBack());
    QVERIFY2(HelpCollection::prepare(&error), qPrintable(error));
    QCOMPARE(registered(), a.filePath("chromaxis.qch"));
    QFile f(b.filePath("chromaxis.qch"));
    QVERIFY(f.open(QIODevice::ReadWrite));
    QVERIFY(f.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime));
    f.close();
    QVERIFY2(HelpCollection::prepare(&error), qPrintable(error));
    QCOMPARE(registered(), b.filePath("chromaxis.qch"));
}

CHROMAXIS_GUI_TEST_MAIN(TestHelpViewer)
#include "tst_helpviewer.moc"
