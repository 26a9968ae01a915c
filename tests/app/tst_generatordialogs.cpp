// The image generators in the window: every "Generate" entry opens its dialog, OK replaces the
// image with the generator's picture as one undo step and one macro step, Cancel changes nothing;
// the presets fill the fields; the previews drag, draw through the palette and draw reduced while
// the view moves.
#include "chromaxismainwindow.h"
#include "document/chromaxismacrosystem.h"
#include "document/macroplayer.h"
#include "generators/fractalevaluator.h"
#include "generators/generatoroutput.h"
#include "generators/imagegenerator.h"
#include "guitesting.h"
#include "img_gen/apollonian/apolloniandialog.h"
#include "img_gen/genimagewidget.h"
#include "img_gen/gradient/gradientdialog.h"
#include "img_gen/moiree/moireedialog.h"
#include "img_gen/plasma/plasmadialog.h"
#include "img_gen/ifs/ifsdialog.h"
#include "img_gen/julia/juliadialog.h"
#include "img_gen/mandelbrot/mandelbrotdialog.h"
#include "img_gen/noise/noisedialog.h"
#include "operations/palettegenerators.h"
#include "palette/standardpalettes.h"
#include "storage/palettedatabase.h"
#include "storage/settingsstore.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>

#include <memory>

namespace {

void clickButton(QDialog *dialog, QDialogButtonBox::StandardButton which)
{
    dialog->findChild<QDialogButtonBox *>("buttons")->button(which)->click();
}

QDoubleSpinBox *number(QWidget *dialog, const QString &key)
{
    return dialog->findChild<QDoubleSpinBox *>(key);
}

QSpinBox *integer(QWidget *dialog, const QString &key)
{
    return dialog->findChild<QSpinBox *>(key);
}

// Sets a field by its key, whatever control shows it.
void setField(QWidget *dialog, const QString &key, const QString &value)
{
    if (auto *n = number(dialog, key))
        n->setValue(value.toDouble());
    else if (auto *i = integer(dialog, key))
        i->setValue(value.toInt());
    else if (auto *list = dialog->findChild<QComboBox *>(key))
        list->setCurrentIndex(value.toInt());
    else if (auto *check = dialog->findChild<QCheckBox *>(key))
        check->setChecked(value.toInt() != 0);
    else
        QFAIL(qPrintable("no field " + key));
}

std::unique_ptr<GenImageDialog> makeDialog(const QString &name, const Palette<uint> &palette)
{
    if (name == "mandelbrot")
        return std::make_unique<MandelbrotDialog>(palette, QString());
    if (name == "julia")
        return std::make_unique<JuliaDialog>(palette, QString());
    if (name == "ifs")
        return std::make_unique<IFSDialog>(palette, QString());
    if (name == "apollonian")
        return std::make_unique<ApollonianDialog>(palette, QString());
    if (name == "noise")
        return std::make_unique<NoiseDialog>(palette, QString());
    if (name == "plasma")
        return std::make_unique<PlasmaDialog>(palette, QString());
    if (name == "gradient")
        return std::make_unique<GradientDialog>(palette, QString());
    if (name == "moiree")
        return std::make_unique<MoireeDialog>(palette, QString());
    return nullptr;
}

// Shows a dialog with its preview at exactly size x size and waits until it has drawn.
void showWithPreview(GenImageDialog &dialog, QSize size)
{
    dialog.preview()->setFixedSize(size);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.preview()->grabFramebuffer(); // the first frame builds the program and the texture
}

void drag(QWidget *widget, QPoint from, QPoint to)
{
    QMouseEvent press(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
    QMouseEvent release(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &release);
}

bool uniform(const QImage &image)
{
    const QRgb first = image.pixel(0, 0);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) != first)
                return false;
    return true;
}

Palette<uint> twoColours()
{
    Palette<uint> p;
    p.append(RGBAColor<uint>(0xFFFF, 0, 0, 0xFFFF));
    p.append(RGBAColor<uint>(0, 0, 0xFFFF, 0xFFFF));
    return p;
}

} // namespace

class TestGeneratorDialogs : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void generateThroughMenu_data();
    void generateThroughMenu();
    void cancelChangesNothing();
    void pages_data();
    void pages();
    void presetsFillTheFields_data();
    void presetsFillTheFields();
    void dragMovesTheView_data();
    void dragMovesTheView();
    void dragIsClamped();
    void wheelZooms();
    void oneColourPaletteGivesUniformPreview();
    void apollonianIgnoresThePalette();
    void previewShowsThePicture_data();
    void previewShowsThePicture();
    void movingViewDrawsReduced();
    void doublePrecisionPreview();
    void previewFrameTimes_data();
    void previewFrameTimes();

private:
    QTemporaryDir m_dir;
    PaletteDatabase m_db;
};

void TestGeneratorDialogs::initTestCase()
{
    QImage photo(8, 6, QImage::Format_RGB32);
    photo.fill(qRgb(10, 200, 30));
    QVERIFY(photo.save(m_dir.filePath("photo.png")));
}

void TestGeneratorDialogs::init()
{
    QSettings().clear();
    // Loading the RGB photo keeps it as it is, without asking.
    QSettings().setValue("rgb_onload_action", 1);
}

void TestGeneratorDialogs::generateThroughMenu_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("target");
    QTest::addColumn<int>("mode");

    QTest::newRow("mandelbrot") << "imageGenerateMandelbrot" << "mandelbrot" << "iterations" << "123" << 1
                                << int(DocumentImage::Continuous);
    QTest::newRow("julia") << "imageGenerateJulia" << "julia" << "c_r" << "-0.77" << 0
                           << int(DocumentImage::Indexed8);
    QTest::newRow("apollonian") << "imageGenerateApollonian" << "apollonian" << "zoom" << "1.7" << 2
                                << int(DocumentImage::RGB);
    QTest::newRow("noise") << "imageGenerateNoise" << "noise" << "method" << "3" << 1
                           << int(DocumentImage::Continuous);
    QTest::newRow("plasma") << "imageGeneratePlasma" << "plasma" << "c_i" << "0.3125" << 1
                            << int(DocumentImage::Continuous);
    QTest::newRow("gradient") << "imageGenerateGradient" << "gradient" << "method" << "1" << 2
                              << int(DocumentImage::RGB);
    QTest::newRow("moiree") << "imageGenerateMoiree" << "moiree" << "norm" << "7" << 0
                            << int(DocumentImage::Indexed8);
}

void TestGeneratorDialogs::generateThroughMenu()
{
    QFETCH(QString, action);
    QFETCH(QString, name);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(int, target);
    QFETCH(int, mode);

    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(m_dir.filePath("photo.png")));
    const QImage before = w.document().image().picture();
    const int steps = w.document().history().count();
    w.document().setRecording(true);

    GeneratorSettings chosen;
    QString dialogName;
    handleNextDialog<GenImageDialog>([&](GenImageDialog *d) {
        dialogName = d->name();
        setField(d, "xsize", "37");
        setField(d, "ysize", "23");
        setField(d, "target", QString::number(target));
        setField(d, key, value);
        chosen = d->settings();
        clickButton(d, QDialogButtonBox::Ok);
    });
    w.action(action)->trigger();
    QCOMPARE(dialogName, name);
    // The changed field reached the settings the picture is made from.
    QCOMPARE(SettingsText::value(chosen.toPairs(), key).toDouble(), value.toDouble());

    const DocumentImage &image = w.document().image();
    QCOMPARE(image.width(), 37);
    QCOMPARE(image.height(), 23);
    QCOMPARE(image.mode(), mode);
    DocumentImage expected = ImageGenerator::generate(chosen, w.document().palette());
    expected.render(w.document().palette());
    QCOMPARE(image.picture().convertToFormat(QImage::Format_ARGB32),
             expected.picture().convertToFormat(QImage::Format_ARGB32));
    QVERIFY(image.continuousCells() == expected.continuousCells());
    QVERIFY(image.indexCells() == expected.indexCells());
    // Not one colour all over: the generator really drew.
    QVERIFY(!uniform(image.picture().convertToFormat(QImage::Format_ARGB32)));
    QCOMPARE(w.document().history().count(), steps + 1);

    const std::vector<MacroFile::Step> recorded = MacroFile::stepsOf(w.document().macros());
    QVERIFY(!recorded.empty());
    QCOMPARE(recorded.back().name, "image_generate_" + name);
    QVERIFY(recorded.back().parameters.contains("\n" + key + ":"));
    QCOMPARE(SettingsText::value(SettingsText::parse(recorded.back().parameters, name), key).toDouble(),
             value.toDouble());
    // The recorded step, replayed on another document with the same palette, makes the same image.
    ChromaxisDocument replay;
    replay.setPalette(w.document().palette());
    MacroPlayer().play(replay, {recorded.back()});
    QCOMPARE(replay.image().mode(), mode);
    QCOMPARE(replay.image().picture().convertToFormat(QImage::Format_ARGB32),
             image.picture().convertToFormat(QImage::Format_ARGB32));

    w.undo();
    QCOMPARE(w.document().image().width(), 8);
    QCOMPARE(w.document().image().picture(), before);
}

void TestGeneratorDialogs::cancelChangesNothing()
{
    ChromaxisMainWindow w(&m_db);
    w.show();
    QVERIFY(w.loadImageFile(m_dir.filePath("photo.png")));
    const QImage before = w.document().image().picture();
    const int steps = w.document().history().count();
    w.document().setRecording(true);
    handleNextDialog<GenImageDialog>([](GenImageDialog *d) {
        setField(d, "iterations", "99");
        clickButton(d, QDialogButtonBox::Cancel);
    });
    w.action("imageGenerateMandelbrot")->trigger();
    QCOMPARE(w.document().image().picture(), before);
    QCOMPARE(w.document().history().count(), steps);
    QVERIFY(MacroFile::stepsOf(w.document().macros()).empty());
    // Cancel keeps no last-used settings either: the next dialog starts from the first preset.
    MandelbrotDialog again(grayscalePalette(), QString());
    again.start();
    QCOMPARE(integer(&again, "iterations")->value(), 5000);
}

void TestGeneratorDialogs::pages_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("groups");
    QTest::addColumn<QStringList>("labels");

    const QStringList view{"X-offset:", "Y-offset:", "Zoom:", "Iterations:", "Scale:"};
    QTest::newRow("mandelbrot") << "mandelbrot" << "Mandelbrot fractals"
                                << QStringList{"View", "Computation", "Output"} << view;
    QTest::newRow("julia") << "julia" << "Julia fractals" << QStringList{"View", "Computation", "Output"}
                           << view + QStringList{"Real:", "Imag:"};
    QTest::newRow("ifs") << "ifs" << "Julia fractals" << QStringList{"View", "Computation", "Output"}
                         << view + QStringList{"Real:", "Imag:"};
    QTest::newRow("apollonian") << "apollonian" << "Apollonian fractals"
                                << QStringList{"View", "Computation", "Output"} << view;
    QTest::newRow("noise") << "noise" << "Noise" << QStringList{"Method", "Offset", "Steps", "Output"}
                           << QStringList{"X:", "Y:", "Z:", "Width:", "Height:", "Target:"};
}

void TestGeneratorDialogs::pages()
{
    QFETCH(QString, name);
    QFETCH(QString, title);
    QFETCH(QStringList, groups);
    QFETCH(QStringList, labels);
    const auto dialog = makeDialog(name, grayscalePalette());
    QCOMPARE(dialog->findChild<QGroupBox *>("generator")->title(), title);
    QStringList titles;
    for (const QGroupBox *group : dialog->findChildren<QGroupBox *>())
        titles << group->title();
    for (const QString &group : groups)
        QVERIFY2(titles.contains(group), qPrintable(group));
    QStringList texts;
    for (const QLabel *label : dialog->findChildren<QLabel *>())
        texts << label->text();
    for (const QString &label : labels)
        QVERIFY2(texts.contains(label), qPrintable(label));
    // Every key of the generator has its field, and only the escape-time pages have the two boxes.
    for (const auto &pair : GeneratorSettings::defaults(name).toPairs())
        QVERIFY2(dialog->findChild<QWidget *>(pair.first), qPrintable(pair.first));
    const bool escapeTime = GeneratorSettings::defaults(name).isEscapeTime();
    QCOMPARE(dialog->findChild<QCheckBox *>("precision") != nullptr, escapeTime);
    QCOMPARE(dialog->findChild<QCheckBox *>("smooth") != nullptr, escapeTime);
    if (escapeTime) {
        QCOMPARE(dialog->findChild<QCheckBox *>("precision")->text(), "Double precision");
        QCOMPARE(dialog->findChild<QCheckBox *>("smooth")->text(), "Smooth colouring");
        QVERIFY(!dialog->findChild<QCheckBox *>("precision")->isChecked());
        QVERIFY(!dialog->findChild<QCheckBox *>("smooth")->isChecked());
    }
    const auto *target = dialog->findChild<QComboBox *>("target");
    QCOMPARE(target->count(), 3);
    QCOMPARE(target->currentIndex(), int(GeneratorSettings::Continuous));
}

void TestGeneratorDialogs::presetsFillTheFields_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("preset");
    QTest::addColumn<QStringList>("fields"); // key=shown text, as the user reads it

    QTest::newRow("mandelbrot 1") << "mandelbrot" << 1
                                  << QStringList{"iterations=5000", "norm=1000", "xoff=-0.37216", "yoff=-0.842",
                                                 "zoom=6000"};
    QTest::newRow("mandelbrot 4") << "mandelbrot" << 4
                                  << QStringList{"iterations=5000", "norm=5000", "xoff=0.90113", "yoff=0",
                                                 "zoom=30000"};
    QTest::newRow("julia 1") << "julia" << 1
                             << QStringList{"iterations=5000", "norm=100", "xoff=0", "yoff=0", "zoom=0.9",
                                            "c_r=-1.275", "c_i=0.19375", "xsize=1024", "ysize=1024"};
    QTest::newRow("julia 2") << "julia" << 2
                             << QStringList{"iterations=1000", "norm=100", "xoff=-0.11568", "yoff=-0.20234",
                                            "zoom=1102.22", "c_r=0.0125", "c_i=0.76875"};
    QTest::newRow("noise 1") << "noise" << 1
                             << QStringList{"method=5", "xoff=15.9541", "yoff=10.2715", "zoff=-5.8",
                                            "xadd=18.1193", "yadd=14.2693"};
    QTest::newRow("noise 2") << "noise" << 2
                             << QStringList{"method=3", "xoff=24.8477", "yoff=22.1102", "zoff=-1.4",
                                            "xadd=6.06815", "yadd=4.77878"};
}

void TestGeneratorDialogs::presetsFillTheFields()
{
    QFETCH(QString, name);
    QFETCH(int, preset);
    QFETCH(QStringList, fields);
    const auto dialog = makeDialog(name, grayscalePalette());
    dialog->start();
    DialogSettingsIO *io = dialog->settingsIO();
    // Another preset first, so that every field really changes.
    io->comboBox()->setCurrentIndex(io->presetIndex(preset == 3 ? 4 : 3));
    io->comboBox()->setCurrentIndex(io->presetIndex(preset));
    for (const QString &field : fields) {
        const QString key = field.section('=', 0, 0);
        const QString text = field.section('=', 1);
        if (auto *n = number(dialog.get(), key)) {
            QCOMPARE(n->text(), text);
            QCOMPARE(n->value(), text.toDouble());
        } else if (auto *i = integer(dialog.get(), key)) {
            QCOMPARE(i->value(), text.toInt());
        } else {
            QCOMPARE(dialog->findChild<QComboBox *>(key)->currentIndex(), text.toInt());
        }
        QCOMPARE(SettingsText::value(dialog->settings().toPairs(), key).toDouble(), text.toDouble());
    }
    // What the preview draws is what the fields show.
    QCOMPARE(dialog->preview()->settings().toPairs(), dialog->settings().toPairs());
}

void TestGeneratorDialogs::dragMovesTheView_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QPoint>("by");
    QTest::addColumn<double>("dx");
    QTest::addColumn<double>("dy");

    // 400 x 300 pixels at zoom 2 (noise: steps 2 and 5).
    QTest::newRow("mandelbrot right down") << "mandelbrot" << QPoint(40, 30) << 0.15 << -0.15;
    QTest::newRow("mandelbrot left up") << "mandelbrot" << QPoint(-100, -60) << -0.375 << 0.3;
    QTest::newRow("julia") << "julia" << QPoint(40, 30) << 0.15 << -0.1;
    QTest::newRow("apollonian") << "apollonian" << QPoint(40, 30) << 0.1 << -0.1;
    QTest::newRow("noise") << "noise" << QPoint(40, 30) << -0.2 << 0.5;
}

void TestGeneratorDialogs::dragMovesTheView()
{
    QFETCH(QString, name);
    QFETCH(QPoint, by);
    QFETCH(double, dx);
    QFETCH(double, dy);
    const auto dialog = makeDialog(name, grayscalePalette());
    setField(dialog.get(), "xoff", "0.5");
    setField(dialog.get(), "yoff", "-0.25");
    if (number(dialog.get(), "zoom"))
        setField(dialog.get(), "zoom", "2");
    if (name == "noise") {
        setField(dialog.get(), "xadd", "2");
        setField(dialog.get(), "yadd", "5");
    }
    showWithPreview(*dialog, QSize(400, 300));

    const QPoint from(200, 150);
    drag(dialog->preview(), from, from + by);
    QCOMPARE(number(dialog.get(), "xoff")->value(), 0.5 + dx);
    QCOMPARE(number(dialog.get(), "yoff")->value(), -0.25 + dy);
    QCOMPARE(dialog->preview()->settings().xoff, 0.5 + dx);
    QCOMPARE(dialog->preview()->settings().yoff, -0.25 + dy);
    // A press and release without moving changes nothing; neither does a move without the button.
    drag(dialog->preview(), from, from);
    QMouseEvent hover(QEvent::MouseMove, QPoint(5, 5), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(dialog->preview(), &hover);
    QCOMPARE(number(dialog.get(), "xoff")->value(), 0.5 + dx);
    QCOMPARE(number(dialog.get(), "yoff")->value(), -0.25 + dy);
    // The fields' new values go into the picture of OK.
    QCOMPARE(dialog->settings().xoff, 0.5 + dx);
}

void TestGeneratorDialogs::dragIsClamped()
{
    MandelbrotDialog dialog(grayscalePalette(), QString());
    setField(&dialog, "zoom", "0.25");
    showWithPreview(dialog, QSize(400, 300));
    // 360 pixels of 400 at zoom 0.25 is 10.8 units: far past the limit.
    drag(dialog.preview(), QPoint(20, 280), QPoint(380, 10));
    QCOMPARE(number(&dialog, "xoff")->value(), 4.0);
    QCOMPARE(number(&dialog, "yoff")->value(), 4.0);
    drag(dialog.preview(), QPoint(380, 10), QPoint(20, 280));
    QCOMPARE(number(&dialog, "xoff")->value(), -4.0);
    QCOMPARE(number(&dialog, "yoff")->value(), -4.0);
    // From the limit, a small drag back moves by exactly its own amount.
    drag(dialog.preview(), QPoint(100, 100), QPoint(110, 100));
    QCOMPARE(number(&dialog, "xoff")->value(), -4.0 + 10.0 / 400 * 3 / 0.25);
}

void TestGeneratorDialogs::wheelZooms()
{
    MandelbrotDialog dialog(grayscalePalette(), QString());
    setField(&dialog, "zoom", "2");
    showWithPreview(dialog, QSize(200, 200));
    auto wheel = [](QWidget *widget, int delta) {
        QWheelEvent event(QPointF(100, 100), QPointF(widget->mapToGlobal(QPoint(100, 100))), QPoint(), QPoint(0, delta),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
    };
    wheel(dialog.preview(), 120);
    QCOMPARE(number(&dialog, "zoom")->value(), 2.5);
    wheel(dialog.preview(), -240);
    QCOMPARE(number(&dialog, "zoom")->value(), 1.6);
    QCOMPARE(dialog.settings().zoom, 1.6);
    // Noise has no zoom: the wheel leaves its settings alone.
    NoiseDialog noise(grayscalePalette(), QString());
    showWithPreview(noise, QSize(200, 200));
    const auto before = noise.settings().toPairs();
    wheel(noise.preview(), 120);
    QCOMPARE(noise.settings().toPairs(), before);
}

void TestGeneratorDialogs::oneColourPaletteGivesUniformPreview()
{
    Palette<uint> one;
    one.append(RGBAColor<uint>(0xFFFF, 0x8080, 0, 0xFFFF));
    for (const QString name : {"mandelbrot", "julia", "plasma", "noise", "gradient", "moiree"}) {
        const auto dialog = makeDialog(name, one);
        dialog->start();
        showWithPreview(*dialog, QSize(128, 128));
        const QImage frame = dialog->preview()->grabFramebuffer();
        QVERIFY2(dialog->preview()->lastError().isEmpty(), qPrintable(dialog->preview()->lastError()));
        QVERIFY2(uniform(frame), qPrintable(name));
        QCOMPARE(QColor(frame.pixel(64, 64)), QColor(255, 128, 0));
        // Two colours: the same view is not uniform, so the frame really shows the generator.
        dialog->preview()->setPalette(twoColours());
        QVERIFY2(!uniform(dialog->preview()->grabFramebuffer()), qPrintable(name));
    }
}

void TestGeneratorDialogs::apollonianIgnoresThePalette()
{
    ApollonianDialog dialog(grayscalePalette(), QString());
    dialog.start();
    showWithPreview(dialog, QSize(160, 160));
    const QImage gray = dialog.preview()->grabFramebuffer();
    QVERIFY(!uniform(gray));
    dialog.preview()->setPalette(twoColours());
    QCOMPARE(dialog.preview()->grabFramebuffer(), gray);
    // The view still moves it.
    setField(&dialog, "zoom", "3");
    QVERIFY(dialog.preview()->grabFramebuffer() != gray);
}

void TestGeneratorDialogs::previewShowsThePicture_data()
{
    QTest::addColumn<QString>("name");
    for (const QString name : {"mandelbrot", "julia", "plasma", "noise", "gradient", "moiree"})
        QTest::newRow(qPrintable(name)) << name;
}

void TestGeneratorDialogs::previewShowsThePicture()
{
    // The preview at the output's size shows the very picture OK makes, the right way up.
    QFETCH(QString, name);
    const Palette<uint> palette = PaletteGenerators::hueRotation(256);
    const auto dialog = makeDialog(name, palette);
    dialog->start();
    setField(dialog.get(), "xsize", "200");
    setField(dialog.get(), "ysize", "200");
    setField(dialog.get(), "target", QString::number(GeneratorSettings::Rgb));
    showWithPreview(*dialog, QSize(200, 200));
    const QImage frame = dialog->preview()->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
    const QImage picture =
        ImageGenerator::generate(dialog->settings(), palette).picture().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(picture.size(), frame.size());
    QVERIFY(!uniform(picture));
    int same = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 200; ++x)
            same += frame.pixel(x, y) == picture.pixel(x, y);
    QVERIFY2(same >= 200 * 200 * 98 / 100, qPrintable(QString::number(same)));
}

void TestGeneratorDialogs::movingViewDrawsReduced()
{
    MandelbrotDialog dialog(grayscalePalette(), QString());
    dialog.start();
    showWithPreview(dialog, QSize(256, 256));
    GenImageWidget *preview = dialog.preview();
    preview->grabFramebuffer();
    QVERIFY(!preview->lastFrameReduced());
    // Every frame counts as slow: while the view moves it is drawn at a quarter of the size.
    preview->setReduceAbove(0);
    QMouseEvent press(QEvent::MouseButtonPress, QPoint(100, 100), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(preview, &press);
    QMouseEvent move(QEvent::MouseMove, QPoint(101, 100), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(preview, &move);
    const QImage moving = preview->grabFramebuffer();
    QVERIFY(preview->lastFrameReduced());
    // Blocks of 4 x 4 pixels.
    for (int y = 0; y < 256; y += 4)
        for (int x = 0; x < 256; x += 4)
            QCOMPARE(moving.pixel(x + 3, y + 3), moving.pixel(x, y));
    QMouseEvent release(QEvent::MouseButtonRelease, QPoint(101, 100), Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(preview, &release);
    // Once the mouse rests, the view is drawn in full again.
    QTRY_VERIFY(!preview->lastFrameReduced());
    preview->grabFramebuffer();
    QVERIFY(!preview->lastFrameReduced());
    // A fast view never reduces.
    preview->setReduceAbove(1e9);
    QApplication::sendEvent(preview, &press);
    QApplication::sendEvent(preview, &move);
    preview->grabFramebuffer();
    QVERIFY(!preview->lastFrameReduced());
    QApplication::sendEvent(preview, &release);
}

void TestGeneratorDialogs::doublePrecisionPreview()
{
    // The deep preset, where single precision turns blocky.
    MandelbrotDialog dialog(grayscalePalette(), QString());
    dialog.start();
    dialog.settingsIO()->comboBox()->setCurrentIndex(dialog.settingsIO()->presetIndex(4));
    showWithPreview(dialog, QSize(256, 256));
    const QImage single = dialog.preview()->grabFramebuffer();
    setField(&dialog, "precision", "1");
    QCOMPARE(dialog.preview()->settings().precision, int(GeneratorSettings::Double));
    const QImage precise = dialog.preview()->grabFramebuffer();
    if (dialog.preview()->lastError().isEmpty()) {
        // The processor's values in double, through the palette as the texture looks them up.
        GeneratorSettings reference = dialog.settings();
        std::vector<float> values;
        QVERIFY(FractalEvaluator::values(reference, GeneratorGrid{256, 256}, values));
        const Palette<uint> gray = grayscalePalette();
        auto agreeing = [&](const QImage &frame) {
            int same = 0;
            for (int y = 0; y < 256; ++y)
                for (int x = 0; x < 256; ++x) {
                    const auto &c = gray[int(GeneratorOutput::index(values[size_t(y * 256 + x)], gray.size()))];
                    same += qGray(frame.pixel(x, y)) == int(c.r >> 8);
                }
            return same;
        };
        const int total = 256 * 256;
        qInfo("pixels agreeing with the double-precision reference: single %d, double %d of %d",
              agreeing(single), agreeing(precise), total);
        QVERIFY(agreeing(precise) >= total * 98 / 100);
        QVERIFY(agreeing(single) < total * 90 / 100);
    } else {
        // Without double precision in the driver the preview stays in single precision.
        qInfo("no double precision here: %s", qPrintable(dialog.preview()->lastError().left(200)));
        QCOMPARE(precise, single);
    }
}

void TestGeneratorDialogs::previewFrameTimes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("firstPreset");
    for (const QString name : GeneratorSettings::names()) {
        QTest::newRow(qPrintable(name + " defaults")) << name << false;
        QTest::newRow(qPrintable(name + " first preset")) << name << true;
    }
}

void TestGeneratorDialogs::previewFrameTimes()
{
    QFETCH(QString, name);
    QFETCH(bool, firstPreset);
    const auto dialog = makeDialog(name, grayscalePalette());
    if (firstPreset)
        dialog->start();
    showWithPreview(*dialog, QSize(512, 512));
    double full = 1e9;
    double reduced = 1e9;
    for (int k = 0; k < 3; ++k) {
        full = std::min(full, dialog->preview()->measureFrame());
        reduced = std::min(reduced, dialog->preview()->measureFrame(true));
    }
    QVERIFY(full > 0);
    QVERIFY(reduced > 0);
    qInfo("%s %s: 512x512 preview frame %.2f ms, while dragging %.2f ms", qPrintable(name),
          firstPreset ? "first preset" : "defaults", full, reduced);
}

CHROMAXIS_GUI_TEST_MAIN(TestGeneratorDialogs)
#include "tst_generatordialogs.moc"
