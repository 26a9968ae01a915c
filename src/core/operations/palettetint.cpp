#include "operations/palettetint.h"

#include "spaces/colorspace.h"
#include "operations/palettegenerators.h"
#include "storage/settingsvalues.h"

using namespace SettingsValues;

const QString TintSettings::settingsName = QStringLiteral("tint");
const QString GradientTintSettings::settingsName = QStringLiteral("gradienttint");

namespace {

const QString keySelOnly = QStringLiteral("sel_only");

int opacityValue(const QString &key, const QString &value)
{
    return clampedInteger(key, value, 0, 100);
}

} // namespace

TintSettings TintSettings::fromPairs(const SettingsText::Pairs &pairs, const TintSettings &base)
{
    TintSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("color"))
            s.color = colour(key, value);
        else if (key == QLatin1String("opacity"))
            s.opacity = opacityValue(key, value);
        else if (key == keySelOnly)
            s.selectedOnly = flag(key, value);
    }
    return s;
}

TintSettings TintSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, TintSettings());
}

SettingsText::Pairs TintSettings::toPairs() const
{
    return {{QStringLiteral("color"), text(color)},
            {QStringLiteral("opacity"), text(opacity)},
            {keySelOnly, text(selectedOnly)}};
}

GradientTintSettings GradientTintSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                     const GradientTintSettings &base)
{
    GradientTintSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("color1"))
            s.color1 = colour(key, value);
        else if (key == QLatin1String("opacity1"))
            s.opacity1 = opacityValue(key, value);
        else if (key == QLatin1String("color2"))
            s.color2 = colour(key, value);
        else if (key == QLatin1String("opacity2"))
            s.opacity2 = opacityValue(key, value);
        else if (key == QLatin1String("mode"))
            s.mode = colourSpace(key, value);
        else if (key == keySelOnly)
            s.selectedOnly = flag(key, value);
        else if (key == QLatin1String("begin"))
            s.begin = clampedInteger(key, value, 0, maximumPaletteSize - 1);
        else if (key == QLatin1String("end"))
            s.end = clampedInteger(key, value, 0, maximumPaletteSize - 1);
    }
    return s;
}

GradientTintSettings GradientTintSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, GradientTintSettings());
}

SettingsText::Pairs GradientTintSettings::toPairs() const
{
    return {{QStringLiteral("color1"), text(color1)}, {QStringLiteral("opacity1"), text(opacity1)},
            {QStringLiteral("color2"), text(color2)}, {QStringLiteral("opacity2"), text(opacity2)},
            {QStringLiteral("mode"), text(mode)},     {keySelOnly, text(selectedOnly)}};
}

namespace PaletteTint {

RGBAColor<uint> dialogColour(const QColor &colour)
{
    return {uint(colour.red()) << 8, uint(colour.green()) << 8, uint(colour.blue()) << 8, 65535};
}

Palette<uint> tint(const Palette<uint> &palette, const std::set<int> &selection, const TintSettings &settings)
{
    const double t = settings.opacity / 100.0;
    const RGBAColor<uint> tintColour = dialogColour(settings.color);
    Palette<uint> out = palette;
    for (int i = 0; i < out.size(); ++i)
        if (PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            out[i] = PaletteGenerators::linearMix(out[i], tintColour, t);
    return out;
}

Palette<uint> gradientTint(const Palette<uint> &palette, const std::set<int> &selection,
                           const GradientTintSettings &settings)
{
    const double o1 = settings.opacity1 / 100.0;
    const double o2 = settings.opacity2 / 100.0;
    const int m = settings.mode;
    const SpaceComponents s1 = colourToSpace(dialogColour(settings.color1), m);
    const SpaceComponents s2 = colourToSpace(dialogColour(settings.color2), m);
    const int begin = settings.begin;
    // The end index's spin box stops at the last entry; a larger end from the command line does too.
    const int last = palette.size() - 1;
    const int end = settings.end < 0 || settings.end > last ? last : settings.end;

    Palette<uint> out = palette;
    for (int i = 0; i < out.size(); ++i) {
        if (i < begin || i > end || !PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            continue;
        const double u = end == begin ? 0.0 : double(i - begin) / double(end - begin);
        SpaceComponents s;
        for (size_t k = 0; k < 4; ++k)
            s[k] = s1[k] * (1.0 - u) + s2[k] * u;
        const double w = o1 + (o2 - o1) * u;
        out[i] = PaletteGenerators::linearMix(out[i], spaceToColour(s, m), w);
    }
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(TintSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return tint(p, sel, TintSettings::fromPairs(pairs));
         },
         false});
    add(GradientTintSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return gradientTint(p, sel, GradientTintSettings::fromPairs(pairs));
         },
         false});
}

} // namespace PaletteTint
