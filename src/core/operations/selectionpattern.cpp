#include "operations/selectionpattern.h"

#include "storage/settingsfields.h"

const QString SelectionPatternSettings::settingsName = QStringLiteral("selectionpattern");

namespace {

const SettingsFields<SelectionPatternSettings> &patternFields()
{
    using S = SelectionPatternSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::integer(QStringLiteral("start_index"), &S::startIndex, 0, S::maximum),
        F::integer(QStringLiteral("end_index"), &S::endIndex, 0, S::maximum),
        F::flag(QStringLiteral("full_palette"), &S::fullPalette),
        F::integer(QStringLiteral("set_number"), &S::setNumber, 1, S::maximum),
        F::integer(QStringLiteral("skip_number"), &S::skipNumber, 0, S::maximum),
    });
    return fields;
}

} // namespace

SelectionPatternSettings SelectionPatternSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                             const SelectionPatternSettings &base)
{
    return patternFields().read(pairs, base);
}

SelectionPatternSettings SelectionPatternSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, SelectionPatternSettings());
}

SettingsText::Pairs SelectionPatternSettings::toPairs() const
{
    return patternFields().write(*this);
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
