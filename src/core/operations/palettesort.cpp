#include "operations/palettesort.h"

#include "spaces/colorspace.h"
#include "spaces/luminance.h"
#include "storage/settingsfields.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

using namespace SettingsValues;

const QString SortSettings::settingsName = QStringLiteral("sort_colors");

namespace {

const SettingsFields<SortSettings> &sortFields()
{
    using S = SortSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::colourSpace(QStringLiteral("mode"), &S::mode),
        F::listPosition(QStringLiteral("key"), &S::key, S::KeyCount),
        F::flag(QStringLiteral("descending"), &S::descending),
        F::selectedOnly(&S::selectedOnly),
        F::flag(QStringLiteral("remap"), &S::remap),
    });
    return fields;
}

// Compared in order; the later places only break ties of the earlier ones.
using SortKey = std::array<double, 3>;

// A value that cannot be ordered (a conversion's 0 / 0) sorts before every number.
double orderable(double v)
{
    return std::isnan(v) ? -std::numeric_limits<double>::infinity() : v;
}

SortKey keyOf(const RGBAColor<uint> &c, const SortSettings &s)
{
    switch (s.key) {
    case SortSettings::Luminance:
        return {relativeLuminance(c), 0.0, 0.0};
    case SortSettings::HueThenLightness: {
        // Greys have no hue; HSL calls theirs 0, which would mix them in among the reds.
        const SpaceComponents hsl = colourToSpace(c, SpaceHSL);
        const bool grey = c.r == c.g && c.g == c.b;
        return {grey ? -1.0 : orderable(hsl[0]), orderable(hsl[2]), 0.0};
    }
    default:
        return {orderable(colourToSpace(c, s.mode)[size_t(s.key)]), 0.0, 0.0};
    }
}

} // namespace

SortSettings SortSettings::fromPairs(const SettingsText::Pairs &pairs, const SortSettings &base)
{
    return sortFields().read(pairs, base);
}

SortSettings SortSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, SortSettings());
}

SettingsText::Pairs SortSettings::toPairs() const
{
    return sortFields().write(*this);
}

namespace PaletteSort {

std::vector<int> order(const Palette<uint> &palette, const std::set<int> &selection,
                       const SortSettings &settings)
{
    const int n = palette.size();
    std::vector<int> result(static_cast<size_t>(n));
    std::iota(result.begin(), result.end(), 0);
    std::vector<int> places;
    std::vector<SortKey> keys(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        if (PaletteOperations::isEligible(i, settings.selectedOnly, selection)) {
            places.push_back(i);
            keys[size_t(i)] = keyOf(palette[i], settings);
        }
    std::vector<int> sorted = places;
    // Descending compares the other way round rather than reversing the ascending order, which
    // would turn equal entries round as well.
    std::stable_sort(sorted.begin(), sorted.end(), [&](int a, int b) {
        return settings.descending ? keys[size_t(b)] < keys[size_t(a)] : keys[size_t(a)] < keys[size_t(b)];
    });
    for (size_t k = 0; k < places.size(); ++k)
        result[size_t(places[k])] = sorted[k];
    return result;
}

Palette<uint> reordered(const Palette<uint> &palette, const std::vector<int> &order)
{
    Palette<uint> out = palette;
    for (size_t j = 0; j < order.size(); ++j)
        out[int(j)] = palette[order[j]];
    return out;
}

std::vector<int> newPlaces(const std::vector<int> &order)
{
    std::vector<int> places(order.size());
    for (size_t j = 0; j < order.size(); ++j)
        places[size_t(order[j])] = int(j);
    return places;
}

Palette<uint> sort(const Palette<uint> &palette, const std::set<int> &selection, const SortSettings &settings)
{
    return reordered(palette, order(palette, selection, settings));
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(SortSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return sort(p, sel, SortSettings::fromPairs(pairs));
         },
         false});
}

} // namespace PaletteSort
