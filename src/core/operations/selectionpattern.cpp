#include "operations/selectionpattern.h"

#include "storage/settingsvalues.h"

using namespace SettingsValues;

const QString SelectionPatternSettings::settingsName = QStringLiteral("selectionpattern");

namespace {

const QString keyStart = QStringLiteral("start_index");
const QString keyEnd = QStringLiteral("end_index");
const QString keyFull = QStringLiteral("full_palette");
const QString keySet = QStringLiteral("set_number");
const QString keySkip = QStringLiteral("skip_number");

} // namespace

SelectionPatternSettings SelectionPatternSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                             const SelectionPatternSettings &base)
{
    SelectionPatternSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == keyStart)
            s.startIndex = clampedInteger(key, value, 0, maximum);
        else if (key == keyEnd)
            s.endIndex = clampedInteger(key, value, 0, maximum);
        else if (key == keyFull)
            s.fullPalette = flag(key, value);
        else if (key == keySet)
            s.setNumber = clampedInteger(key, value, 1, maximum);
        else if (key == keySkip)
            s.skipNumber = clampedInteger(key, value, 0, maximum);
    }
    return s;
}

SelectionPatternSettings SelectionPatternSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, SelectionPatternSettings());
}

SettingsText::Pairs SelectionPatternSettings::toPairs() const
{
    return {{keyStart, text(startIndex)},
            {keyEnd, text(endIndex)},
            {keyFull, text(fullPalette)},
            {keySet, text(setNumber)},
            {keySkip, text(skipNumber)}};
}

namespace SelectionPattern {

std::set<int> select(int paletteSize, const SelectionPatternSettings &settings)
{
    std::set<int> selected;
    const long long last = settings.fullPalette ? paletteSize : settings.endIndex;
    // A run of at least one keeps the walk moving whatever a caller put into the settings.
    const long long run = qMax(1, settings.setNumber);
    const long long skip = qMax(0, settings.skipNumber);
    long long i = settings.startIndex;
    while (i <= last) {
        for (long long k = 0; k < run && i <= last; ++k, ++i)
            selected.insert(int(i));
        i += skip;
    }
    return selected;
}

std::set<int> select(int paletteSize, const SettingsText::Pairs &pairs)
{
    return select(paletteSize, SelectionPatternSettings::fromPairs(pairs));
}

} // namespace SelectionPattern
