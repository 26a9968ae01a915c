// OKLab and OKLCH, colour spaces 12 and 13: the values Björn Ottosson published for sRGB,
// greys, round trips, edited components and conversions to and from the older spaces.
#include "spaces/colorspace.h"

#include <QtTest>

#include <cmath>

using Colour = RGBAColor<uint>;
Q_DECLARE_METATYPE(Colour)
Q_DECLARE_METATYPE(SpaceComponents)

namespace {

const Colour white{65535, 65535, 65535, 65535}, black{0, 0, 0, 65535};
const Colour red{65535, 0, 0, 65535}, green{0, 65535, 0, 65535}, blue{0, 0, 65535, 65535};

QString text(const Colour &c)
{
    return QStringLiteral("(%1, %2, %3, %4)").arg(c.r).arg(c.g).arg(c.b).arg(c.a);
}

QString describe(const SpaceComponents &c)
{
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(c[0], 0, 'g', 12)
        .arg(c[1], 0, 'g', 12)
        .arg(c[2], 0, 'g', 12)
        .arg(c[3], 0, 'g', 12);
}

// The sRGB curve written out independently of the library.
double linearOf(uint channel)
{
    const double c = channel / 65535.0;
    return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92;
}

} // namespace

class TestOklab : public QObject
{
    Q_OBJECT
private slots:
    void publishedValues_data();
    void publishedValues();
    void greysHaveNoChromaOrHue_data();
    void greysHaveNoChromaOrHue();
    void lightnessOfGreysIsTheCubeRootOfTheirLight();
    void roundTrip_data();
    void roundTrip();
    void editedComponents_data();
    void editedComponents();
    void convertWithTheOlderSpaces_data();
    void convertWithTheOlderSpaces();
};

void TestOklab::publishedValues_data()
{
    QTest::addColumn<int>("space");
    QTest::addColumn<Colour>("colour");
    QTest::addColumn<SpaceComponents>("expected");
    QTest::newRow("OKLab white") << 12 << white << SpaceComponents{1.0, 0.0, 0.0, 0.0};
    QTest::newRow("OKLab black") << 12 << black << SpaceComponents{0.0, 0.0, 0.0, 0.0};
    QTest::newRow("OKLab red") << 12 << red << SpaceComponents{0.6279553606, 0.2248630611, 0.1258462985, 0.0};
    QTest::newRow("OKLab green") << 12 << green
                                 << SpaceComponents{0.8664396115, -0.2338875742, 0.1794984799, 0.0};
    QTest::newRow("OKLab blue") << 12 << blue
                                << SpaceComponents{0.4520137184, -0.0324569842, -0.3115281477, 0.0};
    // The same in polar form: chroma = hypot(a, b), hue = atan2(b, a) in degrees.
    QTest::newRow("OKLCH white") << 13 << white << SpaceComponents{1.0, 0.0, 0.0, 0.0};
    QTest::newRow("OKLCH black") << 13 << black << SpaceComponents{0.0, 0.0, 0.0, 0.0};
    QTest::newRow("OKLCH red") << 13 << red
                               << SpaceComponents{0.6279553606, 0.2576833077, 29.2338851923, 0.0};
    QTest::newRow("OKLCH green") << 13 << green
                                 << SpaceComponents{0.8664396115, 0.2948272403, 142.4953388878, 0.0};
    QTest::newRow("OKLCH blue") << 13 << blue
                                << SpaceComponents{0.4520137184, 0.3132143717, 264.0520206381, 0.0};
}

void TestOklab::publishedValues()
{
    QFETCH(int, space);
    QFETCH(Colour, colour);
    QFETCH(SpaceComponents, expected);
    const SpaceComponents got = colourToSpace(colour, space);
    for (size_t i = 0; i < 4; ++i)
        QVERIFY2(std::fabs(got[i] - expected[i]) <= 1e-4,
                 qPrintable(QStringLiteral("got %1, expected %2").arg(describe(got), describe(expected))));
    // The alpha plays no part.
    QCOMPARE(colourToSpace(Colour{colour.r, colour.g, colour.b, 7}, space), got);
}

void TestOklab::greysHaveNoChromaOrHue_data()
{
    QTest::addColumn<uint>("grey");
    for (uint g : {0u, 1u, 256u, 16711u, 32768u, 65280u, 65534u, 65535u})
        QTest::addRow("%u", g) << g;
}

void TestOklab::greysHaveNoChromaOrHue()
{
    QFETCH(uint, grey);
    const Colour c{grey, grey, grey, 65535};
    const SpaceComponents lch = colourToSpace(c, SpaceOKLCH);
    QCOMPARE(lch[1], 0.0);
    QCOMPARE(lch[2], 0.0);
    const SpaceComponents lab = colourToSpace(c, SpaceOKLab);
    QCOMPARE(lch[0], lab[0]);
    QVERIFY(std::fabs(lab[1]) < 1e-7 && std::fabs(lab[2]) < 1e-7);
    QCOMPARE(spaceToColour(lch, SpaceOKLCH), c);
    // The nearest colours that are not grey keep a hue of their own.
    const Colour offGrey{grey == 65535 ? 65534 : grey + 1, grey, grey, 65535};
    QVERIFY(colourToSpace(offGrey, SpaceOKLCH)[1] > 1e-6);
    QCOMPARE(spaceToColour(colourToSpace(offGrey, SpaceOKLCH), SpaceOKLCH), offGrey);
}

void TestOklab::lightnessOfGreysIsTheCubeRootOfTheirLight()
{
    // The matrices keep a grey's cone responses equal, so L is the cube root of its linear light:
    // this pins the transfer curve on both of its segments.
    for (uint grey : {1u, 100u, 2650u, 2651u, 10000u, 32768u, 50000u, 65535u}) {
        const double l = colourToSpace(Colour{grey, grey, grey, 65535}, SpaceOKLab)[0];
        QVERIFY2(std::fabs(l - std::cbrt(linearOf(grey))) < 1e-8, qPrintable(QString::number(grey)));
    }
}

void TestOklab::roundTrip_data()
{
    QTest::addColumn<int>("space");
    QTest::newRow("OKLab") << int(SpaceOKLab);
    QTest::newRow("OKLCH") << int(SpaceOKLCH);
}

void TestOklab::roundTrip()
{
    QFETCH(int, space);
    // Every corner of the cube and a grid through it, the dark end where the curve is linear included.
    const uint levels[] = {0,     1,     2,     3,     50,    2650,  2651,  4369,
                           13107, 21845, 32767, 32768, 43690, 52428, 65534, 65535};
    int checked = 0;
    for (uint r : levels)
        for (uint g : levels)
            for (uint b : levels) {
                const Colour c{r, g, b, 12345};
                const Colour back = spaceToColour(colourToSpace(c, space), space);
                if (back != Colour(r, g, b, 65535))
                    QFAIL(qPrintable(QStringLiteral("%1 came back as %2").arg(text(c), text(back))));
                ++checked;
            }
    QCOMPARE(checked, 16 * 16 * 16);
}

void TestOklab::editedComponents_data()
{
    QTest::addColumn<int>("space");
    QTest::addColumn<SpaceComponents>("components");
    QTest::addColumn<Colour>("expected");
    QTest::newRow("OKLab L 1 is white") << 12 << SpaceComponents{1, 0, 0, 0} << white;
    QTest::newRow("OKLab L 0 is black") << 12 << SpaceComponents{0, 0, 0, 0} << black;
    QTest::newRow("OKLab too light") << 12 << SpaceComponents{2, 0, 0, 0} << white;
    QTest::newRow("OKLab negative L") << 12 << SpaceComponents{-1, 0, 0, 0} << black;
    QTest::newRow("OKLCH hue 360 is hue 0")
        << 13 << SpaceComponents{0.6279553606, 0.2576833077, 360 + 29.2338851923, 0} << red;
    QTest::newRow("OKLCH negative hue")
        << 13 << SpaceComponents{0.4520137184, 0.3132143717, 264.0520206381 - 720, 0} << blue;
    QTest::newRow("OKLCH no chroma, any hue") << 13 << SpaceComponents{1, 0, 123, 0} << white;
    // Far outside the gamut: a green lighter and twice as colourful as sRGB's clamps channel by channel.
    QTest::newRow("OKLCH out of gamut")
        << 13 << SpaceComponents{0.9, 0.6, 142.5, 0} << Colour{0, 65535, 0, 65535};
    QTest::newRow("OKLab not finite") << 12 << SpaceComponents{NAN, 0, 0, 0} << black;
}

void TestOklab::editedComponents()
{
    QFETCH(int, space);
    QFETCH(SpaceComponents, components);
    QFETCH(Colour, expected);
    QCOMPARE(spaceToColour(components, space), expected);
}

void TestOklab::convertWithTheOlderSpaces_data()
{
    QTest::addColumn<int>("from");
    for (int space : {int(SpaceRGB), int(SpaceXYZ), int(SpaceLab), int(SpaceHSV), int(SpaceHunterLab)})
        QTest::newRow(qPrintable(colorSpaceTable()[size_t(space)].name)) << space;
}

void TestOklab::convertWithTheOlderSpaces()
{
    // An Rgb means the same to every space, so going from an older space's object to OKLab and
    // back gives what the numbered forms give, although the older spaces see the Rgb scaled.
    QFETCH(int, from);
    using namespace ColorSpace;
    const Colour orange{60000, 30000, 10000, 65535};
    const SpaceComponents expected = colourToSpace(orange, SpaceOKLab);
    const SpaceComponents start = colourToSpace(orange, from);
    std::unique_ptr<IColorSpace> source;
    switch (from) {
    case SpaceXYZ: {
        auto s = std::make_unique<Xyz>();
        s->x = start[0], s->y = start[1], s->z = start[2];
        source = std::move(s);
        break;
    }
    case SpaceLab: {
        auto s = std::make_unique<Lab>();
        s->l = start[0], s->a = start[1], s->b = start[2];
        source = std::move(s);
        break;
    }
    case SpaceHSV: {
        auto s = std::make_unique<Hsv>();
        s->h = start[0], s->s = start[1], s->v = start[2];
        source = std::move(s);
        break;
    }
    case SpaceHunterLab: {
        auto s = std::make_unique<HunterLab>();
        s->l = start[0], s->a = start[1], s->b = start[2];
        source = std::move(s);
        break;
    }
    default:
        source = std::make_unique<Rgb>(start[0], start[1], start[2]);
        break;
    }
    Oklab lab;
    convert(*source, lab);
    const SpaceComponents got{lab.l, lab.a, lab.b, 0.0};
    for (size_t i = 0; i < 3; ++i)
        QVERIFY2(std::fabs(got[i] - expected[i]) < 1e-9,
                 qPrintable(QStringLiteral("got %1, expected %2").arg(describe(got), describe(expected))));
    // On to OKLCH and back: polar form of the very same numbers.
    Oklch lch;
    convert(lab, lch);
    const SpaceComponents polar = colourToSpace(orange, SpaceOKLCH);
    QVERIFY(std::fabs(lch.l - polar[0]) < 1e-9 && std::fabs(lch.c - polar[1]) < 1e-9 &&
            std::fabs(lch.h - polar[2]) < 1e-7);
    Oklab again;
    convert(lch, again);
    QVERIFY(std::fabs(again.a - lab.a) < 1e-9 && std::fabs(again.b - lab.b) < 1e-9);
    // And back into the older space.
    Rgb rgb;
    convert(again, rgb);
    QCOMPARE(RGBAColor<uint>(clampedChannel(rgb.r * 65535), clampedChannel(rgb.g * 65535),
                             clampedChannel(rgb.b * 65535), 65535),
             orange);
}

QTEST_GUILESS_MAIN(TestOklab)
#include "tst_oklab.moc"
