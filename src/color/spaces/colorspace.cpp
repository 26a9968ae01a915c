#include "spaces/colorspace.h"

#include "spaces/colorspacemath.h"

#include <algorithm>
#include <cmath>
#include <typeinfo>

namespace ColorSpace {

namespace {

// The Rgb components hold channel / 65535; the conversions read them as 0..255 values.
constexpr double kRgbScale = 255.0;
constexpr double kPi = 3.14159265358979323846;

// D65 white reference of the Lab and Luv conversions.
constexpr double kWhiteX = 95.047;
constexpr double kWhiteY = 100.0;
constexpr double kWhiteZ = 108.883;
constexpr double kWhiteD = kWhiteX + 15.0 * kWhiteY + 3.0 * kWhiteZ;

// sRGB D65, linear values on 0..100.
constexpr double kToXyz[3][3] = {
    {0.4124564, 0.3575761, 0.1804375}, {0.2126729, 0.7151522, 0.072175}, {0.0193339, 0.119192, 0.9503041}};

using Math::copyInto;
using Math::wrappedHue;

const Math::Matrix3 &fromXyz()
{
    static const Math::Matrix3 inv = Math::inverted(kToXyz);
    return inv;
}

// One Rgb component -> linear light on 0..100.
double linearOf(double component)
{
    return Math::srgbToLinear(component / kRgbScale) * 100.0;
}

// Linear light on 0..100 -> one Rgb component; the exact inverse of linearOf on both segments.
double componentOf(double linear)
{
    return Math::linearToSrgb(linear / 100.0) * kRgbScale;
}

// The Lab companding function and its inverse.
double labF(double t)
{
    return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0;
}

double labFInverse(double f)
{
    const double cube = f * f * f;
    return cube > 0.008856 ? cube : (f - 16.0 / 116.0) / 7.787;
}

// The shared hue of Hsv, Hsb and Hsl, from r, g, b on any common scale with delta > 0.
double hueOf(double r, double g, double b, double max, double delta)
{
    double h;
    if (r == max)
        h = (g - b) / delta;
    else if (g == max)
        h = (b - r) / delta + 2.0;
    else
        h = (r - g) / delta + 4.0;
    return std::fmod(60.0 * h + 360.0, 360.0);
}

// Hue, chroma and the smallest channel back to r, g, b on the same scale.
void fromHueChroma(double hue, double chroma, double min, double &r, double &g, double &b)
{
    const double hh = wrappedHue(hue) / 60.0;
    int sector = int(hh);
    if (sector > 5)
        sector = 5;
    const double x = chroma * (1.0 - std::fabs(std::fmod(hh, 2.0) - 1.0));
    double r1 = 0, g1 = 0, b1 = 0;
    // clang-format off
    switch (sector) {
    case 0: r1 = chroma; g1 = x; break;
    case 1: r1 = x; g1 = chroma; break;
    case 2: g1 = chroma; b1 = x; break;
    case 3: g1 = x; b1 = chroma; break;
    case 4: r1 = x; b1 = chroma; break;
    default: r1 = chroma; b1 = x; break;
    }
    // clang-format on
    r = r1 + min;
    g = g1 + min;
    b = b1 + min;
}

void hsvForward(const Rgb &in, double &h, double &s, double &v)
{
    const double r = in.r / kRgbScale, g = in.g / kRgbScale, b = in.b / kRgbScale;
    const double max = std::max({r, g, b});
    const double min = std::min({r, g, b});
    const double delta = max - min;
    v = max;
    s = max > 0.001 ? delta / max : 0.0;
    h = delta == 0.0 ? 0.0 : hueOf(r, g, b, max, delta);
}

void hsvInverse(double h, double s, double v, Rgb &out)
{
    const double chroma = v * s;
    double r, g, b;
    fromHueChroma(h, chroma, v - chroma, r, g, b);
    out = Rgb(r * kRgbScale, g * kRgbScale, b * kRgbScale);
}

} // namespace

IColorSpace::~IColorSpace() = default;

void convert(const IColorSpace &from, IColorSpace &to)
{
    if (typeid(from) == typeid(to)) {
        from.copyTo(to);
        return;
    }
    Rgb rgb;
    from.toRgb(rgb);
    to.fromRgb(rgb);
}

// Rgb

void Rgb::toRgb(Rgb &out) const
{
    out = *this;
}
void Rgb::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}
void Rgb::fromRgb(const Rgb &in)
{
    *this = in;
}

// Xyz

void Xyz::fromRgb(const Rgb &in)
{
    const double r = linearOf(in.r), g = linearOf(in.g), b = linearOf(in.b);
    x = kToXyz[0][0] * r + kToXyz[0][1] * g + kToXyz[0][2] * b;
    y = kToXyz[1][0] * r + kToXyz[1][1] * g + kToXyz[1][2] * b;
    z = kToXyz[2][0] * r + kToXyz[2][1] * g + kToXyz[2][2] * b;
}

void Xyz::toRgb(Rgb &out) const
{
    const auto &m = fromXyz().m;
    out = Rgb(componentOf(m[0][0] * x + m[0][1] * y + m[0][2] * z),
              componentOf(m[1][0] * x + m[1][1] * y + m[1][2] * z),
              componentOf(m[2][0] * x + m[2][1] * y + m[2][2] * z));
}

void Xyz::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Lab

void Lab::fromRgb(const Rgb &in)
{
    Xyz xyz;
    xyz.fromRgb(in);
    const double fx = labF(xyz.x / kWhiteX);
    const double fy = labF(xyz.y / kWhiteY);
    const double fz = labF(xyz.z / kWhiteZ);
    l = 116.0 * fy - 16.0;
    a = 500.0 * (fx - fy);
    b = 200.0 * (fy - fz);
}

void Lab::toRgb(Rgb &out) const
{
    const double fy = (l + 16.0) / 116.0;
    const double fx = a / 500.0 + fy;
    const double fz = fy - b / 200.0;
    Xyz xyz;
    xyz.x = labFInverse(fx) * kWhiteX;
    xyz.y = labFInverse(fy) * kWhiteY;
    xyz.z = labFInverse(fz) * kWhiteZ;
    xyz.toRgb(out);
}

void Lab::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Lch

void Lch::fromRgb(const Rgb &in)
{
    Lab lab;
    lab.fromRgb(in);
    l = lab.l;
    c = std::sqrt(lab.a * lab.a + lab.b * lab.b);
    h = std::atan2(lab.b, lab.a) * 180.0 / kPi;
    if (h < 0.0)
        h += 360.0;
}

void Lch::toRgb(Rgb &out) const
{
    const double rad = wrappedHue(h) * kPi / 180.0;
    Lab lab;
    lab.l = l;
    lab.a = c * std::cos(rad);
    lab.b = c * std::sin(rad);
    lab.toRgb(out);
}

void Lch::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Luv

void Luv::fromRgb(const Rgb &in)
{
    Xyz xyz;
    xyz.fromRgb(in);
    const double yr = xyz.y / kWhiteY;
    l = yr > 216.0 / 24389.0 ? 116.0 * std::cbrt(yr) - 16.0 : 903.2962962962963 * yr;
    const double d = xyz.x + 15.0 * xyz.y + 3.0 * xyz.z;
    const double xd = d > 0.001 ? xyz.x / d : 0.0;
    const double yd = d > 0.001 ? xyz.y / d : 0.0;
    u = 52.0 * l * (xd - kWhiteX / kWhiteD);
    v = 117.0 * l * (yd - kWhiteY / kWhiteD);
}

void Luv::toRgb(Rgb &out) const
{
    const double yr = l > 8.0 ? std::pow((l + 16.0) / 116.0, 3.0) : l / 903.2962962962963;
    Xyz xyz;
    xyz.y = yr * kWhiteY;
    if (!(l > 0.0)) {
        out = Rgb();
        return;
    }
    const double xd = u / (52.0 * l) + kWhiteX / kWhiteD;
    const double yd = v / (117.0 * l) + kWhiteY / kWhiteD;
    if (!(yd > 1e-9)) {
        // The forward conversion drops the chromaticity of colours with X + 15Y + 3Z <= 0.001;
        // all that is left is the lightness, so the answer is the grey of that luminance.
        const double grey = componentOf(xyz.y / (kToXyz[1][0] + kToXyz[1][1] + kToXyz[1][2]));
        out = Rgb(grey, grey, grey);
        return;
    }
    const double d = xyz.y / yd;
    xyz.x = xd * d;
    xyz.z = (d - xyz.x - 15.0 * xyz.y) / 3.0;
    xyz.toRgb(out);
}

void Luv::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Yxy

void Yxy::fromRgb(const Rgb &in)
{
    Xyz xyz;
    xyz.fromRgb(in);
    const double sum = xyz.x + xyz.y + xyz.z;
    y1 = xyz.y;
    x = sum == 0.0 ? 0.0 : xyz.x / sum;
    y2 = sum == 0.0 ? 0.0 : xyz.y / sum;
}

void Yxy::toRgb(Rgb &out) const
{
    Xyz xyz;
    xyz.y = y1;
    if (y2 > 0.0) {
        const double sum = y1 / y2;
        xyz.x = x * sum;
        xyz.z = sum - xyz.x - y1;
    } else {
        // Only black has no chromaticity; anything else handed in without one becomes the grey
        // of its luminance.
        xyz.x = y1 * kWhiteX / kWhiteY;
        xyz.z = y1 * kWhiteZ / kWhiteY;
    }
    xyz.toRgb(out);
}

void Yxy::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// HunterLab

void HunterLab::fromRgb(const Rgb &in)
{
    Xyz xyz;
    xyz.fromRgb(in);
    const double root = std::sqrt(xyz.y);
    l = 10.0 * root;
    a = xyz.y == 0.0 ? 0.0 : 17.5 * (1.02 * xyz.x - xyz.y) / root;
    b = xyz.y == 0.0 ? 0.0 : 7.0 * (xyz.y - 0.847 * xyz.z) / root;
}

void HunterLab::toRgb(Rgb &out) const
{
    if (!(l > 0.0)) {
        out = Rgb();
        return;
    }
    const double root = l / 10.0;
    Xyz xyz;
    xyz.y = root * root;
    xyz.x = (a * root / 17.5 + xyz.y) / 1.02;
    xyz.z = (xyz.y - b * root / 7.0) / 0.847;
    xyz.toRgb(out);
}

void HunterLab::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Cmy

void Cmy::fromRgb(const Rgb &in)
{
    c = 1.0 - in.r / kRgbScale;
    m = 1.0 - in.g / kRgbScale;
    y = 1.0 - in.b / kRgbScale;
}

void Cmy::toRgb(Rgb &out) const
{
    out = Rgb((1.0 - c) * kRgbScale, (1.0 - m) * kRgbScale, (1.0 - y) * kRgbScale);
}

void Cmy::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Cmyk

void Cmyk::fromRgb(const Rgb &in)
{
    Cmy cmy;
    cmy.fromRgb(in);
    k = std::min({cmy.c, cmy.m, cmy.y});
    if (std::fabs(k - 1.0) < 0.001) {
        c = m = y = 0.0;
        return;
    }
    c = (cmy.c - k) / (1.0 - k);
    m = (cmy.m - k) / (1.0 - k);
    y = (cmy.y - k) / (1.0 - k);
}

void Cmyk::toRgb(Rgb &out) const
{
    // With the black at (almost) 1 the forward conversion keeps only the black, so c, m, y of 0
    // give back the grey of 1 - k.
    Cmy cmy;
    cmy.c = c * (1.0 - k) + k;
    cmy.m = m * (1.0 - k) + k;
    cmy.y = y * (1.0 - k) + k;
    cmy.toRgb(out);
}

void Cmyk::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Hsv and Hsb

void Hsv::fromRgb(const Rgb &in)
{
    hsvForward(in, h, s, v);
}
void Hsv::toRgb(Rgb &out) const
{
    hsvInverse(h, s, v, out);
}
void Hsv::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

void Hsb::fromRgb(const Rgb &in)
{
    hsvForward(in, h, s, b);
}
void Hsb::toRgb(Rgb &out) const
{
    hsvInverse(h, s, b, out);
}
void Hsb::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Hsl

void Hsl::fromRgb(const Rgb &in)
{
    const double r = in.r / kRgbScale, g = in.g / kRgbScale, b = in.b / kRgbScale;
    const double max = std::max({r, g, b});
    const double min = std::min({r, g, b});
    const double delta = max - min;
    l = (max + min) / 2.0;
    if (delta == 0.0) {
        h = s = 0.0;
    } else {
        s = (l < 0.5 ? delta / (max + min) : delta / (1.0 - std::fabs(2.0 * l - 1.0))) * 100.0;
        h = hueOf(r, g, b, max, delta);
    }
    l *= 100.0;
}

void Hsl::toRgb(Rgb &out) const
{
    const double light = l / 100.0;
    // 1 - |2l - 1| written per half, so that the dark half stays exact at the tiny lightnesses
    // the scaled input produces.
    const double span = light < 0.5 ? 2.0 * light : 2.0 - 2.0 * light;
    const double chroma = span * s / 100.0;
    double r, g, b;
    fromHueChroma(h, chroma, light - chroma / 2.0, r, g, b);
    out = Rgb(r * kRgbScale, g * kRgbScale, b * kRgbScale);
}

void Hsl::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

} // namespace ColorSpace
