#include "operations/palettepatterns.h"

#include "palette/describedexception.h"
#include "storage/settingsfields.h"

#include <algorithm>
#include <vector>

using namespace SettingsValues;

const QString RepetitionPatternSettings::settingsName = QStringLiteral("pattern_generation");
const QString PersianRasterSettings::settingsName = QStringLiteral("persian_raster");

namespace {

const SettingsFields<RepetitionPatternSettings> &patternFields()
{
    using S = RepetitionPatternSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::integer(QStringLiteral("count"), &S::count, 1, S::maximumStep),
        F::integer(QStringLiteral("stride"), &S::stride, 1, S::maximumStep),
        F::integer(QStringLiteral("offset"), &S::offset, 0, 65535),
        F::flag(QStringLiteral("mirror"), &S::mirror),
        F::integer(QStringLiteral("size"), &S::size, 0, maximumPaletteSize),
        F::selectedOnly(&S::selectedOnly),
    });
    return fields;
}

const SettingsFields<PersianRasterSettings> &rasterFields()
{
    using S = PersianRasterSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::integer(QStringLiteral("period1"), &S::period1, 1, S::maximumStep),
        F::integer(QStringLiteral("period2"), &S::period2, 1, S::maximumStep),
        F::integer(QStringLiteral("offset"), &S::offset, 0, 65535),
        F::flag(QStringLiteral("reverse"), &S::reverse),
        F::integer(QStringLiteral("thread"), &S::thread, 1, S::maximumStep),
        F::integer(QStringLiteral("over"), &S::over, 1, S::maximumFloat),
        F::integer(QStringLiteral("under"), &S::under, 1, S::maximumFloat),
        F::integer(QStringLiteral("size"), &S::size, 0, maximumPaletteSize),
        F::selectedOnly(&S::selectedOnly),
    });
    return fields;
}

std::vector<RGBAColor<uint>> motifOf(const Palette<uint> &palette, const std::set<int> &selection,
                                     bool selectedOnly)
{
    std::vector<RGBAColor<uint>> motif;
    if (selectedOnly)
        for (const int i : selection)
            if (i >= 0 && i < palette.size())
                motif.push_back(palette[i]);
    if (motif.empty())
        motif = palette.entries();
    if (motif.empty())
        throw DescribedException(QStringLiteral("Empty palette"),
                                 QStringLiteral("An empty palette has no colours to make a pattern of."));
    return motif;
}

// The result is as long as size says, the palette for 0.
int lengthOf(const Palette<uint> &palette, int size)
{
    return size > 0 ? qMin(size, maximumPaletteSize) : palette.size();
}

} // namespace

RepetitionPatternSettings RepetitionPatternSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                               const RepetitionPatternSettings &base)
{
    return patternFields().read(pairs, base);
}

RepetitionPatternSettings RepetitionPatternSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, RepetitionPatternSettings());
}

SettingsText::Pairs RepetitionPatternSettings::toPairs() const
{
    return patternFields().write(*this);
}

PersianRasterSettings PersianRasterSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                       const PersianRasterSettings &base)
{
    return rasterFields().read(pairs, base);
}

PersianRasterSettings PersianRasterSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, PersianRasterSettings());
}

SettingsText::Pairs PersianRasterSettings::toPairs() const
{
    return rasterFields().write(*this);
}

namespace PalettePatterns {

Palette<uint> repetitionPattern(const Palette<uint> &palette, const std::set<int> &selection,
                                const RepetitionPatternSettings &settings)
{
    const std::vector<RGBAColor<uint>> motif = motifOf(palette, selection, settings.selectedOnly);
    std::vector<RGBAColor<uint>> cycle = motif;
    if (settings.mirror && motif.size() > 2)
        cycle.insert(cycle.end(), motif.rbegin() + 1, motif.rend() - 1);
    const long long period = (long long)cycle.size();
    const int length = lengthOf(palette, settings.size);
    const long long count = qMax(1, settings.count);
    std::vector<RGBAColor<uint>> entries;
    entries.reserve(size_t(length));
    for (long long j = 0; j < length; ++j)
        entries.push_back(cycle[size_t(((j / count) * settings.stride + settings.offset) % period)]);
    Palette<uint> out = palette;
    out.entries() = std::move(entries);
    return out;
}

Palette<uint> persianRaster(const Palette<uint> &palette, const std::set<int> &selection,
                            const PersianRasterSettings &settings)
{
    const std::vector<RGBAColor<uint>> motif = motifOf(palette, selection, settings.selectedOnly);
    const long long colours = (long long)motif.size();
    const int length = lengthOf(palette, settings.size);
    const long long over = qMax(1, settings.over);
    const long long weave = over + qMax(1, settings.under);
    std::vector<RGBAColor<uint>> entries;
    entries.reserve(size_t(length));
    for (long long i = 0; i < length; ++i) {
        long long k;
        if ((i / qMax(1, settings.thread)) % weave < over) {
            k = (i / qMax(1, settings.period1)) % colours;
        } else {
            k = (i / qMax(1, settings.period2) + settings.offset) % colours;
            if (settings.reverse)
                k = colours - 1 - k;
        }
        entries.push_back(motif[size_t(k)]);
    }
    Palette<uint> out = palette;
    out.entries() = std::move(entries);
    return out;
}

Palette<uint> appendMirrored(const Palette<uint> &palette)
{
    const long long length = 2LL * palette.size();
    if (length > maximumPaletteSize)
        throw DescribedException(
            QStringLiteral("Palette too large"),
            QStringLiteral("The mirrored palette would have %1 entries; a palette holds at "
                           "most %2.")
                .arg(length)
                .arg(maximumPaletteSize));
    Palette<uint> out = palette;
    out.entries().insert(out.entries().end(), palette.entries().rbegin(), palette.entries().rend());
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(RepetitionPatternSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return repetitionPattern(p, sel, RepetitionPatternSettings::fromPairs(pairs));
         },
         false});
    add(PersianRasterSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return persianRaster(p, sel, PersianRasterSettings::fromPairs(pairs));
         },
         false});
    add(QStringLiteral("palette_append_mirrored"),
        {[](const Palette<uint> &p, const std::set<int> &, const SettingsText::Pairs &) {
             return appendMirrored(p);
         },
         false});
}

} // namespace PalettePatterns
