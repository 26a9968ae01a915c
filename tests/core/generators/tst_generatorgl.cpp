// The drawing every generator shares, on a real OpenGL context: the quad samples the unit square
// exactly as GeneratorGrid says for square, wide and tall pictures, a tiled render equals an
// undivided one, and the preview shows a one-colour palette as one colour.

#include "generators/generatorgl.h"
#include "generators/generatorgrid.h"
#include "generators/generatoroutput.h"
#include "generators/offscreenrenderer.h"
#include "document/imagelimits.h"
#include "palette/standardpalettes.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QtTest>

#include <cstring>

namespace {

const QString coordinateShader = QStringLiteral(":test/shader/coordinate.glsl");

GeneratorRaster coordinates(int w, int h, int which, int tileSize = 0)
{
    GeneratorSettings s = GeneratorSettings::defaults(QStringLiteral("noise"));
    s.xsize = w;
    s.ysize = h;
    s.iterations = which;
    OffscreenRenderer::Options options;
    options.fragmentShader = coordinateShader;
    options.tileSize = tileSize;
    return OffscreenRenderer::render(s, grayscalePalette(), options);
}

// The preview of the coordinate shader through palette, drawn as the preview widget draws it.
QImage preview(const Palette<uint> &palette, int w, int h)
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface))
        return {};
    QImage image;
    {
        QOpenGLFramebufferObject fbo(w, h);
        fbo.bind();
        context.functions()->glViewport(0, 0, w, h);
        GeneratorGL gl;
        gl.setPalette(palette);
        GeneratorSettings s = GeneratorSettings::defaults(QStringLiteral("noise"));
        s.iterations = 0; // u
        if (gl.drawWith(coordinateShader, s, false, 1, 1))
            image = fbo.toImage();
        gl.release();
    }
    context.doneCurrent();
    return image;
}

} // namespace

class TestGeneratorGL : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString reason;
        const bool available = OffscreenRenderer::available(&reason);
        if (qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL")) {
            QVERIFY(!available);
            QVERIFY(!reason.isEmpty());
        } else {
            QVERIFY2(available, qPrintable(reason));
        }
    }

    // Without a usable OpenGL a render says so instead of crashing.
    void renderWithoutOpenGLFails()
    {
        if (!qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL"))
            return; // the registered run without a display checks this
        try {
            coordinates(8, 8, 0);
            QFAIL("rendered");
        } catch (const DescribedException &e) {
            QCOMPARE(e.title(), QString("Cannot render the image"));
            QVERIFY(e.message().contains("OpenGL"));
        }
    }

    void aspect_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("which");
        for (int which : {0, 1}) {
            const char *c = which == 0 ? "u" : "v";
            QTest::addRow("square %s", c) << 64 << 64 << which;
            QTest::addRow("wide %s", c) << 150 << 40 << which;
            QTest::addRow("tall %s", c) << 30 << 110 << which;
        }
    }
    void aspect()
    {
        if (qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL"))
            return;
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, which);
        const GeneratorRaster r = coordinates(width, height, which);
        QCOMPARE(r.width, width);
        QCOMPARE(r.height, height);
        QVERIFY(r.colours.isNull());
        const GeneratorGrid grid{width, height};
        int close = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                double u, v;
                grid.texCoord(x, y, u, v);
                const double expected = GeneratorOutput::readBack(float(which == 0 ? u : v));
                const double got = r.values[size_t(y) * size_t(width) + size_t(x)];
                // Interpolation may land a hair beside the exact coordinate; never a pixel away.
                QVERIFY2(std::abs(got - expected) <= 3.0 / 65536,
                         qPrintable(QString("(%1, %2): %3 instead of %4").arg(x).arg(y).arg(got).arg(expected)));
                close += std::abs(got - expected) <= 1.0 / 65536;
            }
        QVERIFY(close >= width * height * 98 / 100);
    }

    // The coordinates themselves, bit for bit: a square picture samples exactly the float
    // coordinates of GeneratorGrid, which the processor uses; the stretch of a wide or tall one
    // costs the interpolation a few units in the last place. Double precision at the deepest
    // zooms resolves even those.
    void coordinateBits_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("maxUlps");
        QTest::newRow("square") << 64 << 64 << 0;
        QTest::newRow("tall") << 40 << 64 << 8;
        QTest::newRow("wide") << 96 << 40 << 8;
    }
    void coordinateBits()
    {
        if (qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL"))
            return;
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, maxUlps);
        // The gasket's settings, so that the read-back keeps all four bytes of each pixel, and a
        // context of version 4.0, which can write a float's bits.
        GeneratorSettings s = GeneratorSettings::defaults(QStringLiteral("apollonian"));
        s.precision = GeneratorSettings::Double;
        s.xsize = width;
        s.ysize = height;
        OffscreenRenderer::Options options;
        options.fragmentShader = QStringLiteral(":test/shader/coordinatebits.glsl");
        const GeneratorGrid grid{width, height};
        for (int which : {0, 1}) {
            s.iterations = which;
            const GeneratorRaster r = OffscreenRenderer::render(s, grayscalePalette(), options);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const QRgb p = r.colours.pixel(x, y);
                    const uint32_t bits = (uint32_t(qRed(p)) << 24) | (uint32_t(qGreen(p)) << 16)
                                          | (uint32_t(qBlue(p)) << 8) | uint32_t(qAlpha(p));
                    float u, v;
                    grid.texCoord(x, y, u, v);
                    const float expected = which == 0 ? u : v;
                    uint32_t expectedBits;
                    std::memcpy(&expectedBits, &expected, 4);
                    const qint64 ulps = std::abs(qint64(bits) - qint64(expectedBits));
                    QVERIFY2(ulps <= maxUlps, qPrintable(QString("(%1, %2): %3 units apart").arg(x).arg(y).arg(ulps)));
                }
        }
    }

    void tilesGiveTheSamePixels()
    {
        if (qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL"))
            return;
        for (int which : {0, 1}) {
            const GeneratorRaster whole = coordinates(100, 70, which);
            const GeneratorRaster tiled = coordinates(100, 70, which, 32);
            QCOMPARE(tiled.values.size(), whole.values.size());
            for (size_t i = 0; i < whole.values.size(); ++i)
                QVERIFY2(std::abs(tiled.values[i] - whole.values[i]) <= 1.0f / 65536,
                         qPrintable(QString("pixel %1: %2 / %3").arg(i).arg(tiled.values[i]).arg(whole.values[i])));
        }
    }

    void oneColourPaletteGivesAUniformPreview()
    {
        if (qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL"))
            return;
        Palette<uint> one;
        one.append(RGBAColor<uint>(0x1200, 0x8000, 0xff00, 0xff00));
        const QImage single = preview(one, 40, 30);
        QVERIFY(!single.isNull());
        for (int y = 0; y < single.height(); ++y)
            for (int x = 0; x < single.width(); ++x)
                QCOMPARE(single.pixel(x, y), qRgba(0x12, 0x80, 0xff, 0xff));
        // The same drawing through the grayscale palette runs from dark to light, entry by entry.
        const QImage ramp = preview(grayscalePalette(), 256, 4);
        QCOMPARE(qRed(ramp.pixel(0, 0)), 0);
        QCOMPARE(qRed(ramp.pixel(128, 0)), 128);
        QCOMPARE(qRed(ramp.pixel(255, 3)), 255);
    }

    void tooLargeIsRefused()
    {
        GeneratorSettings s = GeneratorSettings::defaults(QStringLiteral("noise"));
        s.xsize = 262144;
        s.ysize = 1024;
        try {
            OffscreenRenderer::render(s, grayscalePalette());
            QFAIL("rendered");
        } catch (const DescribedException &e) {
            QCOMPARE(e.message(), ImageLimits::tooLarge(262144, 1024));
        }
    }

    void aShaderThatDoesNotBuildSaysSo()
    {
        if (qEnvironmentVariableIsSet("CHROMAXIS_EXPECT_NO_OPENGL"))
            return;
        GeneratorSettings s = GeneratorSettings::defaults(QStringLiteral("noise"));
        OffscreenRenderer::Options options;
        options.fragmentShader = QStringLiteral(":test/shader/missing.glsl");
        QVERIFY_EXCEPTION_THROWN(OffscreenRenderer::render(s, grayscalePalette(), options),
                                 OffscreenRenderer::ProgramFailure);
    }
};

QTEST_MAIN(TestGeneratorGL)
#include "tst_generatorgl.moc"
