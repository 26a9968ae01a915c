#pragma once

// Arithmetic the colour-space classes share; not for use outside src/color/spaces.
#include "spaces/colorspace.h"

#include <cmath>
#include <typeinfo>

namespace ColorSpace {
namespace Math {

struct Matrix3
{
    double m[3][3];
};

// The exact inverse of a in double precision, so that an inverse conversion undoes its forward
// conversion to the last bits rather than to the digits a published inverse happens to carry.
inline Matrix3 inverted(const double (&a)[3][3])
{
    Matrix3 inv{};
    inv.m[0][0] = a[1][1] * a[2][2] - a[1][2] * a[2][1];
    inv.m[0][1] = a[0][2] * a[2][1] - a[0][1] * a[2][2];
    inv.m[0][2] = a[0][1] * a[1][2] - a[0][2] * a[1][1];
    inv.m[1][0] = a[1][2] * a[2][0] - a[1][0] * a[2][2];
    inv.m[1][1] = a[0][0] * a[2][2] - a[0][2] * a[2][0];
    inv.m[1][2] = a[0][2] * a[1][0] - a[0][0] * a[1][2];
    inv.m[2][0] = a[1][0] * a[2][1] - a[1][1] * a[2][0];
    inv.m[2][1] = a[0][1] * a[2][0] - a[0][0] * a[2][1];
    inv.m[2][2] = a[0][0] * a[1][1] - a[0][1] * a[1][0];
    const double det = a[0][0] * inv.m[0][0] + a[0][1] * inv.m[1][0] + a[0][2] * inv.m[2][0];
    for (auto &row : inv.m)
        for (double &v : row)
            v /= det;
    return inv;
}

// The sRGB transfer curve: an encoded value 0..1 to linear light 0..1, and back; each the exact
// inverse of the other on both segments.
inline double srgbToLinear(double c)
{
    return c > 0.04045 ? std::pow((c + 0.055) / 1.055, 2.4) : c / 12.92;
}

inline double linearToSrgb(double lin)
{
    return lin > 0.04045 / 12.92 ? 1.055 * std::pow(lin, 1.0 / 2.4) - 0.055 : lin * 12.92;
}

// Hue in degrees from anything a dialog may hand back: wrapped into 0..360, 0 when not finite.
inline double wrappedHue(double h)
{
    if (!std::isfinite(h))
        return 0.0;
    h = std::fmod(h, 360.0);
    if (h < 0.0)
        h += 360.0;
    return h >= 360.0 ? 0.0 : h;
}

// Copies into an object of the same class, or goes through Rgb when handed any other space.
template <typename T> void copyInto(const T &self, IColorSpace &other)
{
    if (typeid(other) == typeid(T)) {
        static_cast<T &>(other) = self;
        return;
    }
    Rgb rgb;
    self.toRgb(rgb);
    other.fromRgb(rgb);
}

} // namespace Math
} // namespace ColorSpace
