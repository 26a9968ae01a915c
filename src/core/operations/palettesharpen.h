#pragma once

#include "operations/paletteblur.h"
#include "operations/paletteoperations.h"
#include "palette/palette.h"
#include "storage/settingstext.h"

#include <array>
#include <set>

// "Sharpen palette": settings name "sharpen", the partner of "blur".
struct SharpenSettings
{
    static const QString settingsName;
    static constexpr int maximumRadius = BlurSettings::maximumRadius;
    static constexpr int maximumAmount = 500; // percent

    int mode = 0;                     // "mode": colour space the components are sharpened in
    int method = BlurSettings::Gauss; // "method": the blur's kernels, 0 running mean, 1 normal
    int radius = 2;                   // "radius": 1..maximumRadius
    int amount = 100;                 // "amount": percent of the detail added, 0..maximumAmount
    std::array<bool, 4> components{{true, true, true, true}}; // "comp1".."comp4": which are sharpened
    bool selectedOnly = false;

    // Keys missing from pairs keep the values of base; radius and amount are clamped to their
    // ranges, an unknown mode or method is refused ("Invalid settings").
    static SharpenSettings fromPairs(const SettingsText::Pairs &pairs, const SharpenSettings &base);
    static SharpenSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const SharpenSettings &o) const
    {
        return mode == o.mode && method == o.method && radius == o.radius && amount == o.amount &&
               components == o.components && selectedOnly == o.selectedOnly;
    }
};

namespace PaletteSharpen {

// An unsharp mask along the index axis. Per chosen component c of an eligible entry i, in the
// colour space: c + amount / 100 * d, where d is the blur's kernel-weighted mean of c(i) - c(n)
// over the neighbours n within the radius (ends skipped as the blur skips them), read from the
// unsharpened values. That is c minus its blurred value, computed so that an entry among equal
// neighbours gets exactly nothing added. Only the components the space names are sharpened (RGB's
// fourth, the alpha, is not). An entry whose components all come out unchanged keeps its colour
// exactly; any other goes back through the space and keeps its alpha word.
Palette<uint> sharpen(const Palette<uint> &palette, const std::set<int> &selection,
                      const SharpenSettings &settings);

// "sharpen".
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace PaletteSharpen
