#pragma once

// A cylindrical colour: hue in degrees (0 <= h < 360), saturation and brightness as fractions, alpha.
template <typename T>
class HSBAColor
{
public:
    HSBAColor() = default;
    HSBAColor(T hue, T saturation, T brightness, T alpha) : h(hue), s(saturation), b(brightness), a(alpha) {}
    HSBAColor(const HSBAColor &) = default;
    HSBAColor &operator=(const HSBAColor &) = default;
    virtual ~HSBAColor() = default;

    T h{};
    T s{};
    T b{};
    T a{};
};
