#pragma once

#include "storage/settingstext.h"

#include <set>

// "Selection pattern...": settings name "selectionpattern".
struct SelectionPatternSettings
{
    static const QString settingsName;
    static constexpr int maximum = 65535; // every spin box's upper bound

    int startIndex = 0;      // "start_index", 0..65535
    int endIndex = 256;      // "end_index", 0..65535; the dialog starts it at the palette's length
    bool fullPalette = true; // "full_palette": the palette's length is the last index
    int setNumber = 1;       // "set_number", 1..65535
    int skipNumber = 0;      // "skip_number", 0..65535

    // Keys missing from pairs keep the values of base; numbers are clamped to the spin boxes'
    // ranges, a text that is no number throws "Invalid settings".
    static SelectionPatternSettings fromPairs(const SettingsText::Pairs &pairs,
                                              const SelectionPatternSettings &base);
    static SelectionPatternSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const SelectionPatternSettings &o) const
    {
        return startIndex == o.startIndex && endIndex == o.endIndex && fullPalette == o.fullPalette &&
               setNumber == o.setNumber && skipNumber == o.skipNumber;
    }
};

// Selects runs of entries in a regular pattern. Not a palette operation: the result is the set
// of indexes that the palette view selects.
namespace SelectionPattern {

// From the start index up to the last index (inclusive) runs of setNumber indexes, each followed
// by skipNumber skipped ones. With "Full palette" the last index is paletteSize itself, one past
// the last entry; it is included like any other and the palette view ignores it, as it always
// has. Empty when the start lies beyond the last index.
std::set<int> select(int paletteSize, const SelectionPatternSettings &settings);
std::set<int> select(int paletteSize, const SettingsText::Pairs &pairs);

} // namespace SelectionPattern
