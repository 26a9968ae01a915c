// The two renderers of every generator agree: the shaders drawn off-screen and read back, and the
// processor's evaluation of the same formulas passed through the same encoding. Escape boundaries
// may fall on either side of a pixel, so agreement means 98% of the pixels within one step of the
// 16-bit encoding. Also the edge cases only a real context shows: the gasket ignores the palette
// and the third noise coordinate moves only the 3D methods.

#include "generators/generatorgl.h"
#include "generators/imagegenerator.h"
#include "generators/offscreenrenderer.h"
#include "palette/standardpalettes.h"
#include "storage/settingstext.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QtTest>

Q_DECLARE_METATYPE(GeneratorSettings)

namespace {

GeneratorSettings preset(const QString &name, int number)
{
    return GeneratorSettings::fromPairs(name, SettingsText::readFile(SettingsText::presetPath(name, number), name));
}

GeneratorSettings sized(GeneratorSettings s, int w, int h)
{
    s.xsize = w;
    s.ysize = h;
    return s;
}

Palette<uint> rainbow()
{
    Palette<uint> p;
    for (int i = 0; i < 64; ++i)
        p.append(RGBAColor<uint>(uint(i * 4) << 8, uint(255 - i * 4) << 8, uint((i * 37) % 256) << 8, 0xff00));
    return p;
}

// The preview (gray 0) of settings through palette, drawn as the preview widget draws it.
QImage preview(const GeneratorSettings &s, const Palette<uint> &palette)
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface))
        return {};
    QImage image;
    {
        QOpenGLFramebufferObject fbo(s.xsize, s.ysize);
        fbo.bind();
        context.functions()->glViewport(0, 0, s.xsize, s.ysize);
        GeneratorGL gl;
        gl.setPalette(palette);
        if (gl.draw(s, false, 1, 1))
            image = fbo.toImage();
        gl.release();
    }
    context.doneCurrent();
    return image;
}

} // namespace

class TestGeneratorRender : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString reason;
        QVERIFY2(OffscreenRenderer::available(&reason), qPrintable(reason));
    }

    void openGLMatchesTheProcessor_data()
    {
        QTest::addColumn<GeneratorSettings>("settings");
        for (const QString &name : GeneratorSettings::names()) {
            QTest::addRow("%s defaults", qPrintable(name)) << sized(GeneratorSettings::defaults(name), 72, 48);
            // The Mandelbrot presets look so deep (zoom 750 and more, thousands of iterations)
            // that single precision is chaotic there: a driver that rounds one product
            // differently moves a third of the escapes. Their views are compared in double, on a
            // square picture, whose coordinates the rasteriser interpolates exactly (see
            // tst_generatorgl): at zoom 30000 double precision resolves the last bit of them.
            const bool deep = name == QLatin1String("mandelbrot");
            GeneratorSettings p = preset(name, deep ? 4 : 1);
            if (deep)
                p.precision = GeneratorSettings::Double;
            QTest::addRow("%s preset", qPrintable(name)) << (deep ? sized(p, 64, 64) : sized(p, 40, 64));
        }
        GeneratorSettings shallow = GeneratorSettings::defaults("mandelbrot");
        shallow.xoff = 0.75;
        shallow.yoff = -0.1;
        shallow.zoom = 12;
        shallow.iterations = 300;
        shallow.norm = 50;
        QTest::newRow("mandelbrot zoomed") << sized(shallow, 64, 64);
        for (int method = 0; method < 6; ++method) {
            GeneratorSettings s = preset("noise", 1);
            s.method = method;
            QTest::addRow("noise method %d", method) << sized(s, 64, 64);
        }
        for (int shape = 0; shape < 3; ++shape) {
            GeneratorSettings s = GeneratorSettings::defaults("gradient");
            s.method = shape;
            s.xoff = 0.1;
            s.yoff = -0.2;
            QTest::addRow("gradient shape %d", shape) << sized(s, 80, 50);
        }
        GeneratorSettings doubleDefaults = GeneratorSettings::defaults("mandelbrot");
        doubleDefaults.precision = GeneratorSettings::Double;
        QTest::newRow("mandelbrot in double") << sized(doubleDefaults, 64, 64);
        GeneratorSettings juliaDouble = preset("julia", 2);
        juliaDouble.precision = GeneratorSettings::Double;
        QTest::newRow("julia in double") << sized(juliaDouble, 48, 48);
        GeneratorSettings smooth = GeneratorSettings::defaults("mandelbrot");
        smooth.smooth = true;
        QTest::newRow("mandelbrot smooth") << sized(smooth, 64, 64);
        GeneratorSettings smoothJulia = GeneratorSettings::defaults("julia");
        smoothJulia.smooth = true;
        QTest::newRow("julia smooth") << sized(smoothJulia, 64, 40);
    }
    void openGLMatchesTheProcessor()
    {
        QFETCH(GeneratorSettings, settings);
        const Palette<uint> palette = grayscalePalette();
        const GeneratorRaster gl = ImageGenerator::render(settings, palette, ImageGenerator::Renderer::Gl);
        const GeneratorRaster cpu = ImageGenerator::render(settings, palette, ImageGenerator::Renderer::Cpu);
        QCOMPARE(gl.width, settings.xsize);
        QCOMPARE(gl.height, settings.ysize);
        QCOMPARE(cpu.values.size(), gl.values.size());
        QCOMPARE(gl.colours.isNull(), settings.usesPalette());
        QCOMPARE(cpu.colours.isNull(), settings.usesPalette());
        size_t close = 0;
        size_t firstFar = gl.values.size();
        for (size_t i = 0; i < gl.values.size(); ++i) {
            if (std::abs(double(gl.values[i]) - double(cpu.values[i])) <= 1.0 / 65536 + 1e-9)
                ++close;
            else if (firstFar == gl.values.size())
                firstFar = i;
        }
        const size_t n = gl.values.size();
        QVERIFY2(close * 100 >= n * 98,
                 qPrintable(QString("%1 of %2 pixels agree; first apart: pixel %3, %4 (OpenGL) / %5 (processor)")
                                .arg(close)
                                .arg(n)
                                .arg(firstFar)
                                .arg(firstFar < n ? gl.values[firstFar] : 0)
                                .arg(firstFar < n ? cpu.values[firstFar] : 0)));
        // Not a picture of one value, which any two renderers would agree on.
        const auto [lo, hi] = std::minmax_element(cpu.values.begin(), cpu.values.end());
        QVERIFY2(*hi > *lo, "a uniform picture");
    }

    // Where the driver cannot build the double-precision shaders, the processor computes the
    // same picture in double. Registered as a run of its own with an OpenGL held to 2.1.
    void doublePrecisionFallsBackToTheProcessor()
    {
        if (!qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_FP64"))
            return; // the main run renders double precision with the shaders
        GeneratorSettings s = sized(preset("julia", 2), 48, 32);
        s.precision = GeneratorSettings::Double;
        const GeneratorRaster gl = ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Gl);
        const GeneratorRaster cpu = ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Cpu);
        QCOMPARE(gl.values, cpu.values);
        // Single precision still draws with the shaders there.
        s.precision = GeneratorSettings::Single;
        QVERIFY(ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Gl).values != cpu.values);
    }

    // The gasket colours itself: neither its picture nor its preview follows the palette.
    void apollonianIgnoresThePalette()
    {
        const GeneratorSettings s = sized(GeneratorSettings::defaults("apollonian"), 64, 48);
        const GeneratorRaster gray = ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Gl);
        const GeneratorRaster coloured = ImageGenerator::render(s, rainbow(), ImageGenerator::Renderer::Gl);
        QCOMPARE(coloured.colours, gray.colours);
        const QImage a = preview(s, grayscalePalette());
        const QImage b = preview(s, rainbow());
        QVERIFY(!a.isNull());
        QCOMPARE(a, b);
        // The palette does reach a generator that uses it.
        const GeneratorSettings m = sized(GeneratorSettings::defaults("mandelbrot"), 64, 48);
        QVERIFY(preview(m, grayscalePalette()) != preview(m, rainbow()));
    }

    void oneColourPaletteGivesAUniformPreview()
    {
        Palette<uint> one;
        one.append(RGBAColor<uint>(0x4000, 0x8000, 0xc000, 0xff00));
        for (const QString &name : {QString("mandelbrot"), QString("noise"), QString("moiree")}) {
            const QImage image = preview(sized(GeneratorSettings::defaults(name), 50, 30), one);
            QVERIFY(!image.isNull());
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    QCOMPARE(image.pixel(x, y), qRgba(0x40, 0x80, 0xc0, 0xff));
        }
    }

    // The third coordinate of the noise moves the 3D methods only.
    void zoffMovesOnlyThe3DNoise()
    {
        for (int method = 0; method < 6; ++method) {
            GeneratorSettings s = sized(preset("noise", 1), 48, 48);
            s.method = method;
            s.zoff = 0;
            const GeneratorRaster a = ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Gl);
            s.zoff = 0.73;
            const GeneratorRaster b = ImageGenerator::render(s, grayscalePalette(), ImageGenerator::Renderer::Gl);
            const bool threeD = method % 2 == 1;
            QVERIFY2((a.values != b.values) == threeD, qPrintable(QString("method %1").arg(method)));
        }
    }
};

QTEST_MAIN(TestGeneratorRender)
#include "tst_generatorrender.moc"
