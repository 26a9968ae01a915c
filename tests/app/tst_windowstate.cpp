// What the window tells about the document and asks about it: the unsaved-changes questions after
// projects are opened, saved and replaced, the title with its mark, the zoom in the status bar and
// on screen, the tool tips of the palette cells and the filters of "Open palette...".
#include "chromaxismainwindow.h"
#include "formats/paletteformats.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "paletteview.h"
#include "storage/palettedatabase.h"
#include "storage/projectfile.h"

#include <QAction>
#include <QFileDialog>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QToolTip>
#include <QWindow>

using Entry = RGBAColor<uint>;

namespace {

// Every message box that comes up, with what it said; each is answered with Cancel, so that a
// question that should not be asked is seen rather than left hanging.
class BoxWatcher : public QObject
{
public:
    BoxWatcher() { qApp->installEventFilter(this); }
    ~BoxWatcher() override { qApp->removeEventFilter(this); }
    QStringList texts;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *box = qobject_cast<QMessageBox *>(watched);
        if (box && event->type() == QEvent::Show) {
            texts << box->text();
            QTimer::singleShot(0, box, [box]() {
                if (QAbstractButton *cancel = box->button(QMessageBox::Cancel))
                    cancel->click();
                else
                    box->reject();
            });
        }
        return false;
    }
};

const QString paletteQuestion = "The palette has been modified.\nDo you want to save your changes?";
const QString imageQuestion = "The image has been modified.\nDo you want to save your changes?";

QPoint cellCentre(int index)
{
    return QPoint(1 + (index % 16) * 14 + 6, 1 + (index / 16) * 14 + 6);
}

void activate(QWidget &w)
{
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    // Shortcuts go to the active window; without a window manager it is made active by hand.
    QApplication::setActiveWindow(&w);
    QTRY_COMPARE(QApplication::activeWindow(), &w);
}

void press(QWidget &w, const QKeySequence &keys)
{
    const int key = keys[0];
    QTest::keyClick(&w, Qt::Key(key & ~int(Qt::KeyboardModifierMask)),
                    Qt::KeyboardModifiers(key & int(Qt::KeyboardModifierMask)));
}

// Answers the next file dialog with path, as a user typing the name and pressing the button.
void chooseFile(const QString &path)
{
    handleNextDialog<QFileDialog>([path](QFileDialog *d) {
        d->selectFile(path);
        QMetaObject::invokeMethod(d, "accept");
    });
}

// The title as the window system shows it: the mark in place of "[*]" while modified.
QString shownTitle(QWidget &w)
{
    return w.windowHandle() ? w.windowHandle()->title() : QString();
}

} // namespace

class TestWindowState : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void projectFlagsAreTheFile_data();
    void projectFlagsAreTheFile();
    void savedProjectAsksNothing();
    void titleFollowsTheDocument();
    void cellToolTips_data();
    void cellToolTips();
    void zoomInStatusBarAndFit();
    void zoomedPixelsStaySharp();
    void openPaletteFilters();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestWindowState::initTestCase()
{
    // Indexes 0 and 255 of a table, so that whichever palette shows them, they are far apart.
    QImage indexed(4, 2, QImage::Format_Indexed8);
    QVector<QRgb> table(256, qRgb(0, 0, 0));
    table[0] = qRgb(255, 0, 0);
    table[255] = qRgb(0, 0, 255);
    indexed.setColorTable(table);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            indexed.setPixel(x, y, (x + y) % 2 ? 255 : 0);
    QVERIFY(indexed.save(path("checker.png")));
    QFile gpl(path("warm.gpl"));
    QVERIFY(gpl.open(QIODevice::WriteOnly));
    gpl.write("GIMP Palette\nName: warm\n#\n255 128   0\tOrange\n 10  20  30\tDark\n");
}

void TestWindowState::init()
{
    QSettings().clear();
}

void TestWindowState::projectFlagsAreTheFile_data()
{
    QTest::addColumn<bool>("paletteModified");
    QTest::addColumn<bool>("imageModified");
    QTest::newRow("clean") << false << false;
    QTest::newRow("palette") << true << false;
    QTest::newRow("image") << false << true;
    QTest::newRow("both") << true << true;
}

void TestWindowState::projectFlagsAreTheFile()
{
    QFETCH(bool, paletteModified);
    QFETCH(bool, imageModified);
    ProjectData data;
    for (uint v : {0u, 40000u, 65535u})
        data.palette.append(Entry(v, v, v, 65535));
    data.image = DocumentImage::fromIndexes8(2, 1, {0, 2});
    data.imageFileName = path("two.png");
    data.paletteModified = paletteModified;
    data.imageModified = imageModified;
    const QString file = path("flags.cxw");
    ProjectFile::write(file, data);

    ChromaxisMainWindow w(&m_db);
    activate(w);
    BoxWatcher boxes;
    chooseFile(file);
    press(w, QKeySequence::Open);
    QCOMPARE(w.document().projectFileName(), file);
    QCOMPARE(boxes.texts, QStringList());
    QCOMPARE(w.document().isPaletteModified(), paletteModified);
    QCOMPARE(w.document().isImageModified(), imageModified);
    QCOMPARE(w.windowTitle(), QString("flags.cxw[*] - Chromaxis"));
    QCOMPARE(w.isWindowModified(), paletteModified || imageModified);

    // Exit asks about what the file says is unsaved, and only that.
    press(w, QKeySequence::Quit);
    QStringList asked;
    if (imageModified)
        asked << imageQuestion;
    else if (paletteModified)
        asked << paletteQuestion; // a cancelled image question stops before the palette's
    QCOMPARE(boxes.texts, asked);
    QCOMPARE(w.isVisible(), !asked.isEmpty());
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

void TestWindowState::savedProjectAsksNothing()
{
    ChromaxisMainWindow w(&m_db);
    activate(w);
    BoxWatcher boxes;
    QVERIFY(w.loadImageFile(path("checker.png")));
    w.action("paletteOrderInvert")->trigger();
    w.action("imageModeContinuous")->trigger();
    QVERIFY(w.document().isPaletteModified());
    QVERIFY(w.document().isImageModified());
    QVERIFY(w.isWindowModified());

    const QString file = path("saved.cxw");
    chooseFile(file);
    w.action("saveProjectAs")->trigger(); // from the menu: not every desktop has a key for it
    QVERIFY(QFile::exists(file));
    // Saved is clean: in the document, in the title and in the file.
    QVERIFY(!w.document().isPaletteModified());
    QVERIFY(!w.document().isImageModified());
    QCOMPARE(w.windowTitle(), QString("saved.cxw[*] - Chromaxis"));
    QVERIFY(!w.isWindowModified());
    const ProjectData written = ProjectFile::read(file);
    QVERIFY(!written.paletteModified);
    QVERIFY(!written.imageModified);
    QCOMPARE(written.palette.entries(), w.document().palette().entries());

    press(w, QKeySequence::New);
    QCOMPARE(boxes.texts, QStringList());
    QVERIFY(!w.document().hasImage());
    QCOMPARE(w.windowTitle(), QString("Untitled[*] - Chromaxis"));

    chooseFile(file);
    press(w, QKeySequence::Open);
    QCOMPARE(w.document().imageMode(), int(DocumentImage::Continuous));
    QCOMPARE(w.document().palette().entries(), written.palette.entries());
    press(w, QKeySequence::Quit);
    QCOMPARE(boxes.texts, QStringList());
    QVERIFY(!w.isVisible());
}

void TestWindowState::titleFollowsTheDocument()
{
    ChromaxisMainWindow w(&m_db);
    activate(w);
    BoxWatcher boxes;
    QCOMPARE(w.windowTitle(), QString("Untitled[*] - Chromaxis"));
    QCOMPARE(shownTitle(w), QString("Untitled - Chromaxis"));

    QVERIFY(w.loadPaletteFile(path("warm.gpl")));
    QCOMPARE(w.windowTitle(), QString("warm.gpl[*] - Chromaxis"));
    QVERIFY(!w.isWindowModified());
    w.action("paletteOrderInvert")->trigger();
    QVERIFY(w.isWindowModified());
    QCOMPARE(shownTitle(w), QString("warm.gpl* - Chromaxis"));
    // "Save palette" by its key writes the palette back to its file and takes the mark away.
    press(w, w.action("savePalette")->shortcut());
    QVERIFY(!w.isWindowModified());
    QCOMPARE(shownTitle(w), QString("warm.gpl - Chromaxis"));

    // An image names the document; "Save image" by its key takes the mark away too.
    QVERIFY(w.loadImageFile(path("checker.png")));
    QCOMPARE(w.windowTitle(), QString("checker.png[*] - Chromaxis"));
    w.action("imageModeContinuous")->trigger();
    w.document().setPaletteModified(false);
    QVERIFY(w.isWindowModified());
    const QString copy = path("checker-copy.png");
    QVERIFY(QFile::copy(path("checker.png"), copy));
    w.document().setImageFileName(copy);
    QCOMPARE(w.windowTitle(), QString("checker-copy.png[*] - Chromaxis"));
    press(w, w.action("saveImage")->shortcut());
    QVERIFY(!w.document().isImageModified());
    QVERIFY(!w.isWindowModified());
    QCOMPARE(boxes.texts, QStringList());
}

void TestWindowState::cellToolTips_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("tip");
    QTest::newRow("first") << 0 << "Entry 0: #ff8000\nred 65280, green 32768, blue 0, alpha 65535";
    QTest::newRow("low bytes are not drawn")
        << 1 << "Entry 1: #0a141e\nred 2815, green 5121, blue 7850, alpha 100";
    QTest::newRow("second row") << 17 << "Entry 17: #ffffff\nred 65535, green 65535, blue 65535, alpha 65535";
    QTest::newRow("past the end") << 18 << QString();
}

void TestWindowState::cellToolTips()
{
    QFETCH(int, index);
    QFETCH(QString, tip);
    ChromaxisMainWindow w(&m_db);
    Palette<uint> p;
    p.append(Entry(65280, 32768, 0, 65535));
    p.append(Entry(2815, 5121, 7850, 100));
    for (int i = 2; i < 18; ++i)
        p.append(Entry(65535, 65535, 65535, 65535));
    w.installPalette(p, false);
    activate(w);
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());

    PaletteView *view = w.paletteView();
    const QPoint at = cellCentre(index);
    QHelpEvent hover(QEvent::ToolTip, at, view->mapToGlobal(at));
    QApplication::sendEvent(view, &hover);
    if (tip.isEmpty()) {
        QVERIFY(!QToolTip::isVisible());
        return;
    }
    QTRY_VERIFY(QToolTip::isVisible());
    QCOMPARE(QToolTip::text(), tip);
    QToolTip::hideText();
}

void TestWindowState::zoomInStatusBarAndFit()
{
    ChromaxisMainWindow w(&m_db);
    activate(w);
    auto *zoom = w.statusBar()->findChild<QLabel *>("zoomLabel");
    QVERIFY(zoom);
    QCOMPARE(zoom->text(), QString("Zoom 100%"));
    QVERIFY(!w.action("fitToWindow")->isEnabled());
    QVERIFY(w.loadImageFile(path("checker.png")));

    press(w, w.action("zoomIn")->shortcut());
    QCOMPARE(zoom->text(), QString("Zoom 125%"));
    press(w, w.action("zoomOut")->shortcut());
    QCOMPARE(zoom->text(), QString("Zoom 94%")); // 1.25 x 0.75
    press(w, w.action("normalSize")->shortcut());
    QCOMPARE(zoom->text(), QString("Zoom 100%"));

    // The View menu offers it, by its key too.
    bool inViewMenu = false;
    for (QAction *menu : w.menuBar()->actions())
        if (menu->text() == "&View")
            inViewMenu = menu->menu()->actions().contains(w.action("fitToWindow"));
    QVERIFY(inViewMenu);
    QCOMPARE(w.action("fitToWindow")->text(), QString("&Fit to window"));
    press(w, w.action("fitToWindow")->shortcut());
    auto *scroll = w.findChild<QScrollArea *>("imageScrollArea");
    const QSize room = scroll->maximumViewportSize();
    const double scale = std::min(room.width() / 4.0, room.height() / 2.0);
    QCOMPARE(w.scale(), scale);
    QCOMPARE(zoom->text(), QString("Zoom %1%").arg(qRound(scale * 100)));
    const QSize shown = w.imageView()->size();
    QVERIFY(shown.width() <= room.width() && shown.height() <= room.height());
    QVERIFY(shown.width() >= room.width() - 1 || shown.height() >= room.height() - 1);
}

void TestWindowState::zoomedPixelsStaySharp()
{
    ChromaxisMainWindow w(&m_db);
    activate(w);
    QVERIFY(w.loadImageFile(path("checker.png")));
    for (int i = 0; i < 12; ++i)
        w.action("zoomIn")->trigger(); // about 15 x 15 screen pixels an image pixel
    QCoreApplication::processEvents();
    const QImage picture = w.document().displayedPicture().convertToFormat(QImage::Format_RGB32);
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colours.insert(picture.pixel(x, y));
    QCOMPARE(colours.size(), 2);

    ImageLabel *label = w.imageView();
    const QImage shot = label->grab(label->contentsRect()).toImage().convertToFormat(QImage::Format_RGB32);
    QVERIFY(shot.width() > 20 && shot.height() > 10);
    // Smoothing would blend the two colours where they meet.
    QSet<QRgb> seen;
    for (int y = 0; y < shot.height(); ++y)
        for (int x = 0; x < shot.width(); ++x) {
            const QRgb c = shot.pixel(x, y);
            QVERIFY2(colours.contains(c), qPrintable(QString("(%1, %2): #%3").arg(x).arg(y).arg(c, 8, 16)));
            seen.insert(c);
        }
    QCOMPARE(seen, colours);
    // The first image pixel covers the corner block.
    QCOMPARE(shot.pixel(0, 0), picture.pixel(0, 0));
    QCOMPARE(shot.pixel(shot.width() - 1, shot.height() - 1), picture.pixel(3, 1));
}

void TestWindowState::openPaletteFilters()
{
    const QStringList filters = paletteOpenFilters();
    const QString readable = filters.at(filters.indexOf("All files (* *.*)") - 1);
    QVERIFY(readable.startsWith("All readable formats ("));

    ChromaxisMainWindow w(&m_db);
    activate(w);
    QStringList offered;
    QString preselected;
    handleNextDialog<QFileDialog>([&](QFileDialog *d) {
        offered = d->nameFilters();
        preselected = d->selectedNameFilter();
        d->selectNameFilter(readable);
        d->selectFile(path("warm.gpl"));
        QMetaObject::invokeMethod(d, "accept");
    });
    press(w, w.action("openPalette")->shortcut());
    QCOMPARE(offered, filters);
    QCOMPARE(preselected, filters.first());
    QCOMPARE(w.document().paletteFileName(), path("warm.gpl"));
    QCOMPARE(QSettings().value("default_palette_load_type").toString(), readable);

    // The next time it starts with the filter chosen last.
    handleNextDialog<QFileDialog>([&](QFileDialog *d) {
        preselected = d->selectedNameFilter();
        d->reject();
    });
    press(w, w.action("openPalette")->shortcut());
    QCOMPARE(preselected, readable);
}

CHROMAXIS_GUI_TEST_MAIN(TestWindowState)
#include "tst_windowstate.moc"
