// Every palette dialog and generator opened from its menu entry: a moved control shows at once in
// the window's palette, view and image, Cancel puts the palette back, OK leaves one undo step and
// one macro step that carries the dialog's settings.
#include "chromaxismainwindow.h"
#include "guitesting.h"
#include "imagelabel.h"
#include "document/macroplayer.h"
#include "pal_manip/palettedialog.h"
#include "storage/palettedatabase.h"
#include "paletteview.h"
#include "utils/qt/colorwidgets/colorticksbar.h"
#include "utils/qt/widgets/qcombinedsliderspin.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
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

} // namespace

class TestPaletteDialogs : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void dialogPreviewsCancelsAndInstalls_data();
    void dialogPreviewsCancelsAndInstalls();
    void generators_data();
    void generators();
    void interpolateSelectedNeedsTwo();
    void interpolationFromSelection();
    void lastUsedSettingsReturn();

private:
    void prepare(ChromaxisMainWindow &w);
    PaletteDatabase m_db;
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

    QTest::newRow("shift") << "paletteOrderShift"
                           << "Shift order"
                           << "shift_order"
                           << "offset" << QVariant(3) << "offset:3\n";
    QTest::newRow("brightness") << "paletteManipulateBrightnessContrast"
                                << "Brightness / contrast"
                                << "brightness_contrast"
                                << "brightness" << QVariant(100) << "brightness:100\n";
    QTest::newRow("contrast") << "paletteManipulateBrightnessContrast"
                              << "Brightness / contrast"
                              << "brightness_contrast"
                              << "contrast" << QVariant(-120) << "contrast:-120\n";
    QTest::newRow("hue") << "paletteManipulateHueSaturationValue"
                         << "Hue / saturation / value"
                         << "hue_saturation_value"
                         << "hue" << QVariant(90) << "hue:90\n";
    QTest::newRow("saturation") << "paletteManipulateHueSaturationValue"
                                << "Hue / saturation / value"
                                << "hue_saturation_value"
                                << "saturation" << QVariant(-100) << "saturation:-100\n";
    QTest::newRow("components") << "paletteManipulateComponents"
                                << "Component manipulation"
                                << "component_manipulation"
                                << "comp1" << QVariant(50) << "comp1:50\n";
    QTest::newRow("component mode") << "paletteManipulateComponents"
                                    << "Component manipulation"
                                    << "component_manipulation"
                                    << "mode" << QVariant(9) << "mode:9\n";
    QTest::newRow("blur master") << "paletteManipulateBlur"
                                 << "Blur palette"
                                 << "blur"
                                 << "value" << QVariant(5) << "comp4:5\n";
    QTest::newRow("blur method") << "paletteManipulateBlur"
                                 << "Blur palette"
                                 << "blur"
                                 << "method" << QVariant(1) << "method:1\n";
    QTest::newRow("tint") << "paletteManipulateTint"
                          << "Tint"
                          << "tint"
                          << "opacity" << QVariant(90) << "opacity:90\n";
    QTest::newRow("tint selected only") << "paletteManipulateTint"
                                        << "Tint"
                                        << "tint"
                                        << "sel_only" << QVariant(false) << "sel_only:0\n";
    QTest::newRow("gradient tint") << "paletteManipulateGradientTint"
                                   << "Gradient tint"
                                   << "gradienttint"
                                   << "opacity2" << QVariant(100) << "opacity2:100\n";
    QTest::newRow("gradient range") << "paletteManipulateGradientTint"
                                    << "Gradient tint"
                                    << "gradienttint"
                                    << "begin" << QVariant(6) << "begin:6\n";
    QTest::newRow("cosini") << "paletteGenerateUsingCosini"
                            << "Generate cosinus palette"
                            << "cosini"
                            << "a_r" << QVariant(0.2) << "a_r:0.2\n";
    QTest::newRow("cosini size") << "paletteGenerateUsingCosini"
                                 << "Generate cosinus palette"
                                 << "cosini"
                                 << "size" << QVariant(40) << "size:40\n";
    QTest::newRow("interpolation ticks") << "paletteGenerateInterpolation"
                                         << "Generate palette by interpolation"
                                         << "interpolation"
                                         << "ticks" << QVariant() << "tickend";
    QTest::newRow("interpolation size") << "paletteGenerateInterpolation"
                                        << "Generate palette by interpolation"
                                        << "interpolation"
                                        << "size" << QVariant(64) << "size:64\n";
    QTest::newRow("interpolate selected") << "paletteInterpolateSelectedExt"
                                          << "Generate palette by interpolation"
                                          << "interpolation"
                                          << "size" << QVariant(12) << "size:12\n";
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

    // Cancel: the moved control shows at once, and everything goes back.
    QString seenTitle;
    bool live = false;
    bool shown = false;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        seenTitle = d->windowTitle();
        const Palette<uint> opened = w.document().palette();
        moveControl(d, control, value);
        QCoreApplication::processEvents();
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
    QCOMPARE(w.document().palette(), before);
    QCOMPARE(w.paletteView()->palette(), before);
    QVERIFY(imageShows(w, before));
    QCOMPARE(w.document().history().count(), 0);

    // OK: one step that undo reverts, and a macro step with the settings.
    w.document().setRecording(true);
    Palette<uint> result;
    handleNextDialog<PaletteDialog>([&](PaletteDialog *d) {
        moveControl(d, control, value);
        QCoreApplication::processEvents();
        result = d->result();
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action(slot)->trigger();
    QVERIFY(result != before);
    QCOMPARE(w.document().palette(), result);
    QVERIFY(imageShows(w, result));
    QCOMPARE(w.document().history().count(), 1);
    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, settingsName);
    QVERIFY2(steps[0].parameters.startsWith(settingsName + " 2.0.0\n"), qPrintable(steps[0].parameters));
    QVERIFY2(steps[0].parameters.contains(line), qPrintable(steps[0].parameters));
    QVERIFY(steps[0].parameters.endsWith("selection:2-5\n"));

    w.action("undo")->trigger();
    QCOMPARE(w.document().palette(), before);
    QVERIFY(imageShows(w, before));
    w.action("redo")->trigger();
    QCOMPARE(w.document().palette(), result);
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

void TestPaletteDialogs::generators_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("step");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("index");
    QTest::addColumn<uint>("red");   // of entry index
    QTest::addColumn<uint>("alpha"); // of entry index

    QTest::newRow("grayscale") << "paletteGenerateGrayScale"
                               << "palette_generate_grayscale" << 256 << 255 << 65280u << 65535u;
    QTest::newRow("extended grayscale") << "paletteGenerateExtendedGrayScale"
                                        << "palette_generate_extgrayscale" << 766 << 1 << 256u << 65280u;
    QTest::newRow("hue 256") << "paletteGenerateHueRot256"
                             << "palette_generate_huerot256" << 256 << 128 << 0u << 4294836225u;
    QTest::newRow("hue 1024") << "paletteGenerateHueRot1024"
                              << "palette_generate_huerot1024" << 1024 << 0 << 65535u << 4294836225u;
    QTest::newRow("invert") << "paletteOrderInvert"
                            << "palette_invert_order" << 16 << 0 << startPalette()[15].r
                            << startPalette()[15].a;
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
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
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
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
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
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
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
    w.document().setPaletteModified(false);
    w.document().setImageModified(false);
}

CHROMAXIS_GUI_TEST_MAIN(TestPaletteDialogs)
#include "tst_palettedialogs.moc"
