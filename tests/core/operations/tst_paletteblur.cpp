#include "spaces/colorspace.h"
#include "operationtesting.h"
#include "operations/paletteblur.h"

#include <cmath>

namespace {

BlurSettings blurOf(int mode, int method, std::array<int, 4> radii, bool selectedOnly = false,
                    bool wrap = false)
{
    BlurSettings s;
    s.mode = mode;
    s.method = method;
    s.radii = radii;
    s.selectedOnly = selectedOnly;
    s.wrap = wrap;
    return s;
}

// Every entry taken into the space and straight back, as the blur returns entries it leaves alone.
Entries roundTrip(const Palette<uint> &p, int mode)
{
    return spaceToColour(colourToSpace(p, mode), mode);
}

} // namespace

class TestPaletteBlur : public QObject
{
    Q_OBJECT
private slots:
    void kernel_data();
    void kernel();
    void zeroRadiiRoundTrip_data();
    void zeroRadiiRoundTrip();
    void runningMean();
    void wrapChangesNothing();
    void selectedOnlyReadsUnblurredNeighbours();
    void negativeMeansClampAtZero();
    void gaussWeightsTheCentre();
    void randomisedInvariants();
};

void TestPaletteBlur::kernel_data()
{
    QTest::addColumn<int>("radius");
    QTest::addColumn<int>("method");
    for (const int r : {-1, 1, 2, 5, 20})
        for (const int m : {0, 1})
            QTest::addRow("r %d method %d", r, m) << r << m;
}

void TestPaletteBlur::kernel()
{
    QFETCH(int, radius);
    QFETCH(int, method);
    const std::vector<double> w = PaletteBlur::kernel(radius, method);
    if (radius < 0) {
        QVERIFY(w.empty());
        return;
    }
    QCOMPARE(int(w.size()), 2 * radius + 1);
    for (int j = 0; j < radius; ++j)
        QCOMPARE(w[size_t(j)], w[w.size() - 1 - size_t(j)]);
    if (method == BlurSettings::RunningMean) {
        for (const double x : w)
            QCOMPARE(x, 1.0);
        return;
    }
    // The centre is the normal density's peak; the edge sits at x = 3 / (r + 1).
    QVERIFY(std::abs(w[size_t(radius)] - 1.0 / std::sqrt(2.0 * 3.14159265358979)) < 1e-12);
    const double edge = 3.0 / (radius + 1);
    QVERIFY(std::abs(w[0] / w[size_t(radius)] - std::exp(-0.5 * edge * edge)) < 1e-12);
}

void TestPaletteBlur::zeroRadiiRoundTrip_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode < ColorSpaceCount; ++mode)
        QTest::newRow(colorSpaceTable()[size_t(mode)].name.toLatin1()) << mode;
}

void TestPaletteBlur::zeroRadiiRoundTrip()
{
    QFETCH(int, mode);
    QRandomGenerator rng(99);
    const Palette<uint> in = randomPalette(rng, 50);
    const Palette<uint> out = PaletteBlur::blur(in, {}, blurOf(mode, 1, {0, 0, 0, 0}));
    QCOMPARE(out.entries(), roundTrip(in, mode));
    QCOMPARE(out.property(PaletteName), in.property(PaletteName));
}

void TestPaletteBlur::runningMean()
{
    // One component: 0, 65535, 0 with radius 1. The middle averages three, the ends two.
    const Palette<uint> in = paletteOf({{0, 7, 7, 1}, {65535, 7, 7, 2}, {0, 7, 7, 3}});
    const Palette<uint> out = PaletteBlur::blur(in, {}, blurOf(0, 0, {1, 0, 0, 0}));
    QCOMPARE(out.entries(), Entries({{32767, 7, 7, 65535}, {21845, 7, 7, 65535}, {32767, 7, 7, 65535}}));
}

void TestPaletteBlur::wrapChangesNothing()
{
    QRandomGenerator rng(5);
    const Palette<uint> in = randomPalette(rng, 40);
    for (const int method : {0, 1}) {
        const Palette<uint> off = PaletteBlur::blur(in, {}, blurOf(2, method, {3, 1, 4, 1}, false, false));
        const Palette<uint> on = PaletteBlur::blur(in, {}, blurOf(2, method, {3, 1, 4, 1}, false, true));
        QCOMPARE(on.entries(), off.entries());
    }
    // The ends skip the missing neighbours instead of wrapping: the first entry of 0, 0, 0, 65535
    // stays black.
    const Palette<uint> edge = paletteOf({{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {65535, 0, 0, 0}});
    QCOMPARE(PaletteBlur::blur(edge, {}, blurOf(0, 0, {1, 0, 0, 0}, false, true))[0], Colour(0, 0, 0, 65535));
}

void TestPaletteBlur::selectedOnlyReadsUnblurredNeighbours()
{
    Palette<uint> in;
    for (uint i = 0; i < 9; ++i)
        in.append({i * 6000, 65535 - i * 6000, 100, 4294836225u});
    const Palette<uint> out = PaletteBlur::blur(in, {3, 4, 5}, blurOf(0, 0, {1, 1, 1, 1}, true));
    const Entries trip = roundTrip(in, 0);
    for (const int i : {0, 1, 2, 6, 7, 8})
        QCOMPARE(out[i], trip[size_t(i)]);
    // Entry 3 averages entries 2, 3 and 4 as they were: (12000 + 18000 + 24000) / 3, which as a
    // mean of fractions of 65535 lands a hair below 18000 and truncates to 17999.
    QCOMPARE(out[3].r, 17999u);
    QCOMPARE(out[4].r, 24000u);
    QCOMPARE(out[5].g, 65535u - 30000u);
    // Without the box the unselected entries are blurred too.
    QVERIFY(PaletteBlur::blur(in, {3, 4, 5}, blurOf(0, 0, {1, 1, 1, 1}, false))[0] != trip[0]);
}

void TestPaletteBlur::negativeMeansClampAtZero()
{
    // Green has a negative "a" in Lab. Blurring three equal greens leaves every mean as it was,
    // except that a blurred component is clamped below at 0.
    const Colour green(0, 40000, 0, 65535);
    const Palette<uint> in = paletteOf(Entries(3, green));
    const SpaceComponents lab = colourToSpace(green, SpaceLab);
    QVERIFY(lab[1] < 0.0);
    const Palette<uint> lightness = PaletteBlur::blur(in, {}, blurOf(SpaceLab, 0, {1, 0, 0, 0}));
    QCOMPARE(lightness[1], spaceToColour(lab, SpaceLab));
    SpaceComponents clamped = lab;
    clamped[1] = 0.0;
    const Palette<uint> a = PaletteBlur::blur(in, {}, blurOf(SpaceLab, 0, {0, 1, 0, 0}));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(a[i], spaceToColour(clamped, SpaceLab));
    QVERIFY(a[1] != lightness[1]);
}

void TestPaletteBlur::gaussWeightsTheCentre()
{
    // A single bright entry spreads less with the Gauss kernel than with the running mean.
    Palette<uint> in = paletteOf(Entries(7, Colour(0, 0, 0, 65535)));
    in[3] = Colour(65535, 0, 0, 65535);
    const Palette<uint> mean = PaletteBlur::blur(in, {}, blurOf(0, 0, {2, 0, 0, 0}));
    const Palette<uint> gauss = PaletteBlur::blur(in, {}, blurOf(0, 1, {2, 0, 0, 0}));
    QCOMPARE(mean[3].r, 13107u); // 65535 / 5
    QVERIFY(gauss[3].r > mean[3].r);
    QVERIFY(gauss[1].r < mean[1].r);
    QCOMPARE(gauss[2].r, gauss[4].r);
    QCOMPARE(gauss[0].r, 0u);
}

void TestPaletteBlur::randomisedInvariants()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        for (int round = 0; round < 25; ++round) {
            const int size = randomIn(rng, 0, 200);
            const Palette<uint> in = randomPalette(rng, size);
            const std::set<int> selection = randomSelection(rng, size);
            const bool selectedOnly = rng.bounded(2) == 1;
            const auto eligible = [&](int i) {
                return !selectedOnly || selection.empty() || selection.count(i);
            };
            const int mode = randomIn(rng, 0, ColorSpaceCount - 1);
            const std::array<int, 4> radii{randomIn(rng, 0, 6), randomIn(rng, 0, 6), randomIn(rng, 0, 6),
                                           randomIn(rng, 0, 6)};
            const Palette<uint> out =
                PaletteBlur::blur(in, selection, blurOf(mode, randomIn(rng, 0, 1), radii, selectedOnly));
            QCOMPARE(out.size(), size);
            const Entries trip = roundTrip(in, mode);
            for (int i = 0; i < size; ++i)
                if (!eligible(i))
                    QCOMPARE(out[i], trip[size_t(i)]);

            // In RGB a weighted mean of a channel stays within the neighbourhood's smallest and
            // largest value.
            const Palette<uint> rgb = PaletteBlur::blur(in, {}, blurOf(0, randomIn(rng, 0, 1), radii));
            for (int i = 0; i < size; ++i) {
                const int r = radii[0];
                uint lo = 65535, hi = 0;
                for (int j = qMax(0, i - r); j <= qMin(size - 1, i + r); ++j) {
                    lo = qMin(lo, in[j].r);
                    hi = qMax(hi, in[j].r);
                }
                QVERIFY2(rgb[i].r + 1 >= lo && rgb[i].r <= hi, QByteArray::number(seed));
                QCOMPARE(rgb[i].a, 65535u);
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestPaletteBlur)
#include "tst_paletteblur.moc"
