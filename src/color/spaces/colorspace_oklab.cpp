// OKLab and OKLCH, as Björn Ottosson published them for linear sRGB. Unlike the older spaces
// they read the Rgb components as 0..1 fractions (see colorspace.h).
#include "spaces/colorspace.h"

#include "spaces/colorspacemath.h"

#include <cmath>

namespace ColorSpace {

namespace {

constexpr double kPi = 3.14159265358979323846;

// Linear sRGB -> cone responses (LMS), and cube-rooted LMS -> L, a, b, as published.
constexpr double kToLms[3][3] = {{0.4122214708, 0.5363325363, 0.0514459929},
                                 {0.2119034982, 0.6806995451, 0.1073969566},
                                 {0.0883024619, 0.2817188376, 0.6299787005}};
constexpr double kToLab[3][3] = {{0.2104542553, 0.7936177850, -0.0040720468},
                                 {1.9779984951, -2.4285922050, 0.4505937099},
                                 {0.0259040371, 0.7827717662, -0.8086757660}};

// The published inverses carry ten digits; inverting the forward matrices in double precision
// instead makes a colour taken into the space and straight back come back unchanged.
const Math::Matrix3 &fromLms()
{
    static const Math::Matrix3 inv = Math::inverted(kToLms);
    return inv;
}

const Math::Matrix3 &fromLab()
{
    static const Math::Matrix3 inv = Math::inverted(kToLab);
    return inv;
}

template <typename M> void multiply(const M &m, const double (&in)[3], double (&out)[3])
{
    for (int i = 0; i < 3; ++i)
        out[i] = m[i][0] * in[0] + m[i][1] * in[1] + m[i][2] * in[2];
}

// Below this chroma a colour is a grey: the matrices leave a white with a chroma of about 4e-8,
// while the nearest colour that is not grey (one step of 65535 off white) has about 4e-6. A grey
// reports chroma and hue 0, so that a gradient through white does not swing through a random hue.
constexpr double kGreyChroma = 1e-6;

} // namespace

using Math::copyInto;

// Oklab

void Oklab::fromRgb(const Rgb &in)
{
    const double linear[3] = {Math::srgbToLinear(in.r), Math::srgbToLinear(in.g), Math::srgbToLinear(in.b)};
    double lms[3];
    multiply(kToLms, linear, lms);
    for (double &v : lms)
        v = std::cbrt(v);
    double lab[3];
    multiply(kToLab, lms, lab);
    l = lab[0];
    a = lab[1];
    b = lab[2];
}

void Oklab::toRgb(Rgb &out) const
{
    const double lab[3] = {l, a, b};
    double lms[3];
    multiply(fromLab().m, lab, lms);
    for (double &v : lms)
        v = v * v * v;
    double linear[3];
    multiply(fromLms().m, lms, linear);
    out = Rgb(Math::linearToSrgb(linear[0]), Math::linearToSrgb(linear[1]), Math::linearToSrgb(linear[2]));
}

void Oklab::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

// Oklch

void Oklch::fromRgb(const Rgb &in)
{
    Oklab lab;
    lab.fromRgb(in);
    l = lab.l;
    c = std::sqrt(lab.a * lab.a + lab.b * lab.b);
    if (c < kGreyChroma) {
        c = 0.0;
        h = 0.0;
        return;
    }
    h = std::atan2(lab.b, lab.a) * 180.0 / kPi;
    if (h < 0.0)
        h += 360.0;
}

void Oklch::toRgb(Rgb &out) const
{
    const double rad = Math::wrappedHue(h) * kPi / 180.0;
    Oklab lab;
    lab.l = l;
    lab.a = c * std::cos(rad);
    lab.b = c * std::sin(rad);
    lab.toRgb(out);
}

void Oklch::copyTo(IColorSpace &other) const
{
    copyInto(*this, other);
}

} // namespace ColorSpace
