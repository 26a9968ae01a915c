#include "spaces/colorconversion.h"
#include "spaces/colorspace.h"
#include "palette/palette.h"

#include <QtTest>

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>

using Colour = RGBAColor<uint>;
Q_DECLARE_METATYPE(Colour)
Q_DECLARE_METATYPE(SpaceComponents)

QString text(const Colour &c)
{
    return QStringLiteral("(%1, %2, %3, %4)").arg(c.r).arg(c.g).arg(c.b).arg(c.a);
}

char *toString(const Colour &c)
{
    return QTest::toString(text(c));
}

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Reference values written straight from the published formulas, independently of the library.
// A 16-bit channel ends up as channel / 65535 / 255, always on the linear segment of the sRGB
// curve, so its linear light on 0..100 is:
double linearLight(uint channel)
{
    return channel / 65535.0 / 255.0 / 12.92 * 100.0;
}

struct Xyz3
{
    double x, y, z;
};

Xyz3 referenceXyz(const Colour &c)
{
    const double r = linearLight(c.r), g = linearLight(c.g), b = linearLight(c.b);
    return {0.4124564 * r + 0.3575761 * g + 0.1804375 * b, 0.2126729 * r + 0.7151522 * g + 0.072175 * b,
            0.0193339 * r + 0.119192 * g + 0.9503041 * b};
}

uint maxChannel(const Colour &c)
{
    return std::max({c.r, c.g, c.b});
}

bool near(double got, double expected)
{
    return std::fabs(got - expected) <= 1e-12 + 1e-9 * std::fabs(expected);
}

QString describe(const SpaceComponents &c)
{
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(c[0], 0, 'g', 17)
        .arg(c[1], 0, 'g', 17)
        .arg(c[2], 0, 'g', 17)
        .arg(c[3], 0, 'g', 17);
}

// Colours whose information a forward formula throws away, and what must come back instead.
struct Exemption
{
    std::function<bool(const Colour &)> applies;
    std::function<Colour(const Colour &)> expected;
};

Colour greyOfMax(const Colour &c)
{
    const uint m = maxChannel(c);
    return {m, m, m, 65535};
}

// A space's object from its components in table order, and back, for the spaces convert() is
// tried with.
template <typename S>
std::unique_ptr<ColorSpace::IColorSpace> made(const SpaceComponents &v, double S::*c0, double S::*c1,
                                              double S::*c2)
{
    auto s = std::make_unique<S>();
    (*s).*c0 = v[0], (*s).*c1 = v[1], (*s).*c2 = v[2];
    return s;
}

std::unique_ptr<ColorSpace::IColorSpace> makeSpace(int space, const SpaceComponents &v)
{
    using namespace ColorSpace;
    // clang-format off
    switch (space) {
    case SpaceXYZ: return made(v, &Xyz::x, &Xyz::y, &Xyz::z);
    case SpaceLab: return made(v, &Lab::l, &Lab::a, &Lab::b);
    case SpaceLuv: return made(v, &Luv::l, &Luv::u, &Luv::v);
    case SpaceHSL: return made(v, &Hsl::h, &Hsl::s, &Hsl::l);
    case SpaceHSV: return made(v, &Hsv::h, &Hsv::s, &Hsv::v);
    case SpaceHunterLab: return made(v, &HunterLab::l, &HunterLab::a, &HunterLab::b);
    default: {
        auto s = made(v, &Cmyk::c, &Cmyk::m, &Cmyk::y);
        static_cast<Cmyk &>(*s).k = v[3];
        return s;
    }
    }
    // clang-format on
}

SpaceComponents componentsOf(const ColorSpace::IColorSpace &s)
{
    using namespace ColorSpace;
    // clang-format off
    if (auto *p = dynamic_cast<const Xyz *>(&s)) return {p->x, p->y, p->z, 0.0};
    if (auto *p = dynamic_cast<const Lab *>(&s)) return {p->l, p->a, p->b, 0.0};
    if (auto *p = dynamic_cast<const Luv *>(&s)) return {p->l, p->u, p->v, 0.0};
    if (auto *p = dynamic_cast<const Hsl *>(&s)) return {p->h, p->s, p->l, 0.0};
    if (auto *p = dynamic_cast<const Hsv *>(&s)) return {p->h, p->s, p->v, 0.0};
    if (auto *p = dynamic_cast<const HunterLab *>(&s)) return {p->l, p->a, p->b, 0.0};
    if (auto *p = dynamic_cast<const Cmyk *>(&s)) return {p->c, p->m, p->y, p->k};
    // clang-format on
    return {kNaN, kNaN, kNaN, kNaN};
}

} // namespace

class TestColorSpace : public QObject
{
    Q_OBJECT

private slots:
    void table_data();
    void table();
    void forwardValues_data();
    void forwardValues();
    void greysHaveNoHueOrSaturation_data();
    void greysHaveNoHueOrSaturation();
    void unknownIndexActsAsRgb_data();
    void unknownIndexActsAsRgb();
    void rgbIndexTruncates_data();
    void rgbIndexTruncates();
    void roundTrip_data();
    void roundTrip();
    void inverseOfEditedComponents_data();
    void inverseOfEditedComponents();
    void nonFiniteComponentsAreClamped();
    void paletteAndVectorForms();
    void convertBetweenSpaces_data();
    void convertBetweenSpaces();
    void convertWithinOneSpaceCopies();
    void toHsva_data();
    void toHsva();
    void hsvaToRgba_data();
    void hsvaToRgba();
    void hslaAndHsbaRoundTrip();

private:
    const std::vector<Colour> &sample();
    std::vector<Colour> m_sample;
};

void TestColorSpace::table_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("components");
    const QStringList lab{"l", "a", "b"};
    QTest::newRow("0") << 0 << "RGB" << QStringList{"red", "green", "blue"};
    QTest::newRow("1") << 1 << "XYZ" << QStringList{"x", "y", "z"};
    QTest::newRow("2") << 2 << "HSL" << QStringList{"hue", "saturation", "l"};
    QTest::newRow("3") << 3 << "Lab" << lab;
    QTest::newRow("4") << 4 << "LCH" << QStringList{"l", "c", "h"};
    QTest::newRow("5") << 5 << "Luv" << QStringList{"l", "u", "v"};
    QTest::newRow("6") << 6 << "Yxy" << QStringList{"y1", "x", "y2"};
    QTest::newRow("7") << 7 << "CMY" << QStringList{"cyan", "magenta", "yellow"};
    QTest::newRow("8") << 8 << "CMYK" << QStringList{"cyan", "magenta", "yellow", "black"};
    QTest::newRow("9") << 9 << "HSV" << QStringList{"hue", "saturation", "value"};
    QTest::newRow("10") << 10 << "HSB" << QStringList{"hue", "saturation", "brightness"};
    QTest::newRow("11") << 11 << "HunterLab" << lab;
    QTest::newRow("12") << 12 << "OKLab" << lab;
    QTest::newRow("13") << 13 << "OKLCH" << QStringList{"l", "c", "h"};
}

void TestColorSpace::table()
{
    QFETCH(int, index);
    QFETCH(QString, name);
    QFETCH(QStringList, components);
    const auto &t = colorSpaceTable();
    QCOMPARE(int(t.size()), 14);
    QCOMPARE(t[size_t(index)].name, name);
    QCOMPARE(t[size_t(index)].components, components);
}

void TestColorSpace::forwardValues_data()
{
    QTest::addColumn<int>("space");
    QTest::addColumn<Colour>("colour");
    QTest::addColumn<SpaceComponents>("expected");

    const Colour white{65535, 65535, 65535, 65535}, red{65535, 0, 0, 65535}, black{0, 0, 0, 65535};
    // 0.2, 0.4 and 0.8 of full scale exactly.
    const Colour blue{13107, 26214, 52428, 65535};
    const double f = 1.0 / 255.0; // a full channel after the double scaling

    const Xyz3 w = referenceXyz(white), r = referenceXyz(red), u = referenceXyz(blue);
    QTest::newRow("XYZ white") << 1 << white
                               << SpaceComponents{100 * f / 12.92 * 0.95047, 100 * f / 12.92 * 1.0000001,
                                                  100 * f / 12.92 * 1.08883, 0.0};
    QTest::newRow("XYZ black") << 1 << black << SpaceComponents{0, 0, 0, 0};

    // Lab and Luv inputs are all far below the 0.008856 knee: the linear branches apply.
    auto lab = [](const Xyz3 &v) {
        const double fx = 7.787 * v.x / 95.047 + 16.0 / 116.0, fy = 7.787 * v.y / 100.0 + 16.0 / 116.0,
                     fz = 7.787 * v.z / 108.883 + 16.0 / 116.0;
        return SpaceComponents{116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz), 0.0};
    };
    QTest::newRow("Lab white") << 3 << white << lab(w);
    QTest::newRow("Lab red") << 3 << red << lab(r);
    QTest::newRow("Lab black") << 3 << black << SpaceComponents{0, 0, 0, 0};
    auto lch = [&lab](const Xyz3 &v) {
        const SpaceComponents l = lab(v);
        double h = std::atan2(l[2], l[1]) * 180.0 / std::acos(-1.0);
        return SpaceComponents{l[0], std::hypot(l[1], l[2]), h < 0 ? h + 360 : h, 0.0};
    };
    QTest::newRow("LCH red") << 4 << red << lch(r);
    QTest::newRow("LCH blue") << 4 << blue << lch(u);

    auto luv = [](const Xyz3 &v) {
        const double l = 903.2962962962963 * v.y / 100.0, d = v.x + 15 * v.y + 3 * v.z;
        const double dw = 95.047 + 1500 + 3 * 108.883;
        const double xd = d > 0.001 ? v.x / d : 0.0, yd = d > 0.001 ? v.y / d : 0.0;
        return SpaceComponents{l, 52 * l * (xd - 95.047 / dw), 117 * l * (yd - 100 / dw), 0.0};
    };
    QTest::newRow("Luv white") << 5 << white << luv(w);
    QTest::newRow("Luv red") << 5 << red << luv(r);
    // X + 15Y + 3Z is about 0.00085 here: the chromaticity is taken as 0, so u and v follow L.
    const Colour darkRed{500, 0, 0, 65535};
    QTest::newRow("Luv dark red") << 5 << darkRed << luv(referenceXyz(darkRed));

    auto yxy = [](const Xyz3 &v) {
        const double s = v.x + v.y + v.z;
        return SpaceComponents{v.y, v.x / s, v.y / s, 0.0};
    };
    QTest::newRow("Yxy white") << 6 << white << yxy(w);
    QTest::newRow("Yxy blue") << 6 << blue << yxy(u);
    QTest::newRow("Yxy black") << 6 << black << SpaceComponents{0, 0, 0, 0};

    auto hunter = [](const Xyz3 &v) {
        const double s = std::sqrt(v.y);
        return SpaceComponents{10 * s, 17.5 * (1.02 * v.x - v.y) / s, 7.0 * (v.y - 0.847 * v.z) / s, 0.0};
    };
    QTest::newRow("HunterLab white") << 11 << white << hunter(w);
    QTest::newRow("HunterLab red") << 11 << red << hunter(r);
    QTest::newRow("HunterLab black") << 11 << black << SpaceComponents{0, 0, 0, 0};

    QTest::newRow("CMY white") << 7 << white << SpaceComponents{1 - f, 1 - f, 1 - f, 0};
    QTest::newRow("CMY blue") << 7 << blue << SpaceComponents{1 - 0.2 * f, 1 - 0.4 * f, 1 - 0.8 * f, 0};
    QTest::newRow("CMYK black") << 8 << black << SpaceComponents{0, 0, 0, 1};
    QTest::newRow("CMYK red") << 8 << red << SpaceComponents{0, 1, 1, 1 - f};
    QTest::newRow("CMYK blue") << 8 << blue << SpaceComponents{0.75, 0.5, 0, 1 - 0.8 * f};
    // Its largest channel, 0.25 / 255, is below the 0.001 limit: the inks are dropped.
    QTest::newRow("CMYK dark") << 8 << Colour{16383, 0, 8000, 65535}
                               << SpaceComponents{0, 0, 0, 1 - 16383 / 65535.0 * f};

    QTest::newRow("HSV black") << 9 << black << SpaceComponents{0, 0, 0, 0};
    QTest::newRow("HSV red") << 9 << red << SpaceComponents{0, 1, f, 0};
    QTest::newRow("HSV blue") << 9 << blue << SpaceComponents{220, 0.75, 0.8 * f, 0};
    QTest::newRow("HSV magenta") << 9 << Colour{65535, 0, 65535, 0} << SpaceComponents{300, 1, f, 0};
    // Below the 0.001 limit the saturation is 0 although the hue is still worked out.
    QTest::newRow("HSV dark") << 9 << Colour{0, 16000, 0, 0}
                              << SpaceComponents{120, 0, 16000 / 65535.0 * f, 0};
    QTest::newRow("HSB blue") << 10 << blue << SpaceComponents{220, 0.75, 0.8 * f, 0};
    QTest::newRow("HSB dark") << 10 << Colour{0, 16000, 0, 0}
                              << SpaceComponents{120, 0, 16000 / 65535.0 * f, 0};
    // Saturation and lightness in percent.
    QTest::newRow("HSL red") << 2 << red << SpaceComponents{0, 100, 50 * f, 0};
    QTest::newRow("HSL blue") << 2 << blue << SpaceComponents{220, 60, 50 * f, 0};
    QTest::newRow("HSL white") << 2 << white << SpaceComponents{0, 0, 100 * f, 0};

    QTest::newRow("RGB keeps alpha") << 0 << Colour{65535, 32768, 0, 1000}
                                     << SpaceComponents{1, 32768 / 65535.0, 0, 1000 / 65535.0};
}

void TestColorSpace::forwardValues()
{
    QFETCH(int, space);
    QFETCH(Colour, colour);
    QFETCH(SpaceComponents, expected);
    const SpaceComponents got = colourToSpace(colour, space);
    for (int i = 0; i < 4; ++i)
        QVERIFY2(near(got[size_t(i)], expected[size_t(i)]),
                 qPrintable(QStringLiteral("component %1: got %2, expected %3")
                                .arg(i)
                                .arg(describe(got), describe(expected))));
}

void TestColorSpace::greysHaveNoHueOrSaturation_data()
{
    QTest::addColumn<uint>("grey");
    for (uint g : {0u, 1u, 256u, 16711u, 16712u, 32768u, 65280u, 65535u})
        QTest::addRow("%u", g) << g;
}

void TestColorSpace::greysHaveNoHueOrSaturation()
{
    QFETCH(uint, grey);
    const Colour c{grey, grey, grey, 65535};
    const HSVAColor<double> hsva = toHSVA(c);
    QCOMPARE(hsva.h, 0.0);
    QCOMPARE(hsva.s, 0.0);
    QCOMPARE(hsva.v, grey / 65535.0);
    QCOMPARE(hsva.a, 1.0 / 65535.0); // the alpha is divided by 65535 twice
    const HSLAColor<double> hsla = toHSLA(c);
    QCOMPARE(hsla.h, 0.0);
    QCOMPARE(hsla.s, 0.0);
    const HSBAColor<double> hsba = toHSBA(c);
    QCOMPARE(hsba.h, 0.0);
    QCOMPARE(hsba.s, 0.0);
    for (int space : {int(SpaceHSL), int(SpaceHSV), int(SpaceHSB)}) {
        const SpaceComponents v = colourToSpace(c, space);
        QCOMPARE(v[0], 0.0);
        QCOMPARE(v[1], 0.0);
    }
}

void TestColorSpace::unknownIndexActsAsRgb_data()
{
    QTest::addColumn<int>("index");
    for (int i : {-1, 14, 15, 1000, INT_MIN, INT_MAX})
        QTest::addRow("%d", i) << i;
}

void TestColorSpace::unknownIndexActsAsRgb()
{
    QFETCH(int, index);
    const Colour c{1234, 40000, 65535, 777};
    const SpaceComponents expected{1234 / 65535.0, 40000 / 65535.0, 1.0, 777 / 65535.0};
    QCOMPARE(colourToSpace(c, index), expected);
    QCOMPARE(colourToSpace(c, 0), expected);
    const SpaceComponents v{0.25, 0.5, 0.75, 0.1};
    QCOMPARE(spaceToColour(v, index), spaceToColour(v, 0));
    QCOMPARE(spaceToColour(v, index), Colour(16383, 32767, 49151, 65535));
}

void TestColorSpace::rgbIndexTruncates_data()
{
    QTest::addColumn<SpaceComponents>("components");
    QTest::addColumn<Colour>("expected");
    QTest::newRow("fractions truncate")
        << SpaceComponents{100.9 / 65535, 200.5 / 65535, 65534.99 / 65535, 0.3}
        << Colour{100, 200, 65534, 65535};
    QTest::newRow("clamped") << SpaceComponents{1.5, -0.2, kNaN, 7} << Colour{65535, 0, 0, 65535};
    QTest::newRow("infinite") << SpaceComponents{kInf, -kInf, 1.0, kNaN} << Colour{65535, 0, 65535, 65535};
}

void TestColorSpace::rgbIndexTruncates()
{
    QFETCH(SpaceComponents, components);
    QFETCH(Colour, expected);
    QCOMPARE(spaceToColour(components, SpaceRGB), expected);
}

const std::vector<Colour> &TestColorSpace::sample()
{
    if (!m_sample.empty())
        return m_sample;
    std::mt19937 rng(20240531u);
    std::uniform_int_distribution<uint> any(0, 65535), small(0, 511), band(16690, 16730);
    auto push = [this, &rng, &any](uint r, uint g, uint b) { m_sample.push_back({r, g, b, any(rng)}); };
    for (uint i = 0; i < 8; ++i)
        push(i & 1 ? 65535 : 0, i & 2 ? 65535 : 0, i & 4 ? 65535 : 0);
    for (uint g = 0; g < 65536; g += 3)
        push(g, g, g);
    // Around the HSV/CMYK limit on the largest channel (0.001 * 255 * 65535 = 16711.4).
    for (int i = 0; i < 20000; ++i) {
        const uint m = band(rng);
        std::uniform_int_distribution<uint> below(0, m);
        uint c[3] = {m, below(rng), below(rng)};
        std::shuffle(c, c + 3, rng);
        push(c[0], c[1], c[2]);
    }
    // Dark colours, where Luv's X + 15Y + 3Z passes its 0.001 limit.
    for (int i = 0; i < 100000; ++i)
        push(small(rng), small(rng), small(rng));
    for (int i = 0; i < 1000000; ++i)
        push(any(rng), any(rng), any(rng));
    return m_sample;
}

void TestColorSpace::roundTrip_data()
{
    QTest::addColumn<int>("space");
    QTest::addColumn<bool>("hasExemption");
    for (int s = 0; s < ColorSpaceCount; ++s)
        QTest::newRow(qPrintable(colorSpaceTable()[size_t(s)].name))
            << s << (s == SpaceLuv || s == SpaceCMYK || s == SpaceHSV || s == SpaceHSB);
}

void TestColorSpace::roundTrip()
{
    QFETCH(int, space);
    QFETCH(bool, hasExemption);

    Exemption exemption;
    switch (space) {
    case SpaceHSV:
    case SpaceHSB:
        // Largest channel / 65535 / 255 <= 0.001 (channel <= 16711): the saturation is forced to 0
        // and only hue and value survive; the inverse gives the grey of the value.
        exemption = {[](const Colour &c) { return maxChannel(c) / 65535.0 / 255.0 <= 0.001; }, greyOfMax};
        break;
    case SpaceCMYK:
        // k = 1 - largest / 65535 / 255; |k - 1| < 0.001 zeroes c, m and y, so only the black
        // survives; the inverse gives the grey of 1 - k, the largest channel.
        exemption = {
            [](const Colour &c) { return std::fabs((1.0 - maxChannel(c) / 65535.0 / 255.0) - 1.0) < 0.001; },
            greyOfMax};
        break;
    case SpaceLuv:
        // X + 15Y + 3Z <= 0.001: X/d and Y/d are taken as 0, so only L (the luminance) survives;
        // the inverse gives the grey of the same luminance. The Y row of the matrix sums to 1.0000001.
        exemption = {[](const Colour &c) {
                         const Xyz3 v = referenceXyz(c);
                         return v.x + 15 * v.y + 3 * v.z <= 0.001;
                     },
                     [](const Colour &c) {
                         const uint g = uint(
                             std::lround((0.2126729 * c.r + 0.7151522 * c.g + 0.072175 * c.b) / 1.0000001));
                         return Colour{g, g, g, 65535};
                     }};
        break;
    default:
        // Every other space keeps the whole colour. Index 0 included: x / 65535 * 65535 comes
        // back as exactly x for every 16-bit x, so its truncation loses nothing.
        break;
    }

    QElapsedTimer timer;
    timer.start();
    qint64 exempt = 0;
    for (const Colour &c : sample()) {
        const Colour back = spaceToColour(colourToSpace(c, space), space);
        Colour expected{c.r, c.g, c.b, 65535};
        if (exemption.applies && exemption.applies(c)) {
            ++exempt;
            expected = exemption.expected(c);
        }
        if (back != expected)
            QFAIL(
                qPrintable(QStringLiteral("%1 -> %2 -> %3, expected %4")
                               .arg(text(c), describe(colourToSpace(c, space)), text(back), text(expected))));
    }
    // The exempt colours are really met (and checked) by the sample.
    QCOMPARE(exempt > 1000, hasExemption);
    qInfo("%zu colours, %lld exempt, %lld ms", sample().size(), exempt, timer.elapsed());
}

void TestColorSpace::inverseOfEditedComponents_data()
{
    QTest::addColumn<int>("space");
    QTest::addColumn<SpaceComponents>("components");
    QTest::addColumn<Colour>("expected");
    const double f = 1.0 / 255.0;
    const Colour white{65535, 65535, 65535, 65535}, black{0, 0, 0, 65535};
    QTest::newRow("HSV hue 360 is red") << 9 << SpaceComponents{360, 1, f, 0} << Colour{65535, 0, 0, 65535};
    QTest::newRow("HSV hue -120 is blue")
        << 9 << SpaceComponents{-120, 1, f, 0} << Colour{0, 0, 65535, 65535};
    QTest::newRow("HSB hue 600 is blue") << 10 << SpaceComponents{600, 1, f, 0} << Colour{0, 0, 65535, 65535};
    QTest::newRow("HSV value too bright") << 9 << SpaceComponents{0, 0, 1, 0} << white;
    QTest::newRow("HSL green") << 2 << SpaceComponents{120, 100, 50 * f, 0} << Colour{0, 65535, 0, 65535};
    QTest::newRow("HSL lightness 100") << 2 << SpaceComponents{0, 100, 100, 0} << white;
    QTest::newRow("CMY none") << 7 << SpaceComponents{0, 0, 0, 0} << white;
    QTest::newRow("CMY over 1") << 7 << SpaceComponents{2, 2, 2, 0} << black;
    QTest::newRow("CMYK grey") << 8 << SpaceComponents{0, 0, 0, 1 - 0.25 * f}
                               << Colour{16384, 16384, 16384, 65535};
    QTest::newRow("Lab L 100") << 3 << SpaceComponents{100, 0, 0, 0} << white;
    QTest::newRow("Lab negative L") << 3 << SpaceComponents{-50, 0, 0, 0} << black;
    QTest::newRow("Luv L 0") << 5 << SpaceComponents{0, 10, 10, 0} << black;
    QTest::newRow("HunterLab negative l") << 11 << SpaceComponents{-1, 5, 5, 0} << black;
    QTest::newRow("XYZ huge") << 1 << SpaceComponents{1e6, 1e6, 1e6, 0} << white;
    // A luminance without chromaticity is the grey of that luminance.
    const double y = 100 * 0.25 * f / 12.92 * 1.0000001; // the Y of the grey 16383.75
    QTest::newRow("Yxy no chromaticity")
        << 6 << SpaceComponents{y, 0, 0, 0} << Colour{16384, 16384, 16384, 65535};
}

void TestColorSpace::inverseOfEditedComponents()
{
    QFETCH(int, space);
    QFETCH(SpaceComponents, components);
    QFETCH(Colour, expected);
    QCOMPARE(spaceToColour(components, space), expected);
}

void TestColorSpace::nonFiniteComponentsAreClamped()
{
    const double values[] = {kNaN, kInf, -kInf, 1e300, -1e300, 0.0, 0.5};
    int checked = 0;
    for (int space = 0; space < ColorSpaceCount; ++space)
        for (double a : values)
            for (double b : values)
                for (double c : values)
                    for (double d : values) {
                        const Colour got = spaceToColour({a, b, c, d}, space);
                        QVERIFY(got.r <= 65535 && got.g <= 65535 && got.b <= 65535);
                        QCOMPARE(got.a, 65535u);
                        ++checked;
                    }
    QCOMPARE(checked, 14 * 7 * 7 * 7 * 7);
}

void TestColorSpace::paletteAndVectorForms()
{
    Palette<uint> p;
    p.append({0, 0, 0, 65535});
    p.append({65535, 1, 30000, 0});
    p.append({20000, 40000, 60000, 12345});
    for (int space = -1; space <= ColorSpaceCount; ++space) {
        const std::vector<SpaceComponents> v = colourToSpace(p, space);
        QCOMPARE(int(v.size()), p.size());
        std::vector<SpaceComponents> edited;
        for (int i = 0; i < p.size(); ++i) {
            QCOMPARE(v[size_t(i)], colourToSpace(p[i], space));
            edited.push_back({v[size_t(i)][0] * 0.9, v[size_t(i)][1], v[size_t(i)][2], v[size_t(i)][3]});
        }
        const std::vector<Colour> back = spaceToColour(edited, space);
        QCOMPARE(int(back.size()), p.size());
        for (int i = 0; i < p.size(); ++i)
            QCOMPARE(back[size_t(i)], spaceToColour(edited[size_t(i)], space));
    }
    QVERIFY(colourToSpace(Palette<uint>(), SpaceLab).empty());
    QVERIFY(spaceToColour(std::vector<SpaceComponents>(), SpaceLab).empty());
}

void TestColorSpace::convertBetweenSpaces_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<Colour>("colour");
    const Colour blue{13107, 26214, 52428, 65535}, orange{60000, 30000, 10000, 65535};
    QTest::newRow("Lab to HSV") << 3 << 9 << blue;
    QTest::newRow("HSV to Lab") << 9 << 3 << orange;
    QTest::newRow("CMYK to Luv") << 8 << 5 << orange;
    QTest::newRow("XYZ to HSL") << 1 << 2 << blue;
    QTest::newRow("HunterLab to CMYK") << 11 << 8 << orange;
    QTest::newRow("HSL to XYZ") << 2 << 1 << orange;
}

void TestColorSpace::convertBetweenSpaces()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(Colour, colour);
    const auto source = makeSpace(from, colourToSpace(colour, from));
    const auto target = makeSpace(to, {});
    ColorSpace::convert(*source, *target);
    const SpaceComponents got = componentsOf(*target);
    const SpaceComponents expected = colourToSpace(colour, to);
    for (size_t i = 0; i < 4; ++i)
        QVERIFY2(std::fabs(got[i] - expected[i]) <= 1e-9 * (1 + std::fabs(expected[i])),
                 qPrintable(describe(got) + " vs " + describe(expected)));
}

void TestColorSpace::convertWithinOneSpaceCopies()
{
    using namespace ColorSpace;
    // A dark HSV colour with a saturation the forward formula would never produce: going through
    // Rgb would reset it to 0, a copy keeps it.
    Hsv dark;
    dark.h = 200, dark.s = 0.5, dark.v = 0.0005;
    Hsv copied;
    convert(dark, copied);
    QCOMPARE(copied.h, 200.0);
    QCOMPARE(copied.s, 0.5);
    QCOMPARE(copied.v, 0.0005);
    Rgb viaRgb;
    Hsv back;
    convert(dark, viaRgb);
    convert(viaRgb, back);
    QCOMPARE(back.s, 0.0);

    Cmyk ink;
    ink.c = 0.3, ink.m = 0.2, ink.y = 0.1, ink.k = 0.9995;
    Cmyk inkCopy;
    convert(ink, inkCopy);
    QCOMPARE(componentsOf(inkCopy), (SpaceComponents{0.3, 0.2, 0.1, 0.9995}));

    // copyTo handed another class converts rather than misbehaving.
    Rgb red(1.0, 0.0, 0.0);
    Hsv hsv;
    red.copyTo(hsv);
    QCOMPARE(hsv.h, 0.0);
    QCOMPARE(hsv.v, 1.0 / 255.0);
}

void TestColorSpace::toHsva_data()
{
    QTest::addColumn<Colour>("colour");
    QTest::addColumn<SpaceComponents>("expected");
    QTest::newRow("black") << Colour{0, 0, 0, 65535} << SpaceComponents{0, 0, 0, 1 / 65535.0};
    QTest::newRow("transparent black") << Colour{0, 0, 0, 0} << SpaceComponents{0, 0, 0, 0};
    QTest::newRow("red") << Colour{65535, 0, 0, 65535} << SpaceComponents{0, 1, 1, 1 / 65535.0};
    QTest::newRow("magenta") << Colour{65535, 0, 65535, 65535} << SpaceComponents{300, 1, 1, 1 / 65535.0};
    QTest::newRow("azure") << Colour{0, 32767, 65535, 32768}
                           << SpaceComponents{240 - 60 * (32767 / 65535.0), 1, 1, 32768 / 65535.0 / 65535.0};
    QTest::newRow("orange") << Colour{60000, 30000, 10000, 65535}
                            << SpaceComponents{24, 50000 / 60000.0, 60000 / 65535.0, 1 / 65535.0};
}

void TestColorSpace::toHsva()
{
    QFETCH(Colour, colour);
    QFETCH(SpaceComponents, expected);
    const HSVAColor<double> c = toHSVA(colour);
    const SpaceComponents got{c.h, c.s, c.v, c.a};
    for (size_t i = 0; i < 4; ++i)
        QVERIFY2(near(got[i], expected[i]), qPrintable(describe(got)));
}

void TestColorSpace::hsvaToRgba_data()
{
    QTest::addColumn<SpaceComponents>("hsva");
    QTest::addColumn<Colour>("expected");
    QTest::newRow("hue 0") << SpaceComponents{0, 1, 1, 65535} << Colour{65535, 0, 0, 4294836225u};
    QTest::newRow("hue 180") << SpaceComponents{180, 1, 1, 65535} << Colour{0, 65535, 65535, 4294836225u};
    QTest::newRow("hue 120 half") << SpaceComponents{120, 0.5, 1, 0.5} << Colour{32767, 65535, 32767, 32767};
    // hh = -1.5 truncates to sector -1: (q, q, q) with f = -0.5, q = 0.5 * (1 + 0.25) = 0.625.
    QTest::newRow("hue -90") << SpaceComponents{-90, 0.5, 0.5, 1} << Colour{40959, 40959, 40959, 65535};
    // hh = -0.5 truncates to sector 0 with f = -0.5: (v, t, p) with t < 0, truncated to 0.
    QTest::newRow("hue -30") << SpaceComponents{-30, 1, 1, 0} << Colour{65535, 0, 0, 0};
}

void TestColorSpace::hsvaToRgba()
{
    QFETCH(SpaceComponents, hsva);
    QFETCH(Colour, expected);
    QCOMPARE(hsvaToRGBA({hsva[0], hsva[1], hsva[2], hsva[3]}), expected);
}

void TestColorSpace::hslaAndHsbaRoundTrip()
{
    std::mt19937 rng(7u);
    std::uniform_int_distribution<uint> any(0, 65535);
    std::vector<Colour> colours;
    for (uint i = 0; i < 16; ++i)
        colours.push_back(
            {i & 1 ? 65535u : 0u, i & 2 ? 65535u : 0u, i & 4 ? 65535u : 0u, i & 8 ? 65535u : 0u});
    for (int i = 0; i < 200000; ++i)
        colours.push_back({any(rng), any(rng), any(rng), any(rng)});
    for (const Colour &c : colours) {
        const Colour viaHsla = hslaToRGBA(toHSLA(c));
        if (viaHsla != c)
            QFAIL(qPrintable(QStringLiteral("HSLA: %1 -> %2").arg(text(c), text(viaHsla))));
        const Colour viaHsba = hsbaToRGBA(toHSBA(c));
        if (viaHsba != c)
            QFAIL(qPrintable(QStringLiteral("HSBA: %1 -> %2").arg(text(c), text(viaHsba))));
    }
}

QTEST_APPLESS_MAIN(TestColorSpace)
#include "tst_colorspace.moc"
