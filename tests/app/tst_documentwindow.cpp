// The main window with a document: opening images and palettes, the built-in list, the RGB
// actions, zoom and the messages a user meets on the way.
#include "actioncatalogue.h"
#include "chromaxismainwindow.h"
#include "cxpropertywidget.h"
#include "palette/describedexception.h"
#include "dialogs/rgbimagedialog.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "storage/numpyimage.h"
#include "storage/palettedatabase.h"
#include "formats/paletteformats.h"
#include "operations/paletteoperations.h"
#include "paletteview.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QMimeData>
#include <QRadioButton>
#include <QCheckBox>
#include <QSettings>
#include <QUrl>

#include <new>
#include <sys/stat.h>

class TestDocumentWindow : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void openRgbPhotoKeepsIt();
    void askDialogRemembersChoice();
    void indexedImageRecolouredByBuiltinList();
    void openPaletteMessages_data();
    void openPaletteMessages();
    void paletteOverRgbImageWarns();
    void maximumPaletteSizeConflict();
    void zoomSteps();
    void interpolateAsksFirst();
    void selectionFiles();
    void saveMessages();
    void everyCommandIsWired();
    void failuresSayWhy();
    void droppedFilesOpen();
    void hostileImagesSayWhy_data();
    void hostileImagesSayWhy();
    void indexedImageSavedAsGif();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QRgb shownPixel(ChromaxisMainWindow &w, int x, int y) const
    {
        return w.imageView()->pixmap(Qt::ReturnByValue).toImage().pixel(x, y);
    }

    QTemporaryDir m_dir;
    QTemporaryDir m_samples;
    PaletteDatabase m_db;
};

void TestDocumentWindow::initTestCase()
{
    m_db.loadFromText("test/red;ff0000ff0000;\ntest/blue;0000ff00ff00;\ntest/third;010203;\n");
    QImage indexed(4, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 255, 0), qRgb(255, 0, 0)});
    indexed.fill(1);
    indexed.setPixel(0, 0, 0);
    QVERIFY(indexed.save(path("indexed.png")));
    QImage rgb(6, 3, QImage::Format_RGB32);
    rgb.fill(qRgb(10, 200, 30));
    QVERIFY(rgb.save(path("photo.png")));
    NumpyImage::write(DocumentImage::fromContinuous(2, 1, {0.0f, 40000.0f}), path("cont.npy"));
    QFile gpl(path("duo.gpl"));
    QVERIFY(gpl.open(QIODevice::WriteOnly));
    gpl.write("GIMP Palette\nName: Duo\n#\n255 0 0\tred\n0 0 255\tblue\n");
}

void TestDocumentWindow::init()
{
    QSettings().clear();
    QSettings().setValue("rgb_onload_action", 1);
}

void TestDocumentWindow::openRgbPhotoKeepsIt()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("photo.png")));
    QCOMPARE(w.document().imageMode(), 1);
    QCOMPARE(w.propertyWidget()->value("Image", "Mode"), QString("RGB"));
    QCOMPARE(w.propertyWidget()->value("Image", "Width"), QString("6"));
    QCOMPARE(w.propertyWidget()->value("Image", "File"), QString("photo.png"));
    QCOMPARE(shownPixel(w, 2, 1), qRgb(10, 200, 30));
    QVERIFY(w.action("saveImage")->isEnabled());
    w.closeImage();
    QVERIFY(!w.document().hasImage());
    QVERIFY(!w.action("saveImage")->isEnabled());
}

void TestDocumentWindow::askDialogRemembersChoice()
{
    QSettings().setValue("rgb_onload_action", 0);
    ChromaxisMainWindow w(&m_db);
    QCOMPARE(w.rgbOnLoadAction(), 0);
    QString title;
    handleNextDialog<RGBImageDialog>([&title](RGBImageDialog *d) {
        title = d->windowTitle();
        d->findChild<QRadioButton *>("action1")->click();
        d->findChild<QCheckBox *>("remember")->setChecked(true);
        d->accept();
    });
    QVERIFY(w.loadImageFile(path("photo.png")));
    QCOMPARE(title, QString("Convert image"));
    QCOMPARE(w.rgbOnLoadAction(), 1);
    QCOMPARE(w.document().imageMode(), 1);
    const QAction *entry = w.findChild<QAction *>("rgbActions1");
    QVERIFY(entry && entry->isChecked());
    // Remembered across sessions once the window closes.
    QVERIFY(w.close());
    QCOMPARE(QSettings().value("rgb_onload_action").toInt(), 1);
}

void TestDocumentWindow::indexedImageRecolouredByBuiltinList()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("indexed.png")));
    QCOMPARE(w.document().imageMode(), 2);
    // Opened in its own colours, which become the palette.
    QCOMPARE(shownPixel(w, 0, 0), qRgb(0, 255, 0));
    QCOMPARE(shownPixel(w, 1, 0), qRgb(255, 0, 0));
    QCOMPARE(w.paletteView()->palette().size(), 2);
    QCOMPARE(w.propertyWidget()->value("Palette", "Name"), QString("indexed"));
    QCOMPARE(w.propertyWidget()->value("Image", "Mode"), QString("indexed 8bit"));

    w.action("paletteNextDB")->trigger(); // from index 0 to 1
    QCOMPARE(w.document().palette().property(PaletteName), QString("test/blue"));
    QCOMPARE(shownPixel(w, 0, 0), qRgb(0, 0, 255));
    QCOMPARE(shownPixel(w, 1, 0), qRgb(0, 255, 0));
    QCOMPARE(w.propertyWidget()->value("Palette", "Name"), QString("test/blue"));
    QCOMPARE(w.paletteView()->palette().size(), 2);
    QVERIFY(w.document().isPaletteModified());

    w.action("paletteNextDB")->trigger();
    w.action("paletteNextDB")->trigger(); // wraps to the first
    QCOMPARE(w.document().palette().property(PaletteName), QString("test/red"));
    w.action("palettePrevDB")->trigger(); // wraps to the last
    QCOMPARE(w.document().palette().property(PaletteName), QString("test/third"));
    QCOMPARE(shownPixel(w, 3, 1), qRgb(1, 2, 3)); // index 1 past a one-entry palette
    w.document().setPaletteModified(false);
}

void TestDocumentWindow::openPaletteMessages_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("unknown extension") << "colours.foo" << QByteArray("x") << "Could not load"
                                       << "Unable to load palette colours.foo.\nUnrecognized format.";
    QTest::newRow("bad header") << "bad.gpl" << QByteArray("GIMP palette\n") << "Error on parsing GIMP palette"
                                << "Found mismatching header 'GIMP palette' in\n'%1'.";
}

void TestDocumentWindow::openPaletteMessages()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, title);
    QFETCH(QString, text);
    {
        QFile f(path(file));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(content);
    }
    ChromaxisMainWindow w(&m_db);
    const Palette<uint> before = w.document().palette();
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    QVERIFY(!w.loadPaletteFile(path(file)));
    QCOMPARE(seen.title, title);
    QCOMPARE(seen.text, text.contains("%1") ? text.arg(path(file)) : text);
    QCOMPARE(w.document().palette(), before);

    QVERIFY(w.loadPaletteFile(path("duo.gpl")));
    QCOMPARE(w.document().palette().size(), 2);
    QCOMPARE(w.document().palette().property(PaletteName), QString("duo"));
    QCOMPARE(w.propertyWidget()->value("Palette", "Size"), QString("2"));
    QCOMPARE(w.propertyWidget()->value("Palette", "File"), QString("duo.gpl"));
    QVERIFY(!w.document().isPaletteModified());
    QCOMPARE(w.document().lastPalette(), before);
}

void TestDocumentWindow::paletteOverRgbImageWarns()
{
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("photo.png")));
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Cancel);
    QVERIFY(!w.loadPaletteFile(path("duo.gpl")));
    QCOMPARE(seen.title, QString("RGB format warning"));
    QVERIFY(seen.text.startsWith("The current image is an RGB image.<br/>Applying a new palette is impossible"));
    QVERIFY(w.document().hasImage());
    answerNextBox(seen, QMessageBox::Ok);
    QVERIFY(w.loadPaletteFile(path("duo.gpl")));
    QVERIFY(!w.document().hasImage());
    QCOMPARE(w.document().palette().size(), 2);
}

void TestDocumentWindow::maximumPaletteSizeConflict()
{
    ChromaxisMainWindow w(&m_db);
    QCOMPARE(w.maximumPaletteSize(), 1024);
    QAction *small = w.findChild<QAction *>("maxPaletteSizes0"); // 256
    QVERIFY(small);
    QVERIFY(w.loadImageFile(path("indexed.png")));
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    small->trigger();
    QCOMPARE(seen.title, QString("Image conflict"));
    QCOMPARE(seen.text, QString("The current image may use more colors than the new maximum value.\nPlease close "
                                "the image first."));
    QCOMPARE(w.maximumPaletteSize(), 1024);
    QVERIFY(!small->isChecked());
    w.closeImage();
    small->trigger();
    QCOMPARE(w.maximumPaletteSize(), 256);
}

void TestDocumentWindow::zoomSteps()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("photo.png")));
    w.action("zoomIn")->trigger();
    QCOMPARE(w.scale(), 1.25);
    w.action("zoomOut")->trigger();
    QCOMPARE(w.scale(), 0.9375); // out is not the inverse of in
    w.action("normalSize")->trigger();
    QCOMPARE(w.scale(), 1.0);
    QCOMPARE(w.imageView()->size(), QSize(6, 3));
    QWheelEvent wheel(QPointF(1, 1), QPointF(1, 1), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(w.imageView(), &wheel);
    QCOMPARE(w.scale(), 1.25);
}

void TestDocumentWindow::interpolateAsksFirst()
{
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("cont.npy")));
    QCOMPARE(w.propertyWidget()->value("Image", "Mode"), QString("continuous"));
    QAction *interpolate = w.action("imageInterpolateEntries");
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Cancel);
    interpolate->trigger();
    QCOMPARE(seen.title, QString("Performance warning"));
    QCOMPARE(seen.text, QString("Please note that interpolating indices slows \ndown image processing.\nApplication "
                                "of new palettes will be previewed \nwith a delay."));
    QVERIFY(!interpolate->isChecked());
    QVERIFY(!w.document().image().interpolate());
    answerNextBox(seen, QMessageBox::Ok);
    interpolate->trigger();
    QVERIFY(w.document().image().interpolate());
    QCOMPARE(w.propertyWidget()->value("Image", "Mode"), QString("continuous (interpolated)"));
    interpolate->trigger(); // switching off asks nothing
    QVERIFY(!w.document().image().interpolate());
}

void TestDocumentWindow::selectionFiles()
{
    const QString bad = path("bad-selection.txt");
    {
        QFile f(bad);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("1\n2\nx\n");
    }
    QVERIFY_EXCEPTION_THROWN(readSelectionFile(bad), DescribedException);
    ChromaxisMainWindow w(&m_db);
    w.paletteView()->setSelected({1, 5});
    QCOMPARE(w.document().selection(), std::set<int>({1, 5}));
}

void TestDocumentWindow::saveMessages()
{
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("photo.png")));
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    QVERIFY(!w.saveImageFile(path("photo.gif")));
    QCOMPARE(seen.title, QString("Could not save"));
    QCOMPARE(seen.text, QString("Unable to save RGB image as .gif."));
    QVERIFY(!QFile::exists(path("photo.gif")));

    answerNextBox(seen, QMessageBox::Ok);
    QVERIFY(!w.savePaletteFile(path("palette.xyz")));
    QCOMPARE(seen.text, QString("Unable to save palette palette.xyz.\nUnrecognized format."));

    w.document().setPaletteModified(true);
    QVERIFY(w.savePaletteFile(path("saved.gpl")));
    QVERIFY(!w.document().isPaletteModified());
    Palette<uint> back;
    importPalette(path("saved.gpl"), back, FormatGimp);
    QCOMPARE(back.entries(), w.document().palette().entries());
    QVERIFY(w.saveImageFile(path("copy.png")));
    QCOMPARE(QImage(path("copy.png")).pixel(0, 0), qRgb(10, 200, 30));
}

void TestDocumentWindow::everyCommandIsWired()
{
    ChromaxisMainWindow w(&m_db);
    // A catalogue entry without a slot would be a button that does nothing.
    for (const ActionEntry &e : actionCatalogue()) {
        const QByteArray slot(e.slot);
        const QByteArray signature = QMetaObject::normalizedSignature(slot + "()");
        QVERIFY2(w.metaObject()->indexOfMethod(signature) >= 0 || slot.startsWith("showBar"), slot.constData());
    }
}

void TestDocumentWindow::droppedFilesOpen()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path("duo.gpl")), QUrl::fromLocalFile(path("indexed.png"))});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&w, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&w, &drop);
    // The palette first, then the image, which brings its own colours: the dropped palette is
    // the last palette.
    QCOMPARE(w.document().imageMode(), 2);
    QCOMPARE(w.document().palette().size(), 2);
    QCOMPARE(w.document().lastPalette().property(PaletteName), QString("duo"));
    QCOMPARE(shownPixel(w, 0, 0), qRgb(0, 255, 0));
}

// "Save image as" offers GIF for an 8-bit indexed image, and the GIF opens again in its colours.
void TestDocumentWindow::indexedImageSavedAsGif()
{
    QStringList offered;
    {
        ChromaxisMainWindow w(&m_db);
        w.show();
        QVERIFY(w.loadImageFile(path("indexed.png")));
        w.action("paletteNextDB")->trigger(); // shown in blue and green now
        const QString gif = path("saved.gif");
        handleNextDialog<QFileDialog>([&offered, gif](QFileDialog *d) {
            offered = d->nameFilters();
            d->selectFile(gif);
            QMetaObject::invokeMethod(d, "accept");
        });
        QVERIFY(w.saveImageAs());
        QCOMPARE(w.document().imageFileName(), gif);
        w.document().setPaletteModified(false);
    }
    QVERIFY(offered.contains("GIF images (*.gif)"));

    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("saved.gif")));
    QCOMPARE(w.document().imageMode(), 2);
    QCOMPARE(w.document().palette().size(), 2);
    QCOMPARE(shownPixel(w, 0, 0), qRgb(0, 0, 255));
    QCOMPARE(shownPixel(w, 3, 1), qRgb(0, 255, 0));
    w.action("undo")->trigger();
    QVERIFY(!w.document().hasImage());
    QCOMPARE(w.document().palette().size(), 256);

    // An RGB image is not offered GIF.
    QVERIFY(w.loadImageFile(path("photo.png")));
    handleNextDialog<QFileDialog>([&offered](QFileDialog *d) {
        offered = d->nameFilters();
        d->reject();
    });
    QVERIFY(!w.saveImageAs());
    QVERIFY(!offered.isEmpty());
    QVERIFY(!offered.contains("GIF images (*.gif)"));
}

// Running out of memory in a command and saving onto a pipe: a message in words, the document as
// it was, and the pipe still a pipe.
void TestDocumentWindow::failuresSayWhy()
{
    PaletteOperations::registerOperation(
        "test_out_of_memory",
        {[](const Palette<uint> &, const std::set<int> &, const SettingsText::Pairs &) -> Palette<uint> {
             throw std::bad_alloc();
         },
         false});
    const QString macro = path("oom.cxm");
    {
        QFile f(macro);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("chromaxis-macro 1\n%step palette_invert_order\n%step test_out_of_memory\n");
    }
    ChromaxisMainWindow w(&m_db);
    const Palette<uint> before = w.document().palette();
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    QVERIFY(!w.playMacroFile(macro));
    QCOMPARE(seen.title, QString("Out of memory"));
    QCOMPARE(seen.text, QString("There is not enough memory to carry out the command."));
    QVERIFY(w.document().palette() != before); // the step before it stays played
    QVERIFY(w.document().undo());
    QVERIFY(w.document().palette() == before);

    const QString pipe = path("pipe.gpl");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    answerNextBox(seen, QMessageBox::Ok);
    QVERIFY(!w.savePaletteFile(pipe));
    QCOMPARE(seen.title, QString("Error on palette export"));
    QCOMPARE(seen.text, QString("The destination file\n'%1'\ncould not be built.\nIt is not a regular file but a "
                                "device, a pipe or a socket, which is never replaced.")
                            .arg(pipe));
    struct stat st;
    QVERIFY(lstat(QFile::encodeName(pipe).constData(), &st) == 0 && S_ISFIFO(st.st_mode));
}

void TestDocumentWindow::hostileImagesSayWhy_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    const QString limit = "The image is %1 pixels; at most 134217728 pixels, 262144 a side, can be opened.";
    QTest::newRow("240-byte JPEG of 40000 x 40000")
        << "declares-40000x40000.jpg"
        << "Could not load" << "Cannot load declares-40000x40000.jpg.\n" + limit.arg("40000 x 40000");
    QTest::newRow("uint32 row of 2^26 cells")
        << "wide-u4.npy"
        << "Error on reading NumPy array"
        << "The array in\n'%1'\nis too large for an image.\n" + limit.arg("67108864 x 1");
}

// Opened as a file named on the command line, an image the program cannot build is refused with
// a message, and the window keeps what it showed: neither a blank view nor a crash.
void TestDocumentWindow::hostileImagesSayWhy()
{
    QFETCH(QString, file);
    QFETCH(QString, title);
    QFETCH(QString, text);
    const QString hostile = m_samples.filePath(file);
    if (!QFile::exists(hostile)) {
        QProcess make;
        make.start("python3", {CHROMAXIS_HOSTILE_SAMPLES, m_samples.path()});
        QVERIFY(make.waitForFinished(120000) && make.exitCode() == 0);
    }

    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("indexed.png")));
    const QImage shown = w.imageView()->pixmap(Qt::ReturnByValue).toImage();
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    w.openFiles({hostile});
    QVERIFY(seen.seen);
    QCOMPARE(seen.title, title);
    QCOMPARE(seen.text, text.contains("%1") ? text.arg(hostile) : text);
    QCOMPARE(w.document().image().width(), 4);
    QCOMPARE(w.imageView()->pixmap(Qt::ReturnByValue).toImage(), shown);
}

CHROMAXIS_GUI_TEST_MAIN(TestDocumentWindow)
#include "tst_documentwindow.moc"
