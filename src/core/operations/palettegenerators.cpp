#include "operations/palettegenerators.h"

#include "spaces/colorconversion.h"

#include <algorithm>

namespace PaletteGenerators {

Palette<uint> extendedGrayscale()
{
    Palette<uint> p;
    p.reserve(766);
    for (uint i = 0; i < 256; ++i) {
        p.append({i << 8, i << 8, i << 8, 0xFF00});
        if (i != 255) {
            p.append({(i + 1) << 8, i << 8, i << 8, 0xFF00});
            p.append({(i + 1) << 8, (i + 1) << 8, i << 8, 0xFF00});
        }
    }
    return p;
}

Palette<uint> hueRotation(int n)
{
    Palette<uint> p;
    if (n <= 0)
        return p;
    p.reserve(n);
    const double step = 360.0 / n;
    for (int i = 0; i < n; ++i)
        p.append(hsvaToRGBA(HSVAColor<double>(i * step, 1.0, 1.0, 65535.0)));
    return p;
}

RGBAColor<uint> linearMix(const RGBAColor<uint> &a, const RGBAColor<uint> &b, double t)
{
    const auto mix = [t](uint x, uint y) { return uint(x * (1.0 - t) + y * t); };
    return {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b), mix(a.a, b.a)};
}

Palette<uint> interpolateSelected(const Palette<uint> &palette, const std::set<int> &selection)
{
    Palette<uint> out = palette;
    std::vector<int> keys;
    for (int i : selection)
        if (i >= 0 && i < palette.size())
            keys.push_back(i);
    for (size_t k = 1; k < keys.size(); ++k) {
        const int a = keys[k - 1], b = keys[k];
        for (int i = a + 1; i < b; ++i)
            out[i] = linearMix(palette[a], palette[b], (i - a) * (1.0 / (b - a)));
    }
    return out;
}

Palette<uint> invertOrder(const Palette<uint> &palette)
{
    Palette<uint> out = palette;
    std::reverse(out.entries().begin(), out.entries().end());
    return out;
}

Palette<uint> shiftOrder(const Palette<uint> &palette, int offset)
{
    Palette<uint> out = palette;
    const int n = palette.size();
    for (int j = 0; j < n; ++j) {
        long long k = (long long)j + offset;
        k %= n;
        if (k < 0)
            k += n;
        out[j] = palette[int(k)];
    }
    return out;
}

} // namespace PaletteGenerators
