#pragma once

#include "palette/palette.h"
#include "operations/paletteoperations.h"
#include "storage/settingstext.h"

#include <array>
#include <set>

// "Brightness / contrast": settings name "brightness_contrast".
struct BrightnessContrastSettings
{
    static const QString settingsName;
    static constexpr int minimum = -255, maximum = 255; // both sliders

    int brightness = 0;
    int contrast = 0;
    bool selectedOnly = false;

    // Keys missing from pairs keep the values of base; out-of-range numbers are clamped to the
    // sliders' range, anything that is not a number throws "Invalid settings".
    static BrightnessContrastSettings fromPairs(const SettingsText::Pairs &pairs,
                                                const BrightnessContrastSettings &base);
    static BrightnessContrastSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const BrightnessContrastSettings &o) const
    {
        return brightness == o.brightness && contrast == o.contrast && selectedOnly == o.selectedOnly;
    }
};

// "Hue / saturation / value": settings name "hue_saturation_value".
struct HueSaturationValueSettings
{
    static const QString settingsName;
    static constexpr int hueMinimum = -180, hueMaximum = 180;         // degrees
    static constexpr int percentMinimum = -100, percentMaximum = 100; // saturation and value

    int hue = 0;
    int saturation = 0;
    int value = 0;
    bool colorize = false;
    bool selectedOnly = false;

    static HueSaturationValueSettings fromPairs(const SettingsText::Pairs &pairs,
                                                const HueSaturationValueSettings &base);
    static HueSaturationValueSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const HueSaturationValueSettings &o) const
    {
        return hue == o.hue && saturation == o.saturation && value == o.value && colorize == o.colorize &&
               selectedOnly == o.selectedOnly;
    }
};

// "Component manipulation": settings name "component_manipulation".
struct ComponentManipulationSettings
{
    static const QString settingsName;
    static constexpr int minimum = -100, maximum = 100; // percent of 1.0

    int mode = 0;                    // colour-space number (ColorSpaceIndex)
    std::array<int, 4> components{}; // "comp1".."comp4"
    bool wrap = false;
    bool selectedOnly = false;

    // An unknown colour space is refused ("Invalid settings"): the mode combo has no such entry.
    static ComponentManipulationSettings fromPairs(const SettingsText::Pairs &pairs,
                                                   const ComponentManipulationSettings &base);
    static ComponentManipulationSettings fromPairs(const SettingsText::Pairs &pairs);
    SettingsText::Pairs toPairs() const;
    bool operator==(const ComponentManipulationSettings &o) const
    {
        return mode == o.mode && components == o.components && wrap == o.wrap &&
               selectedOnly == o.selectedOnly;
    }
};

// The three tone dialogs' computations. Each returns a palette of the input's size; entries that
// "Selected only" excludes are copied unchanged.
namespace ToneManipulation {

// Red, green and blue go through the contrast curve on their high bytes; the alpha becomes
// min(alpha, 255) << 8, so an opaque entry leaves with 65280. Both are how the dialog has
// always computed and are kept.
Palette<uint> brightnessContrast(const Palette<uint> &palette, const std::set<int> &selection,
                                 const BrightnessContrastSettings &settings);
// Through HSVA and back; every changed entry carries the alpha word 65535 * 65535, like the hue
// rotation generator.
Palette<uint> hueSaturationValue(const Palette<uint> &palette, const std::set<int> &selection,
                                 const HueSaturationValueSettings &settings);
// Shifts the four components in the chosen space and bounds them to 0..1 whatever the space's
// natural range; the same bound for every space is the defined behaviour.
Palette<uint> componentManipulation(const Palette<uint> &palette, const std::set<int> &selection,
                                    const ComponentManipulationSettings &settings);

// "brightness_contrast", "hue_saturation_value" and "component_manipulation".
void registerOperations(const PaletteOperations::Registrar &add);

} // namespace ToneManipulation
