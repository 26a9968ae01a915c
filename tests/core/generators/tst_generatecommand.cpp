// A generator's picture as a document command: it replaces the image in one undo step, leaves the
// palette alone, records its macro step with the settings, and the macro player makes the very
// same picture from that step. Rendered on the processor, as a program without a display does.

#include "document/chromaxisdocument.h"
#include "document/documentcommands.h"
#include "document/macroplayer.h"
#include "generators/generatoroutput.h"
#include "palette/describedexception.h"
#include "palette/standardpalettes.h"

#include <QtTest>

namespace {

Palette<uint> reds(int size)
{
    Palette<uint> p;
    for (int i = 0; i < size; ++i)
        p.append(RGBAColor<uint>(uint(i * 65535 / size), 0x2000, 0x3000, 0xffff));
    p.setProperty(PaletteName, QStringLiteral("reds"));
    return p;
}

void load(ChromaxisDocument &doc)
{
    std::vector<uint8_t> indexes(12 * 9);
    for (size_t i = 0; i < indexes.size(); ++i)
        indexes[i] = uint8_t(i % 40);
    doc.setImageState({DocumentImage::fromIndexes8(12, 9, indexes), QStringLiteral("/pictures/old.png"), false});
    doc.setPaletteState({reds(40), 0, QStringLiteral("/p/reds.gpl"), false, false});
    doc.clearHistory();
}

QByteArray cellsOf(const DocumentImage &image)
{
    QByteArray bytes;
    switch (image.mode()) {
    case DocumentImage::Indexed8:
        for (int y = 0; y < image.height(); ++y)
            bytes.append(reinterpret_cast<const char *>(image.indexRow(y)), image.width());
        break;
    case DocumentImage::Indexed32:
        bytes.append(reinterpret_cast<const char *>(image.indexCells().data()), int(image.indexCells().size() * 4));
        break;
    case DocumentImage::Continuous:
        bytes.append(reinterpret_cast<const char *>(image.continuousCells().data()),
                     int(image.continuousCells().size() * 4));
        break;
    default: {
        const QImage p = image.picture().convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < p.height(); ++y)
            bytes.append(reinterpret_cast<const char *>(p.constScanLine(y)), p.width() * 4);
    }
    }
    return bytes;
}

} // namespace

class TestGenerateCommand : public QObject
{
    Q_OBJECT

private slots:
    void replacesTheImageInOneStep_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("target");
        QTest::addColumn<int>("mode");
        QTest::newRow("mandelbrot continuous") << "mandelbrot" << 1 << int(DocumentImage::Continuous);
        QTest::newRow("julia indexed") << "julia" << 0 << int(DocumentImage::Indexed8);
        QTest::newRow("noise rgb") << "noise" << 2 << int(DocumentImage::RGB);
        QTest::newRow("apollonian rgb") << "apollonian" << 2 << int(DocumentImage::RGB);
        QTest::newRow("gradient indexed") << "gradient" << 0 << int(DocumentImage::Indexed8);
        QTest::newRow("moiree continuous") << "moiree" << 1 << int(DocumentImage::Continuous);
        QTest::newRow("plasma rgb") << "plasma" << 2 << int(DocumentImage::RGB);
        QTest::newRow("ifs continuous") << "ifs" << 1 << int(DocumentImage::Continuous);
    }
    void replacesTheImageInOneStep()
    {
        QFETCH(QString, name);
        QFETCH(int, target);
        QFETCH(int, mode);
        ChromaxisDocument doc;
        load(doc);
        doc.setRecording(true);
        const QByteArray before = cellsOf(doc.image());
        const Palette<uint> palette = doc.palette();
        GeneratorSettings s = GeneratorSettings::defaults(name);
        s.xsize = 30;
        s.ysize = 20;
        s.target = target;
        s.xoff = 0.05;
        DocumentCommands(doc, nullptr).generateImage(s, ImageGenerator::Renderer::Cpu);

        QCOMPARE(doc.image().mode(), mode);
        QCOMPARE(doc.image().width(), 30);
        QCOMPARE(doc.image().height(), 20);
        const QByteArray after = cellsOf(doc.image());
        QCOMPARE(after, cellsOf(ImageGenerator::generate(s, palette, ImageGenerator::Renderer::Cpu)));
        QVERIFY(doc.palette() == palette);
        QVERIFY(doc.isImageModified());
        QVERIFY(doc.imageFileName().isEmpty());
        QCOMPARE(doc.history().count(), 1);

        const std::vector<MacroFile::Step> steps = MacroFile::stepsOf(doc.macros());
        QCOMPARE(int(steps.size()), 1);
        QCOMPARE(steps[0].name, "image_generate_" + name);
        QCOMPARE(steps[0].parameters, SettingsText::format(name, s.settingsText()));

        // The player makes the same picture from the step alone.
        ChromaxisDocument replayed;
        load(replayed);
        const MacroPlayer::Report report = MacroPlayer(nullptr).play(replayed, steps);
        QCOMPARE(report.played, 1);
        QCOMPARE(cellsOf(replayed.image()), after);
        QVERIFY(replayed.palette() == palette);

        QVERIFY(doc.undo());
        QCOMPARE(cellsOf(doc.image()), before);
        QCOMPARE(doc.imageFileName(), QString("/pictures/old.png"));
        QVERIFY(doc.palette() == palette);
        QVERIFY(doc.redo());
        QCOMPARE(cellsOf(doc.image()), after);
    }

    // More than 256 entries need 32-bit indexes.
    void largePaletteGivesWideIndexes()
    {
        ChromaxisDocument doc;
        load(doc);
        doc.setPaletteState({reds(300), 0, QString(), false, false});
        GeneratorSettings s = GeneratorSettings::defaults("gradient");
        s.xsize = 16;
        s.ysize = 16;
        s.target = GeneratorSettings::Indexed;
        DocumentCommands(doc, nullptr).generateImage(s, ImageGenerator::Renderer::Cpu);
        QCOMPARE(doc.image().mode(), int(DocumentImage::Indexed32));
        const auto &cells = doc.image().indexCells();
        QVERIFY(*std::max_element(cells.begin(), cells.end()) > 255);
    }

    void failuresChangeNothing()
    {
        ChromaxisDocument doc;
        load(doc);
        const QByteArray before = cellsOf(doc.image());
        GeneratorSettings s = GeneratorSettings::defaults("noise");
        s.xsize = 262144;
        s.ysize = 262144;
        QVERIFY_EXCEPTION_THROWN(DocumentCommands(doc, nullptr).generateImage(s, ImageGenerator::Renderer::Cpu),
                                 DescribedException);
        QVERIFY_EXCEPTION_THROWN(DocumentCommands(doc, nullptr).installGenerated(DocumentImage(), s),
                                 DescribedException);
        // A program without a display has no OpenGL to insist on.
        s.xsize = s.ysize = 8;
        try {
            DocumentCommands(doc, nullptr).generateImage(s, ImageGenerator::Renderer::Gl);
            QFAIL("rendered");
        } catch (const DescribedException &e) {
            QCOMPARE(e.title(), QString("OpenGL unavailable"));
        }
        QCOMPARE(cellsOf(doc.image()), before);
        QCOMPARE(doc.history().count(), 0);
    }

    void everyGeneratorStepIsPlayed()
    {
        for (const QString &name : GeneratorSettings::names())
            QVERIFY2(MacroPlayer::knows("image_generate_" + name), qPrintable(name));
    }

    void renderers()
    {
        QCOMPARE(ImageGenerator::rendererFromText("auto"), ImageGenerator::Renderer::Auto);
        QCOMPARE(ImageGenerator::rendererFromText("gl"), ImageGenerator::Renderer::Gl);
        QCOMPARE(ImageGenerator::rendererFromText("cpu"), ImageGenerator::Renderer::Cpu);
        try {
            ImageGenerator::rendererFromText("GPU");
            QFAIL("accepted");
        } catch (const DescribedException &e) {
            QCOMPARE(e.message(), QString("The renderer \"GPU\" is none of auto, gl and cpu."));
        }
        // Without a graphical application, auto is the processor.
        QVERIFY(!ImageGenerator::usesOpenGL(ImageGenerator::Renderer::Auto));
        QVERIFY(!ImageGenerator::usesOpenGL(ImageGenerator::Renderer::Cpu));
    }

    // A long render on the processor can be stopped.
    void cancelling()
    {
        GeneratorSettings s = GeneratorSettings::defaults("mandelbrot");
        s.xsize = 256;
        s.ysize = 256;
        s.iterations = 2000;
        int calls = 0;
        QVERIFY_EXCEPTION_THROWN(ImageGenerator::generate(s, grayscalePalette(), ImageGenerator::Renderer::Cpu,
                                                          [&](int) { return ++calls < 2; }),
                                 ImageGenerator::Cancelled);
        QVERIFY(calls >= 2);
    }
};

QTEST_GUILESS_MAIN(TestGenerateCommand)
#include "tst_generatecommand.moc"
