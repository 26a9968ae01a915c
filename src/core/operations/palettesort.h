#pragma once

#include "operations/paletteoperations.h"
#include "palette/palette.h"
#include "storage/settingstext.h"

#include <set>
#include <vector>

// "Sort colors": settings name "sort_colors".
struct SortSettings
{
    static const QString settingsName;
    // What the entries are ordered by: one component of the colour space, the relative
    // luminance, or the hue with the lightness breaking ties (greys before every hue).
    enum Key : int
    {
        Component1 = 0,
        Component2,
        Component3,
        Component4,
        Luminance,
        HueThenLightness,
        KeyCount
    };

    int mode = 0; // "mode": the colour space of the component keys
    int key = Luminance;
    bool descending = false;
    bool selectedOnly = false;
    // "remap": an indexed image's pixels follow their colours to the new places, so the picture
    // stays as it was. Continuous images cannot follow; see DocumentCommands::sortColors.
    bool remap = true;

    // Keys missing from pairs keep the values of base; an unknown mode or key is refused
    // ("Invalid settings"), since the combo boxes have no such entry.
    static SortSettings fromPairs(const SettingsText::Pairs &pairs, const SortSettings &base);
    static SortSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const SortSettings &o) const
    {
        return mode == o.mode && key == o.key && descending == o.descending &&
               selectedOnly == o.selectedOnly && remap == o.remap;
    }
};

namespace PaletteSort {

// The sorted order as a permutation: entry j of the sorted palette is entry order[j] of the
// palette. The sort is stable in both directions (entries with equal keys keep their order,
// descending included). With "Selected only" and a selection, only the selected entries move,
// among the places they held; the others stay where they are.
std::vector<int> order(const Palette<uint> &palette, const std::set<int> &selection,
                       const SortSettings &settings);
// The palette's entries taken in order; the properties stay.
Palette<uint> reordered(const Palette<uint> &palette, const std::vector<int> &order);
// The inverse permutation: where each old entry went.
std::vector<int> newPlaces(const std::vector<int> &order);
Palette<uint> sort(const Palette<uint> &palette, const std::set<int> &selection,
                   const SortSettings &settings);

// "sort_colors". The operation orders the palette alone; the document command moves an indexed
// image's pixels with it.
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace PaletteSort
