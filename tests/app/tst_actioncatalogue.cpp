// Every command of the window, in every kind of document, as a user would click through them:
// nothing may crash, whatever dialog a command opens is dismissed, and the menus and tool bars
// hold their entries in order.
#include "actioncatalogue.h"
#include "chromaxismainwindow.h"
#include "guitesting.h"
#include "storage/numpyimage.h"
#include "storage/palettedatabase.h"
#include "paletteview.h"

#include <QAction>
#include <QColorDialog>
#include <QFileDialog>
#include <QMenuBar>
#include <QSettings>
#include <QToolBar>

namespace {

// Closes whatever modal window a command opens, as often as they come.
class ModalDismisser : public QObject
{
public:
    ModalDismisser()
    {
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, &ModalDismisser::dismiss);
        m_timer.start();
    }
    int dismissed() const { return m_dismissed; }
    // What the message boxes said, in order.
    const QStringList &texts() const { return m_texts; }

private:
    void dismiss()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal)
            return;
        ++m_dismissed;
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            m_texts << box->text();
            // Cancel where there is one: an unsaved-changes question must not save or discard.
            if (QAbstractButton *cancel = box->button(QMessageBox::Cancel))
                cancel->click();
            else if (box->escapeButton())
                box->escapeButton()->click();
            else
                box->reject();
        } else if (auto *dialog = qobject_cast<QDialog *>(modal)) {
            dialog->reject();
        } else {
            modal->close();
        }
    }

    QTimer m_timer;
    int m_dismissed = 0;
    QStringList m_texts;
};

QStringList entriesOf(const QList<QAction *> &actions)
{
    QStringList out;
    for (QAction *a : actions) {
        if (a->isSeparator())
            continue;
        out << (a->menu() ? "[" + a->text() : a->text());
    }
    return out;
}

bool isSubsequence(const QStringList &wanted, const QStringList &have)
{
    int at = 0;
    for (const QString &h : have)
        if (at < wanted.size() && h == wanted[at])
            ++at;
    return at == wanted.size();
}

} // namespace

class TestActionCatalogue : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyActionInEveryState_data();
    void everyActionInEveryState();
    void paletteMenuHasNoPlaceholders();
    void menusInOrder_data();
    void menusInOrder();
    void toolBarsInOrder();
    void catalogueTextsAndShortcuts();
    void everyKeyReachesOneCommand();

private:
    void prepare(ChromaxisMainWindow &w, const QString &state);
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestActionCatalogue::initTestCase()
{
    m_db.loadFromText("a/one;ff0000;\nb/two;00ff00;\n");
    QImage rgb(5, 4, QImage::Format_RGB32);
    rgb.fill(qRgb(1, 2, 3));
    QVERIFY(rgb.save(m_dir.filePath("rgb.png")));
    QImage indexed(5, 4, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 0, 0), qRgb(9, 9, 9)});
    indexed.fill(1);
    QVERIFY(indexed.save(m_dir.filePath("indexed.png")));
    NumpyImage::write(DocumentImage::fromIndexes32(3, 2, {0, 1, 2, 3, 400, 5}), m_dir.filePath("cells.npy"));
    NumpyImage::write(DocumentImage::fromContinuous(3, 2, {0, 100, 2000, 30000, 65535, 7}), m_dir.filePath("real.npy"));
}

void TestActionCatalogue::prepare(ChromaxisMainWindow &w, const QString &state)
{
    if (state == "rgb")
        QVERIFY(w.loadImageFile(m_dir.filePath("rgb.png")));
    else if (state == "indexed 8bit")
        QVERIFY(w.loadImageFile(m_dir.filePath("indexed.png")));
    else if (state == "indexed 32bit")
        QVERIFY(w.loadImageFile(m_dir.filePath("cells.npy")));
    else if (state == "continuous")
        QVERIFY(w.loadImageFile(m_dir.filePath("real.npy")));
    else if (state == "empty palette")
        w.installPalette(Palette<uint>(), false);
}

void TestActionCatalogue::everyActionInEveryState_data()
{
    QTest::addColumn<QString>("state");
    for (const char *s : {"no image", "rgb", "indexed 8bit", "indexed 32bit", "continuous", "empty palette"})
        QTest::newRow(s) << QString(s);
}

void TestActionCatalogue::everyActionInEveryState()
{
    QFETCH(QString, state);
    QSettings().clear();
    QSettings().setValue("rgb_onload_action", 1);
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    prepare(w, state);
    w.paletteView()->setSelected({0, 1});

    ModalDismisser dismisser;
    QStringList triggered;
    for (QAction *a : w.findChildren<QAction *>()) {
        // Exit closes the window under test, and the recent files act on the user's files.
        if (a->objectName() == "close" || a->objectName().isEmpty() || a->menu())
            continue;
        if (!a->isEnabled())
            continue;
        a->trigger();
        triggered << a->objectName();
        QCoreApplication::processEvents();
        // Whatever happened, the document is consistent with what the window shows.
        QCOMPARE(w.paletteView()->palette(), w.document().palette());
    }
    QVERIFY(triggered.size() > 100);
    // Undo everything the walk did, then redo it: the history holds together.
    while (w.document().history().canUndo())
        QVERIFY(w.document().undo());
    while (w.document().history().canRedo())
        QVERIFY(w.document().redo());
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

// Every command of the Palette menu does something of its own: none answers that it is not
// available yet.
void TestActionCatalogue::paletteMenuHasNoPlaceholders()
{
    QSettings().clear();
    QSettings().setValue("rgb_onload_action", 1);
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    prepare(w, "indexed 8bit");
    w.paletteView()->setSelected({0, 1});
    QList<QAction *> actions;
    for (QAction *top : w.menuBar()->actions())
        if (top->text() == "&Palette")
            actions = top->menu()->actions();
    QVERIFY(!actions.isEmpty());
    ModalDismisser dismisser;
    QStringList placeholders;
    int walked = 0;
    for (int i = 0; i < actions.size(); ++i) {
        QAction *a = actions[i];
        if (a->menu()) {
            actions << a->menu()->actions();
            continue;
        }
        if (a->isSeparator())
            continue;
        const int seen = dismisser.texts().size();
        a->trigger();
        QCoreApplication::processEvents();
        ++walked;
        for (int k = seen; k < dismisser.texts().size(); ++k)
            if (dismisser.texts()[k].contains("not available yet"))
                placeholders << a->objectName();
    }
    QVERIFY(walked > 30);
    QVERIFY2(placeholders.isEmpty(), qPrintable(placeholders.join(", ")));
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

void TestActionCatalogue::menusInOrder_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("file") << "&File"
                          << QStringList{"New project", "Open project...", "Save project", "Save project as...",
                                         "Open palette...", "Save palette", "Save palette as...",
                                         "Export palette as image...", "Export palette as text...", "&Open image...",
                                         "&Save image", "Save image &as...", "Close image", "&Print image...",
                                         "&Print palette...", "E&xit"};
    QTest::newRow("edit") << "&Edit"
                          << QStringList{"Undo",           "Redo",        "Clear history",     "Cu&t",
                                         "&Copy",          "&Paste",      "&Replace",          "&Delete",
                                         "&Edit...",       "Selection pattern...", "Load selection...",
                                         "Save selection...", "Select &all", "Select none", "Invert selection"};
    QTest::newRow("palette") << "&Palette"
                             << QStringList{"Browse DB...",      "Random from DB",   "Prior from DB",
                                            "Next from DB",      "Interpolate selected", "[Generate",
                                            "[Adjust colors",    "[Reorder",         "[Apply pattern",
                                            "Resize the palette...", "Set default color...", "Fix palette size",
                                            "[Set palette size to", "Batch convert palettes..."};
    QTest::newRow("image") << "&Image"
                           << QStringList{"[Generate",        "Convert...",        "[Fast convert",
                                          "Quantisize...",    "Interpolate colors", "[Transform",
                                          "Export animation...", "Batch apply palette..."};
    QTest::newRow("view") << "&View" << QStringList{"&Normal size", "Zoom in (25 %)", "Zoom out (25 %)"};
    QTest::newRow("settings") << "&Settings"
                              << QStringList{"[Color clipboard format", "[Default RGB image action",
                                             "[Set maximum palette size", "[Show tool bars"};
    QTest::newRow("help") << "&Help" << QStringList{"&About...", "Help...", "Visit chromaxis.org", "Open PDF docs"};
}

void TestActionCatalogue::menusInOrder()
{
    QFETCH(QString, menu);
    QFETCH(QStringList, entries);
    ChromaxisMainWindow w(&m_db);
    QMenu *found = nullptr;
    for (QAction *a : w.menuBar()->actions())
        if (a->text() == menu)
            found = a->menu();
    QVERIFY(found);
    const QStringList have = entriesOf(found->actions());
    QVERIFY2(isSubsequence(entries, have), qPrintable(have.join(" | ")));
    if (menu == "&Palette") {
        QMenu *generate = nullptr;
        for (QAction *a : found->actions())
            if (a->text() == "Generate")
                generate = a->menu();
        QVERIFY(generate);
        QVERIFY(isSubsequence({"By interpolation...", "By interpolating selected...", "Using cosini...",
                               "[Standard palettes"},
                              entriesOf(generate->actions())));
    }
}

void TestActionCatalogue::toolBarsInOrder()
{
    ChromaxisMainWindow w(&m_db);
    QStringList titles;
    QList<QStringList> contents;
    for (QToolBar *bar : w.findChildren<QToolBar *>()) {
        titles << bar->windowTitle();
        contents << entriesOf(bar->actions());
    }
    QCOMPARE(titles, QStringList({"Project", "Palette", "Image", "Undo", "Edit", "DB", "Export", "Help"}));
    QCOMPARE(contents[4], QStringList({"Cu&t", "&Copy", "&Paste", "&Delete", "&Edit..."}));
    QCOMPARE(contents[5], QStringList({"Browse DB...", "Random from DB", "Prior from DB", "Next from DB"}));
}

void TestActionCatalogue::catalogueTextsAndShortcuts()
{
    ChromaxisMainWindow w(&m_db);
    QCOMPARE(w.action("paste")->shortcut(), QKeySequence("Ctrl+V"));
    QCOMPARE(w.action("edit")->shortcut(), QKeySequence("Ctrl+E"));
    QCOMPARE(w.action("selectInvert")->shortcut(), QKeySequence("Ctrl+I"));
    QCOMPARE(w.action("paletteBrowseDB")->shortcut(), QKeySequence("Ctrl+D"));
    QCOMPARE(w.action("paletteRandomDB")->shortcut(), QKeySequence("Ctrl+W"));
    QCOMPARE(w.action("normalSize")->shortcut(), QKeySequence("Ctrl+0"));
    QCOMPARE(w.action("undo")->shortcut(), QKeySequence(QKeySequence::Undo));
    // Redo answers Ctrl+Y beside the platform's key; the saves of a palette and an image have keys.
    const QList<QKeySequence> redo = w.action("redo")->shortcuts();
    QVERIFY(redo.contains(QKeySequence("Ctrl+Y")));
    for (const QKeySequence &k : QKeySequence::keyBindings(QKeySequence::Redo))
        QVERIFY(redo.contains(k));
    QCOMPARE(w.action("savePalette")->shortcut(), QKeySequence("Ctrl+Alt+P"));
    QCOMPARE(w.action("saveImage")->shortcut(), QKeySequence("Ctrl+Alt+I"));
    QCOMPARE(w.action("fitToWindow")->shortcut(), QKeySequence("Ctrl+Shift+F"));
    QCOMPARE(w.action("paletteManipulateComponents")->statusTip(), w.action("paletteManipulateHueSaturationValue")->statusTip());
    // No two commands share a key.
    QHash<QString, QString> owners;
    for (QAction *a : w.findChildren<QAction *>())
        for (const QKeySequence &k : a->shortcuts()) {
            const QString key = k.toString();
            QVERIFY2(!owners.contains(key), qPrintable(key + ": " + owners.value(key) + " and " + a->objectName()));
            owners.insert(key, a->objectName());
        }
    for (const ActionEntry &e : actionCatalogue())
        if (e.icon)
            QVERIFY2(!QIcon(QStringLiteral(":res/images/") + e.icon).pixmap(16, 16).isNull(), e.icon);
}

// Typed on the window, every key of every enabled command reaches that command and no other: a
// key two commands share reaches neither, which the toolkit only reports on the console.
void TestActionCatalogue::everyKeyReachesOneCommand()
{
    class Catcher : public QObject
    {
    public:
        QStringList caught;
        bool ambiguous = false;

    protected:
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() != QEvent::Shortcut)
                return false;
            caught << watched->objectName();
            ambiguous = ambiguous || static_cast<QShortcutEvent *>(event)->isAmbiguous();
            return true; // seen, not run
        }
    } catcher;

    ChromaxisMainWindow w(&m_db);
    prepare(w, "indexed 8bit");
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    QApplication::setActiveWindow(&w);
    QTRY_COMPARE(QApplication::activeWindow(), &w);
    const QList<QAction *> actions = w.findChildren<QAction *>();
    for (QAction *a : actions)
        a->installEventFilter(&catcher);
    int typed = 0;
    for (QAction *a : actions) {
        if (!a->isEnabled())
            continue;
        for (const QKeySequence &k : a->shortcuts()) {
            QCOMPARE(k.count(), 1);
            catcher.caught.clear();
            QTest::keyClick(&w, Qt::Key(k[0] & ~int(Qt::KeyboardModifierMask)),
                            Qt::KeyboardModifiers(k[0] & int(Qt::KeyboardModifierMask)));
            QVERIFY2(catcher.caught == QStringList(a->objectName()) && !catcher.ambiguous,
                     qPrintable(k.toString() + ": " + a->objectName() + " got " + catcher.caught.join(", ")));
            ++typed;
        }
    }
    QVERIFY(typed > 20);
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

CHROMAXIS_GUI_TEST_MAIN(TestActionCatalogue)
#include "tst_actioncatalogue.moc"
