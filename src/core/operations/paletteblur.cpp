#include "operations/paletteblur.h"

#include "spaces/colorspace.h"
#include "storage/settingsfields.h"

#include <cmath>

using namespace SettingsValues;

const QString BlurSettings::settingsName = QStringLiteral("blur");

namespace {

QString componentKey(int k)
{
    return QStringLiteral("comp%1").arg(k + 1);
}

int methodValue(const QString &key, const QString &value)
{
    const int m = integer(key, value);
    if (m != BlurSettings::RunningMean && m != BlurSettings::Gauss)
        invalid(key, value, QStringLiteral("a method 0 (running mean) or 1 (normal)"));
    return m;
}

const SettingsFields<BlurSettings> &blurFields()
{
    using S = BlurSettings;
    using F = SettingsFields<S>;
    static const F fields([] {
        std::vector<F::Field> list{
            F::colourSpace(QStringLiteral("mode"), &S::mode),
            F::field(QStringLiteral("method"), &S::method, methodValue),
            F::flag(QStringLiteral("wrap"), &S::wrap),
            // "Master size" moves the four radius controls as it is set.
            F::integer(QStringLiteral("value"), &S::master, 0, S::maximumRadius).thenApply([](S &s) {
                s.radii.fill(s.master);
            })};
        for (size_t k = 0; k < 4; ++k)
            list.push_back(F::integer(
                componentKey(int(k)), [k](auto &s) -> auto & { return s.radii[k]; }, 0, S::maximumRadius));
        list.push_back(F::selectedOnly(&S::selectedOnly));
        return list;
    }());
    return fields;
}

} // namespace

BlurSettings BlurSettings::fromPairs(const SettingsText::Pairs &pairs, const BlurSettings &base)
{
    return blurFields().read(pairs, base);
}

BlurSettings BlurSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, BlurSettings());
}

SettingsText::Pairs BlurSettings::toPairs() const
{
    return blurFields().write(*this);
}

namespace PaletteBlur {

std::vector<double> kernel(int radius, int method)
{
    std::vector<double> weights;
    if (radius < 0)
        return weights;
    weights.reserve(size_t(2 * radius + 1));
    for (int j = -radius; j <= radius; ++j) {
        if (method == BlurSettings::Gauss) {
            // For r = 0 this divides by zero; the blur never asks for that kernel.
            const double x = (double(j) / radius) * 3.0 / (radius + 1);
            weights.push_back(std::exp(-0.5 * x * x) / std::sqrt(6.2831853071794));
        } else {
            weights.push_back(1.0);
        }
    }
    return weights;
}

Palette<uint> blur(const Palette<uint> &palette, const std::set<int> &selection, const BlurSettings &settings)
{
    const int n = palette.size();
    const std::vector<SpaceComponents> source = colourToSpace(palette, settings.mode);
    std::array<std::vector<double>, 4> kernels;
    for (size_t k = 0; k < 4; ++k)
        if (settings.radii[k] > 0)
            kernels[k] = kernel(settings.radii[k], settings.method);

    std::vector<SpaceComponents> blurred = source;
    for (int i = 0; i < n; ++i) {
        if (!PaletteOperations::isEligible(i, settings.selectedOnly, selection))
            continue;
        for (size_t k = 0; k < 4; ++k) {
            if (settings.radii[k] <= 0)
                continue;
            const double value =
                weightedMean(i, n, kernels[k], [&](int at) { return source[size_t(at)][k]; });
            blurred[size_t(i)][k] = value < 0.0 ? 0.0 : value;
        }
    }

    Palette<uint> out = palette;
    out.entries() = spaceToColour(blurred, settings.mode);
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(BlurSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &sel, const SettingsText::Pairs &pairs) {
             return blur(p, sel, BlurSettings::fromPairs(pairs));
         },
         false});
}

} // namespace PaletteBlur
