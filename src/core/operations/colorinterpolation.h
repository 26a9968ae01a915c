#pragma once

#include "operations/colortick.h"
#include "palette/palette.h"
#include "operations/paletteoperations.h"
#include "storage/settingstext.h"

#include <vector>

// "Generate palette by interpolation": settings name "interpolation".
struct InterpolationSettings
{
    static const QString settingsName;
    static constexpr int highestIndex = 255; // the ticks bar's scale is 0..255

    // Black at 0 and white at 255, both in RGB and linear, until settings say otherwise.
    std::vector<ColorTick> ticks{{0, 0xFF000000u, 0, ColorTick::Linear},
                                 {255, 0xFFFFFFFFu, 0, ColorTick::Linear}};
    int size = 256; // "Palette size:", 1..maximumPaletteSize

    // Records "index", "color", "colorSpace", "function", each closed by a "tickend" line, then
    // "size". Settings that hold at least one record replace the ticks of base; a record left
    // open at the end, a colour that is no 32-bit number or an index that is no number throws
    // "Invalid settings". Indexes are clamped to 0..255 and the ticks ordered by index (a stable
    // order, so equal indexes keep their order), as the bar keeps them; colour space and function
    // are kept as given, since the generator defines every value of both. The size is clamped to
    // 1..maximumPaletteSize.
    static InterpolationSettings fromPairs(const SettingsText::Pairs &pairs,
                                           const InterpolationSettings &base);
    static InterpolationSettings fromPairs(const SettingsText::Pairs &pairs);
    // One record per tick, each ended by a ("tickend", "") pair, then "size".
    SettingsText::Pairs toPairs() const;
    bool operator==(const InterpolationSettings &o) const { return ticks == o.ticks && size == o.size; }
};

namespace ColorInterpolation {

// The easing of a segment at u in 0..1: u for linear, 0.5 - 0.5 cos(pi u) for the sigmoid and 0
// for any other function number.
double ease(int function, double u);

// The palette of the ticks at size n: segment k-1..k runs from tick k-1's colour to tick k's in
// tick k-1's colour space and function, the first segment from transparent black, and the last
// tick's colour closes the palette. Segment ends are truncate(index * n / 256), so the result has
// truncate(lastIndex * n / 256) + 1 entries (n = 256 with the last tick at 255 gives 256; n = 1024
// gives 1021). Every colour goes through the segment's space and back, RGB included, so every
// entry of a non-empty tick list is opaque (alpha 65535). No ticks give one transparent black entry.
Palette<uint> generate(const std::vector<ColorTick> &ticks, int n);
Palette<uint> generate(const InterpolationSettings &settings);

// "interpolation", a generator.
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace ColorInterpolation
