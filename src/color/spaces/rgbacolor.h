#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>

// A colour with red, green, blue and alpha in one of three widths:
//   RGBAColor<uchar>  0..255
//   RGBAColor<uint>   0..65535 held in 32-bit words (the working colour of every palette)
//   RGBAColor<double> 0.0..1.0
// The 32-bit words of RGBAColor<uint> may hold values above 65535 (the hue rotation
// generator produces an alpha of 65535 * 65535), so nothing here masks them.
template <typename T>
class RGBAColor
{
public:
    RGBAColor() = default;
    RGBAColor(T red, T green, T blue, T alpha) : r(red), g(green), b(blue), a(alpha) {}
    RGBAColor(const RGBAColor &) = default;
    RGBAColor &operator=(const RGBAColor &) = default;
    virtual ~RGBAColor() = default;

    bool operator==(const RGBAColor &o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    bool operator!=(const RGBAColor &o) const { return !(*this == o); }

    T r{};
    T g{};
    T b{};
    T a{};
};

using RGBAColor8 = RGBAColor<uchar>;
using RGBAColor16 = RGBAColor<uint>;
using RGBAColorF = RGBAColor<double>;

// <uint> -> <double>: every component divided by 65535.
inline RGBAColor<double> toDoubleColor(const RGBAColor<uint> &c)
{
    return {c.r / 65535.0, c.g / 65535.0, c.b / 65535.0, c.a / 65535.0};
}

// <uint> -> <uchar>: the high byte of each 16-bit component.
inline RGBAColor<uchar> toByteColor(const RGBAColor<uint> &c)
{
    return {uchar((c.r >> 8) & 0xFF), uchar((c.g >> 8) & 0xFF), uchar((c.b >> 8) & 0xFF),
            uchar((c.a >> 8) & 0xFF)};
}

// <uchar> -> <uint>: the byte becomes the high byte, so 255 widens to 65280. Files and the
// palette database all widen this way; keeping it means an 8-bit colour survives a round trip.
inline RGBAColor<uint> fromByteColor(const RGBAColor<uchar> &c)
{
    return {uint(c.r) << 8, uint(c.g) << 8, uint(c.b) << 8, uint(c.a) << 8};
}

inline uint clampedChannel(double v)
{
    if (!(v > 0.0)) // also catches NaN
        return 0;
    if (v >= 65535.0)
        return 65535;
    return uint(std::lround(v));
}

// <double> -> <uint>: scaled by 65535, rounded and clamped into 0..65535.
inline RGBAColor<uint> fromDoubleColor(const RGBAColor<double> &c)
{
    return {clampedChannel(c.r * 65535.0), clampedChannel(c.g * 65535.0), clampedChannel(c.b * 65535.0),
            clampedChannel(c.a * 65535.0)};
}
