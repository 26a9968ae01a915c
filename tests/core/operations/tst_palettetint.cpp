#include "spaces/colorspace.h"
#include "operationtesting.h"
#include "operations/palettegenerators.h"
#include "operations/palettetint.h"

namespace {

TintSettings tintOf(const char *colour, int opacity, bool selectedOnly = false)
{
    TintSettings s;
    s.color = QColor(QLatin1String(colour));
    s.opacity = opacity;
    s.selectedOnly = selectedOnly;
    return s;
}

GradientTintSettings gradientOf(const char *c1, int o1, const char *c2, int o2, int mode, int begin, int end,
                                bool selectedOnly = false)
{
    GradientTintSettings s;
    s.color1 = QColor(QLatin1String(c1));
    s.opacity1 = o1;
    s.color2 = QColor(QLatin1String(c2));
    s.opacity2 = o2;
    s.mode = mode;
    s.begin = begin;
    s.end = end;
    s.selectedOnly = selectedOnly;
    return s;
}

// A colour taken into a space and straight back, as the gradient's tint colour travels.
Colour throughSpace(const QColor &c, int mode)
{
    return spaceToColour(colourToSpace(PaletteTint::dialogColour(c), mode), mode);
}

Palette<uint> ramp(int n)
{
    Palette<uint> p;
    for (int i = 0; i < n; ++i)
        p.append(
            {uint(i * 997 % 65536), uint(65535 - i * 500), uint(i * 3), uint(i % 2 ? 65535 : 4294836225u)});
    return p;
}

} // namespace

class TestPaletteTint : public QObject
{
    Q_OBJECT
private slots:
    void dialogColour();
    void tint_data();
    void tint();
    void tintSelectedOnly();
    void gradientRange_data();
    void gradientRange();
    void gradientMiddle();
    void gradientBeginEqualsEnd();
    void gradientSelectedOnlyWithNothingSelected();
    void randomisedInvariants();
};

void TestPaletteTint::dialogColour()
{
    QCOMPARE(PaletteTint::dialogColour(QColor(0xaa, 0x00, 0xff)), Colour(0xaa00, 0, 0xff00, 65535));
    QCOMPARE(PaletteTint::dialogColour(QColor(255, 255, 255, 0)), Colour(65280, 65280, 65280, 65535));
}

void TestPaletteTint::tint_data()
{
    QTest::addColumn<Colour>("input");
    QTest::addColumn<QString>("colour");
    QTest::addColumn<int>("opacity");
    QTest::addColumn<Colour>("expected");

    QTest::newRow("opacity 0 keeps the entry")
        << Colour(1, 2, 3, 4294836225u) << "#aa00ff" << 0 << Colour(1, 2, 3, 4294836225u);
    QTest::newRow("opacity 100 is the tint")
        << Colour(1, 2, 3, 4) << "#aa00ff" << 100 << Colour(0xaa00, 0, 0xff00, 65535);
    // 65535 * 0.6 + 43520 * 0.4 = 56729; 32768 * 0.6 + 65280 * 0.4 = 45772.8 -> 45772.
    QTest::newRow("purple at 40") << Colour(65535, 0, 32768, 65535) << "#aa00ff" << 40
                                  << Colour(56729, 0, 45772, 65535);
    // An alpha of 0 at 40 percent: 65535 * 0.4 = 26214.
    QTest::newRow("green at 40, alpha 0")
        << Colour(1000, 2000, 3000, 0) << "#008800" << 40 << Colour(600, 15126, 1800, 26214);
}

void TestPaletteTint::tint()
{
    QFETCH(Colour, input);
    QFETCH(QString, colour);
    QFETCH(int, opacity);
    QFETCH(Colour, expected);
    const Palette<uint> out = PaletteTint::tint(paletteOf({input}), {}, tintOf(colour.toLatin1(), opacity));
    QCOMPARE(out.size(), 1);
    QCOMPARE(out[0], expected);
}

void TestPaletteTint::tintSelectedOnly()
{
    const Palette<uint> in = ramp(5);
    const Palette<uint> some = PaletteTint::tint(in, {1, 4}, tintOf("#ffffff", 100, true));
    const Colour white(65280, 65280, 65280, 65535);
    QCOMPARE(some.entries(), Entries({in[0], white, in[2], in[3], white}));
    // Box checked, nothing selected: every entry.
    QCOMPARE(PaletteTint::tint(in, {}, tintOf("#ffffff", 100, true)).entries(), Entries(5, white));
    // Selection given, box unchecked: every entry.
    QCOMPARE(PaletteTint::tint(in, {2}, tintOf("#ffffff", 100, false)).entries(), Entries(5, white));
}

void TestPaletteTint::gradientRange_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode < ColorSpaceCount; ++mode)
        QTest::newRow(colorSpaceTable()[size_t(mode)].name.toLatin1()) << mode;
}

void TestPaletteTint::gradientRange()
{
    QFETCH(int, mode);
    const Palette<uint> in = ramp(10);
    const GradientTintSettings s = gradientOf("#00007f", 10, "#6ed4ff", 40, mode, 2, 7);
    const Palette<uint> out = PaletteTint::gradientTint(in, {}, s);
    QCOMPARE(out.size(), 10);
    for (const int i : {0, 1, 8, 9})
        QCOMPARE(out[i], in[i]);
    // The begin entry is mixed with colour 1 (through the space) at opacity 1, the end entry with
    // colour 2 at opacity 2.
    QCOMPARE(out[2], PaletteGenerators::linearMix(in[2], throughSpace(s.color1, mode), 0.10));
    QCOMPARE(out[7], PaletteGenerators::linearMix(in[7], throughSpace(s.color2, mode), 0.40));
}

void TestPaletteTint::gradientMiddle()
{
    // Black at opacity 0 to white at opacity 100 over 0..4: entry 2 has u = 0.5, so the tint is
    // 65280 / 2 = 32640 per channel at weight 0.5.
    const Palette<uint> in = paletteOf(Entries(5, Colour(10000, 10000, 10000, 20000)));
    const Palette<uint> out =
        PaletteTint::gradientTint(in, {}, gradientOf("#000000", 0, "#ffffff", 100, 0, 0, 4));
    QCOMPARE(out[2], Colour(21320, 21320, 21320, 42767));
    QCOMPARE(out[0], in[0]); // black at weight 0
    QCOMPARE(out[4], Colour(65280, 65280, 65280, 65535));
    // No end given (-1) or an end beyond the palette both mean the last entry.
    QCOMPARE(PaletteTint::gradientTint(in, {}, gradientOf("#000000", 0, "#ffffff", 100, 0, 0, -1)).entries(),
             out.entries());
    QCOMPARE(PaletteTint::gradientTint(in, {}, gradientOf("#000000", 0, "#ffffff", 100, 0, 0, 400)).entries(),
             out.entries());
}

void TestPaletteTint::gradientBeginEqualsEnd()
{
    // u is 0 / 0 for the one entry of the range; it counts as 0.
    const Palette<uint> in = ramp(4);
    const Palette<uint> out =
        PaletteTint::gradientTint(in, {}, gradientOf("#aa0000", 25, "#aaffff", 40, 0, 1, 1));
    QCOMPARE(out.entries(),
             Entries({in[0], PaletteGenerators::linearMix(in[1], Colour(0xaa00, 0, 0, 65535), 0.25), in[2],
                      in[3]}));
}

void TestPaletteTint::gradientSelectedOnlyWithNothingSelected()
{
    const Palette<uint> in = ramp(8);
    const GradientTintSettings on = gradientOf("#00ffff", 40, "#ffff00", 40, 9, 1, 6, true);
    GradientTintSettings off = on;
    off.selectedOnly = false;
    QCOMPARE(PaletteTint::gradientTint(in, {}, on).entries(),
             PaletteTint::gradientTint(in, {}, off).entries());
    const Palette<uint> some = PaletteTint::gradientTint(in, {0, 3}, on);
    const Palette<uint> all = PaletteTint::gradientTint(in, {}, off);
    QCOMPARE(some[0], in[0]); // selected but before the range
    QCOMPARE(some[3], all[3]);
    QCOMPARE(some[4], in[4]);
}

void TestPaletteTint::randomisedInvariants()
{
    for (const quint32 seed : testSeeds()) {
        QRandomGenerator rng(seed);
        for (int round = 0; round < 40; ++round) {
            const int size = randomIn(rng, 0, 200);
            const Palette<uint> in = randomPalette(rng, size);
            const std::set<int> selection = randomSelection(rng, size);
            const bool selectedOnly = rng.bounded(2) == 1;
            const auto eligible = [&](int i) {
                return !selectedOnly || selection.empty() || selection.count(i);
            };
            const QColor c1 = QColor::fromRgb(rng.generate() & 0xFFFFFFu);
            const QColor c2 = QColor::fromRgb(rng.generate() & 0xFFFFFFu);

            TintSettings t;
            t.color = c1;
            t.opacity = randomIn(rng, 0, 100);
            t.selectedOnly = selectedOnly;
            const Palette<uint> tinted = PaletteTint::tint(in, selection, t);
            QCOMPARE(tinted.size(), size);
            for (int i = 0; i < size; ++i) {
                if (!eligible(i))
                    QCOMPARE(tinted[i], in[i]);
                else
                    QCOMPARE(tinted[i], PaletteGenerators::linearMix(in[i], PaletteTint::dialogColour(c1),
                                                                     t.opacity / 100.0));
            }

            GradientTintSettings g;
            g.color1 = c1;
            g.color2 = c2;
            g.opacity1 = randomIn(rng, 0, 100);
            g.opacity2 = randomIn(rng, 0, 100);
            g.mode = randomIn(rng, 0, ColorSpaceCount - 1);
            g.selectedOnly = selectedOnly;
            g.begin = size > 1 ? randomIn(rng, 0, size - 2) : 0;
            g.end = size > 1 ? randomIn(rng, g.begin + 1, size - 1) : 1;
            const Palette<uint> graded = PaletteTint::gradientTint(in, selection, g);
            QCOMPARE(graded.size(), size);
            for (int i = 0; i < size; ++i) {
                if (i < g.begin || i > g.end || !eligible(i))
                    QCOMPARE(graded[i], in[i]);
            }
            // Equal opacities of 0 change nothing anywhere.
            g.opacity1 = g.opacity2 = 0;
            QCOMPARE(PaletteTint::gradientTint(in, selection, g).entries(), in.entries());
        }
    }
}

QTEST_GUILESS_MAIN(TestPaletteTint)
#include "tst_palettetint.moc"
