#pragma once

#include "operations/paletteoperations.h"
#include "palette/palette.h"
#include "storage/settingstext.h"

// "Resize the palette": settings name "resize_palette".
struct ResizeSettings
{
    static const QString settingsName;
    static constexpr int minimumSize = 2;
    enum Method : int
    {
        Nearest = 0,
        Linear = 1,
        Sigmoid = 2,
        MethodCount
    };

    int size = 256; // "size": the new length, minimumSize..the largest palette
    int mode = 0;   // "mode": the colour space entries are mixed in
    int method = Linear;

    // Keys missing from pairs keep the values of base; the size is clamped to its range, an
    // unknown mode or method is refused ("Invalid settings").
    static ResizeSettings fromPairs(const SettingsText::Pairs &pairs, const ResizeSettings &base);
    static ResizeSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const ResizeSettings &o) const
    {
        return size == o.size && mode == o.mode && method == o.method;
    }
};

namespace PaletteResize {

// The palette resampled to settings.size entries with both ends kept in place: new entry j sits
// at p = j * (n - 1) / (size - 1) on the old palette (worked out in integers, so it is exact).
// Where p falls on an old entry the new entry is that entry, unchanged; in between it is old
// entry round(p) (halves up) for "nearest", otherwise the mix of the two neighbours in the colour
// space at t = frac(p), eased by the interpolation dialog's sigmoid for "sigmoid" (a hue is mixed
// straight, as there). A mixed entry takes the mix of the two alpha words, truncated. Resizing
// to the same length therefore gives the palette back, and so does going from n to
// (n - 1) * k + 1 entries and back. A palette of one entry becomes size copies of it; an empty
// palette is refused.
Palette<uint> resize(const Palette<uint> &palette, const ResizeSettings &settings);

// "resize_palette".
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace PaletteResize
