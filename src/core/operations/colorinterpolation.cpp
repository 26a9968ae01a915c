#include "operations/colorinterpolation.h"

#include "spaces/colorspace.h"
#include "palette/describedexception.h"
#include "storage/settingsvalues.h"

#include <algorithm>
#include <cmath>

using namespace SettingsValues;

const QString InterpolationSettings::settingsName = QStringLiteral("interpolation");

namespace {

const QString keyIndex = QStringLiteral("index");
const QString keyColor = QStringLiteral("color");
const QString keySpace = QStringLiteral("colorSpace");
const QString keyFunction = QStringLiteral("function");
const QString keyTickEnd = QStringLiteral("tickend");
const QString keySize = QStringLiteral("size");

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
        if (key == keyIndex) {
            tick.index = clampedInteger(key, value, 0, highestIndex);
            open = true;
        } else if (key == keyColor) {
            tick.color = unsignedWord(key, value);
            open = true;
        } else if (key == keySpace) {
            tick.colorSpace = integer(key, value);
            open = true;
        } else if (key == keyFunction) {
            tick.function = integer(key, value);
            open = true;
        } else if (key == keyTickEnd) {
            ticks.push_back(tick);
            tick = ColorTick();
            anyRecord = true;
            open = false;
        } else if (key == keySize) {
            s.size = clampedInteger(key, value, 1, maximumPaletteSize);
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
        pairs.emplace_back(keyIndex, text(t.index));
        pairs.emplace_back(keyColor, text(t.color));
        pairs.emplace_back(keySpace, text(t.colorSpace));
        pairs.emplace_back(keyFunction, text(t.function));
        pairs.emplace_back(keyTickEnd, QString());
    }
    pairs.emplace_back(keySize, text(size));
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
