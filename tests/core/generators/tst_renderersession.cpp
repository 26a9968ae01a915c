// The off-screen renderer keeps its context, framebuffer and programs between renders; what it
// draws with them must be what a fresh context draws, bit for bit, whatever came before: the same
// render, another generator, another size or tiling, a shader that failed. A render also leaves
// the caller's current context as it found it.

#include "generators/offscreenrenderer.h"
#include "palette/standardpalettes.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QtTest>

#include <cstring>
#include <set>

namespace {

struct Render
{
    GeneratorSettings settings;
    int tileSize = 0;
    QString shader; // the settings' own when empty
};

Render render(const QString &name, int w, int h, int tileSize = 0)
{
    Render r;
    r.settings = GeneratorSettings::defaults(name);
    r.settings.xsize = w;
    r.settings.ysize = h;
    r.tileSize = tileSize;
    return r;
}

Render doublePrecision(Render r)
{
    r.settings.precision = GeneratorSettings::Double;
    return r;
}

GeneratorRaster run(const Render &r)
{
    OffscreenRenderer::Options options;
    options.tileSize = r.tileSize;
    options.fragmentShader = r.shader;
    return OffscreenRenderer::render(r.settings, grayscalePalette(), options);
}

} // namespace

Q_DECLARE_METATYPE(Render)

class TestRendererSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString reason;
        QVERIFY2(OffscreenRenderer::available(&reason), qPrintable(reason));
    }

    void keptSessionDrawsAsAFreshOne_data()
    {
        QTest::addColumn<QList<Render>>("before");
        QTest::addColumn<Render>("target");
        const Render mandelbrot = render("mandelbrot", 64, 48);
        const Render julia = render("julia", 64, 48);
        Render missing = render("noise", 16, 16);
        missing.shader = QStringLiteral(":res/shader/missing.glsl");
        QTest::newRow("the same again") << QList<Render>{mandelbrot} << mandelbrot;
        QTest::newRow("three times") << QList<Render>{mandelbrot, mandelbrot} << mandelbrot;
        QTest::newRow("after another generator") << QList<Render>{julia} << mandelbrot;
        QTest::newRow("back to the first generator") << QList<Render>{mandelbrot, julia} << mandelbrot;
        QTest::newRow("after the double-precision shader") << QList<Render>{doublePrecision(mandelbrot)}
                                                           << mandelbrot;
        QTest::newRow("double precision after single")
            << QList<Render>{mandelbrot} << doublePrecision(mandelbrot);
        QTest::newRow("after a larger size") << QList<Render>{render("mandelbrot", 120, 90)} << mandelbrot;
        QTest::newRow("after a smaller size") << QList<Render>{render("mandelbrot", 20, 10)} << mandelbrot;
        QTest::newRow("after a tall size") << QList<Render>{render("julia", 30, 70)} << mandelbrot;
        QTest::newRow("untiled after tiled") << QList<Render>{render("mandelbrot", 64, 48, 24)} << mandelbrot;
        QTest::newRow("tiled after untiled") << QList<Render>{mandelbrot} << render("mandelbrot", 64, 48, 24);
        QTest::newRow("gasket after noise") << QList<Render>{render("noise", 50, 50)} << render("apollonian", 50, 50);
        QTest::newRow("noise after gasket") << QList<Render>{render("apollonian", 50, 50)} << render("noise", 50, 50);
        QTest::newRow("after a shader that does not build") << QList<Render>{missing} << mandelbrot;
    }
    void keptSessionDrawsAsAFreshOne()
    {
        QFETCH(QList<Render>, before);
        QFETCH(Render, target);
        OffscreenRenderer::release();
        const GeneratorRaster fresh = run(target);
        // A picture of one value would hide a render that drew nothing.
        const std::set<float> values(fresh.values.begin(), fresh.values.end());
        QVERIFY2(values.size() > 2, qPrintable(QString("%1 values").arg(values.size())));

        OffscreenRenderer::release();
        for (const Render &r : before) {
            try {
                run(r);
            } catch (const OffscreenRenderer::ProgramFailure &) {
                QVERIFY(!r.shader.isEmpty());
            }
        }
        const GeneratorRaster kept = run(target);
        QCOMPARE(kept.width, fresh.width);
        QCOMPARE(kept.height, fresh.height);
        QCOMPARE(kept.values.size(), fresh.values.size());
        for (size_t i = 0; i < fresh.values.size(); ++i) {
            if (std::memcmp(&kept.values[i], &fresh.values[i], sizeof(float)) != 0)
                QFAIL(qPrintable(QString("pixel (%1, %2): %3 instead of %4")
                                     .arg(int(i % size_t(fresh.width)))
                                     .arg(int(i / size_t(fresh.width)))
                                     .arg(double(kept.values[i]), 0, 'g', 9)
                                     .arg(double(fresh.values[i]), 0, 'g', 9)));
        }
        QCOMPARE(kept.colours, fresh.colours);
    }

    // The preview draws in its own context between renders: a render must not leave its context
    // current in the preview's place, nor make one current where none was.
    void callersContextStaysCurrent()
    {
        QOffscreenSurface surface;
        surface.create();
        QOpenGLContext context;
        QVERIFY(context.create());
        QVERIFY(context.makeCurrent(&surface));
        const Render r = render("julia", 32, 32);
        run(r);
        QCOMPARE(QOpenGLContext::currentContext(), &context);
        QCOMPARE(context.surface(), &surface);
        OffscreenRenderer::release();
        QCOMPARE(QOpenGLContext::currentContext(), &context);
        run(r); // a new session, made while the caller's context is current
        QCOMPARE(QOpenGLContext::currentContext(), &context);
        context.doneCurrent();

        run(r);
        QCOMPARE(QOpenGLContext::currentContext(), nullptr);
        OffscreenRenderer::release();
        QCOMPARE(QOpenGLContext::currentContext(), nullptr);
    }
};

QTEST_MAIN(TestRendererSession)
#include "tst_renderersession.moc"
