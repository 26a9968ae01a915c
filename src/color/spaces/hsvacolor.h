#pragma once

// A cylindrical colour: hue in degrees (0 <= h < 360), saturation and value as fractions, alpha.
template <typename T>
class HSVAColor
{
public:
    HSVAColor() = default;
    HSVAColor(T hue, T saturation, T value, T alpha) : h(hue), s(saturation), v(value), a(alpha) {}
    HSVAColor(const HSVAColor &) = default;
    HSVAColor &operator=(const HSVAColor &) = default;
    virtual ~HSVAColor() = default;

    T h{};
    T s{};
    T v{};
    T a{};
};
