#pragma once

#include "operations/paletteoperations.h"
#include "palette/palette.h"
#include "storage/settingstext.h"

#include <set>

// The "Apply pattern" commands. Each builds its result from the palette's own entries, copied
// whole: no colour is mixed or converted, so an entry that appears in the result is exactly an
// entry of the palette.

// "Repetition pattern": settings name "pattern_generation".
struct RepetitionPatternSettings
{
    static const QString settingsName;
    static constexpr int maximumStep = 1024;

    int count = 1;            // "count": how often each colour repeats in a row, 1..maximumStep
    int stride = 1;           // "stride": how far the pattern steps through the motif, 1..maximumStep
    int offset = 0;           // "offset": where in the motif's cycle the pattern starts, 0..65535
    bool mirror = false;      // "mirror": the motif runs there and back
    int size = 0;             // "size": the result's length; 0 keeps the palette's
    bool selectedOnly = true; // the selected entries are the motif

    static RepetitionPatternSettings fromPairs(const SettingsText::Pairs &pairs,
                                               const RepetitionPatternSettings &base);
    static RepetitionPatternSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const RepetitionPatternSettings &o) const
    {
        return count == o.count && stride == o.stride && offset == o.offset && mirror == o.mirror &&
               size == o.size && selectedOnly == o.selectedOnly;
    }
};

// "Persian raster": settings name "persian_raster".
struct PersianRasterSettings
{
    static const QString settingsName;
    static constexpr int maximumStep = 1024;
    static constexpr int maximumFloat = 64;

    int period1 = 4;          // "period1": entries per colour of the first run
    int period2 = 1;          // "period2": entries per colour of the second run
    int offset = 0;           // "offset": how many colours the second run starts ahead
    bool reverse = false;     // "reverse": the second run walks the motif backwards
    int thread = 1;           // "thread": the width of one thread, in entries
    int over = 1;             // "over": threads of the first run in each repeat of the weave
    int under = 1;            // "under": threads of the second run that follow them
    int size = 0;             // "size": the result's length; 0 keeps the palette's
    bool selectedOnly = true; // the selected entries are the motif

    static PersianRasterSettings fromPairs(const SettingsText::Pairs &pairs,
                                           const PersianRasterSettings &base);
    static PersianRasterSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const PersianRasterSettings &o) const
    {
        return period1 == o.period1 && period2 == o.period2 && offset == o.offset && reverse == o.reverse &&
               thread == o.thread && over == o.over && under == o.under && size == o.size &&
               selectedOnly == o.selectedOnly;
    }
};

namespace PalettePatterns {

// The motif M (L entries) is the selected entries in index order when "Selected only" is checked
// and the selection names an entry, otherwise the whole palette. The result has size entries (the
// palette's length for 0); an empty palette is refused.

// The cycle C is M, or with mirror M followed by M backwards without its two ends (A B C D gives
// A B C D C B), so that the repeats turn round without doubling a colour; a motif of one or two
// entries has nothing to turn round. Entry j is C[((j / count) * stride + offset) mod |C|].
Palette<uint> repetitionPattern(const Palette<uint> &palette, const std::set<int> &selection,
                                const RepetitionPatternSettings &settings);

// Two runs through the motif woven together like warp and weft. The first run shows colour
// (i / period1) mod L at entry i; the second colour k = (i / period2 + offset) mod L, or L - 1 - k
// when reversed. The weave takes threads of thread entries: in every over + under threads the
// first over show the first run and the other under the second. Different periods make the runs
// drift against each other, which gives the banded, knotted look of a carpet's border.
Palette<uint> persianRaster(const Palette<uint> &palette, const std::set<int> &selection,
                            const PersianRasterSettings &settings);

// The palette followed by all of it backwards: A B C becomes A B C C B A. The end entries are
// doubled on purpose: the result is exactly twice as long, entry i equals entry 2n - 1 - i, and
// inverting its order gives it back. (The repetition pattern's mirror turns round without
// doubling.) A result beyond the largest palette is refused.
Palette<uint> appendMirrored(const Palette<uint> &palette);

// "pattern_generation", "persian_raster" and "palette_append_mirrored".
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace PalettePatterns
