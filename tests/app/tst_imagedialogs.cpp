// The image conversions in the window: "Quantisize..." and "Convert..." through their dialogs,
// the fast conversions, the RGB actions after loading, and batch application over a folder.
#include "chromaxismainwindow.h"
#include "storage/documentimageio.h"
#include "guitesting.h"
#include "conversion/imagequantisizer.h"
#include "conversion/imagequantisizesettings.h"
#include "img_manip/batchdestinationwidget.h"
#include "img_manip/imageconvertdialog.h"
#include "img_manip/imageconvertsettingswidget.h"
#include "img_manip/imagequantisizedialog.h"
#include "document/macroplayer.h"
#include "storage/palettedatabase.h"
#include "storage/settingsstore.h"
#include "palette/standardpalettes.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>

namespace {

std::vector<uint8_t> indexes8(const DocumentImage &image)
{
    std::vector<uint8_t> out;
    for (int y = 0; y < image.height(); ++y)
        out.insert(out.end(), image.indexRow(y), image.indexRow(y) + image.width());
    return out;
}

void clickOk(QDialog *dialog)
{
    dialog->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
}

QComboBox *box(QWidget *dialog, const char *name)
{
    return dialog->findChild<QComboBox *>(name);
}

QStringList itemsOf(const QComboBox *box)
{
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items << box->itemText(i);
    return items;
}

} // namespace

class TestImageDialogs : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void dialogListsInOrder();
    void quantisizeThroughDialog();
    void convertThroughDialog_data();
    void convertThroughDialog();
    void cancelChangesNothing_data();
    void cancelChangesNothing();
    void cancelWhileRunning();
    void fastConversions_data();
    void fastConversions();
    void sameModeIsNoStep();
    void rgbOnLoadActions_data();
    void rgbOnLoadActions();
    void builtinPresets_data();
    void builtinPresets();
    void batchApply();

private:
    QString path(const QString &name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestImageDialogs::initTestCase()
{
    m_db.loadFromText("test/red;ff000000ff00;\ntest/blue;0000ff;\n");
    // A smooth ramp in three channels: error diffusion and nearest mapping part ways on it.
    QImage photo(24, 12, QImage::Format_RGB32);
    for (int y = 0; y < photo.height(); ++y)
        for (int x = 0; x < photo.width(); ++x)
            photo.setPixel(x, y, qRgb(x * 10, y * 20, 255 - x * 5 - y * 3));
    QVERIFY(photo.save(path("photo.png")));
    QImage indexed(4, 2, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(30, 60, 90), qRgb(200, 100, 0)});
    indexed.fill(1);
    indexed.setPixel(0, 0, 0);
    QVERIFY(indexed.save(path("indexed.png")));
    QFile gpl(path("trio.gpl"));
    QVERIFY(gpl.open(QIODevice::WriteOnly));
    gpl.write("GIMP Palette\nName: Trio\n#\n255 0 0\tred\n0 255 0\tgreen\n0 0 255\tblue\n");
}

void TestImageDialogs::init()
{
    QSettings().clear();
    QSettings().setValue("rgb_onload_action", 1);
}

void TestImageDialogs::dialogListsInOrder()
{
    ImageQuantisizeDialog quantise(DocumentImage(), {}, {}, true, &m_db, QString(), 1024);
    QCOMPARE(itemsOf(box(&quantise, "palette")),
             QStringList({"Grayscale", "Extended grayscale", "Last palette", "Quantized", "From DB",
                          "From file", "From image", "B/W"}));
    QCOMPARE(itemsOf(box(&quantise, "method")),
             QStringList({"Median cut", "Popularity", "Wu", "Distinct HSV"}));
    QCOMPARE(
        itemsOf(box(&quantise, "dither")),
        QStringList({"Nearest", "Floyd-Steinberg", "Burkes", "Jarvis, Judice & Ninke", "Stucki", "Sierra",
                     "Two Row Sierra", "Sierra Lite", "Atkinson", "Bayer2", "Bayer3", "Bayer4", "Bayer8"}));
    QCOMPARE(itemsOf(box(&quantise, "format")), QStringList({"Indexed", "Continuous"}));
    QCOMPARE(quantise.findChild<QSpinBox *>("colors")->maximum(), 1024);

    ImageConvertDialog convert(ImageConvertDialog::ConvertImage, {}, false, &m_db, QString());
    QCOMPARE(convert.windowTitle(), QString("Convert image"));
    QCOMPARE(itemsOf(box(&convert, "palette")),
             QStringList({"Grayscale", "Extended grayscale", "Current palette", "From DB", "From file"}));
    QCOMPARE(itemsOf(box(&convert, "mode")), QStringList({"Indexed", "Continuous"}));
    QVERIFY(!convert.findChild<BatchDestinationWidget *>()->isVisibleTo(&convert));

    ImageConvertDialog batch(ImageConvertDialog::BatchApply, {}, false, &m_db, QString());
    QCOMPARE(batch.windowTitle(), QString("Batch apply palette"));
    QVERIFY(batch.findChild<BatchDestinationWidget *>()->isVisibleTo(&batch));
    QCOMPARE(
        itemsOf(box(&batch, "extension")),
        QStringList({".bmp", ".cur", ".gif",  ".icns", ".ico", ".jpeg", ".jpg",  ".pbm",  ".pgm", ".png",
                     ".ppm", ".svg", ".svgz", ".tga",  ".tif", ".tiff", ".wbmp", ".webp", ".xbm", ".xpm"}));
    // Only the batch dialog keeps the destination among its settings.
    QVERIFY(batch.settingsText().contains("\nfolder:"));
    QVERIFY(!convert.settingsText().contains("folder:"));
}

void TestImageDialogs::quantisizeThroughDialog()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("photo.png")));
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
    const Palette<uint> before = w.document().palette();
    const QImage picture = w.document().image().picture();
    w.document().setRecording(true);

    QString title;
    handleNextDialog<ImageQuantisizeDialog>([&title](ImageQuantisizeDialog *d) {
        title = d->windowTitle();
        box(d, "palette")->setCurrentText("Quantized");
        box(d, "method")->setCurrentText("Wu");
        d->findChild<QSpinBox *>("colors")->setValue(6);
        box(d, "dither")->setCurrentText("Floyd-Steinberg");
        box(d, "format")->setCurrentText("Indexed");
        clickOk(d);
    });
    w.action("imageQuantisize")->trigger();
    QCOMPARE(title, QString("Quantisize image"));
    QCOMPARE(w.document().imageMode(), int(DocumentImage::Indexed8));
    QCOMPARE(w.document().imageFileName(), path("photo.png"));
    QVERIFY(w.document().isImageModified());

    // The same job on the engine: Wu with 6 colours, list entry 1 passed through as it stands.
    const DocumentImage source = DocumentImageIO::load(path("photo.png"));
    auto quantise = [&](int dither) {
        ImageQuantisizer q;
        q.setQuantized(2, 6);
        q.setFormat(ImageConversionEngine::Indexed, false);
        q.setDitherMethod(dither);
        const DocumentImage image = q.apply(source, ImageQuantisizer::imageColors(source, before), before);
        return std::make_pair(q.destinationPalette(), indexes8(image));
    };
    const auto expected = quantise(1);
    QVERIFY2(expected.second != quantise(0).second,
             "the test image must tell dithering from nearest mapping");
    QCOMPARE(w.document().palette().entries(), expected.first.entries());
    QCOMPARE(w.document().palette().size(), 6);
    QVERIFY(indexes8(w.document().image()) == expected.second);

    const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(w.document().macros());
    QVERIFY(!steps.empty());
    QCOMPARE(steps.back().name, QString("image_quantisize"));
    QVERIFY(steps.back().parameters.startsWith("image_quantisize 2.0.0\n"));
    // Replayed on the loaded image, the recorded step computes the very same result.
    ChromaxisDocument replay;
    replay.setImage(source);
    MacroPlayer().play(replay, {steps.back()});
    QCOMPARE(replay.palette().entries(), expected.first.entries());
    QVERIFY(indexes8(replay.image()) == expected.second);

    // One undo step brings the RGB image and its palette back.
    w.undo();
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
    QCOMPARE(w.document().image().picture(), picture);
    QCOMPARE(w.document().palette().entries(), before.entries());
}

void TestImageDialogs::convertThroughDialog_data()
{
    QTest::addColumn<QString>("palette");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("interpolate");
    QTest::addColumn<int>("resultMode");
    QTest::addColumn<int>("paletteSize");
    QTest::addColumn<QString>("missing");

    QTest::newRow("grayscale") << "Grayscale"
                               << ""
                               << "Indexed" << false << 2 << 256 << "";
    QTest::newRow("extended grayscale, channel sums") << "Extended grayscale"
                                                      << ""
                                                      << "Indexed" << false << 3 << 766 << "";
    QTest::newRow("current, continuous") << "Current palette"
                                         << ""
                                         << "Continuous" << true << 4 << 256 << "";
    QTest::newRow("database") << "From DB"
                              << "test/red"
                              << "Indexed" << false << 2 << 2 << "";
    QTest::newRow("file") << "From file"
                          << "trio.gpl"
                          << "Continuous" << false << 4 << 3 << "";
    QTest::newRow("unknown name") << "From DB"
                                  << "test/none"
                                  << "Indexed" << false << 2 << 256 << "test/none";
    QTest::newRow("unreadable file") << "From file"
                                     << "nowhere.gpl"
                                     << "Indexed" << false << 2 << 256 << "nowhere.gpl";
}

void TestImageDialogs::convertThroughDialog()
{
    QFETCH(QString, palette);
    QFETCH(QString, name);
    QFETCH(QString, mode);
    QFETCH(bool, interpolate);
    QFETCH(int, resultMode);
    QFETCH(int, paletteSize);
    QFETCH(QString, missing);

    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(path("photo.png")));
    const Palette<uint> before = w.document().palette();
    const QString source = palette == "From file" ? path(name) : name;
    handleNextDialog<ImageConvertDialog>([&](ImageConvertDialog *d) {
        box(d, "palette")->setCurrentText(palette);
        d->findChild<QLineEdit *>(palette == "From file" ? "file_palette" : "db_palette")->setText(source);
        box(d, "mode")->setCurrentText(mode);
        d->findChild<QCheckBox *>("interpolate")->setChecked(interpolate);
        clickOk(d);
    });
    SeenBox seen;
    if (!missing.isEmpty())
        answerNextBox(seen, QMessageBox::Ok);
    w.document().setRecording(true);
    w.action("imageModeConvert")->trigger();

    const DocumentImage &image = w.document().image();
    QCOMPARE(image.mode(), resultMode);
    QCOMPARE(w.document().palette().size(), paletteSize);
    QCOMPARE(image.interpolate(), interpolate);
    // Brightness is the channel sum of the pixel, mapped as the mode says.
    const QRgb c = QImage(path("photo.png")).pixel(7, 5);
    const uint sum = uint(qRed(c) + qGreen(c) + qBlue(c));
    const size_t at = size_t(5 * image.width() + 7);
    if (resultMode == DocumentImage::Indexed8)
        QCOMPARE(uint(image.indexRow(5)[7]), sum / 3);
    else if (resultMode == DocumentImage::Indexed32)
        QCOMPARE(image.indexCells()[at], sum);
    else
        QCOMPARE(image.continuousCells()[at], float(sum) * 85.666664f);
    QCOMPARE(seen.seen, !missing.isEmpty());
    if (seen.seen) {
        QCOMPARE(seen.title, QString("Missing palettes"));
        QVERIFY2(seen.text.contains(source), qPrintable(seen.text));
    }
    const auto steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, QString("image_convert"));
    QVERIFY(steps[0].parameters.startsWith("image_format_convert 2.0.0\n"));

    w.undo();
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
    QCOMPARE(w.document().palette().entries(), before.entries());
}

void TestImageDialogs::cancelChangesNothing_data()
{
    QTest::addColumn<QString>("slot");
    QTest::newRow("convert") << "imageModeConvert";
    QTest::newRow("quantisize") << "imageQuantisize";
}

void TestImageDialogs::cancelChangesNothing()
{
    QFETCH(QString, slot);
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("photo.png")));
    w.document().setRecording(true);
    const int history = w.document().history().count();
    handleNextDialog<QDialog>([](QDialog *d) {
        box(d, "palette")->setCurrentIndex(1);
        d->reject();
    });
    w.action(slot)->trigger();
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
    QCOMPARE(w.document().history().count(), history);
    QVERIFY(MacroFile::stepsOf(w.document().macros()).empty());
    QVERIFY(!w.document().isImageModified());
}

void TestImageDialogs::cancelWhileRunning()
{
    QImage big(200, 200, QImage::Format_RGB32);
    for (int y = 0; y < big.height(); ++y)
        for (int x = 0; x < big.width(); ++x)
            big.setPixel(x, y, qRgb(x, y, (x * y) & 0xFF));
    QVERIFY(big.save(path("big.png")));
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("big.png")));
    const int history = w.document().history().count();
    bool stayedOpen = false;
    bool cancelled = false;
    handleNextDialog<ImageQuantisizeDialog>([&](ImageQuantisizeDialog *d) {
        box(d, "palette")->setCurrentText("Quantized");
        box(d, "dither")->setCurrentText("Stucki");
        d->setProgressDelay(0);
        // The progress dialog's Cancel, pressed as soon as it shows.
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&]() {
            if (auto *progress = d->findChild<QProgressDialog *>("progress");
                progress && progress->isVisible()) {
                progress->findChild<QPushButton *>()->click();
                cancelled = true;
            }
        });
        watch.start(0);
        clickOk(d);
        watch.stop();
        stayedOpen = d->isVisible() && d->resultImage().isNull();
        d->reject();
    });
    w.action("imageQuantisize")->trigger();
    QVERIFY(cancelled);
    QVERIFY(stayedOpen);
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
    QCOMPARE(w.document().history().count(), history);
}

void TestImageDialogs::fastConversions_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("step");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("paletteSize");

    // The last palette is the three-colour one, the current palette grayscale.
    QTest::newRow("grayscale") << "imageModeGrayscale"
                               << "image_convert_grayscale" << 2 << 256;
    QTest::newRow("extended grayscale") << "imageModeExtendedGrayscale"
                                        << "image_convert_extended_grayscale" << 3 << 766;
    QTest::newRow("continuous grayscale") << "imageModeContinuousGrayscale"
                                          << "image_convert_continuous_grayscale" << 4 << 256;
    QTest::newRow("indexed, last palette") << "imageModeIndexedLastPalette"
                                           << "image_convert_indexed8bit_lastpalette" << 2 << 3;
    QTest::newRow("continuous, last palette") << "imageModeContinuousLastPalette"
                                              << "image_convert_continuous_lastpalette" << 4 << 3;
    QTest::newRow("8 bit indexed") << "imageModeIndexed8bit"
                                   << "image_convert_indexed8bit" << 2 << 256;
    QTest::newRow("32 bit as ints") << "imageModeIndexed32bitInt"
                                    << "image_convert_indexed32bitint" << 3 << 256;
    QTest::newRow("continuous") << "imageModeContinuous"
                                << "image_convert_real" << 4 << 256;
}

void TestImageDialogs::fastConversions()
{
    QFETCH(QString, slot);
    QFETCH(QString, step);
    QFETCH(int, mode);
    QFETCH(int, paletteSize);

    ChromaxisMainWindow w(&m_db);
    Palette<uint> trio;
    trio.append({65280, 0, 0, 65535});
    trio.append({0, 65280, 0, 65535});
    trio.append({0, 0, 65280, 65535});
    w.document().setPalette(trio);
    w.document().setPalette(grayscalePalette());
    QVERIFY(w.loadImageFile(path("photo.png")));
    w.document().setRecording(true);
    const int position = w.document().history().position();

    w.action(slot)->trigger();
    QCOMPARE(w.document().imageMode(), mode);
    QCOMPARE(w.document().palette().size(), paletteSize);
    QCOMPARE(w.document().imageFileName(), path("photo.png"));
    QVERIFY(w.document().isImageModified());
    QCOMPARE(w.document().history().position(), position + 1);
    const auto steps = MacroFile::stepsOf(w.document().macros());
    QCOMPARE(int(steps.size()), 1);
    QCOMPARE(steps[0].name, step);

    QVERIFY(w.document().undo());
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
    QCOMPARE(w.document().palette().entries(), grayscalePalette().entries());
    // Undone, the step drops out of the recording as well.
    QVERIFY(MacroFile::stepsOf(w.document().macros()).empty());
}

void TestImageDialogs::sameModeIsNoStep()
{
    ChromaxisMainWindow w(&m_db);
    QVERIFY(w.loadImageFile(path("indexed.png")));
    const int history = w.document().history().count();
    w.action("imageModeIndexed8bit")->trigger();
    QCOMPARE(w.document().imageMode(), int(DocumentImage::Indexed8));
    QCOMPARE(w.document().history().count(), history);
    QVERIFY(!w.document().isImageModified());
    // Another mode is a real change of the indexed image.
    w.action("imageModeIndexed32bitInt")->trigger();
    QCOMPARE(w.document().imageMode(), int(DocumentImage::Indexed32));
    QCOMPARE(w.document().image().indexCells()[0], 0u);
    QCOMPARE(w.document().image().indexCells()[1], 1u);
}

void TestImageDialogs::rgbOnLoadActions_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<int>("mode");
    QTest::newRow("convert dialog, first preset") << 2 << 2;
    QTest::newRow("grayscale") << 3 << 2;
    QTest::newRow("extended grayscale") << 4 << 3;
    QTest::newRow("continuous grayscale") << 5 << 4;
    QTest::newRow("indexed, last palette") << 6 << 2;
    QTest::newRow("continuous, last palette") << 7 << 4;
    QTest::newRow("8 bit indexed") << 8 << 2;
    QTest::newRow("32 bit as ints") << 9 << 3;
}

void TestImageDialogs::rgbOnLoadActions()
{
    QFETCH(int, action);
    QFETCH(int, mode);
    QSettings().setValue("rgb_onload_action", action);
    ChromaxisMainWindow w(&m_db);
    if (action == 2)
        handleNextDialog<ImageConvertDialog>([](ImageConvertDialog *d) { clickOk(d); });
    QVERIFY(w.loadImageFile(path("photo.png")));
    QCOMPARE(w.document().imageMode(), mode);
    // Loading and converting are two steps: the RGB image is one undo away.
    QVERIFY(w.document().undo());
    QCOMPARE(w.document().imageMode(), int(DocumentImage::RGB));
}

void TestImageDialogs::builtinPresets_data()
{
    QTest::addColumn<bool>("convert");
    QTest::addColumn<int>("count");
    QTest::newRow("image_format_convert") << true << 5;
    QTest::newRow("image_quantisize") << false << 4;
}

void TestImageDialogs::builtinPresets()
{
    QFETCH(bool, convert);
    QFETCH(int, count);
    PaletteDatabase builtin;
    builtin.loadFromFile(":res/texts/db.txt");
    QVERIFY(!builtin.isEmpty());
    std::unique_ptr<ImageConversionDialog> dialog;
    if (convert)
        dialog = std::make_unique<ImageConvertDialog>(ImageConvertDialog::ConvertImage, Palette<uint>(),
                                                      false, &builtin, QString());
    else
        dialog = std::make_unique<ImageQuantisizeDialog>(DocumentImage(), Palette<uint>(), Palette<uint>(),
                                                         false, &builtin, QString(), 65536);
    dialog->start();
    DialogSettingsIO *io = dialog->settingsIO();
    QCOMPARE(io->presetCount(), count);
    // Nothing stored yet: the first preset is what the dialog starts with.
    QCOMPARE(io->comboBox()->currentIndex(), io->presetIndex(1));
    QSet<QString> combinations;
    for (int n = 1; n <= count; ++n) {
        // Every preset holds values its lists have (a bad one would throw here, not open a box).
        const QString name =
            convert ? ImageConvertSettings::settingsName : ImageQuantisizeSettings::settingsName;
        const SettingsText::Pairs pairs = SettingsText::parse(SettingsStore::presetText(name, n), name);
        if (!convert) {
            const ImageQuantisizeSettings expected = ImageQuantisizeSettings::fromPairs(pairs);
            io->comboBox()->setCurrentIndex(io->presetIndex(n));
            const ImageQuantisizeSettings s = static_cast<ImageQuantisizeDialog *>(dialog.get())->settings();
            QCOMPARE(s.palette, expected.palette);
            QCOMPARE(s.dither, expected.dither);
            QCOMPARE(s.format, expected.format);
            continue;
        }
        const ImageConvertSettings expected = ImageConvertSettings::fromPairs(pairs);
        io->comboBox()->setCurrentIndex(io->presetIndex(n));
        const ImageConvertSettings s = static_cast<ImageConvertDialog *>(dialog.get())->settings();
        QCOMPARE(s.palette, expected.palette);
        QCOMPARE(s.mode, expected.mode);
        QCOMPARE(s.interpolate, expected.interpolate);
        QCOMPARE(s.dbPalette, expected.dbPalette);
        if (n == 1) {
            QCOMPARE(s.mode, 0);
            QCOMPARE(s.palette, 0);
            QVERIFY(!s.interpolate && s.dbPalette.isEmpty() && s.filePalette.isEmpty());
            continue;
        }
        // The other four name palettes of the built-in collection, in every mode and interpolation.
        QCOMPARE(s.palette, 3);
        QVERIFY2(builtin.lookup(s.dbPalette).has_value(), qPrintable(s.dbPalette));
        combinations << QStringLiteral("%1%2").arg(s.mode).arg(int(s.interpolate));
    }
    if (convert)
        QCOMPARE(combinations, QSet<QString>({"00", "01", "10", "11"}));
}

void TestImageDialogs::batchApply()
{
    QDir(path("batch")).removeRecursively();
    QVERIFY(QDir().mkpath(path("batch/in")));
    QVERIFY(QFile::copy(path("photo.png"), path("batch/in/a.png")));
    QVERIFY(QFile::copy(path("indexed.png"), path("batch/in/b.png")));
    QFile broken(path("batch/in/broken.png"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("not an image at all");
    broken.close();

    ChromaxisMainWindow w(&m_db);
    Palette<uint> ramp;
    for (uint i = 0; i < 256; ++i)
        ramp.append({i << 8, (255 - i) << 8, 128u << 8, 65535});
    w.document().setPalette(ramp);
    int chosenPalette = -1;
    handleNextDialog<ImageConvertDialog>([&](ImageConvertDialog *d) {
        chosenPalette = box(d, "palette")->currentIndex();
        d->findChild<QLineEdit *>("source_folder")->setText(path("batch/in"));
        d->findChild<QLineEdit *>("folder")->setText(path("batch/out"));
        box(d, "extension")->setCurrentText(".png");
        clickOk(d);
    });
    SeenBox report;
    answerNextBox(report, QMessageBox::Ok);
    w.action("imageBatchApply")->trigger();

    QCOMPARE(chosenPalette, 2); // the command applies the current palette
    QVERIFY(report.seen);
    QCOMPARE(report.title, QString("Batch apply palette"));
    QVERIFY2(report.text.startsWith("2 of 3 images were written"), qPrintable(report.text));
    QVERIFY2(report.text.contains("broken.png: Cannot load broken.png."), qPrintable(report.text));
    QCOMPARE(QDir(path("batch/out")).entryList(QDir::Files), QStringList({"a.png", "b.png"}));

    // Each pixel shows the palette entry of its brightness, the indexed file read through its own table.
    const QImage a(path("batch/out/a.png"));
    const QRgb ca = QImage(path("photo.png")).pixel(9, 4);
    const int ia = (qRed(ca) + qGreen(ca) + qBlue(ca)) / 3;
    QCOMPARE(a.pixel(9, 4), qRgb(ia, 255 - ia, 128));
    const QImage b(path("batch/out/b.png"));
    const int ib = (200 + 100 + 0) / 3;
    QCOMPARE(b.pixel(3, 1), qRgb(ib, 255 - ib, 128));
    // The document is not touched by a batch.
    QVERIFY(!w.document().hasImage());
    QCOMPARE(w.document().palette().entries(), ramp.entries());

    // Results already there are replaced only when the user agrees; declining writes nothing.
    QVERIFY(QFile::remove(path("batch/out/b.png")));
    handleNextDialog<ImageConvertDialog>([](ImageConvertDialog *d) { clickOk(d); });
    SeenBox question;
    answerNextBox(question, QMessageBox::No);
    w.action("imageBatchApply")->trigger();
    QVERIFY(question.seen);
    QVERIFY2(question.text.contains("will be replaced"), qPrintable(question.text));
    QCOMPARE(QDir(path("batch/out")).entryList(QDir::Files), QStringList({"a.png"}));
}

CHROMAXIS_GUI_TEST_MAIN(TestImageDialogs)
#include "tst_imagedialogs.moc"
