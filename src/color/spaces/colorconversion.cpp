#include "spaces/colorconversion.h"

#include <cmath>

namespace {

// Hue in degrees of r, g, b in 0..1 given their max and delta (> 0).
double hueOf(double r, double g, double b, double max, double delta)
{
    double h;
    if (max == r)
        h = 60.0 * (g - b) / delta;
    else if (max == g)
        h = 60.0 * (b - r) / delta + 120.0;
    else
        h = 60.0 * (r - g) / delta + 240.0;
    if (h < 0.0)
        h += 360.0;
    return h;
}

uint truncatedWord(double v)
{
    if (!(v > 0.0))
        return 0;
    if (v >= 4294967295.0)
        return 0xFFFFFFFFu;
    return uint(v);
}

// Shared sector formula; returns r, g, b in 0..1 (before any scaling).
void hsvSectors(double hue, double sat, double value, double &r, double &g, double &b)
{
    const double hh = hue / 60.0;
    const long i = long(hh); // truncation towards zero
    const long sector = i % 6;
    const double f = hh - double(sector);
    const double p = value * (1.0 - sat);
    const double q = value * (1.0 - sat * f);
    const double t = value * (1.0 - sat * (1.0 - f));
    switch (sector) {
    case 0: r = value; g = t; b = p; break;
    case 1: r = q; g = value; b = p; break;
    case 2: r = p; g = value; b = t; break;
    case 3: r = p; g = q; b = value; break;
    case 4: r = t; g = p; b = value; break;
    case 5: r = value; g = p; b = q; break;
    default: r = g = b = q; break; // a negative hue
    }
}

} // namespace

HSVAColor<double> toHSVA(const RGBAColor<uint> &c)
{
    const double r = c.r / 65535.0, g = c.g / 65535.0, b = c.b / 65535.0, a = c.a / 65535.0;
    const double max = std::max({r, g, b});
    const double min = std::min({r, g, b});
    double h = 0.0, s = 0.0;
    if (max != 0.0 && !std::isnan(max)) {
        const double delta = max - min;
        if (delta != 0.0) {
            s = delta / max;
            h = hueOf(r, g, b, max, delta);
        }
    }
    return {h, s, max, a / 65535.0};
}

RGBAColor<uint> hsvaToRGBA(const HSVAColor<double> &c)
{
    double r, g, b;
    hsvSectors(c.h, c.s, c.v, r, g, b);
    return {truncatedWord(r * 65535.0), truncatedWord(g * 65535.0), truncatedWord(b * 65535.0),
            truncatedWord(c.a * 65535.0)};
}

HSLAColor<double> toHSLA(const RGBAColor<uint> &c)
{
    const double r = c.r / 65535.0, g = c.g / 65535.0, b = c.b / 65535.0;
    const double max = std::max({r, g, b});
    const double min = std::min({r, g, b});
    const double l = (max + min) / 2.0;
    const double delta = max - min;
    double h = 0.0, s = 0.0;
    if (delta > 0.0) {
        s = delta / (1.0 - std::fabs(2.0 * l - 1.0));
        h = hueOf(r, g, b, max, delta);
    }
    return {h, std::min(s, 1.0), l, c.a / 65535.0};
}

RGBAColor<uint> hslaToRGBA(const HSLAColor<double> &c)
{
    const double chroma = (1.0 - std::fabs(2.0 * c.l - 1.0)) * c.s;
    const double value = c.l + chroma / 2.0;
    const double sat = value > 0.0 ? chroma / value : 0.0;
    double h = std::fmod(c.h, 360.0);
    if (h < 0.0)
        h += 360.0;
    double r, g, b;
    hsvSectors(h, sat, value, r, g, b);
    return fromDoubleColor({r, g, b, c.a});
}

HSBAColor<double> toHSBA(const RGBAColor<uint> &c)
{
    const HSVAColor<double> v = toHSVA(c);
    return {v.h, v.s, v.v, c.a / 65535.0};
}

RGBAColor<uint> hsbaToRGBA(const HSBAColor<double> &c)
{
    double h = std::fmod(c.h, 360.0);
    if (h < 0.0)
        h += 360.0;
    double r, g, b;
    hsvSectors(h, c.s, c.b, r, g, b);
    return fromDoubleColor({r, g, b, c.a});
}
