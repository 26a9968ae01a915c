// The fractal shaders against the processor's evaluation of the same formulas, on a real OpenGL
// context: the read-back agrees at nearly every pixel (escape boundaries of single-precision
// orbits may differ where the driver fuses a multiply-add), and the double-precision shaders,
// whose orbits are kept unfused, agree at every pixel even deep in a zoom (at sizes whose texture
// coordinates the rasteriser computes exactly).
#include "generators/fractalevaluator.h"
#include "generators/generatoroutput.h"
#include "generators/offscreenrenderer.h"
#include "palette/standardpalettes.h"

#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(GeneratorSettings)

namespace {

GeneratorSettings view(const QString &name, int w, int h)
{
    GeneratorSettings s = GeneratorSettings::defaults(name);
    s.xsize = w;
    s.ysize = h;
    return s;
}

GeneratorSettings deep(const QString &name, int iterations, double norm, double xoff, double yoff, double zoom,
                       double cr = 0, double ci = 0)
{
    // A power of two a side: there the rasteriser's texture coordinates are exactly
    // (x + 0.5) / w; elsewhere they may be some float steps off, which deep in a zoom in double
    // precision moves the sample point enough to change counts along the chaotic edges.
    GeneratorSettings s = view(name, 128, 128);
    s.iterations = iterations;
    s.norm = norm;
    s.xoff = xoff;
    s.yoff = yoff;
    s.zoom = zoom;
    s.cr = cr;
    s.ci = ci;
    return s;
}

} // namespace

class TestFractalShaders : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QString reason;
        QVERIFY2(OffscreenRenderer::available(&reason), qPrintable(reason));
    }

    void escapeTimeAgrees_data()
    {
        QTest::addColumn<GeneratorSettings>("settings");
        QTest::addColumn<int>("percent");

        QTest::newRow("mandelbrot square") << view("mandelbrot", 128, 128) << 98;
        QTest::newRow("mandelbrot wide") << view("mandelbrot", 160, 90) << 98;
        QTest::newRow("mandelbrot tall") << view("mandelbrot", 70, 150) << 98;
        QTest::newRow("julia") << view("julia", 128, 128) << 98;
        QTest::newRow("ifs") << view("ifs", 100, 60) << 98;
        QTest::newRow("plasma") << view("plasma", 60, 100) << 98;
        GeneratorSettings smooth = view("mandelbrot", 128, 128);
        smooth.smooth = true;
        QTest::newRow("mandelbrot smooth") << smooth << 98;
        smooth = view("julia", 128, 128);
        smooth.smooth = true;
        QTest::newRow("julia smooth") << smooth << 98;

        // Deep views in double precision: the same counts at every pixel.
        for (bool smoothCount : {false, true}) {
            const char *suffix = smoothCount ? " smooth" : "";
            GeneratorSettings s = deep("mandelbrot", 5000, 5000, 0.90113, 0, 30000);
            s.precision = GeneratorSettings::Double;
            s.smooth = smoothCount;
            QTest::addRow("mandelbrot zoom 30000 double%s", suffix) << s << 100;
            s = deep("mandelbrot", 5000, 1000, -0.37216, -0.842, 6000);
            s.precision = GeneratorSettings::Double;
            s.smooth = smoothCount;
            QTest::addRow("mandelbrot zoom 6000 double%s", suffix) << s << 100;
            s = deep("julia", 1000, 100, -0.11568, -0.20234, 1102.22, 0.0125, 0.76875);
            s.precision = GeneratorSettings::Double;
            s.smooth = smoothCount;
            QTest::addRow("julia zoom 1102 double%s", suffix) << s << 100;
        }
    }

    void escapeTimeAgrees()
    {
        QFETCH(GeneratorSettings, settings);
        QFETCH(int, percent);

        const GeneratorRaster raster = OffscreenRenderer::render(settings, grayscalePalette());
        QCOMPARE(raster.width, settings.xsize);
        QCOMPARE(raster.height, settings.ysize);
        std::vector<float> cpu;
        QVERIFY(FractalEvaluator::values(settings, GeneratorGrid{settings.xsize, settings.ysize}, cpu));
        QCOMPARE(raster.values.size(), cpu.size());

        int close = 0, nonZero = 0;
        for (size_t i = 0; i < cpu.size(); ++i) {
            const float expected = GeneratorOutput::readBack(cpu[i]);
            close += std::abs(raster.values[i] - expected) <= 1.0f / 65536.0f;
            nonZero += expected != 0.0f;
        }
        const int pixels = int(cpu.size());
        QVERIFY2(close * 100 >= percent * pixels, qPrintable(QStringLiteral("%1 of %2").arg(close).arg(pixels)));
        // The picture is not trivially empty.
        QVERIFY(nonZero > pixels / 10);
    }

    void apollonianAgrees_data()
    {
        QTest::addColumn<GeneratorSettings>("settings");
        QTest::newRow("defaults") << view("apollonian", 128, 128);
        GeneratorSettings s = view("apollonian", 150, 100);
        s.xoff = 0.1;
        s.yoff = 0.2;
        s.zoom = 1.7;
        QTest::newRow("moved and zoomed, wide") << s;
    }

    void apollonianAgrees()
    {
        QFETCH(GeneratorSettings, settings);
        const GeneratorRaster raster = OffscreenRenderer::render(settings, grayscalePalette());
        const QImage cpu = FractalEvaluator::apollonian(settings, GeneratorGrid{settings.xsize, settings.ysize});
        QCOMPARE(raster.colours.size(), cpu.size());
        int same = 0, transparent = 0;
        for (int y = 0; y < cpu.height(); ++y)
            for (int x = 0; x < cpu.width(); ++x) {
                const QRgb a = raster.colours.pixel(x, y), b = cpu.pixel(x, y);
                same += a == b;
                transparent += qAlpha(b) == 0;
            }
        const int pixels = cpu.width() * cpu.height();
        QVERIFY2(same * 100 >= 98 * pixels, qPrintable(QStringLiteral("%1 of %2").arg(same).arg(pixels)));
        QVERIFY(transparent < pixels);
    }
};

QTEST_MAIN(TestFractalShaders)
#include "tst_fractalshaders.moc"
