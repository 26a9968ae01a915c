// Image > Transform and Palette > "Batch convert palettes..." driven through the window's menus
// and dialogs, as a user drives them.
#include "chromaxismainwindow.h"
#include "conversion/imagetransforms.h"
#include "dialogs/palettebatchconvertdialog.h"
#include "formats/paletteformats.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "storage/numpyimage.h"
#include "storage/palettedatabase.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QSettings>

namespace {

// Records and closes whatever modal window a command opens: a transform must open none.
class ModalWatcher : public QObject
{
public:
    ModalWatcher()
    {
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            auto *box = qobject_cast<QMessageBox *>(modal);
            m_seen << (box ? box->text() : modal->windowTitle());
            if (auto *dialog = qobject_cast<QDialog *>(modal))
                dialog->reject();
            else
                modal->close();
        });
        m_timer.start();
    }
    const QStringList &seen() const { return m_seen; }

private:
    QTimer m_timer;
    QStringList m_seen;
};

QMenu *subMenu(QMenu *menu, const QString &title)
{
    for (QAction *a : menu->actions())
        if (a->menu() && a->text() == title)
            return a->menu();
    return nullptr;
}

QImage shown(ChromaxisMainWindow &w)
{
    return w.imageView()->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_RGB32);
}

QImage rendered(DocumentImage image, const Palette<uint> &palette)
{
    image.render(palette);
    return image.picture().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class TestTransformsAndBatch : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void transformMenu_data();
    void transformMenu();
    void transformsNeedAnImage();
    void batchConvertPalettes();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestTransformsAndBatch::initTestCase()
{
    m_db.loadFromText("a/one;ff0000;\n");
    QImage rgb(5, 3, QImage::Format_RGB32);
    QImage indexed(5, 3, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < 15; ++i)
        table << qRgb(i * 17, 255 - i * 17, i * 5);
    indexed.setColorTable(table);
    std::vector<uint32_t> words;
    std::vector<float> reals;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) {
            rgb.setPixel(x, y, table[y * 5 + x]);
            indexed.setPixel(x, y, uint(y * 5 + x));
            words.push_back(uint32_t(y * 5 + x) * 17);
            reals.push_back(float(y * 5 + x) * 4369.0f);
        }
    QVERIFY(rgb.save(path("rgb.png")));
    QVERIFY(indexed.save(path("indexed.png")));
    NumpyImage::write(DocumentImage::fromIndexes32(5, 3, words), path("cells.npy"));
    NumpyImage::write(DocumentImage::fromContinuous(5, 3, reals), path("real.npy"));
}

void TestTransformsAndBatch::transformMenu_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("mode");
    QTest::newRow("rgb") << "rgb.png" << 1;
    QTest::newRow("indexed 8bit") << "indexed.png" << 2;
    QTest::newRow("indexed 32bit") << "cells.npy" << 3;
    QTest::newRow("continuous") << "real.npy" << 4;
}

void TestTransformsAndBatch::transformMenu()
{
    QFETCH(QString, file);
    QFETCH(int, mode);
    QSettings().setValue("rgb_onload_action", 1); // keep an RGB image as it is
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(QTest::qWaitForWindowExposed(&w));
    QVERIFY(w.loadImageFile(path(file)));
    QCOMPARE(w.document().imageMode(), mode);
    w.document().clearHistory();
    w.document().setRecording(true);

    QMenu *image = nullptr;
    for (QAction *a : w.menuBar()->actions())
        if (a->text() == "&Image")
            image = a->menu();
    QVERIFY(image);
    QMenu *transform = subMenu(image, "Transform");
    QVERIFY(transform);

    const DocumentImage original = w.document().image();
    DocumentImage expected = original;
    const QStringList stepOf{"imageMirrorHorizontally", "image_mirror_h",  "imageMirrorVertically",
                             "image_mirror_v",          "imageRotateCW",   "image_rotate_cw",
                             "imageRotateCCW",          "image_rotate_ccw"};
    QStringList texts, steps;
    ModalWatcher watcher;
    for (QAction *a : transform->actions()) {
        if (a->isSeparator())
            continue;
        texts << a->text();
        QVERIFY(a->isEnabled());
        const int at = stepOf.indexOf(a->objectName());
        QVERIFY2(at >= 0, qPrintable(a->objectName()));
        const QString step = stepOf[at + 1];
        expected = ImageTransforms::apply(step, expected);
        steps << step;
        a->trigger();
        QCoreApplication::processEvents();
        // No box at all: neither "not available yet" nor an error.
        QVERIFY2(watcher.seen().isEmpty(), qPrintable(watcher.seen().join(" | ")));
        QCOMPARE(w.document().imageMode(), mode);
        QCOMPARE(w.document().imageWidth(), expected.width());
        QCOMPARE(shown(w), rendered(expected, w.document().palette()));
    }
    QCOMPARE(texts,
             QStringList({"Mirror horizontally", "Mirror vertically", "Rotate 90 CW", "Rotate 90 CCW"}));
    QStringList recorded;
    for (const MacroFile::Step &s : MacroFile::stepsOf(w.document().macros()))
        recorded << s.name;
    QCOMPARE(recorded, steps);
    // Both mirrors and a turn each way: a half turn of the 5 x 3 picture.
    const QImage before = rendered(original, w.document().palette());
    QCOMPARE(shown(w).pixel(4, 2), before.pixel(0, 0));
    QVERIFY(w.document().isImageModified());

    // One undo a transform, through the Undo action, back to the picture that was opened.
    for (int i = 0; i < 4; ++i) {
        QVERIFY(w.action("undo")->isEnabled());
        w.action("undo")->trigger();
    }
    QVERIFY(!w.action("undo")->isEnabled());
    QCOMPARE(shown(w), before);
    QVERIFY(!w.document().isImageModified());
    QVERIFY(MacroFile::stepsOf(w.document().macros()).empty());
    w.action("redo")->trigger();
    QCOMPARE(shown(w), rendered(ImageTransforms::apply(steps[0], original), w.document().palette()));
    QVERIFY(watcher.seen().isEmpty());
    w.document().setImageModified(false);
}

void TestTransformsAndBatch::transformsNeedAnImage()
{
    ChromaxisMainWindow w(&m_db);
    for (const char *name :
         {"imageMirrorHorizontally", "imageMirrorVertically", "imageRotateCW", "imageRotateCCW"})
        QVERIFY(!w.action(name)->isEnabled());
    QVERIFY(w.loadImageFile(path("cells.npy")));
    for (const char *name :
         {"imageMirrorHorizontally", "imageMirrorVertically", "imageRotateCW", "imageRotateCCW"})
        QVERIFY(w.action(name)->isEnabled());
    w.document().setImageModified(false);
}

void TestTransformsAndBatch::batchConvertPalettes()
{
    QDir(path("batch")).removeRecursively();
    QVERIFY(QDir().mkpath(path("batch/in")));
    Palette<uint> warm, cool;
    warm.append({0xFF00, 0x8000, 0x0000, 65535});
    warm.append({0xC800, 0x2800, 0x0A00, 65535});
    cool.append({0x0000, 0x4000, 0xFF00, 65535});
    exportPalette(path("batch/in/warm.gpl"), warm, FormatGimp);
    exportPalette(path("batch/in/cool.aco"), cool, FormatPhotoshop);
    QFile broken(path("batch/in/broken.gpl"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("GIMP Palette\n1 2\n");
    broken.close();
    const QStringList sources{path("batch/in/warm.gpl"), path("batch/in/broken.gpl"),
                              path("batch/in/cool.aco")};

    ChromaxisMainWindow w(&m_db);
    const Palette<uint> shownBefore = w.document().palette();
    bool okWithoutFiles = true;
    handleNextDialog<PaletteBatchConvertDialog>([&](PaletteBatchConvertDialog *d) {
        QPushButton *ok = d->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok);
        d->findChild<QLineEdit *>("folder")->setText(path("batch/out"));
        okWithoutFiles = ok->isEnabled();
        d->setFiles(sources);
        QComboBox *format = d->findChild<QComboBox *>("format");
        format->setCurrentIndex(format->findData("act"));
        QCOMPARE(format->currentText(), QString("Adobe color tables (.act)"));
        ok->click();
    });
    SeenBox report;
    answerNextBox(report, QMessageBox::Ok);
    w.action("paletteBatchConvert")->trigger();

    QVERIFY(!okWithoutFiles);
    QVERIFY(report.seen);
    QCOMPARE(report.title, QString("Batch convert palettes"));
    QVERIFY2(report.text.startsWith("2 of 3 palettes were written to " + path("batch/out") +
                                    ".\n\nThese palettes failed:\nbroken.gpl: "),
             qPrintable(report.text));
    QCOMPARE(QDir(path("batch/out")).entryList(QDir::Files), QStringList({"cool.act", "warm.act"}));
    Palette<uint> back;
    importPalette(path("batch/out/warm.act"), back, FormatAct);
    QCOMPARE(back.size(), 2);
    QCOMPARE(back[1].r >> 8, 0xC8u);
    // The document is not touched by a batch.
    QCOMPARE(w.document().palette(), shownBefore);
    QVERIFY(!w.document().history().canUndo());

    // The dialog remembers folder and format. Results already there are replaced only when the
    // user agrees; declining writes nothing.
    QVERIFY(QFile::remove(path("batch/out/cool.act")));
    QString folderShown, formatShown;
    handleNextDialog<PaletteBatchConvertDialog>([&](PaletteBatchConvertDialog *d) {
        folderShown = d->findChild<QLineEdit *>("folder")->text();
        formatShown = d->target();
        d->setFiles(sources);
        d->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
    });
    SeenBox question;
    answerNextBox(question, QMessageBox::No);
    w.action("paletteBatchConvert")->trigger();
    QCOMPARE(folderShown, path("batch/out"));
    QCOMPARE(formatShown, QString("act"));
    QVERIFY(question.seen);
    QVERIFY2(question.text.contains("1 file(s) in the destination folder will be replaced."),
             qPrintable(question.text));
    QCOMPARE(QDir(path("batch/out")).entryList(QDir::Files), QStringList({"warm.act"}));

    // Cancel in the dialog does nothing at all.
    handleNextDialog<PaletteBatchConvertDialog>([](PaletteBatchConvertDialog *d) { d->reject(); });
    w.action("paletteBatchConvert")->trigger();
    QCOMPARE(QDir(path("batch/out")).entryList(QDir::Files), QStringList({"warm.act"}));
}

CHROMAXIS_GUI_TEST_MAIN(TestTransformsAndBatch)
#include "tst_transformsandbatch.moc"
