#pragma once

#include "palette/palette.h"
#include "operations/paletteoperations.h"
#include "storage/settingstext.h"

#include <array>
#include <set>
#include <vector>

// "Blur palette": settings name "blur".
struct BlurSettings
{
    static const QString settingsName;
    static constexpr int maximumRadius = 128; // the radius spin boxes and the "Master size" slider
    enum Method : int
    {
        RunningMean = 0,
        Gauss = 1
    };

    int mode = 0; // colour-space number (ColorSpaceIndex)
    int method = RunningMean;
    bool wrap = false; // stored and restored; the blur never wraps (see PaletteBlur::blur)
    int master = 1;    // "value": "Master size", sets all four radii
    std::array<int, 4> radii{{1, 1, 1, 1}}; // "comp1".."comp4"
    bool selectedOnly = false;

    // The pairs are applied in order, as the dialog applies them to its controls: "value" moves
    // the master slider, which sets all four radii, so a later "compN" overrides it and an
    // earlier one is overridden. Radii are clamped to 0..maximumRadius; an unknown mode or
    // method is refused ("Invalid settings"), since the combo boxes have no such entry.
    static BlurSettings fromPairs(const SettingsText::Pairs &pairs, const BlurSettings &base);
    static BlurSettings fromPairs(const SettingsText::Pairs &pairs);
    // "value" comes before the radii, so the text gives back these radii when read again.
    SettingsText::Pairs toPairs() const;
    bool operator==(const BlurSettings &o) const
    {
        return mode == o.mode && method == o.method && wrap == o.wrap && master == o.master &&
               radii == o.radii && selectedOnly == o.selectedOnly;
    }
};

// Smoothing along the index axis, component by component in a colour space.
namespace PaletteBlur {

// The weights for radius r: none for r < 0; 2r + 1 ones for the running mean; for the Gauss
// method exp(-x^2 / 2) / sqrt(2 pi) with x = (j / r) * 3 / (r + 1), which narrows as r grows (the
// dialog's kernel shape, kept). r = 0 gives one weight that the blur never uses.
std::vector<double> kernel(int radius, int method);

// The kernel-weighted mean of value(n) over the neighbours n = i - r .. i + r of entry i among
// count entries, r being the kernel's radius. Neighbours beyond either end are left out together
// with their weights, so the ends average over fewer entries; when the weights used sum to exactly
// 0 the plain sum is taken. The blur averages the values themselves, the sharpening the
// differences from the entry.
template <class Value> double weightedMean(int i, int count, const std::vector<double> &kernel, Value value)
{
    const int r = int(kernel.size() / 2);
    double sum = 0.0, weightSum = 0.0;
    for (int j = -r; j <= r; ++j) {
        const int at = i + j;
        if (at < 0 || at >= count)
            continue;
        const double w = kernel[size_t(j + r)];
        sum += w * value(at);
        weightSum += w;
    }
    return weightSum == 0.0 ? sum : sum / weightSum;
}

// The weighted mean of each component over the neighbours within its radius, read from the
// unblurred values; neighbours beyond either end are left out together with their weights, so
// the ends average over fewer entries. The "Wrap" setting has no effect: the dialog has always
// asked the averaging for no wrap-around. Every entry, blurred or not, goes back through the
// colour space, so entries that "Selected only" excludes take the space's round trip too.
Palette<uint> blur(const Palette<uint> &palette, const std::set<int> &selection,
                   const BlurSettings &settings);

// "blur".
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace PaletteBlur
