#include "operations/colorinterpolation.h"
#include "spaces/colorspace.h"
#include "operations/cosinepalette.h"
#include "operationtesting.h"
#include "operations/palettegenerators.h"
#include "palette/standardpalettes.h"

#include <cmath>

Q_DECLARE_METATYPE(std::set<int>)

namespace {

constexpr uint black = 0xFF000000u, white = 0xFFFFFFFFu;

ColorTick tick(int index, uint colour, int space = 0, int function = ColorTick::Linear)
{
    return {index, colour, space, function};
}

CosinePaletteSettings cosineOf(double a, double b, double c, double d, int size, bool keepAspect)
{
    CosinePaletteSettings s;
    for (auto &ch : s.channels)
        ch = {a, b, c, d};
    s.size = size;
    s.keepAspect = keepAspect;
    return s;
}

} // namespace

class TestPaletteGenerators : public QObject
{
    Q_OBJECT
private slots:
    void fixedGenerators();
    void interpolateSelected_data();
    void interpolateSelected();
    void invertAndShift_data();
    void invertAndShift();

    void interpolationSize_data();
    void interpolationSize();
    void interpolationBlackToWhite();
    void interpolationStartsFromTransparentBlack();
    void interpolationCoincidingTicks();
    void interpolationSigmoidIsSymmetric();
    void interpolationOtherFunctionHolds();
    void interpolationHueRunsStraight();
    void interpolationRandomised();

    void cosine_data();
    void cosine();
    void cosineWithoutAspectContinues();
    void cosineRandomised();
};

void TestPaletteGenerators::fixedGenerators()
{
    const Palette<uint> grey = grayscalePalette();
    QCOMPARE(grey.size(), 256);
    QCOMPARE(grey[255], Colour(65280, 65280, 65280, 65535));
    const Palette<uint> ext = PaletteGenerators::extendedGrayscale();
    QCOMPARE(ext.size(), 766);
    QCOMPARE(ext[0], Colour(0, 0, 0, 65280));
    QCOMPARE(ext[1], Colour(256, 0, 0, 65280));
    QCOMPARE(ext[2], Colour(256, 256, 0, 65280));
    QCOMPARE(ext[3], Colour(256, 256, 256, 65280));
    QCOMPARE(ext[765], Colour(65280, 65280, 65280, 65280));
    for (const int n : {256, 1024}) {
        const Palette<uint> hue = PaletteGenerators::hueRotation(n);
        QCOMPARE(hue.size(), n);
        QCOMPARE(hue[0], Colour(65535, 0, 0, 4294836225u));
        QCOMPARE(hue[n / 2], Colour(0, 65535, 65535, 4294836225u));
    }
}

void TestPaletteGenerators::interpolateSelected_data()
{
    QTest::addColumn<std::set<int>>("selection");
    QTest::addColumn<Entries>("expected");
    const Colour a(0, 0, 0, 0), b(65535, 65535, 65535, 65535), x(5, 6, 7, 8);
    QTest::newRow("quarter steps truncated") << std::set<int>{0, 4}
                                             << Entries{a,
                                                        {16383, 16383, 16383, 16383},
                                                        {32767, 32767, 32767, 32767},
                                                        {49151, 49151, 49151, 49151},
                                                        b};
    QTest::newRow("one selected") << std::set<int>{0} << Entries{a, x, x, x, b};
    QTest::newRow("adjacent pair") << std::set<int>{3, 4} << Entries{a, x, x, x, b};
    QTest::newRow("outside the span") << std::set<int>{0, 2} << Entries{a, {2, 3, 3, 4}, x, x, b};
}

void TestPaletteGenerators::interpolateSelected()
{
    QFETCH(std::set<int>, selection);
    QFETCH(Entries, expected);
    const Colour x(5, 6, 7, 8);
    const Palette<uint> in = paletteOf({{0, 0, 0, 0}, x, x, x, {65535, 65535, 65535, 65535}});
    QCOMPARE(PaletteGenerators::interpolateSelected(in, selection).entries(), expected);
}

void TestPaletteGenerators::invertAndShift_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("expected");
    QTest::newRow("by 1") << 1 << "BCDA";
    QTest::newRow("by -1") << -1 << "DABC";
    QTest::newRow("by 5") << 5 << "BCDA";
    QTest::newRow("by -9") << -9 << "DABC";
    QTest::newRow("by 0") << 0 << "ABCD";
}

void TestPaletteGenerators::invertAndShift()
{
    QFETCH(int, offset);
    QFETCH(QString, expected);
    Palette<uint> in;
    for (const char c : {'A', 'B', 'C', 'D'})
        in.append({uint(c), 0, 0, 0});
    const Palette<uint> out = PaletteGenerators::shiftOrder(in, offset);
    QString got;
    for (const Colour &c : out.entries())
        got += QChar(int(c.r));
    QCOMPARE(got, expected);
    const Palette<uint> one = paletteOf({{1, 2, 3, 4}});
    QCOMPARE(PaletteGenerators::invertOrder(one), one);
    QCOMPARE(PaletteGenerators::invertOrder(in)[0], in[3]);
}

void TestPaletteGenerators::interpolationSize_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("lastIndex");
    QTest::addColumn<int>("entries");
    QTest::newRow("256") << 256 << 255 << 256;
    QTest::newRow("1024") << 1024 << 255 << 1021;
    QTest::newRow("128") << 128 << 255 << 128;
    QTest::newRow("1") << 1 << 255 << 1;
    QTest::newRow("last tick at 128, size 100") << 100 << 128 << 51;
}

void TestPaletteGenerators::interpolationSize()
{
    QFETCH(int, size);
    QFETCH(int, lastIndex);
    QFETCH(int, entries);
    const Palette<uint> out =
        ColorInterpolation::generate({tick(0, black), tick(lastIndex, 0xFF123456u)}, size);
    QCOMPARE(out.size(), entries);
    // The last entry is always the last key colour itself.
    QCOMPARE(out[entries - 1], Colour(0x1200, 0x3400, 0x5600, 65535));
}

void TestPaletteGenerators::interpolationBlackToWhite()
{
    const Palette<uint> out = ColorInterpolation::generate({tick(0, black), tick(255, white)}, 256);
    QCOMPARE(out.size(), 256);
    for (int i = 0; i < 255; ++i) {
        // The shared linear mix in red, green and blue; the way back through RGB makes it opaque.
        Colour mix = PaletteGenerators::linearMix({0, 0, 0, 65535}, {65280, 65280, 65280, 65535}, i / 255.0);
        mix.a = 65535;
        QCOMPARE(out[i], mix);
    }
    QCOMPARE(out[128], Colour(128 * 256, 128 * 256, 128 * 256, 65535));
    QCOMPARE(out[255], Colour(65280, 65280, 65280, 65535));
    // No ticks at all: the initial transparent black alone.
    QCOMPARE(ColorInterpolation::generate({}, 256).entries(), Entries{Colour(0, 0, 0, 0)});
}

void TestPaletteGenerators::interpolationStartsFromTransparentBlack()
{
    // The first tick at 128: entries 0..127 run from (0, 0, 0, 0) to white, but every mixed entry
    // comes back through RGB as opaque. The tick's alpha byte is ignored.
    const Palette<uint> out = ColorInterpolation::generate({tick(128, 0x00FFFFFFu), tick(255, black)}, 256);
    QCOMPARE(out.size(), 256);
    QCOMPARE(out[0], Colour(0, 0, 0, 65535));
    QCOMPARE(out[64], Colour(32640, 32640, 32640, 65535));
    QCOMPARE(out[128], Colour(65280, 65280, 65280, 65535));
}

void TestPaletteGenerators::interpolationCoincidingTicks()
{
    // At size 128 the ticks at 0 and 1 both end at entry 0: the segment between them adds nothing,
    // so entry 0 is already the second tick's colour.
    const Palette<uint> out =
        ColorInterpolation::generate({tick(0, black), tick(1, 0xFFFF0000u), tick(255, 0xFF0000FFu)}, 128);
    QCOMPARE(out.size(), 128);
    QCOMPARE(out[0], Colour(65280, 0, 0, 65535));
    QCOMPARE(out[127], Colour(0, 0, 65280, 65535));
}

void TestPaletteGenerators::interpolationSigmoidIsSymmetric()
{
    const Palette<uint> out =
        ColorInterpolation::generate({tick(0, black, 0, ColorTick::Sigmoid), tick(255, white)}, 256);
    for (int i = 1; i < 255; ++i) {
        const uint sum = out[i].r + out[255 - i].r;
        // t(u) + t(1 - u) = 1; each side is truncated once, so the pair may lose up to 2.
        QVERIFY2(sum >= 65278 && sum <= 65280, QByteArray::number(i));
    }
    for (int k = 0; k <= 100; ++k) {
        const double u = k / 100.0;
        QVERIFY(std::abs(ColorInterpolation::ease(ColorTick::Sigmoid, u) +
                         ColorInterpolation::ease(ColorTick::Sigmoid, 1.0 - u) - 1.0) < 1e-12);
    }
    QCOMPARE(ColorInterpolation::ease(ColorTick::Sigmoid, 0.5), 0.5);
    // The easing is slower than linear at the start.
    QVERIFY(out[32].r < PaletteGenerators::linearMix({0, 0, 0, 0}, {65280, 0, 0, 0}, 32 / 255.0).r);
}

void TestPaletteGenerators::interpolationOtherFunctionHolds()
{
    // A function number other than 0 and 1 gives t = 0: the segment holds its start colour.
    const Palette<uint> out =
        ColorInterpolation::generate({tick(0, 0xFF102030u, 0, 7), tick(255, white)}, 256);
    for (int i = 0; i < 255; ++i)
        QCOMPARE(out[i], Colour(0x1000, 0x2000, 0x3000, 65535));
    QCOMPARE(out[255], Colour(65280, 65280, 65280, 65535));
}

void TestPaletteGenerators::interpolationHueRunsStraight()
{
    // Red (hue 0) to blue (hue 240) in HSV: the hue runs through 120 (green), not the short way
    // through magenta.
    const Palette<uint> out =
        ColorInterpolation::generate({tick(0, 0xFFFF0000u, SpaceHSV), tick(255, 0xFF0000FFu)}, 256);
    QVERIFY(out[128].g > out[128].r && out[128].g > out[128].b);
    QCOMPARE(out[0], spaceToColour(colourToSpace(Colour(65280, 0, 0, 65535), SpaceHSV), SpaceHSV));
}

void TestPaletteGenerators::interpolationRandomised()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        for (int round = 0; round < 30; ++round) {
            std::vector<ColorTick> ticks;
            const int count = randomIn(rng, 1, 8);
            for (int k = 0; k < count; ++k)
                ticks.push_back(
                    tick(randomIn(rng, 0, 255), rng.generate(), randomIn(rng, 0, 11), randomIn(rng, 0, 2)));
            std::stable_sort(ticks.begin(), ticks.end(),
                             [](const ColorTick &a, const ColorTick &b) { return a.index < b.index; });
            const int n = randomIn(rng, 1, 2000);
            const Palette<uint> out = ColorInterpolation::generate(ticks, n);
            QCOMPARE(out.size(), int(ticks.back().index * n / 256.0) + 1);
            for (const Colour &c : out.entries())
                QCOMPARE(c.a, 65535u);
            QCOMPARE(out[out.size() - 1], ticks.back().keyColour());
        }
    }
}

void TestPaletteGenerators::cosine_data()
{
    QTest::addColumn<double>("a");
    QTest::addColumn<double>("b");
    QTest::addColumn<double>("d");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("index");
    QTest::addColumn<uint>("expected");
    QTest::newRow("full at 0") << 0.5 << 0.5 << 0.0 << 256 << 0 << 65535u;
    QTest::newRow("black at n/2") << 0.5 << 0.5 << 0.0 << 256 << 128 << 0u;
    QTest::newRow("black at n/2 of 100") << 0.5 << 0.5 << 0.0 << 100 << 50 << 0u;
    QTest::newRow("quarter phase truncates") << 0.5 << 0.5 << 0.25 << 256 << 0 << 32767u;
    QTest::newRow("saturates above") << 1.0 << 1.0 << 0.0 << 16 << 0 << 65535u;
    QTest::newRow("saturates below") << -1.0 << 0.5 << 0.0 << 16 << 3 << 0u;
}

void TestPaletteGenerators::cosine()
{
    QFETCH(double, a);
    QFETCH(double, b);
    QFETCH(double, d);
    QFETCH(int, size);
    QFETCH(int, index);
    QFETCH(uint, expected);
    const Palette<uint> out = CosinePalette::generate(cosineOf(a, b, 1.0, d, size, true));
    QCOMPARE(out.size(), size);
    QCOMPARE(out[index], Colour(expected, expected, expected, 65535));
}

void TestPaletteGenerators::cosineWithoutAspectContinues()
{
    const Palette<uint> small = CosinePalette::generate(cosineOf(0.5, 0.5, 1.0, 0.1, 256, false));
    const Palette<uint> large = CosinePalette::generate(cosineOf(0.5, 0.5, 1.0, 0.1, 512, false));
    QCOMPARE(large.size(), 512);
    QCOMPARE(Entries(large.entries().begin(), large.entries().begin() + 256), small.entries());
    // t = i / 256 whatever the size, so one period later the curve repeats.
    QCOMPARE(large[256], large[0]);
    // With the aspect kept, a size of 512 stretches the same curve.
    const Palette<uint> kept = CosinePalette::generate(cosineOf(0.5, 0.5, 1.0, 0.1, 512, true));
    QCOMPARE(kept[2], small[1]);
    CosinePaletteSettings none = cosineOf(0.5, 0.5, 1.0, 0.0, 0, true);
    QVERIFY(CosinePalette::generate(none).isEmpty());
}

void TestPaletteGenerators::cosineRandomised()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        for (int round = 0; round < 30; ++round) {
            CosinePaletteSettings s;
            for (auto &ch : s.channels)
                ch = {rng.bounded(4.0) - 2.0, rng.bounded(4.0) - 2.0, rng.bounded(6.0) - 3.0,
                      rng.bounded(2.0) - 1.0};
            s.size = randomIn(rng, 1, 1500);
            s.keepAspect = rng.bounded(2) == 1;
            const Palette<uint> out = CosinePalette::generate(s);
            QCOMPARE(out.size(), s.size);
            for (int i = 0; i < out.size(); ++i) {
                const Colour &c = out[i];
                QVERIFY(c.r <= 65535 && c.g <= 65535 && c.b <= 65535);
                QCOMPARE(c.a, 65535u);
            }
            // Without an amplitude every entry is the offset, clamped.
            CosinePaletteSettings flat = s;
            for (auto &ch : flat.channels)
                ch.b = 0.0;
            const Palette<uint> level = CosinePalette::generate(flat);
            const double a = flat.channels[0].a;
            const uint expected = a <= 0.0 ? 0u : a >= 1.0 ? 65535u : uint(a * 65535.0);
            QCOMPARE(level[level.size() - 1].r, expected);
        }
    }
}

QTEST_GUILESS_MAIN(TestPaletteGenerators)
#include "tst_palettegenerators.moc"
