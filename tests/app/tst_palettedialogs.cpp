// Every palette dialog and generator opened from its menu entry: a moved control shows at once in
// the window's palette view, image and property panel while the document's palette stays as it
// was, Cancel (or any other way out) shows the palette again, OK leaves one undo step and one
// macro step that carries the dialog's settings.
#include "chromaxismainwindow.h"
#include "cxpropertywidget.h"
#include "document/macroplayer.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "pal_manip/palettedialog.h"
#include "paletteview.h"
#include "storage/palettedatabase.h"
#include "utils/qt/colorwidgets/colorticksbar.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSlider>
#include <QSpinBox>
#include <QStatusBar>

namespace {

using Colour = RGBAColor<uint>;

// Sixteen entries that differ in every channel and in alpha, so that every operation changes them.
Palette<uint> startPalette()
{
    Palette<uint> p;
    for (uint i = 0; i < 16; ++i)
        p.append(Colour{(i * 4111u) % 65536u, (65535u - i * 3000u), (i * i * 250u), 65535u - i * 100u});
    return p;
}

// Moves the control named name as a user would: sliders by their slider, the ticks bar by a click
// into the widest gap between ticks (which adds a tick there).
void moveControl(QDialog *dialog, const QString &name, const QVariant &value)
{
    QObject *control = dialog->findChild<QObject *>(name);
    QVERIFY2(control, qPrintable(name));
    if (auto *c = qobject_cast<QCombinedSliderSpin *>(control)) {
        c->slider()->setValue(value.toInt());
    } else if (auto *s = qobject_cast<QSpinBox *>(control)) {
        s->setValue(value.toInt());
    } else if (auto *d = qobject_cast<QDoubleSpinBox *>(control)) {
        d->setValue(value.toDouble());
    } else if (auto *b = qobject_cast<QComboBox *>(control)) {
        b->setCurrentIndex(value.toInt());
    } else if (auto *x = qobject_cast<QCheckBox *>(control)) {
        x->setChecked(value.toBool());
    } else if (auto *bar = qobject_cast<ColorTicksBar *>(control)) {
        const auto &ticks = bar->ticks();
        int best = 0;
        for (size_t k = 1; k < ticks.size(); ++k)
            if (ticks[k].index - ticks[k - 1].index >
                ticks[size_t(best) + 1].index - ticks[size_t(best)].index)
                best = int(k) - 1;
        const int middle = (ticks[size_t(best)].index + ticks[size_t(best) + 1].index) / 2;
        QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(middle * 2, bar->height() / 2));
    } else {
        QFAIL(qPrintable("no way to move " + name));
    }
}

void clickButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    dialog->findChild<QDialogButtonBox *>("buttons")->button(which)->click();
}

// The image shows the document's palette: pixel x is entry x.
bool imageShows(ChromaxisMainWindow &w, const Palette<uint> &p)
{
    const QImage shown = w.imageView()->pixmap(Qt::ReturnByValue).toImage();
    for (int x = 0; x < qMin(16, p.size()); ++x) {
        const QRgb pixel = shown.pixel(x, 0);
        if (qRed(pixel) != int(p[x].r >> 8) || qGreen(pixel) != int(p[x].g >> 8) ||
            qBlue(pixel) != int(p[x].b >> 8))
            return false;
    }
    return true;
}

// Marks the document as saved, so that closing the window asks nothing.
void markSaved(ChromaxisMainWindow &w)
{
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

} // namespace

class TestPaletteDialogs : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void dialogPreviewsCancelsAndInstalls_data();
    void dialogPreviewsCancelsAndInstalls();
    void closingTheDialogDropsThePreview_data();
    void closingTheDialogDropsThePreview();
    void resultKeepsOrLeavesThePaletteFile_data();
    void resultKeepsOrLeavesThePaletteFile();
    void generators_data();
    void generators();
    void interpolateSelectedNeedsTwo();
    void interpolationFromSelection();
    void lastUsedSettingsReturn();

private:
    void prepare(ChromaxisMainWindow &w);
    PaletteDatabase m_db;
    QTemporaryDir m_dir;
};

void TestPaletteDialogs::init()
{
    QSettings().clear();
}

void TestPaletteDialogs::prepare(ChromaxisMainWindow &w)
{
    std::vector<uint8_t> indexes;
    for (uint8_t i = 0; i < 16; ++i)
        indexes.push_back(i);
    w.document().setImageState({DocumentImage::fromIndexes8(16, 1, indexes), QString(), false});
    w.installPalette(startPalette(), false);
    w.document().setSelection({2, 3, 4, 5});
    w.document().clearHistory();
}

void TestPaletteDialogs::dialogPreviewsCancelsAndInstalls_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("settingsName");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("line"); // what the macro step must carry

    // Each dialog by the window's slot that opens it: its title and the name of its settings.
    const QMap<QString, QStringList> dialogs{
        {"paletteOrderShift", {"Shift order", "shift_order"}},
        {"paletteManipulateBrightnessContrast", {"Brightness / contrast", "brightness_contrast"}},
        {"paletteManipulateHueSaturationValue", {"Hue / saturation / value", "hue_saturation_value"}},
        {"paletteManipulateComponents", {"Component manipulation", "component_manipulation"}},
        {"paletteManipulateBlur", {"Blur palette", "blur"}},
        {"paletteManipulateSharpen", {"Sharpen palette", "sharpen"}},
        {"paletteSetSize", {"Resize the palette", "resize_palette"}},
        {"paletteGenerateUsingPattern", {"Repetition pattern", "pattern_generation"}},
        {"paletteGeneratePersianRaster", {"Persian raster", "persian_raster"}},
        {"paletteManipulateTint", {"Tint", "tint"}},
        {"paletteManipulateGradientTint", {"Gradient tint", "gradienttint"}},
        {"paletteGenerateUsingCosini", {"Generate cosinus palette", "cosini"}},
        {"paletteGenerateInterpolation", {"Generate palette by interpolation", "interpolation"}},
        {"paletteInterpolateSelectedExt", {"Generate palette by interpolation", "interpolation"}},
    };
    const auto row = [&](const char *tag, const QString &slot, const QString &control, const QVariant &value,
                         const QString &line) {
        QTest::newRow(tag) << slot << dialogs[slot].at(0) << dialogs[slot].at(1) << control << value << line;
    };
    row("shift", "paletteOrderShift", "offset", 3, "offset:3\n");
    row("brightness", "paletteManipulateBrightnessContrast", "brightness", 100, "brightness:100\n");
    row("contrast", "paletteManipulateBrightnessContrast", "contrast", -120, "contrast:-120\n");
    row("hue", "paletteManipulateHueSaturationValue", "hue", 90, "hue:90\n");
    row("saturation", "paletteManipulateHueSaturationValue", "saturation", -100, "saturation:-100\n");
    row("components", "paletteManipulateComponents", "comp1", 50, "comp1:50\n");
    row("component mode", "paletteManipulateComponents", "mode", 9, "mode:9\n");
    row("blur master", "paletteManipulateBlur", "value", 5, "comp4:5\n");
    row("blur method", "paletteManipulateBlur", "method", 1, "method:1\n");
    row("sharpen", "paletteManipulateSharpen", "amount", 300, "amount:300\n");
    row("sharpen mode", "paletteManipulateSharpen", "mode", 3, "mode:3\n");
    row("resize", "paletteSetSize", "size", 40, "size:40\n");
    row("resize method", "paletteSetSize", "method", 2, "method:2\n");
    row("repetition pattern", "paletteGenerateUsingPattern", "count", 3, "count:3\n");
    row("repetition mirror", "paletteGenerateUsingPattern", "mirror", true, "mirror:1\n");
    row("persian raster", "paletteGeneratePersianRaster", "period1", 3, "period1:3\n");
    row("tint", "paletteManipulateTint", "opacity", 90, "opacity:90\n");
    row("tint selected only", "paletteManipulateTint", "sel_only", false, "sel_only:0\n");
    row("gradient tint", "paletteManipulateGradientTint", "opacity2", 100, "opacity2:100\n");
    row("gradient range", "paletteManipulateGradientTint", "begin", 6, "begin:6\n");
    row("cosini", "paletteGenerateUsingCosini", "a_r", 0.2, "a_r:0.2\n");
    row("cosini size", "paletteGenerateUsingCosini", "size", 40, "size:40\n");
    row("interpolation ticks", "paletteGenerateInterpolation", "ticks", QVariant(), "tickend");
    row("interpolation size", "paletteGenerateInterpolation", "size", 64, "size:64\n");
    row("interpolate selected", "paletteInterpolateSelectedExt", "size", 12, "size:12\n");
}

void TestPaletteDialogs::dialogPreviewsCancelsAndInstalls()
{
    QFETCH(QString, slot);
    QFETCH(QString, title);
    QFETCH(QString, settingsName);
    QFETCH(QString, control);
    QFETCH(QVariant, value);
    QFETCH(QString, line);

    ChromaxisMainWindow w(&m_db);
    w.show();
    prepare(w);
    const Palette<uint> before = w.document().palette();
    const Palette<uint> last = w.document().lastPalette();
    w.document().setRecording(true);

    // Cancel: the moved control shows at once, the document does not change, and the views go back.
    QString seenTitle;
    bool live = false;
    bool shown = false;
    bool untouched = false;
    QString shownSize;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        seenTitle = d->windowTitle();
        const Palette<uint> opened = w.document().palette();
        moveControl(d, control, value);
        QCoreApplication::processEvents();
        untouched = w.document().lastPalette() == last && !w.document().isImageModified() &&
                    w.document().macros().count() == 0;
        shownSize = w.propertyWidget()->value("Palette", "Size");
        live = w.document().displayedPalette().entries() == d->result().entries() &&
               w.document().displayedPalette() != opened &&
               w.paletteView()->palette() == w.document().displayedPalette() &&
               w.document().palette() == opened && w.document().history().count() == 0 &&
               !w.document().isPaletteModified();
        shown = imageShows(w, d->result());
        clickButton(d, QDialogButtonBox::Cancel);
    });
    w.action(slot)->trigger();
    QCOMPARE(seenTitle, title);
    QVERIFY(live);
    QVERIFY(shown);
    QVERIFY(untouched);
    QVERIFY(!w.document().hasPreview());
    QCOMPARE(w.document().palette(), before);
    QCOMPARE(w.paletteView()->palette(), before);
    QVERIFY(imageShows(w, before));
    QCOMPARE(w.propertyWidget()->value("Palette", "Size"), QString::number(before.size()));
    QCOMPARE(w.document().history().count(), 0);
    QCOMPARE(w.document().macros().count(), 0);
    QVERIFY(!w.document().isPaletteModified());

    // OK: one step that undo reverts, and a macro step with the settings.
    Palette<uint> result;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        moveControl(d, control, value);
        QCoreApplication::processEvents();
        result = d->result();
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action(slot)->trigger();
    QVERIFY(result != before);
    QCOMPARE(shownSize, QString::number(result.size()));
    QCOMPARE(w.document().palette(), result);
    QVERIFY(!w.document().hasPreview());
    QVERIFY(imageShows(w, result));
    QCOMPARE(w.paletteView()->palette(), result);
    QCOMPARE(w.document().lastPalette(), before);
    QCOMPARE(w.document().history().count(), 1);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, settingsName);
    QVERIFY2(steps[0].parameters.startsWith(settingsName + " 2.0.0\n"), qPrintable(steps[0].parameters));
    QVERIFY2(steps[0].parameters.contains(line), qPrintable(steps[0].parameters));
    QVERIFY(steps[0].parameters.endsWith("selection:2-5\n"));

    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), before);
    QCOMPARE(w.paletteView()->palette(), before);
    QVERIFY(imageShows(w, before));
    QVERIFY(!w.document().isPaletteModified());
    w.action("redo")->trigger();
    QCOMPARE(w.document().palette(), result);
    QVERIFY(imageShows(w, result));
    markSaved(w);
}

void TestPaletteDialogs::closingTheDialogDropsThePreview_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("escape key") << "escape";
    QTest::newRow("title bar close") << "close";
    QTest::newRow("reject") << "reject";
}

void TestPaletteDialogs::closingTheDialogDropsThePreview()
{
    QFETCH(QString, how);
    ChromaxisMainWindow w(&m_db);
    w.show();
    prepare(w);
    const Palette<uint> before = w.document().palette();
    bool previewed = false;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        moveControl(d, "hue", 120);
        QCoreApplication::processEvents();
        previewed = w.document().hasPreview() && imageShows(w, d->result()) && !imageShows(w, before);
        if (how == "escape")
            QTest::keyClick(d, Qt::Key_Escape);
        else if (how == "close")
            d->close();
        else
            d->reject();
    });
    w.action("paletteManipulateHueSaturationValue")->trigger();
    QVERIFY(previewed);
    QVERIFY(!w.document().hasPreview());
    QCOMPARE(w.document().palette(), before);
    QCOMPARE(w.paletteView()->palette(), before);
    QVERIFY(imageShows(w, before));
    QCOMPARE(w.document().history().count(), 0);
    QVERIFY(!w.document().isPaletteModified());
}

void TestPaletteDialogs::resultKeepsOrLeavesThePaletteFile_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("edits"); // the result is the opened palette changed, not a new one
    const auto row = [](const char *tag, const QString &slot, const QString &control, const QVariant &value,
                        bool edits) {
        QTest::newRow(tag) << slot << control << value << edits;
    };
    row("tint", "paletteManipulateTint", "opacity", 60, true);
    row("blur", "paletteManipulateBlur", "value", 3, true);
    row("shift", "paletteOrderShift", "offset", 2, true);
    row("resize", "paletteSetSize", "size", 7, true);
    row("persian raster", "paletteGeneratePersianRaster", "period2", 2, true);
    row("cosini", "paletteGenerateUsingCosini", "size", 24, false);
    row("interpolation", "paletteGenerateInterpolation", "size", 32, false);
}

void TestPaletteDialogs::resultKeepsOrLeavesThePaletteFile()
{
    QFETCH(QString, slot);
    QFETCH(QString, control);
    QFETCH(QVariant, value);
    QFETCH(bool, edits);

    const QString file = m_dir.filePath(QStringLiteral("four-%1.gpl").arg(QTest::currentDataTag()));
    QFile gpl(file);
    QVERIFY(gpl.open(QIODevice::WriteOnly));
    gpl.write("GIMP Palette\n#\n10 0 0\ta\n20 0 0\tb\n30 0 0\tc\n40 0 0\td\n");
    gpl.close();
    ChromaxisMainWindow w(&m_db);
    w.show();
    prepare(w);
    QVERIFY(w.loadPaletteFile(file));
    w.document().clearHistory();
    const Palette<uint> opened = w.document().palette();
    const QString name = opened.property(PaletteName);
    QVERIFY(!name.isEmpty());
    QCOMPARE(w.propertyWidget()->value("Palette", "Name"), name);

    // The panel shows what OK would make of the palette, while the document keeps its file.
    QString shownName, shownFile, fileDuringPreview;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        moveControl(d, control, value);
        QCoreApplication::processEvents();
        shownName = w.propertyWidget()->value("Palette", "Name");
        shownFile = w.propertyWidget()->value("Palette", "File");
        fileDuringPreview = w.document().paletteFileName();
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action(slot)->trigger();
    QCOMPARE(fileDuringPreview, file);
    QCOMPARE(shownName, edits ? name : QString());
    QCOMPARE(shownFile, edits ? QFileInfo(file).fileName() : QString());
    QCOMPARE(w.document().history().count(), 1);
    QVERIFY(w.document().isPaletteModified());
    QCOMPARE(w.document().paletteFileName(), edits ? file : QString());
    QCOMPARE(w.document().palette().property(PaletteName), edits ? name : QString());
    QCOMPARE(w.propertyWidget()->value("Palette", "Name"), shownName);
    QCOMPARE(w.propertyWidget()->value("Palette", "File"), shownFile);
    const Palette<uint> result = w.document().palette();

    // "Save palette" writes an edited palette back to its file, but asks where a new one goes
    // instead of overwriting the file of the palette it replaced.
    const QByteArray content = [&file] {
        QFile f(file);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }();
    bool asked = false;
    if (!edits)
        handleNextDialog<QFileDialog>([&asked](QFileDialog *d) {
            asked = true;
            d->reject();
        });
    w.action("savePalette")->trigger();
    QCOMPARE(asked, !edits);
    QFile saved(file);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QCOMPARE(saved.readAll() != content, edits);
    QCOMPARE(w.document().isPaletteModified(), !edits);

    // One undo brings back the palette together with its name, file and flag.
    w.document().setPaletteModified(true);
    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), opened);
    QCOMPARE(w.document().paletteFileName(), file);
    QVERIFY(!w.document().isPaletteModified());
    QCOMPARE(w.propertyWidget()->value("Palette", "File"), QFileInfo(file).fileName());
    w.action("redo")->trigger();
    QCOMPARE(w.document().palette(), result);
    QCOMPARE(w.document().paletteFileName(), edits ? file : QString());
    markSaved(w);
}

void TestPaletteDialogs::generators_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("step");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("index");
    QTest::addColumn<uint>("red");   // of entry index
    QTest::addColumn<uint>("alpha"); // of entry index
    const auto row = [](const char *tag, const QString &slot, const QString &step, int size, int index, uint red,
                        uint alpha) {
        QTest::newRow(tag) << slot << step << size << index << red << alpha;
    };
    row("grayscale", "paletteGenerateGrayScale", "palette_generate_grayscale", 256, 255, 65280u, 65535u);
    row("extended grayscale", "paletteGenerateExtendedGrayScale", "palette_generate_extgrayscale", 766, 1,
        256u, 65280u);
    row("hue 256", "paletteGenerateHueRot256", "palette_generate_huerot256", 256, 128, 0u, 4294836225u);
    row("hue 1024", "paletteGenerateHueRot1024", "palette_generate_huerot1024", 1024, 0, 65535u, 4294836225u);
    row("invert", "paletteOrderInvert", "palette_invert_order", 16, 0, startPalette()[15].r,
        startPalette()[15].a);
}

void TestPaletteDialogs::generators()
{
    QFETCH(QString, slot);
    QFETCH(QString, step);
    QFETCH(int, size);
    QFETCH(int, index);
    QFETCH(uint, red);
    QFETCH(uint, alpha);

    ChromaxisMainWindow w(&m_db);
    prepare(w);
    w.document().setRecording(true);
    const Palette<uint> before = w.document().palette();
    w.action(slot)->trigger();
    QCOMPARE(w.document().palette().size(), size);
    QCOMPARE(w.document().palette()[index].r, red);
    QCOMPARE(w.document().palette()[index].a, alpha);
    QCOMPARE(w.document().history().count(), 1);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, step);
    QCOMPARE(steps[0].parameters, QString("selection:2-5\n"));
    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), before);
    markSaved(w);
}

void TestPaletteDialogs::interpolateSelectedNeedsTwo()
{
    ChromaxisMainWindow w(&m_db);
    prepare(w);
    const Palette<uint> before = w.document().palette();
    w.document().setSelection({4});
    w.action("paletteInterpolateSelected")->trigger();
    QCOMPARE(w.document().palette(), before);
    QCOMPARE(w.document().history().count(), 0);
    QVERIFY(!w.statusBar()->currentMessage().isEmpty());

    w.document().setSelection({0, 4});
    w.action("paletteInterpolateSelected")->trigger();
    QCOMPARE(w.document().history().count(), 1);
    const Palette<uint> &p = w.document().palette();
    // The shared linear mix at t = 1/4, truncated.
    QCOMPARE(p[1].g, uint(before[0].g * 0.75 + before[4].g * 0.25));
    QCOMPARE(p[5], before[5]);
    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), before);
    markSaved(w);
}

void TestPaletteDialogs::interpolationFromSelection()
{
    ChromaxisMainWindow w(&m_db);
    prepare(w);
    w.document().setSelection({0, 5, 15});
    std::vector<ColorTicksBar::Tick> ticks;
    int size = 0;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        ticks = d->findChild<ColorTicksBar *>("ticks")->ticks();
        size = d->findChild<QSpinBox *>("size")->value();
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action("paletteInterpolateSelectedExt")->trigger();
    QCOMPARE(size, 16);
    // One tick per selected entry where its segment ends (index * 256 / 16), and one at the far end
    // that keeps the last colour to the end of the bar.
    QCOMPARE(int(ticks.size()), 4);
    QCOMPARE(ticks[0].index, 0);
    QCOMPARE(ticks[1].index, 80);
    QCOMPARE(ticks[2].index, 240);
    QCOMPARE(ticks[3].index, 255);
    QCOMPARE(ticks[3].color, ticks[2].color);
    const Palette<uint> &p = w.document().palette();
    QCOMPARE(p.size(), 16);
    // Selected entries keep their colours, to their 8-bit key precision.
    for (int i : {0, 5, 15})
        QCOMPARE(p[i].r >> 8, startPalette()[i].r >> 8);
    markSaved(w);
}

void TestPaletteDialogs::lastUsedSettingsReturn()
{
    ChromaxisMainWindow w(&m_db);
    prepare(w);
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        moveControl(d, "brightness", 77);
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action("paletteManipulateBrightnessContrast")->trigger();
    QCOMPARE(QSettings().value("dialog_brightness_contrast_settings").toString(),
             QString("brightness:77\ncontrast:0\nsel_only:0\n"));
    QCOMPARE(QSettings().value("dialog_brightness_contrast_preset").toString(), QString());
    int brightness = 0;
    bool livePreviewOnOpen = false;
    const Palette<uint> installed = w.document().palette();
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        brightness = d->findChild<QCombinedSliderSpin *>("brightness")->value();
        // Opening previews the restored settings on the palette the dialog starts from.
        livePreviewOnOpen =
            w.document().displayedPalette() != installed && w.document().palette() == installed;
        clickButton(d, QDialogButtonBox::Cancel);
    });
    w.action("paletteManipulateBrightnessContrast")->trigger();
    QCOMPARE(brightness, 77);
    QVERIFY(livePreviewOnOpen);
    QCOMPARE(w.document().palette(), installed);
    markSaved(w);
}

CHROMAXIS_GUI_TEST_MAIN(TestPaletteDialogs)
#include "tst_palettedialogs.moc"
