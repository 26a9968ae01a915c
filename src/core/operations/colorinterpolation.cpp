#include "operations/colorinterpolation.h"

#include "palette/describedexception.h"
#include "spaces/colorspace.h"
#include "storage/settingsfields.h"

#include <algorithm>
#include <cmath>

using namespace SettingsValues;

const QString InterpolationSettings::settingsName = QStringLiteral("interpolation");

namespace {

const QString keyTickEnd = QStringLiteral("tickend");

// The keys of one colour tick's record, which a "tickend" line closes.
const SettingsFields<ColorTick> &tickFields()
{
    using F = SettingsFields<ColorTick>;
    static const F fields({
        F::integer(QStringLiteral("index"), &ColorTick::index, 0, InterpolationSettings::highestIndex),
        F::unsignedWord(QStringLiteral("color"), &ColorTick::color),
        F::integer(QStringLiteral("colorSpace"), &ColorTick::colorSpace),
        F::integer(QStringLiteral("function"), &ColorTick::function),
    });
    return fields;
}

// The keys after the records.
const SettingsFields<InterpolationSettings> &interpolationFields()
{
    using F = SettingsFields<InterpolationSettings>;
    static const F fields({
        F::integer(QStringLiteral("size"), &InterpolationSettings::size, 1, maximumPaletteSize),
    });
    return fields;
}

} // namespace

InterpolationSettings InterpolationSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                       const InterpolationSettings &base)
{
    InterpolationSettings s = base;
    std::vector<ColorTick> ticks;
    bool anyRecord = false;
    bool open = false;
    ColorTick tick;
    for (const auto &[key, value] : pairs) {
        if (tickFields().readOne(tick, key, value)) {
            open = true;
        } else if (key == keyTickEnd) {
            ticks.push_back(tick);
            tick = ColorTick();
            anyRecord = true;
            open = false;
        } else {
            interpolationFields().readOne(s, key, value);
        }
    }
    if (open)
        throw DescribedException(QStringLiteral("Invalid settings"),
                                 QStringLiteral("The last colour tick is not closed by a \"tickend\" line."));
    if (anyRecord) {
        std::stable_sort(ticks.begin(), ticks.end(),
                         [](const ColorTick &a, const ColorTick &b) { return a.index < b.index; });
        s.ticks = std::move(ticks);
    }
    return s;
}

InterpolationSettings InterpolationSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, InterpolationSettings());
}

SettingsText::Pairs InterpolationSettings::toPairs() const
{
    SettingsText::Pairs pairs;
    for (const ColorTick &t : ticks) {
        const SettingsText::Pairs record = tickFields().write(t);
        pairs.insert(pairs.end(), record.begin(), record.end());
        pairs.emplace_back(keyTickEnd, QString());
    }
    const SettingsText::Pairs rest = interpolationFields().write(*this);
    pairs.insert(pairs.end(), rest.begin(), rest.end());
    return pairs;
}

namespace ColorInterpolation {

double ease(int function, double u)
{
    switch (function) {
    case ColorTick::Linear:
        return u;
    case ColorTick::Sigmoid:
        return 0.5 - 0.5 * std::cos(3.14159265358979323846 * u);
    default:
        return 0.0;
    }
}

Palette<uint> generate(const std::vector<ColorTick> &ticks, int n)
{
    Palette<uint> out;
    RGBAColor<uint> previous(0, 0, 0, 0); // the first segment starts from transparent black
    if (ticks.empty()) {
        out.append(previous);
        return out;
    }
    int space = 0;
    int function = ColorTick::Linear;
    int start = 0;
    for (const ColorTick &tick : ticks) {
        const RGBAColor<uint> colour = tick.keyColour();
        const int end = int(double(tick.index) * n * 0.00390625);
        const SpaceComponents a = colourToSpace(previous, space);
        const SpaceComponents b = colourToSpace(colour, space);
        for (int i = start; i < end; ++i) {
            const double t = ease(function, double(i - start) / double(end - start));
            SpaceComponents mixed;
            for (size_t k = 0; k < 4; ++k)
                mixed[k] = a[k] * (1.0 - t) + b[k] * t;
            out.append(spaceToColour(mixed, space));
        }
        previous = colour;
        space = tick.colorSpace;
        function = tick.function;
        start = end;
    }
    out.append(previous);
    return out;
}

Palette<uint> generate(const InterpolationSettings &settings)
{
    return generate(settings.ticks, settings.size);
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(InterpolationSettings::settingsName,
        {[](const Palette<uint> &, const std::set<int> &, const SettingsText::Pairs &pairs) {
             return generate(InterpolationSettings::fromPairs(pairs));
         },
         true});
}

} // namespace ColorInterpolation
