#include "operations/tonemanipulation.h"

#include "spaces/colorconversion.h"
#include "spaces/colorspace.h"
#include "storage/settingsfields.h"

#include <cmath>

using namespace SettingsValues;

const QString BrightnessContrastSettings::settingsName = QStringLiteral("brightness_contrast");
const QString HueSaturationValueSettings::settingsName = QStringLiteral("hue_saturation_value");
const QString ComponentManipulationSettings::settingsName = QStringLiteral("component_manipulation");

namespace {

QString componentKey(int k)
{
    return QStringLiteral("comp%1").arg(k + 1);
}

const SettingsFields<BrightnessContrastSettings> &brightnessContrastFields()
{
    using S = BrightnessContrastSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::integer(QStringLiteral("brightness"), &S::brightness, S::minimum, S::maximum),
        F::integer(QStringLiteral("contrast"), &S::contrast, S::minimum, S::maximum),
        F::selectedOnly(&S::selectedOnly),
    });
    return fields;
}

const SettingsFields<HueSaturationValueSettings> &hueSaturationValueFields()
{
    using S = HueSaturationValueSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::integer(QStringLiteral("hue"), &S::hue, S::hueMinimum, S::hueMaximum),
        F::integer(QStringLiteral("saturation"), &S::saturation, S::percentMinimum, S::percentMaximum),
        F::integer(QStringLiteral("value"), &S::value, S::percentMinimum, S::percentMaximum),
        F::flag(QStringLiteral("colorize"), &S::colorize),
        F::selectedOnly(&S::selectedOnly),
    });
    return fields;
}

const SettingsFields<ComponentManipulationSettings> &componentManipulationFields()
{
    using S = ComponentManipulationSettings;
    using F = SettingsFields<S>;
    static const F fields([] {
        std::vector<F::Field> list{F::colourSpace(QStringLiteral("mode"), &S::mode)};
        for (size_t k = 0; k < 4; ++k)
            list.push_back(F::integer(
                componentKey(int(k)), [k](auto &s) -> auto & { return s.components[k]; }, S::minimum,
                S::maximum));
        list.push_back(F::flag(QStringLiteral("wrap"), &S::wrap));
        list.push_back(F::selectedOnly(&S::selectedOnly));
        return list;
    }());
    return fields;
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
    return brightnessContrastFields().read(pairs, base);
}

BrightnessContrastSettings BrightnessContrastSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, BrightnessContrastSettings());
}

SettingsText::Pairs BrightnessContrastSettings::toPairs() const
{
    return brightnessContrastFields().write(*this);
}

HueSaturationValueSettings HueSaturationValueSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                                 const HueSaturationValueSettings &base)
{
    return hueSaturationValueFields().read(pairs, base);
}

HueSaturationValueSettings HueSaturationValueSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, HueSaturationValueSettings());
}

SettingsText::Pairs HueSaturationValueSettings::toPairs() const
{
    return hueSaturationValueFields().write(*this);
}

ComponentManipulationSettings
ComponentManipulationSettings::fromPairs(const SettingsText::Pairs &pairs,
                                         const ComponentManipulationSettings &base)
{
    return componentManipulationFields().read(pairs, base);
}

ComponentManipulationSettings ComponentManipulationSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ComponentManipulationSettings());
}

SettingsText::Pairs ComponentManipulationSettings::toPairs() const
{
    return componentManipulationFields().write(*this);
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
