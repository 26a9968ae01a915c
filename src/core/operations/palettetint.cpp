#include "operations/palettetint.h"

#include "operations/palettegenerators.h"
#include "spaces/colorspace.h"
#include "storage/settingsfields.h"

using namespace SettingsValues;

const QString TintSettings::settingsName = QStringLiteral("tint");
const QString GradientTintSettings::settingsName = QStringLiteral("gradienttint");

namespace {

// Percent, as the opacity sliders hold it.
const int opacityMaximum = 100;

const SettingsFields<TintSettings> &tintFields()
{
    using F = SettingsFields<TintSettings>;
    static const F fields({
        F::colour(QStringLiteral("color"), &TintSettings::color),
        F::integer(QStringLiteral("opacity"), &TintSettings::opacity, 0, opacityMaximum),
        F::selectedOnly(&TintSettings::selectedOnly),
    });
    return fields;
}

const SettingsFields<GradientTintSettings> &gradientTintFields()
{
    using F = SettingsFields<GradientTintSettings>;
    using S = GradientTintSettings;
    static const F fields({
        F::colour(QStringLiteral("color1"), &S::color1),
        F::integer(QStringLiteral("opacity1"), &S::opacity1, 0, opacityMaximum),
        F::colour(QStringLiteral("color2"), &S::color2),
        F::integer(QStringLiteral("opacity2"), &S::opacity2, 0, opacityMaximum),
        F::colourSpace(QStringLiteral("mode"), &S::mode),
        F::selectedOnly(&S::selectedOnly),
        F::integer(QStringLiteral("begin"), &S::begin, 0, maximumPaletteSize - 1).extraKey(),
        F::integer(QStringLiteral("end"), &S::end, 0, maximumPaletteSize - 1).extraKey(),
    });
    return fields;
}

} // namespace

TintSettings TintSettings::fromPairs(const SettingsText::Pairs &pairs, const TintSettings &base)
{
    return tintFields().read(pairs, base);
}

TintSettings TintSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, TintSettings());
}

SettingsText::Pairs TintSettings::toPairs() const
{
    return tintFields().write(*this);
}

GradientTintSettings GradientTintSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                     const GradientTintSettings &base)
{
    return gradientTintFields().read(pairs, base);
}

GradientTintSettings GradientTintSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, GradientTintSettings());
}

SettingsText::Pairs GradientTintSettings::toPairs() const
{
    return gradientTintFields().write(*this);
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
