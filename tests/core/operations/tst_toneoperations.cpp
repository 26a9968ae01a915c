#include "spaces/colorspace.h"
#include "operationtesting.h"
#include "operations/tonemanipulation.h"

namespace {

constexpr uint hsvAlpha = 4294836225u; // 65535 * 65535

BrightnessContrastSettings bc(int brightness, int contrast, bool selectedOnly = false)
{
    BrightnessContrastSettings s;
    s.brightness = brightness;
    s.contrast = contrast;
    s.selectedOnly = selectedOnly;
    return s;
}

HueSaturationValueSettings hsv(int hue, int saturation, int value, bool colorize, bool selectedOnly = false)
{
    HueSaturationValueSettings s;
    s.hue = hue;
    s.saturation = saturation;
    s.value = value;
    s.colorize = colorize;
    s.selectedOnly = selectedOnly;
    return s;
}

ComponentManipulationSettings components(int mode, std::array<int, 4> k, bool wrap, bool selectedOnly = false)
{
    ComponentManipulationSettings s;
    s.mode = mode;
    s.components = k;
    s.wrap = wrap;
    s.selectedOnly = selectedOnly;
    return s;
}

Colour single(const Palette<uint> &p)
{
    return p.size() == 1 ? p[0] : Colour(1, 2, 3, 4);
}

} // namespace

class TestToneOperations : public QObject
{
    Q_OBJECT
private slots:
    void brightnessContrast_data();
    void brightnessContrast();
    void hueSaturationValue_data();
    void hueSaturationValue();
    void componentManipulation_data();
    void componentManipulation();
    void componentBoundsApplyToEverySpace();
    void selectedOnly_data();
    void selectedOnly();
    void randomisedInvariants();
};

void TestToneOperations::brightnessContrast_data()
{
    QTest::addColumn<Colour>("input");
    QTest::addColumn<int>("brightness");
    QTest::addColumn<int>("contrast");
    QTest::addColumn<Colour>("expected");

    // Neutral settings keep the high bytes; every alpha of 255 or more leaves as 65280.
    QTest::newRow("neutral") << Colour(65535, 32768, 255, 65535) << 0 << 0 << Colour(65280, 32768, 0, 65280);
    QTest::newRow("neutral, odd alpha word") << Colour(0, 0, 0, hsvAlpha) << 0 << 0 << Colour(0, 0, 0, 65280);
    // The alpha is clamped to 255 before the shift, not taken by its high byte.
    QTest::newRow("alpha 100") << Colour(0, 0, 0, 100) << 0 << 0 << Colour(0, 0, 0, 25600);
    QTest::newRow("alpha 255") << Colour(0, 0, 0, 255) << 0 << 0 << Colour(0, 0, 0, 65280);
    QTest::newRow("alpha 0") << Colour(0, 0, 0, 0) << 0 << 0 << Colour(0, 0, 0, 0);
    // Contrast 255: F = 129.5, so below 128 goes to 0, 128 stays, above goes to 255.
    QTest::newRow("contrast 255") << Colour(127 << 8, 128 << 8, 129 << 8, 65535) << 0 << 255
                                  << Colour(0, 128 << 8, 65280, 65280);
    // 127: -129.5 + 128 + 10 = 8.5, truncated to 8.
    QTest::newRow("contrast 255, brightness 10")
        << Colour(127 << 8, 128 << 8, 129 << 8, 65535) << 10 << 255 << Colour(8 << 8, 138 << 8, 65280, 65280);
    QTest::newRow("brightness 255 whitens")
        << Colour(0, 1000, 65535, 65535) << 255 << 0 << Colour(65280, 65280, 65280, 65280);
    QTest::newRow("brightness -255 blackens")
        << Colour(65535, 40000, 128 << 8, 65535) << -255 << 0 << Colour(0, 0, 0, 65280);
    QTest::newRow("contrast -255 flattens")
        << Colour(0, 20000, 65535, 65535) << 0 << -255 << Colour(32768, 32768, 32768, 65280);
    // F = 259 * 355 / (255 * 159): 130 -> 132.5 -> 132, 150 -> 177.9 -> 177, 100 -> 64.5 -> 64.
    QTest::newRow("contrast 100 truncates") << Colour(130 << 8, 150 << 8, 100 << 8, 65535) << 0 << 100
                                            << Colour(132 << 8, 177 << 8, 64 << 8, 65280);
    QTest::newRow("contrast 100 clamps")
        << Colour(50 << 8, 200 << 8, 0, 65535) << 0 << 100 << Colour(0, 65280, 0, 65280);
    // Only the high byte counts: the low byte of a channel is dropped.
    QTest::newRow("low byte dropped")
        << Colour((100 << 8) | 255, 5, 0, 65535) << 1 << 0 << Colour(101 << 8, 1 << 8, 1 << 8, 65280);
}

void TestToneOperations::brightnessContrast()
{
    QFETCH(Colour, input);
    QFETCH(int, brightness);
    QFETCH(int, contrast);
    QFETCH(Colour, expected);
    const Palette<uint> out =
        ToneManipulation::brightnessContrast(paletteOf({input}), {}, bc(brightness, contrast));
    QCOMPARE(single(out), expected);
}

void TestToneOperations::hueSaturationValue_data()
{
    QTest::addColumn<Colour>("input");
    QTest::addColumn<int>("hue");
    QTest::addColumn<int>("saturation");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("colorize");
    QTest::addColumn<Colour>("expected");

    const Colour red(65535, 0, 0, 65535);
    // (0.8, 0.4, 0.4): hue 0, saturation 0.5, value 0.8.
    const Colour rose(52428, 26214, 26214, 0);
    QTest::newRow("red +180 is cyan") << red << 180 << 0 << 0 << false << Colour(0, 65535, 65535, hsvAlpha);
    QTest::newRow("red +120 is green") << red << 120 << 0 << 0 << false << Colour(0, 65535, 0, hsvAlpha);
    QTest::newRow("red -90 wraps to 270")
        << red << -90 << 0 << 0 << false << Colour(32767, 0, 65535, hsvAlpha);
    QTest::newRow("neutral keeps colour, not alpha")
        << red << 0 << 0 << 0 << false << Colour(65535, 0, 0, hsvAlpha);
    QTest::newRow("rose +30") << rose << 30 << 0 << 0 << false << Colour(52428, 39321, 26214, hsvAlpha);
    // Colorize sets the hue; -180 becomes 180 and saturation and value stay the entry's own.
    QTest::newRow("colorize -180") << rose << -180 << 0 << 0 << true << Colour(26214, 52428, 52428, hsvAlpha);
    QTest::newRow("colorize -180 on red")
        << red << -180 << 0 << 0 << true << Colour(0, 65535, 65535, hsvAlpha);
    QTest::newRow("saturation -100 greys")
        << rose << 0 << -100 << 0 << false << Colour(52428, 52428, 52428, hsvAlpha);
    QTest::newRow("saturation +50, value -20")
        << rose << 0 << 50 << -20 << false << Colour(39321, 0, 0, hsvAlpha);
    QTest::newRow("value -100 blackens") << red << 77 << 0 << -100 << false << Colour(0, 0, 0, hsvAlpha);
    QTest::newRow("value +100 on black")
        << Colour(0, 0, 0, 0) << 0 << 0 << 100 << false << Colour(65535, 65535, 65535, hsvAlpha);
}

void TestToneOperations::hueSaturationValue()
{
    QFETCH(Colour, input);
    QFETCH(int, hue);
    QFETCH(int, saturation);
    QFETCH(int, value);
    QFETCH(bool, colorize);
    QFETCH(Colour, expected);
    const Palette<uint> out =
        ToneManipulation::hueSaturationValue(paletteOf({input}), {}, hsv(hue, saturation, value, colorize));
    QCOMPARE(single(out), expected);
}

void TestToneOperations::componentManipulation_data()
{
    QTest::addColumn<Colour>("input");
    QTest::addColumn<int>("comp1");
    QTest::addColumn<int>("comp4");
    QTest::addColumn<bool>("wrap");
    QTest::addColumn<Colour>("expected");

    // Mode 0: red, green, blue and alpha as fractions; the way back ignores the fourth and is opaque.
    QTest::newRow("clamped to 65535")
        << Colour(32768, 1000, 2000, 0) << 100 << 0 << false << Colour(65535, 1000, 2000, 65535);
    QTest::newRow("wrapped back to itself")
        << Colour(32768, 1000, 2000, 0) << 100 << 0 << true << Colour(32768, 1000, 2000, 65535);
    QTest::newRow("exactly 1 stays 1")
        << Colour(0, 5, 6, 7) << 100 << 0 << true << Colour(65535, 5, 6, 65535);
    QTest::newRow("wrapped from below")
        << Colour(16384, 0, 0, 65535) << -50 << 0 << true << Colour(49151, 0, 0, 65535);
    QTest::newRow("clamped at 0") << Colour(16384, 0, 0, 65535) << -50 << 0 << false
                                  << Colour(0, 0, 0, 65535);
    QTest::newRow("fourth slider has no effect")
        << Colour(100, 200, 300, 400) << 0 << -100 << false << Colour(100, 200, 300, 65535);
    QTest::newRow("odd alpha word leaves opaque")
        << Colour(100, 200, 300, hsvAlpha) << 0 << 100 << true << Colour(100, 200, 300, 65535);
}

void TestToneOperations::componentManipulation()
{
    QFETCH(Colour, input);
    QFETCH(int, comp1);
    QFETCH(int, comp4);
    QFETCH(bool, wrap);
    QFETCH(Colour, expected);
    const Palette<uint> out = ToneManipulation::componentManipulation(
        paletteOf({input}), {}, components(0, {comp1, 0, 0, comp4}, wrap));
    QCOMPARE(single(out), expected);
}

void TestToneOperations::componentBoundsApplyToEverySpace()
{
    // In HSV a hue of 120 degrees lies far outside 0..1; even with no shift it is bounded: clamped
    // to 1 degree, and the wrap, subtracting whole steps while above 1, ends at exactly 1 as well.
    const Colour green(0, 65535, 0, 65535);
    const SpaceComponents in = colourToSpace(green, SpaceHSV);
    QCOMPARE(in[0], 120.0);
    SpaceComponents bounded = in;
    bounded[0] = 1.0;
    for (const bool wrap : {false, true}) {
        const Palette<uint> out = ToneManipulation::componentManipulation(
            paletteOf({green}), {}, components(SpaceHSV, {0, 0, 0, 0}, wrap));
        QCOMPARE(out[0], spaceToColour(bounded, SpaceHSV));
        QVERIFY(out[0] != green);
    }
    // Lab's "a" of green is negative; a zero shift without wrap clamps it to 0.
    const SpaceComponents lab = colourToSpace(green, SpaceLab);
    QVERIFY(lab[1] < 0.0);
    SpaceComponents clamped = lab;
    for (double &c : clamped)
        c = qBound(0.0, c, 1.0);
    const Palette<uint> out = ToneManipulation::componentManipulation(
        paletteOf({green}), {}, components(SpaceLab, {0, 0, 0, 0}, false));
    QCOMPARE(out[0], spaceToColour(clamped, SpaceLab));
}

void TestToneOperations::selectedOnly_data()
{
    QTest::addColumn<int>("which"); // 0 brightness/contrast, 1 HSV, 2 component manipulation
    QTest::newRow("brightness / contrast") << 0;
    QTest::newRow("hue / saturation / value") << 1;
    QTest::newRow("component manipulation") << 2;
}

void TestToneOperations::selectedOnly()
{
    QFETCH(int, which);
    const Palette<uint> in = paletteOf(
        {{1000, 2000, 3000, 4000}, {65535, 0, 0, hsvAlpha}, {30000, 30000, 30000, 65535}, {12, 34, 56, 78}});
    const auto run = [which, &in](const std::set<int> &selection, bool selectedOnly) {
        switch (which) {
        case 0:
            return ToneManipulation::brightnessContrast(in, selection, bc(40, 20, selectedOnly));
        case 1:
            return ToneManipulation::hueSaturationValue(in, selection, hsv(40, 20, 10, false, selectedOnly));
        default:
            return ToneManipulation::componentManipulation(
                in, selection, components(0, {10, 20, 30, 0}, true, selectedOnly));
        }
    };
    const Palette<uint> all = run({}, false);
    // Checked box with a selection: only the selected entries change.
    const Palette<uint> some = run({1, 3}, true);
    QCOMPARE(some[0], in[0]);
    QCOMPARE(some[1], all[1]);
    QCOMPARE(some[2], in[2]);
    QCOMPARE(some[3], all[3]);
    // Checked box with nothing selected, or a selection with the box unchecked: every entry.
    QCOMPARE(run({}, true).entries(), all.entries());
    QCOMPARE(run({1}, false).entries(), all.entries());
    QCOMPARE(some.property(PaletteName), in.property(PaletteName));
}

void TestToneOperations::randomisedInvariants()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        for (int round = 0; round < 40; ++round) {
            const int size = randomIn(rng, 0, 300);
            const Palette<uint> in = randomPalette(rng, size);
            const std::set<int> selection = randomSelection(rng, size);
            const bool selectedOnly = rng.bounded(2) == 1;
            const auto eligible = [&](int i) {
                return !selectedOnly || selection.empty() || selection.count(i);
            };

            const BrightnessContrastSettings b =
                bc(randomIn(rng, -255, 255), randomIn(rng, -255, 255), selectedOnly);
            const Palette<uint> outB = ToneManipulation::brightnessContrast(in, selection, b);
            const HueSaturationValueSettings h =
                hsv(randomIn(rng, -180, 180), randomIn(rng, -100, 100), randomIn(rng, -100, 100),
                    rng.bounded(2) == 1, selectedOnly);
            const Palette<uint> outH = ToneManipulation::hueSaturationValue(in, selection, h);
            const ComponentManipulationSettings c =
                components(randomIn(rng, 0, 11),
                           {randomIn(rng, -100, 100), randomIn(rng, -100, 100), randomIn(rng, -100, 100),
                            randomIn(rng, -100, 100)},
                           rng.bounded(2) == 1, selectedOnly);
            const Palette<uint> outC = ToneManipulation::componentManipulation(in, selection, c);
            QCOMPARE(outB.size(), size);
            QCOMPARE(outH.size(), size);
            QCOMPARE(outC.size(), size);

            for (int i = 0; i < size; ++i) {
                const QByteArray where =
                    QByteArray("seed ") + QByteArray::number(seed) + " entry " + QByteArray::number(i);
                if (!eligible(i)) {
                    QVERIFY2(outB[i] == in[i] && outH[i] == in[i] && outC[i] == in[i], where);
                    continue;
                }
                // Brightness / contrast leaves whole high bytes and the clamped alpha.
                for (const uint ch : {outB[i].r, outB[i].g, outB[i].b})
                    QVERIFY2(ch % 256 == 0 && ch <= 65280, where);
                QVERIFY2(outB[i].a == (qMin(in[i].a, 255u) << 8), where);
                // HSV always carries the doubled alpha; its channels stay in range.
                QVERIFY2(outH[i].a == hsvAlpha && outH[i].r <= 65535 && outH[i].g <= 65535 &&
                             outH[i].b <= 65535,
                         where);
                QVERIFY2(outC[i].a == 65535 && outC[i].r <= 65535, where);
            }

            // The contrast curve never reverses the order of two channel values.
            Palette<uint> ramp;
            for (uint x = 0; x < 256; ++x)
                ramp.append({x << 8, x << 8, x << 8, 65535});
            const Palette<uint> toned =
                ToneManipulation::brightnessContrast(ramp, {}, bc(b.brightness, b.contrast));
            for (int x = 1; x < 256; ++x)
                QVERIFY(toned[x].r >= toned[x - 1].r);
        }
    }
}

QTEST_GUILESS_MAIN(TestToneOperations)
#include "tst_toneoperations.moc"
