#include "chromaxismainwindow.h"
#include "dialogs/paletterenderdialog.h"
#include "export/palettepicture.h"
#include "guitesting.h"
#include "storage/palettedatabase.h"
#include "utils/qt/colorwidgets/paletteview.h"
#include "utils/qt/colorwidgets/selectcolorbutton.h"
#include "utils/qt/widgets/dialogsettingsio.h"

#include <QComboBox>
#include <QFileDialog>
#include <QImageReader>
#include <QLabel>
#include <QMenuBar>
#include <QPrintDialog>
#include <QSettings>
#include <QSpinBox>

namespace {

Palette<uint> paletteOf(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append(fromByteColor(RGBAColor<uchar>(uchar(i), uchar(255 - i), uchar(3 * i), 255)));
    return p;
}

} // namespace

class TestPicturePrints : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void controls_data();
    void controls();
    void presetsInTheirOrder();
    void controlsRebuildThePreview();
    void lastUsedSettingsComeBack();
    void exportPaletteAsImage();
    void fileMenuCommandsAreBuilt();
    void printDialogFollowsTheRenderDialog();
    void replayAsksBeforePrinting_data();
    void replayAsksBeforePrinting();
    void paletteViewDrawsThroughTheSameRule();

private:
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestPicturePrints::init()
{
    QSettings().clear();
}

void TestPicturePrints::controls_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("initial");
    for (const char *key : {"pad_top", "pad_right", "pad_bottom", "pad_left", "spc_v", "spc_h"})
        QTest::newRow(key) << QString(key) << 0 << 0;
    for (const char *key : {"cell_width", "cell_height", "columns"})
        QTest::newRow(key) << QString(key) << 1 << 16;
}

// The ranges, and the values before any settings are applied.
void TestPicturePrints::controls()
{
    QFETCH(QString, key);
    QFETCH(int, minimum);
    QFETCH(int, initial);
    PaletteRenderDialog dialog(paletteOf(4), "no_database");
    QSpinBox *spin = dialog.spinBox(key);
    QVERIFY(spin);
    QCOMPARE(spin->minimum(), minimum);
    QCOMPARE(spin->maximum(), 1000);
    QCOMPARE(spin->value(), initial);
    // A value beyond the range from a settings text shows as the range's end.
    dialog.applySettings({{key, "-5"}});
    QCOMPARE(spin->value(), minimum);
    dialog.applySettings({{key, "99999"}});
    QCOMPARE(spin->value(), 1000);
}

void TestPicturePrints::presetsInTheirOrder()
{
    PaletteRenderDialog dialog(paletteOf(256), "no_database");
    dialog.start();
    QComboBox *box = dialog.settingsIO()->comboBox();
    QStringList names;
    for (int i = 1; i < box->count(); ++i)
        names << box->itemText(i);
    QCOMPARE(names, (QStringList{"square small (1x1)", "square middle (8x8)", "square big (16x16)",
                                 "square middle (8x8) with offset", "square big (16x16) with offset", "line small (1)",
                                 "line middle (8)", "line big (16)", "line big (1) with offset"}));
    // Nothing stored yet: the first preset is loaded.
    QCOMPARE(box->currentIndex(), 1);
    QCOMPARE(dialog.picture().size(), QSize(16, 16));
    // Choosing presets as the user does.
    box->setCurrentIndex(dialog.settingsIO()->presetIndex(5));
    QCOMPARE(dialog.picture().size(), QSize(324, 324));
    QCOMPARE(dialog.preview()->pixmap(Qt::ReturnByValue).size(), QSize(324, 324));
    box->setCurrentIndex(dialog.settingsIO()->presetIndex(4));
    QCOMPARE(dialog.colorButton()->color(), QColor(Qt::black));
    QCOMPARE(dialog.picture().pixel(0, 0), 0xFF000000u);
    box->setCurrentIndex(dialog.settingsIO()->presetIndex(6));
    QCOMPARE(dialog.picture().size(), QSize(256, 1));
}

void TestPicturePrints::controlsRebuildThePreview()
{
    PaletteRenderDialog dialog(paletteOf(20), "no_database");
    dialog.start();
    auto shown = [&dialog] { return dialog.preview()->pixmap(Qt::ReturnByValue).toImage(); };
    QCOMPARE(shown().size(), QSize(16, 2));
    const QList<std::pair<QString, int>> steps = {{"cell_width", 3}, {"columns", 5}, {"spc_h", 2}, {"pad_top", 4}};
    for (const auto &[key, value] : steps) {
        dialog.spinBox(key)->setValue(value);
        QCOMPARE(dialog.settingsIO()->comboBox()->currentIndex(), 0); // the user's own state now
    }
    // 5 columns of 3 with 2 between, 4 rows of 1, 4 on top.
    QCOMPARE(shown().size(), QSize(4 * 2 + 5 * 3, 4 + 4));
    QCOMPARE(shown().pixel(3, 4), 0xFFFFFFFFu); // the spacing shows the background
    dialog.colorButton()->updateColor(QColor(1, 2, 3));
    QCOMPARE(shown().pixel(3, 4), qRgb(1, 2, 3));
    QCOMPARE(shown().pixel(0, 0), qRgb(1, 2, 3));
    QCOMPARE(dialog.dialogSettings(), QString("pad_top:4\npad_right:0\npad_bottom:0\npad_left:0\nspc_v:0\nspc_h:2\n"
                                              "cell_width:3\ncell_height:1\ncolumns:5\nbgcolor:#ff010203\n"));
}

void TestPicturePrints::lastUsedSettingsComeBack()
{
    {
        PaletteRenderDialog dialog(paletteOf(3), "no_database");
        dialog.start();
        dialog.spinBox("cell_height")->setValue(7);
        dialog.accept();
    }
    QVERIFY(QSettings().value("dialog_palette_render_settings").toString().contains("cell_height:7\n"));
    PaletteRenderDialog again(paletteOf(3), "no_database");
    again.start();
    QCOMPARE(again.spinBox("cell_height")->value(), 7);
    QCOMPARE(again.picture().size(), QSize(16, 7));
}

void TestPicturePrints::exportPaletteAsImage()
{
    ChromaxisMainWindow w(&m_db);
    w.installPalette(paletteOf(20), false);
    const QString file = m_dir.filePath("palette.bmp");
    QString title;
    handleNextDialog<PaletteRenderDialog>([&title](PaletteRenderDialog *d) {
        title = d->windowTitle();
        d->settingsIO()->comboBox()->setCurrentIndex(d->settingsIO()->presetIndex(5));
        d->accept();
        handleNextDialog<QFileDialog>([](QFileDialog *f) {
            f->selectFile(QFileInfo(f->directory(), "palette.bmp").absoluteFilePath());
            static_cast<QDialog *>(f)->accept();
        });
    });
    const QString old = QDir::currentPath();
    QSettings().setValue("default_palette_dir", m_dir.path());
    w.action("exportPaletteToImage")->trigger();
    QCOMPARE(title, QString("Export palette as image"));
    QImageReader reader(file);
    QCOMPARE(reader.format(), QByteArray("bmp"));
    const QImage image = reader.read();
    QCOMPARE(image.size(), QSize(324, 44));
    QCOMPARE(image.pixel(4 + 3 * 20, 24), qRgb(19, 236, 57)); // entry 19, the second row's fourth
    QCOMPARE(image.pixel(4 + 4 * 20, 24), qRgb(255, 255, 255));
    QDir::setCurrent(old);
}

// The three commands of the File menu that make pictures and prints do something of their own.
void TestPicturePrints::fileMenuCommandsAreBuilt()
{
    ChromaxisMainWindow w(&m_db);
    QImage indexed(5, 4, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 0, 0), qRgb(9, 9, 9)});
    indexed.fill(1);
    QVERIFY(indexed.save(m_dir.filePath("indexed.png")));
    QSettings().setValue("rgb_onload_action", 1);
    QVERIFY(w.loadImageFile(m_dir.filePath("indexed.png")));
    for (const char *name : {"exportPaletteToImage", "printPalette", "printImage"}) {
        QStringList seen;
        bool closed = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, [&] {
            QWidget *modal = QApplication::activeModalWidget();
            if (auto *box = qobject_cast<QMessageBox *>(modal)) {
                seen << box->text();
                box->reject();
            } else if (auto *d = qobject_cast<QDialog *>(modal)) {
                seen << d->metaObject()->className();
                d->reject();
                closed = true;
            }
        });
        timer.start(5);
        w.action(name)->trigger();
        timer.stop();
        QVERIFY2(closed, name);
        for (const QString &text : seen)
            QVERIFY2(!text.contains("not available yet"), qPrintable(text));
        const QString expected = QString(name) == "printImage" ? "QPrintDialog" : "PaletteRenderDialog";
        QVERIFY2(seen.value(0).contains(expected), qPrintable(seen.join(", ")));
    }
    w.document().setImageModified(false);
    w.document().setPaletteModified(false);
}

// Print palette: the render dialog, then the printer; cancelling the printer prints nothing and
// records no step.
void TestPicturePrints::printDialogFollowsTheRenderDialog()
{
    ChromaxisMainWindow w(&m_db);
    w.document().setRecording(true);
    QString title;
    bool printerAsked = false;
    handleNextDialog<PaletteRenderDialog>([&](PaletteRenderDialog *d) {
        title = d->windowTitle();
        d->accept();
        handleNextDialog<QPrintDialog>([&](QPrintDialog *p) {
            printerAsked = true;
            p->reject();
        });
    });
    w.action("printPalette")->trigger();
    QCOMPARE(title, QString("Print palette"));
    QVERIFY(printerAsked);
    QCOMPARE(w.document().macros().count(), 0);
}

void TestPicturePrints::replayAsksBeforePrinting_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("question");
    QTest::newRow("palette") << "print_palette" << "Do you really want to print palettes in batch?";
    QTest::newRow("image") << "print_image" << "Do you really want to print images in batch?";
}

// A macro that prints asks once, before its first print; declining prints nothing and the rest
// of the macro still plays.
void TestPicturePrints::replayAsksBeforePrinting()
{
    QFETCH(QString, step);
    QFETCH(QString, question);
    const QString macro = m_dir.filePath("print.cxm");
    {
        QFile f(macro);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(("chromaxis-macro 1\n%step " + step + "\ncolumns:4\n%step palette_invert_order\n%step " + step +
                 "\n").toUtf8());
    }
    ChromaxisMainWindow w(&m_db);
    QImage indexed(2, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 0, 0), qRgb(9, 9, 9)});
    indexed.fill(1);
    QVERIFY(indexed.save(m_dir.filePath("small.png")));
    QSettings().setValue("rgb_onload_action", 1);
    QVERIFY(w.loadImageFile(m_dir.filePath("small.png")));
    const Palette<uint> before = w.document().palette();
    QStringList boxes;
    QTimer timer;
    connect(&timer, &QTimer::timeout, [&] {
        QWidget *modal = QApplication::activeModalWidget();
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            boxes << box->text();
            box->button(box->text() == question ? QMessageBox::No : QMessageBox::Ok)->click();
        } else if (auto *d = qobject_cast<QDialog *>(modal)) {
            boxes << d->metaObject()->className();
            d->reject();
        }
    });
    timer.start(5);
    QVERIFY(w.playMacroFile(macro));
    timer.stop();
    QCOMPARE(boxes, QStringList{question});
    QVERIFY(w.document().palette() != before); // the step between the prints played
    w.document().setImageModified(false);
    w.document().setPaletteModified(false);
}

// The window's palette view and the picture are one drawing: the same pixels for the same geometry.
void TestPicturePrints::paletteViewDrawsThroughTheSameRule()
{
    PaletteView view(paletteOf(37), 6, 5, 3, 2, 1, 1, 2, 3, 4, QColor(7, 8, 9));
    view.setSelected({2, 40});
    PalettePicture::Geometry g{6, 5, 3, 2, 1, 1, 2, 3, 4};
    QCOMPARE(view.image(), PalettePicture::paint(paletteOf(37), g, QColor(7, 8, 9), {2, 40}));
    QCOMPARE(view.image().size(), QSize(5 * 1 + 6 * 5 + 2 + 4, 6 * 2 + 7 * 3 + 3 + 1));
}

CHROMAXIS_GUI_TEST_MAIN(TestPicturePrints)
#include "tst_pictureprints.moc"
