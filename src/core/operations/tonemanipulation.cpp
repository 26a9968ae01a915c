#include "operations/tonemanipulation.h"

#include "spaces/colorconversion.h"
#include "spaces/colorspace.h"
#include "storage/settingsvalues.h"

#include <cmath>

using namespace SettingsValues;

const QString BrightnessContrastSettings::settingsName = QStringLiteral("brightness_contrast");
const QString HueSaturationValueSettings::settingsName = QStringLiteral("hue_saturation_value");
const QString ComponentManipulationSettings::settingsName = QStringLiteral("component_manipulation");

namespace {

const QString keySelOnly = QStringLiteral("sel_only");

QString componentKey(int k)
{
    return QStringLiteral("comp%1").arg(k + 1);
}

// One component shifted and brought into 0..1: wrapped by whole steps of 1 (so exactly 1 stays
// 1), or clamped.
double shifted(double value, double shift, bool wrap)
{
    double v = value + shift;
    if (!std::isfinite(v))
        return 0.0;
    if (wrap) {
        while (v > 1.0)
            v -= 1.0;
        while (v < 0.0)
            v += 1.0;
        return v;
    }
    return qBound(0.0, v, 1.0);
}

} // namespace

BrightnessContrastSettings BrightnessContrastSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                                 const BrightnessContrastSettings &base)
{
    BrightnessContrastSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("brightness"))
            s.brightness = clampedInteger(key, value, minimum, maximum);
        else if (key == QLatin1String("contrast"))
            s.contrast = clampedInteger(key, value, minimum, maximum);
        else if (key == keySelOnly)
            s.selectedOnly = flag(key, value);
    }
    return s;
}

BrightnessContrastSettings BrightnessContrastSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, BrightnessContrastSettings());
}

SettingsText::Pairs BrightnessContrastSettings::toPairs() const
{
    return {{QStringLiteral("brightness"), text(brightness)},
            {QStringLiteral("contrast"), text(contrast)},
            {keySelOnly, text(selectedOnly)}};
}

HueSaturationValueSettings HueSaturationValueSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                                 const HueSaturationValueSettings &base)
{
    HueSaturationValueSettings s = base;
    for (const auto &[key, v] : pairs) {
        if (key == QLatin1String("hue"))
            s.hue = clampedInteger(key, v, hueMinimum, hueMaximum);
        else if (key == QLatin1String("saturation"))
            s.saturation = clampedInteger(key, v, percentMinimum, percentMaximum);
        else if (key == QLatin1String("value"))
            s.value = clampedInteger(key, v, percentMinimum, percentMaximum);
        else if (key == QLatin1String("colorize"))
            s.colorize = flag(key, v);
        else if (key == keySelOnly)
            s.selectedOnly = flag(key, v);
    }
    return s;
}

HueSaturationValueSettings HueSaturationValueSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, HueSaturationValueSettings());
}

SettingsText::Pairs HueSaturationValueSettings::toPairs() const
{
    return {{QStringLiteral("hue"), text(hue)},
            {QStringLiteral("saturation"), text(saturation)},
            {QStringLiteral("value"), text(value)},
            {QStringLiteral("colorize"), text(colorize)},
            {keySelOnly, text(selectedOnly)}};
}

ComponentManipulationSettings
ComponentManipulationSettings::fromPairs(const SettingsText::Pairs &pairs,
                                         const ComponentManipulationSettings &base)
{
    ComponentManipulationSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("mode"))
            s.mode = colourSpace(key, value);
        else if (key == QLatin1String("wrap"))
            s.wrap = flag(key, value);
        else if (key == keySelOnly)
            s.selectedOnly = flag(key, value);
        else
            for (int k = 0; k < 4; ++k)
                if (key == componentKey(k))
                    s.components[size_t(k)] = clampedInteger(key, value, minimum, maximum);
    }
    return s;
}

ComponentManipulationSettings ComponentManipulationSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ComponentManipulationSettings());
}

SettingsText::Pairs ComponentManipulationSettings::toPairs() const
{
    SettingsText::Pairs pairs{{QStringLiteral("mode"), text(mode)}};
    for (int k = 0; k < 4; ++k)
        pairs.emplace_back(componentKey(k), text(components[size_t(k)]));
    pairs.emplace_back(QStringLiteral("wrap"), text(wrap));
    pairs.emplace_back(keySelOnly, text(selectedOnly));
    return pairs;
}

namespace ToneManipulation {

Palette<uint> brightnessContrast(const Palette<uint> &palette, const std::set<int> &selection,
                                 const BrightnessContrastSettings &settings)
{
    const int b = settings.brightness;
    const int c = settings.contrast;
    const double f = (259.0 * (c + 255)) / (255.0 * (259 - c));
    const auto tone = [f, b](uint component) {
        const int x = int(component >> 8);
        const double y = std::trunc(f * (x - 128) + 128 + b);
        return uint(qBound(0.0, y, 255.0)) << 8;
    };
    Palette<uint> out = palette;
    for (int i = 0; i < out.size(); ++i) {
        if (!PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            continue;
        RGBAColor<uint> &e = out[i];
        e = {tone(e.r), tone(e.g), tone(e.b), qMin(e.a, 255u) << 8};
    }
    return out;
}

Palette<uint> hueSaturationValue(const Palette<uint> &palette, const std::set<int> &selection,
                                 const HueSaturationValueSettings &settings)
{
    const double ds = settings.saturation / 100.0;
    const double dv = settings.value / 100.0;
    Palette<uint> out = palette;
    for (int i = 0; i < out.size(); ++i) {
        if (!PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            continue;
        const HSVAColor<double> hsva = toHSVA(out[i]);
        double h = settings.colorize ? settings.hue : hsva.h + settings.hue;
        while (h >= 360.0)
            h -= 360.0;
        while (h < 0.0)
            h += 360.0;
        const double s = qBound(0.0, hsva.s + ds, 1.0);
        const double v = qBound(0.0, hsva.v + dv, 1.0);
        out[i] = hsvaToRGBA(HSVAColor<double>(h, s, v, 65535.0));
    }
    return out;
}

Palette<uint> componentManipulation(const Palette<uint> &palette, const std::set<int> &selection,
                                    const ComponentManipulationSettings &settings)
{
    const std::vector<SpaceComponents> records = colourToSpace(palette, settings.mode);
    Palette<uint> out = palette;
    for (int i = 0; i < out.size(); ++i) {
        if (!PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            continue;
        SpaceComponents record = records[size_t(i)];
        for (size_t k = 0; k < 4; ++k)
            record[k] = shifted(record[k], settings.components[k] / 100.0, settings.wrap);
        out[i] = spaceToColour(record, settings.mode);
    }
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(BrightnessContrastSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return brightnessContrast(p, sel, BrightnessContrastSettings::fromPairs(pairs));
         },
         false});
    add(HueSaturationValueSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return hueSaturationValue(p, sel, HueSaturationValueSettings::fromPairs(pairs));
         },
         false});
    add(ComponentManipulationSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return componentManipulation(p, sel, ComponentManipulationSettings::fromPairs(pairs));
         },
         false});
}

} // namespace ToneManipulation
