#include "operations/palettesharpen.h"

#include "spaces/colorspace.h"
#include "storage/settingsfields.h"

using namespace SettingsValues;

const QString SharpenSettings::settingsName = QStringLiteral("sharpen");

namespace {

const SettingsFields<SharpenSettings> &sharpenFields()
{
    using S = SharpenSettings;
    using F = SettingsFields<S>;
    static const F fields([] {
        std::vector<F::Field> list{
            F::colourSpace(QStringLiteral("mode"), &S::mode),
            F::listPosition(QStringLiteral("method"), &S::method, 2),
            F::integer(QStringLiteral("radius"), &S::radius, 1, S::maximumRadius),
            F::integer(QStringLiteral("amount"), &S::amount, 0, S::maximumAmount),
        };
        for (size_t k = 0; k < 4; ++k)
            list.push_back(F::flag(
                QStringLiteral("comp%1").arg(k + 1), [k](auto &s) -> auto & { return s.components[k]; }));
        list.push_back(F::selectedOnly(&S::selectedOnly));
        return list;
    }());
    return fields;
}

} // namespace

SharpenSettings SharpenSettings::fromPairs(const SettingsText::Pairs &pairs, const SharpenSettings &base)
{
    return sharpenFields().read(pairs, base);
}

SharpenSettings SharpenSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, SharpenSettings());
}

SettingsText::Pairs SharpenSettings::toPairs() const
{
    return sharpenFields().write(*this);
}

namespace PaletteSharpen {

Palette<uint> sharpen(const Palette<uint> &palette, const std::set<int> &selection,
                      const SharpenSettings &settings)
{
    const int n = palette.size();
    const std::vector<SpaceComponents> source = colourToSpace(palette, settings.mode);
    const std::vector<double> kernel = PaletteBlur::kernel(settings.radius, settings.method);
    const double amount = settings.amount / 100.0;
    const size_t named =
        std::min<size_t>(4, size_t(colorSpaceTable().at(size_t(settings.mode)).components.size()));

    Palette<uint> out = palette;
    for (int i = 0; i < n; ++i) {
        if (!PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            continue;
        const SpaceComponents &own = source[size_t(i)];
        SpaceComponents sharpened = own;
        bool changed = false;
        for (size_t k = 0; k < named; ++k) {
            if (!settings.components[k])
                continue;
            const double detail = PaletteBlur::weightedMean(
                i, n, kernel, [&](int at) { return own[k] - source[size_t(at)][k]; });
            sharpened[k] = own[k] + amount * detail;
            changed = changed || sharpened[k] != own[k];
        }
        if (!changed)
            continue;
        RGBAColor<uint> colour = spaceToColour(sharpened, settings.mode);
        colour.a = palette[i].a;
        out[i] = colour;
    }
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(SharpenSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return sharpen(p, sel, SharpenSettings::fromPairs(pairs));
         },
         false});
}

} // namespace PaletteSharpen
