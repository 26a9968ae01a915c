// "Export animation..." driven as a user drives it: the refusals, the filters offered, the range
// dialog with its limits and remembered values, the progress dialog, cancelling, a failure's box,
// and the movie on disk.

#include "chromaxismainwindow.h"
#include "dialogs/exportanimationdialog.h"
#include "guitesting.h"
#include "storage/numpyimage.h"
#include "storage/palettedatabase.h"

#include <QAction>
#include <QFileDialog>
#include <QProgressDialog>
#include <QSettings>
#include <QSpinBox>

#include <gif_lib.h>

namespace {

struct ProgressSeen
{
    bool seen = false;
    QString title;
    QString label;
    int maximum = -1;
    int width = 0;
    Qt::WindowModality modality = Qt::NonModal;
    bool helpButton = true;
};

// Fills in the range dialog and accepts it; what it offered is kept.
struct RangeSeen
{
    QString title;
    QList<int> values;   // start, end, rate as offered
    QList<int> maximums; // of the same
    QList<int> widths;
};

void answerRange(RangeSeen &seen, int start, int end, int fps)
{
    handleNextDialog<ExportAnimationDialog>([&seen, start, end, fps](ExportAnimationDialog *d) {
        seen.title = d->windowTitle();
        for (const char *name : {"startIndex", "endIndex", "framesPerSecond"}) {
            auto *box = d->findChild<QSpinBox *>(name);
            seen.values << box->value();
            seen.maximums << box->maximum();
            seen.widths << box->maximumWidth();
        }
        d->findChild<QSpinBox *>("startIndex")->setValue(start);
        d->findChild<QSpinBox *>("endIndex")->setValue(end);
        d->findChild<QSpinBox *>("framesPerSecond")->setValue(fps);
        d->accept();
    });
}

void chooseFile(QStringList &offered, const QString &file, const QString &filter = {})
{
    handleNextDialog<QFileDialog>([&offered, file, filter](QFileDialog *d) {
        offered = d->nameFilters();
        if (!filter.isEmpty())
            d->selectNameFilter(filter);
        d->selectFile(file);
        QMetaObject::invokeMethod(d, "accept");
    });
}

// Looks at the progress dialog when it shows, and cancels it when asked to.
void watchProgress(ProgressSeen &seen, bool cancel)
{
    handleNextDialog<QProgressDialog>([&seen, cancel](QProgressDialog *d) {
        seen.seen = true;
        seen.title = d->windowTitle();
        seen.label = d->labelText();
        seen.maximum = d->maximum();
        seen.width = d->width();
        seen.modality = d->windowModality();
        seen.helpButton = d->windowFlags().testFlag(Qt::WindowContextHelpButtonHint);
        if (cancel)
            d->cancel();
    });
}

int gifFrames(const QString &path)
{
    int error = 0;
    GifFileType *gif = DGifOpenFileName(QFile::encodeName(path).constData(), &error);
    if (!gif)
        return -1;
    const int count = DGifSlurp(gif) == GIF_OK ? gif->ImageCount : -1;
    DGifCloseFile(gif, &error);
    return count;
}

} // namespace

class TestAnimationExport : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void refusals_data();
    void refusals();
    void filters_data();
    void filters();
    void exportsGif();
    void cancelling();
    void failureBox();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestAnimationExport::initTestCase()
{
    m_db.loadFromText("a/one;ff0000;\n");
    QImage rgb(64, 32, QImage::Format_RGB32);
    rgb.fill(Qt::red);
    QImage indexed(64, 32, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 16; ++i)
        table << qRgb(i * 17, 255 - i * 17, i * 5);
    indexed.setColorTable(table);
    std::vector<uint32_t> words;
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 64; ++x) {
            indexed.setPixel(x, y, uint(x / 4));
            words.push_back(uint32_t(x / 4));
        }
    QVERIFY(rgb.save(path("rgb.png")));
    QVERIFY(indexed.save(path("indexed.png")));
    NumpyImage::write(DocumentImage::fromIndexes32(64, 32, words), path("cells.npy"));
}

void TestAnimationExport::init()
{
    QSettings s;
    s.clear();
    s.setValue("rgb_onload_action", 1); // keep an RGB image as it is
}

void TestAnimationExport::refusals_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("no image") << QString() << "No image error" << "You need an image to generate an animation.";
    QTest::newRow("rgb image") << "rgb.png" << "Format error" << "An image with a palette to rotate is needed.";
}

void TestAnimationExport::refusals()
{
    QFETCH(QString, file);
    QFETCH(QString, title);
    QFETCH(QString, text);
    ChromaxisMainWindow w(&m_db);
    w.show();
    if (!file.isEmpty())
        QVERIFY(w.loadImageFile(path(file)));
    SeenBox seen;
    answerNextBox(seen, QMessageBox::Ok);
    w.imageExportAnimation();
    QVERIFY(seen.seen);
    QCOMPARE(seen.title, title);
    QCOMPARE(seen.text, text);
}

void TestAnimationExport::filters_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("filters");
    QTest::newRow("8-bit indexed")
        << "indexed.png"
        << QStringList{"AVI movies (*.avi)", "GIF files (*.gif)", "MPEG-4 movies (*.mp4)", "WebM movies (*.webm)"};
    QTest::newRow("32-bit indexed") << "cells.npy"
                                    << QStringList{"AVI movies (*.avi)", "MPEG-4 movies (*.mp4)",
                                                   "WebM movies (*.webm)"};
}

void TestAnimationExport::filters()
{
    QFETCH(QString, file);
    QFETCH(QStringList, filters);
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path(file)));
    QStringList offered;
    QString title;
    handleNextDialog<QFileDialog>([&](QFileDialog *d) {
        offered = d->nameFilters();
        title = d->windowTitle();
        d->reject();
    });
    w.imageExportAnimation(); // cancelled: nothing follows
    QCOMPARE(title, QString("Export animation as"));
    QCOMPARE(offered, filters);
}

void TestAnimationExport::exportsGif()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("indexed.png")));
    QStringList offered;
    RangeSeen range;
    ProgressSeen progress;
    const QString gif = path("export/cycle"); // the chosen filter gives the suffix
    QDir().mkpath(path("export"));
    chooseFile(offered, gif, "GIF files (*.gif)");
    answerRange(range, 2, 9, 25);
    watchProgress(progress, false);
    w.imageExportAnimation();

    QCOMPARE(range.title, QString("Export Animation"));
    QCOMPARE(range.values, (QList<int>{0, 15, 10}));
    QCOMPARE(range.maximums, (QList<int>{255, 15, 60}));
    QCOMPARE(range.widths, (QList<int>{100, 100, 100}));
    QVERIFY(progress.seen);
    QCOMPARE(progress.title, QString("Exporting Animation..."));
    QCOMPARE(progress.label, QString("Progress..."));
    QCOMPARE(progress.maximum, 7);
    QCOMPARE(progress.width, 400);
    QCOMPARE(progress.modality, Qt::WindowModal);
    QVERIFY(!progress.helpButton);
    QCOMPARE(gifFrames(gif + ".gif"), 7);

    QSettings s;
    QCOMPARE(s.value("animation_start").toInt(), 2);
    QCOMPARE(s.value("animation_end").toInt(), 9);
    QCOMPARE(s.value("animation_speed").toInt(), 25);
    QCOMPARE(s.value("default_animation_export_type").toString(), QString("GIF files (*.gif)"));
    QCOMPARE(s.value("default_animation_export_dir").toString(), path("export"));

    // The next export starts where this one ended: folder, filter and values.
    QString folder;
    QString filter;
    handleNextDialog<QFileDialog>([&](QFileDialog *d) {
        folder = d->directory().absolutePath();
        filter = d->selectedNameFilter();
        d->selectFile(path("export/again.gif"));
        QMetaObject::invokeMethod(d, "accept");
    });
    RangeSeen again;
    answerRange(again, 0, 1, 5);
    w.imageExportAnimation();
    QCOMPARE(folder, path("export"));
    QCOMPARE(filter, QString("GIF files (*.gif)"));
    QCOMPARE(again.values, (QList<int>{2, 9, 25}));
    QCOMPARE(gifFrames(path("export/again.gif")), 1);
}

void TestAnimationExport::cancelling()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("indexed.png")));
    const QString avi = path("cancelled.avi");
    QStringList offered;
    RangeSeen range;
    ProgressSeen progress;
    SeenBox box;
    chooseFile(offered, avi);
    answerRange(range, 0, 15, 10);
    watchProgress(progress, true);
    answerNextBox(box, QMessageBox::Ok);
    w.imageExportAnimation();
    QVERIFY(progress.seen);
    QVERIFY(box.seen);
    QCOMPARE(box.title, QString("Animation export aborted."));
    QCOMPARE(box.text, QString("Animation export aborted.\nThe file may be corrupt."));
    QVERIFY(!QFile::exists(avi));
    QVERIFY(!QSettings().contains("default_animation_export_type"));
}

void TestAnimationExport::failureBox()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("cells.npy")));
    QStringList offered;
    RangeSeen range;
    SeenBox box;
    chooseFile(offered, path("still.mp4"));
    answerRange(range, 0, 3, 0);
    answerNextBox(box, QMessageBox::Ok);
    w.imageExportAnimation();
    QVERIFY(box.seen);
    QCOMPARE(box.title, QString("Animation export error"));
    QCOMPARE(box.text, QString("A movie needs at least 1 frame per second; 0 was asked for."));
    QVERIFY(!QFile::exists(path("still.mp4")));
}

CHROMAXIS_GUI_TEST_MAIN(TestAnimationExport)
#include "tst_animationexport.moc"
