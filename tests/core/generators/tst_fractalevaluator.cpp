#include "generators/fractalevaluator.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <set>

namespace {

GeneratorSettings escapeTime(const QString &name, int iterations, double norm, double xoff, double yoff,
                             double zoom, double cr = -0.6, double ci = 0.6)
{
    GeneratorSettings s;
    s.name = name;
    s.iterations = iterations;
    s.norm = norm;
    s.xoff = xoff;
    s.yoff = yoff;
    s.zoom = zoom;
    s.cr = cr;
    s.ci = ci;
    return s;
}

float scalarAt(const GeneratorSettings &s, float u, float v)
{
    return s.name == QLatin1String("mandelbrot") ? FractalEvaluator::mandelbrotAt(s, u, v)
                                                 : FractalEvaluator::juliaAt(s, u, v);
}

std::vector<float> render(const GeneratorSettings &s, int w, int h)
{
    std::vector<float> out;
    const bool finished = FractalEvaluator::values(s, GeneratorGrid{w, h}, out);
    if (!finished)
        qWarning("the evaluation did not finish");
    return out;
}

uint32_t bits(float f)
{
    uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return b;
}

} // namespace

Q_DECLARE_METATYPE(GeneratorSettings)

class TestFractalEvaluator : public QObject
{
    Q_OBJECT
private slots:
    void centreValue_data();
    void centreValue();
    void smoothValueAtAKnownEscape();
    void everyPathEqualsTheScalarFormula_data();
    void everyPathEqualsTheScalarFormula();
    void smoothValuesHaveNoBands();
    void doublePrecisionResolvesTheDeepPreset();
    void progressReportsAndCancels();
    void otherGeneratorsAreRefused();
    void apollonianColours_data();
    void apollonianColours();
    void apollonianPictureIsTheGridOfItsColours();
};

// A 1 x 1 grid samples the centre (0.5, 0.5): the Mandelbrot set then starts at c = (-0.5 - xoff,
// -yoff), the Julia set at z = (-xoff, -yoff), so the offsets pick points whose orbits are worked
// out by hand in the comments.
void TestFractalEvaluator::centreValue_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("iterations");
    QTest::addColumn<double>("norm");
    QTest::addColumn<double>("xoff");
    QTest::addColumn<double>("yoff");
    QTest::addColumn<double>("cr");
    QTest::addColumn<float>("expected");

    // c = 0 stays at 0.
    QTest::newRow("origin never escapes") << "mandelbrot" << 70 << 60.0 << -0.5 << 0.0 << 0.0 << 0.0f;
    // c = -2: -2, 2, 2, ... |z|^2 = 4 is not beyond 4.
    QTest::newRow("tip of the needle") << "mandelbrot" << 5000 << 60.0 << 1.5 << 0.0 << 0.0 << 0.0f;
    // c = 1: 1, 2 (|z|^2 = 4, not beyond), 5 escapes at i = 1.
    QTest::newRow("c = 1 escapes at 1") << "mandelbrot" << 70 << 60.0 << -1.5 << 0.0 << 0.0 << 1.0f / 60.0f;
    QTest::newRow("one iteration is not enough") << "mandelbrot" << 1 << 60.0 << -1.5 << 0.0 << 0.0 << 0.0f;
    QTest::newRow("two iterations are") << "mandelbrot" << 2 << 2.0 << -1.5 << 0.0 << 0.0 << 0.5f;
    // c = 0.5: 0.75, 1.0625, 1.62890625, 3.15332... (all exact in float) escapes at i = 3.
    QTest::newRow("c = 0.5 escapes at 3") << "mandelbrot" << 70 << 60.0 << -1.0 << 0.0 << 0.0 << 0.05f;
    QTest::newRow("3 / 3 wraps to 0") << "mandelbrot" << 70 << 3.0 << -1.0 << 0.0 << 0.0 << 0.0f;
    QTest::newRow("3 / 2 keeps the fraction") << "mandelbrot" << 70 << 2.0 << -1.0 << 0.0 << 0.0 << 0.5f;
    QTest::newRow("3 / 0.75 wraps to 0") << "mandelbrot" << 70 << 0.75 << -1.0 << 0.0 << 0.0 << 0.0f;
    // z = 0, c = 1: 1, 2, 5 escapes at i = 2.
    QTest::newRow("julia c = 1") << "julia" << 60 << 60.0 << 0.0 << 0.0 << 1.0 << 2.0f / 60.0f;
    QTest::newRow("ifs is the julia formula") << "ifs" << 60 << 60.0 << 0.0 << 0.0 << 1.0 << 2.0f / 60.0f;
    QTest::newRow("plasma is the julia formula") << "plasma" << 60 << 8.0 << 0.0 << 0.0 << 1.0 << 0.25f;
    // z = 1.5, c = 0: 2.25 escapes at i = 0.
    QTest::newRow("julia escapes at once") << "julia" << 60 << 60.0 << -1.5 << 0.0 << 0.0 << 0.0f;
    // z = 1, c = 0 stays at 1.
    QTest::newRow("julia fixed point") << "julia" << 5000 << 60.0 << -1.0 << 0.0 << 0.0 << 0.0f;
    // z = i, c = 0: -1, 1, 1, ... never escapes.
    QTest::newRow("julia cycle") << "julia" << 5000 << 60.0 << 0.0 << -1.0 << 0.0 << 0.0f;
    QTest::newRow("no iterations") << "mandelbrot" << 0 << 60.0 << -1.5 << 0.0 << 0.0 << 0.0f;
}

void TestFractalEvaluator::centreValue()
{
    QFETCH(QString, name);
    QFETCH(int, iterations);
    QFETCH(double, norm);
    QFETCH(double, xoff);
    QFETCH(double, yoff);
    QFETCH(double, cr);
    QFETCH(float, expected);

    for (int precision : {0, 1}) {
        GeneratorSettings s = escapeTime(name, iterations, norm, xoff, yoff, 1.0, cr, 0.0);
        s.precision = precision;
        QCOMPARE(scalarAt(s, 0.5f, 0.5f), expected);
        const std::vector<float> out = render(s, 1, 1);
        QCOMPARE(int(out.size()), 1);
        QCOMPARE(out[0], expected);
    }
}

void TestFractalEvaluator::smoothValueAtAKnownEscape()
{
    // c = 1 escapes at i = 1 to z = 5, carried on to 26 and 677 (beyond 256) at i = 3:
    // (3 + 1 - log2(ln 677)) / 60.
    GeneratorSettings s = escapeTime("mandelbrot", 70, 60, -1.5, 0, 1);
    s.smooth = true;
    const double expected = (4.0 - std::log2(std::log(677.0))) / 60.0;
    QVERIFY(std::abs(FractalEvaluator::mandelbrotAt(s, 0.5f, 0.5f) - expected) < 1e-6);
    QVERIFY(std::abs(render(s, 1, 1)[0] - expected) < 1e-6);
    // A point that never escapes stays 0.
    s.xoff = -0.5;
    QCOMPARE(render(s, 1, 1)[0], 0.0f);
}

void TestFractalEvaluator::everyPathEqualsTheScalarFormula_data()
{
    QTest::addColumn<GeneratorSettings>("settings");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");

    const GeneratorSettings m1 = escapeTime("mandelbrot", 5000, 1000, -0.37216, -0.842, 6000);
    const GeneratorSettings m2 = escapeTime("mandelbrot", 5000, 500, -0.92613, -0.34133, 750);
    const GeneratorSettings m4 = escapeTime("mandelbrot", 5000, 5000, 0.90113, 0, 30000);
    const GeneratorSettings whole = escapeTime("mandelbrot", 5000, 60, 0, 0, 1);
    const GeneratorSettings j1 = escapeTime("julia", 5000, 100, 0, 0, 0.9, -1.275, 0.19375);
    const GeneratorSettings j2 = escapeTime("julia", 1000, 100, -0.11568, -0.20234, 1102.22, 0.0125, 0.76875);
    const GeneratorSettings j10 = escapeTime("plasma", 10, 10, 0, 0, 0.75, -1.3625, 0);
    // Values below zero, counts past 2^23 cycles, and a cycle of no length (not finite: 0).
    const GeneratorSettings negative = escapeTime("mandelbrot", 100, -7, 0, 0, 1);
    const GeneratorSettings tiny = escapeTime("julia", 100, 1e-6, 0, 0, 1);
    const GeneratorSettings none = escapeTime("mandelbrot", 100, 0, 0, 0, 1);

    struct Size
    {
        const char *name;
        int w, h;
    };
    const Size sizes[] = {{"square", 48, 48}, {"wide", 61, 23}, {"tall", 19, 50}, {"1x1", 1, 1}, {"odd", 33, 17}};
    const struct
    {
        const char *name;
        GeneratorSettings s;
    } views[] = {{"mandelbrot 1", m1}, {"mandelbrot 2", m2}, {"mandelbrot 4", m4}, {"whole set", whole},
                 {"julia 1", j1},      {"julia 2", j2},      {"plasma 10", j10},  {"negative norm", negative},
                 {"tiny norm", tiny},  {"zero norm", none}};
    for (const auto &view : views)
        for (const Size &size : sizes)
            for (int variant = 0; variant < 4; ++variant) {
                GeneratorSettings s = view.s;
                s.precision = variant & 1;
                s.smooth = (variant & 2) != 0;
                QTest::addRow("%s %s%s%s", view.name, size.name, s.precision ? " double" : "",
                              s.smooth ? " smooth" : "")
                    << s << size.w << size.h;
            }
}

void TestFractalEvaluator::everyPathEqualsTheScalarFormula()
{
    QFETCH(GeneratorSettings, settings);
    QFETCH(int, width);
    QFETCH(int, height);

    const GeneratorGrid grid{width, height};
    const std::vector<float> out = render(settings, width, height);
    QCOMPARE(int(out.size()), width * height);
    int escaped = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float u, v;
            grid.texCoord(x, y, u, v);
            const float expected = scalarAt(settings, u, v);
            const float got = out[size_t(y) * size_t(width) + size_t(x)];
            if (bits(got) != bits(expected))
                QFAIL(qPrintable(QStringLiteral("pixel (%1, %2): %3 instead of %4")
                                     .arg(x)
                                     .arg(y)
                                     .arg(double(got), 0, 'g', 9)
                                     .arg(double(expected), 0, 'g', 9)));
            escaped += expected != 0.0f;
        }
    // Sanity of the views themselves: the large ones show both escaping and captive points.
    if (width * height > 100 && settings.iterations > 10 && settings.norm >= 1)
        QVERIFY(escaped > 0);
}

void TestFractalEvaluator::smoothValuesHaveNoBands()
{
    // Outside the set, c.x from 0.6 to 1.35: plain counts step by one band (1 / norm) at every
    // band edge, the smooth count runs on across them with steps far below one band.
    GeneratorSettings s = escapeTime("mandelbrot", 200, 20, -1.475, 0, 4);
    const int w = 200, h = 200;
    const std::vector<float> plain = render(s, w, h);
    s.smooth = true;
    const std::vector<float> smooth = render(s, w, h);

    auto cyclic = [](float a, float b) {
        const float d = std::abs(a - b);
        return std::min(d, 1.0f - d);
    };
    int edges = 0;
    float worstSmooth = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x + 1 < w; ++x) {
            const size_t i = size_t(y) * w + size_t(x);
            const float step = cyclic(plain[i], plain[i + 1]);
            QVERIFY(step < 1e-6f || std::abs(step - 1.0f / 20.0f) < 1e-6f);
            edges += step > 0.0f;
            worstSmooth = std::max(worstSmooth, cyclic(smooth[i], smooth[i + 1]));
        }
    QVERIFY2(edges > 300, qPrintable(QString::number(edges)));
    QVERIFY2(worstSmooth < 0.1f / 20.0f, qPrintable(QString::number(worstSmooth * 20.0f)));
}

void TestFractalEvaluator::doublePrecisionResolvesTheDeepPreset()
{
    // At zoom 30000 around c = -1.40113 neighbouring pixels of a 1024-wide picture lie less than
    // one float step apart: single precision repeats columns, double precision tells them apart.
    GeneratorSettings s = escapeTime("mandelbrot", 5000, 5000, 0.90113, 0, 30000);
    const int w = 1024, h = 8;
    auto measure = [&](int precision, size_t &distinct, int &repeats) {
        s.precision = precision;
        const std::vector<float> out = render(s, w, h);
        distinct = std::set<float>(out.begin(), out.end()).size();
        repeats = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x + 1 < w; ++x) {
                const size_t i = size_t(y) * w + size_t(x);
                repeats += out[i] != 0.0f && out[i] == out[i + 1];
            }
    };
    size_t singleValues, preciseValues;
    int singleRepeats, preciseRepeats;
    measure(GeneratorSettings::Single, singleValues, singleRepeats);
    measure(GeneratorSettings::Double, preciseValues, preciseRepeats);
    QVERIFY2(preciseValues > singleValues * 13 / 10,
             qPrintable(QStringLiteral("%1 against %2").arg(preciseValues).arg(singleValues)));
    QVERIFY2(singleRepeats > 5 * preciseRepeats + 100,
             qPrintable(QStringLiteral("%1 against %2").arg(singleRepeats).arg(preciseRepeats)));
}

void TestFractalEvaluator::progressReportsAndCancels()
{
    const GeneratorSettings s = escapeTime("julia", 500, 100, 0, 0, 0.9, -1.275, 0.19375);
    const GeneratorGrid grid{64, 64};
    std::vector<float> out;
    QList<int> seen;
    QVERIFY(FractalEvaluator::values(s, grid, out, [&](int percent) {
        seen << percent;
        return true;
    }));
    QVERIFY(!seen.isEmpty());
    QCOMPARE(seen.last(), 100);
    QVERIFY(std::is_sorted(seen.begin(), seen.end()));

    int calls = 0;
    QVERIFY(!FractalEvaluator::values(s, grid, out, [&](int) { return ++calls < 2; }));
}

void TestFractalEvaluator::otherGeneratorsAreRefused()
{
    std::vector<float> out{1.0f};
    GeneratorSettings s;
    s.name = "noise";
    QVERIFY(!FractalEvaluator::values(s, GeneratorGrid{4, 4}, out));
    QVERIFY(out.empty());
    s.name = "mandelbrot";
    QVERIFY(FractalEvaluator::values(s, GeneratorGrid{0, 4}, out));
    QVERIFY(out.empty());
}

// On a 1 x 1 grid the gasket starts at p = -z = (xoff, yoff).
void TestFractalEvaluator::apollonianColours_data()
{
    QTest::addColumn<double>("xoff");
    QTest::addColumn<double>("yoff");
    QTest::addColumn<uint>("expected");

    // (0, 0.5) lies in no circle and above the axis: n = 0, |p| = 0.5, s = 0.28,
    // arg = pi 0.28 / 20 - 3.74 = -3.69602; (sin(arg - 3.5 pi, arg - pi, arg - 3.6 pi) 0.4 + 0.5)^2.4
    // = (0.01228, 0.05101, 0.03308) x 255 = (3.13, 13.01, 8.44).
    QTest::newRow("outside every circle") << 0.0 << 0.5 << uint(qRgba(3, 13, 8, 255));
    // (0, -0.5) is reflected once to (0, 0.5): n = 1, s = 1.28, (0.00763, 0.07788, 0.02028) x 255.
    QTest::newRow("reflected once") << 0.0 << -0.5 << uint(qRgba(2, 20, 5, 255));
    // Just above the point where the right circle touches the axis the orbit bounces between the
    // circle and the axis, creeping away by about y^2 / 0.8 a round: far more than 50 steps.
    QTest::newRow("50 steps run out") << 0.8 << 0.001 << uint(qRgba(0, 0, 0, 0));
}

void TestFractalEvaluator::apollonianColours()
{
    QFETCH(double, xoff);
    QFETCH(double, yoff);
    QFETCH(uint, expected);
    GeneratorSettings s;
    s.name = "apollonian";
    s.xoff = xoff;
    s.yoff = yoff;
    const QImage picture = FractalEvaluator::apollonian(s, GeneratorGrid{1, 1});
    QCOMPARE(picture.size(), QSize(1, 1));
    QCOMPARE(picture.format(), QImage::Format_ARGB32);
    QCOMPARE(QString::number(picture.pixel(0, 0), 16), QString::number(expected, 16));
}

void TestFractalEvaluator::apollonianPictureIsTheGridOfItsColours()
{
    // Every pixel of a wide picture is the gasket at its grid coordinate: the single sample of a
    // 1 x 1 picture starts at z = -off, so offsets -z(u, v) move it onto pixel (x, y).
    GeneratorSettings s;
    s.name = "apollonian";
    s.zoom = 1.5;
    const GeneratorGrid grid{40, 24};
    const QImage picture = FractalEvaluator::apollonian(s, grid);
    QCOMPARE(picture.size(), QSize(40, 24));
    std::set<QRgb> colours;
    int transparent = 0;
    for (int y = 0; y < grid.height; ++y)
        for (int x = 0; x < grid.width; ++x) {
            float u, v;
            grid.texCoord(x, y, u, v);
            GeneratorSettings one = s;
            one.xoff = -double((2.0f * u - 1.0f) / 1.5f);
            one.yoff = -double((2.0f * v - 1.0f) / 1.5f);
            const QRgb c = picture.pixel(x, y);
            QCOMPARE(c, FractalEvaluator::apollonian(one, GeneratorGrid{1, 1}).pixel(0, 0));
            colours.insert(c);
            transparent += qAlpha(c) == 0;
        }
    QVERIFY(colours.size() > 20);
    QVERIFY(transparent < grid.width * grid.height / 2);
    QVERIFY(FractalEvaluator::apollonian(s, GeneratorGrid{0, 3}).isNull());
}

QTEST_GUILESS_MAIN(TestFractalEvaluator)
#include "tst_fractalevaluator.moc"
