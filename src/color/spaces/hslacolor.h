#pragma once

// A cylindrical colour: hue in degrees (0 <= h < 360), saturation and lightness as fractions, alpha.
template <typename T>
class HSLAColor
{
public:
    HSLAColor() = default;
    HSLAColor(T hue, T saturation, T lightness, T alpha) : h(hue), s(saturation), l(lightness), a(alpha) {}
    HSLAColor(const HSLAColor &) = default;
    HSLAColor &operator=(const HSLAColor &) = default;
    virtual ~HSLAColor() = default;

    T h{};
    T s{};
    T l{};
    T a{};
};
