#pragma once

#include "palette/palette.h"
#include "operations/paletteoperations.h"
#include "storage/settingstext.h"

#include <array>

// "Generate cosinus palette": settings name "cosini".
struct CosinePaletteSettings
{
    static const QString settingsName;
    // The twelve spin boxes: two decimals, single step 0.05, this range.
    static constexpr double coefficientMinimum = -10.0, coefficientMaximum = 10.0;

    // value = a + b cos(2 pi (c t + d)) for one channel.
    struct Channel
    {
        double a = 0.5; // offset
        double b = 0.5; // amplitude
        double c = 1.0; // frequency
        double d = 0.0; // phase
        bool operator==(const Channel &o) const { return a == o.a && b == o.b && c == o.c && d == o.d; }
    };

    std::array<Channel, 3> channels{}; // red, green, blue: keys "a_r".."d_r", "a_g".., "a_b"..
    int size = 256;                    // "size", 1..maximumPaletteSize
    bool keepAspect = false;           // "keep_aspect"

    // Keys missing from pairs keep the values of base (a missing "size" therefore stays 256 from
    // the defaults). Coefficients are clamped to the spin boxes' range but not rounded to their two
    // decimals; the size to 1..maximumPaletteSize. A text that is no number throws "Invalid settings".
    static CosinePaletteSettings fromPairs(const SettingsText::Pairs &pairs,
                                           const CosinePaletteSettings &base);
    static CosinePaletteSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const CosinePaletteSettings &o) const
    {
        return channels == o.channels && size == o.size && keepAspect == o.keepAspect;
    }
};

namespace CosinePalette {

// Entry i has t = i / size with "Keep aspect", else t = i / 256 (so longer palettes continue the
// curves past t = 1 and shorter ones show their beginning); each channel is
// (a + b cos((c t + d) * 6.28318530718)) * 65535 truncated and clamped to 0..65535; alpha 65535.
// A size of 0 or less gives an empty palette.
Palette<uint> generate(const CosinePaletteSettings &settings);

// "cosini", a generator.
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace CosinePalette
