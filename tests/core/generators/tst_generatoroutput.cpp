// The read-back encoding the shaders write and the renderers decode, and what a read-back
// becomes in the document for each target.

#include "generators/generatoroutput.h"
#include "generators/generatorsettings.h"
#include "generators/offscreenrenderer.h"
#include "palette/standardpalettes.h"

#include <QtTest>

namespace {

Palette<uint> paletteOf(int size)
{
    Palette<uint> p;
    for (int i = 0; i < size; ++i)
        p.append(RGBAColor<uint>(uint(i % 256) << 8, uint((i * 7) % 256) << 8, 0x1200, 0xff00));
    return p;
}

GeneratorRaster rasterOf(int w, int h, std::vector<float> values)
{
    GeneratorRaster r;
    r.width = w;
    r.height = h;
    r.values = std::move(values);
    return r;
}

} // namespace

class TestGeneratorOutput : public QObject
{
    Q_OBJECT

private slots:
    void encoding_data()
    {
        QTest::addColumn<float>("value");
        QTest::addColumn<int>("r");
        QTest::addColumn<int>("g");
        QTest::addColumn<int>("b");
        QTest::addColumn<double>("decoded");
        QTest::newRow("zero") << 0.0f << 0 << 0 << 0 << 0.0;
        QTest::newRow("one sets red") << 1.0f << 1 << 0 << 0 << 1.0;
        QTest::newRow("half") << 0.5f << 0 << 128 << 0 << 0.5;
        QTest::newRow("low byte") << float(3.0 / 65536) << 0 << 0 << 3 << 3.0 / 65536;
        QTest::newRow("both bytes") << float(0x12ab / 65536.0) << 0 << 0x12 << 0xab << 0x12ab / 65536.0;
        QTest::newRow("truncates") << float(0.75 + 0.7 / 65536) << 0 << 192 << 0 << 0.75;
        // A negative value wraps: red falls below zero, which the channel cannot hold.
        QTest::newRow("negative wraps") << -0.25f << 0 << 192 << 0 << 0.75;
        QTest::newRow("above one") << 1.5f << 1 << 128 << 0 << 1.5;
    }
    void encoding()
    {
        QFETCH(float, value);
        QFETCH(int, r);
        QFETCH(int, g);
        QFETCH(int, b);
        QFETCH(double, decoded);
        const GeneratorOutput::Bytes bytes = GeneratorOutput::encode(value);
        QCOMPARE(int(bytes.r), r);
        QCOMPARE(int(bytes.g), g);
        QCOMPARE(int(bytes.b), b);
        QCOMPARE(GeneratorOutput::decode(bytes), decoded);
        QCOMPARE(double(GeneratorOutput::readBack(value)), decoded);
    }

    void everySixteenBitValueRoundTrips()
    {
        for (int k = 0; k <= 65536; ++k) {
            const float v = float(k / 65536.0);
            if (double(GeneratorOutput::readBack(v)) != k / 65536.0)
                QFAIL(qPrintable(QString("value %1/65536 reads back as %2").arg(k).arg(GeneratorOutput::readBack(v))));
        }
    }

    void index_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("index");
        QTest::newRow("zero") << 0.0 << 256 << 0;
        QTest::newRow("truncated") << 0.999 << 256 << 255;
        QTest::newRow("middle") << 0.5 << 10 << 5;
        QTest::newRow("just below an entry") << 0.29 << 10 << 2;
        QTest::newRow("one clamps to last") << 1.0 << 256 << 255;
        QTest::newRow("past one clamps") << 1.5 << 300 << 299;
        QTest::newRow("one-colour palette") << 0.7 << 1 << 0;
        QTest::newRow("large palette") << 0.5 << 65536 << 32768;
    }
    void index()
    {
        QFETCH(double, value);
        QFETCH(int, size);
        QFETCH(int, index);
        QCOMPARE(int(GeneratorOutput::index(value, size)), index);
    }

    void targets_data()
    {
        QTest::addColumn<int>("paletteSize");
        QTest::addColumn<int>("target");
        QTest::addColumn<int>("mode");
        QTest::newRow("indexed, 256 entries") << 256 << 0 << int(DocumentImage::Indexed8);
        QTest::newRow("indexed, 257 entries") << 257 << 0 << int(DocumentImage::Indexed32);
        QTest::newRow("continuous") << 256 << 1 << int(DocumentImage::Continuous);
        QTest::newRow("rgb") << 40 << 2 << int(DocumentImage::RGB);
    }
    void targets()
    {
        QFETCH(int, paletteSize);
        QFETCH(int, target);
        QFETCH(int, mode);
        const std::vector<float> values{0.0f, 0.25f, 0.5f, 1.0f, 0.75f, float(1.0 / 65536)};
        const Palette<uint> palette = paletteOf(paletteSize);
        const DocumentImage image = GeneratorOutput::toImage(rasterOf(3, 2, values), palette, target);
        QCOMPARE(image.mode(), mode);
        QCOMPARE(image.width(), 3);
        QCOMPARE(image.height(), 2);
        for (int i = 0; i < 6; ++i) {
            const int x = i % 3, y = i / 3;
            const uint32_t expectedIndex = GeneratorOutput::index(values[size_t(i)], paletteSize);
            switch (mode) {
            case DocumentImage::Indexed8:
                QCOMPARE(uint32_t(image.indexRow(y)[x]), expectedIndex);
                break;
            case DocumentImage::Indexed32:
                QCOMPARE(image.indexCells()[size_t(i)], expectedIndex);
                break;
            case DocumentImage::Continuous:
                QCOMPARE(image.continuousCells()[size_t(i)], values[size_t(i)] * 65535.0f);
                break;
            default: {
                const auto &c = palette[int(expectedIndex)];
                QCOMPARE(image.picture().pixel(x, y), qRgba(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8), 255));
            }
            }
        }
    }

    // The gasket colours itself: an RGB target keeps its colours whatever the palette.
    void ownColoursAreKept()
    {
        GeneratorRaster r = rasterOf(2, 1, {0.1f, 0.2f});
        r.colours = QImage(2, 1, QImage::Format_ARGB32);
        r.colours.setPixel(0, 0, qRgba(10, 200, 30, 255));
        r.colours.setPixel(1, 0, qRgba(250, 1, 2, 255));
        const DocumentImage image = GeneratorOutput::toImage(r, grayscalePalette(), GeneratorSettings::Rgb);
        QCOMPARE(image.mode(), int(DocumentImage::RGB));
        QCOMPARE(image.picture().pixel(0, 0), qRgba(10, 200, 30, 255));
        QCOMPARE(image.picture().pixel(1, 0), qRgba(250, 1, 2, 255));
    }

    // A program without a graphical application (the command line's) gets no OpenGL, and says why.
    void noOpenGLWithoutAGraphicalApplication()
    {
        QString reason;
        QVERIFY(!OffscreenRenderer::available(&reason));
        QCOMPARE(reason, QString("OpenGL needs a graphical application, and this program runs without one."));
        try {
            OffscreenRenderer::render(GeneratorSettings::defaults("mandelbrot"), grayscalePalette());
            QFAIL("rendered");
        } catch (const DescribedException &e) {
            QCOMPARE(e.title(), QString("Cannot render the image"));
            QCOMPARE(e.message(), reason);
        }
    }
};

QTEST_GUILESS_MAIN(TestGeneratorOutput)
#include "tst_generatoroutput.moc"
