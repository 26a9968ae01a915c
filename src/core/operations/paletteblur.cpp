#include "operations/paletteblur.h"

#include "spaces/colorspace.h"
#include "storage/settingsvalues.h"

#include <cmath>

using namespace SettingsValues;

const QString BlurSettings::settingsName = QStringLiteral("blur");

namespace {

const QString keyMode = QStringLiteral("mode");
const QString keyMethod = QStringLiteral("method");
const QString keyWrap = QStringLiteral("wrap");
const QString keyMaster = QStringLiteral("value");
const QString keySelOnly = QStringLiteral("sel_only");

QString componentKey(int k)
{
    return QStringLiteral("comp%1").arg(k + 1);
}

} // namespace

BlurSettings BlurSettings::fromPairs(const SettingsText::Pairs &pairs, const BlurSettings &base)
{
    BlurSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == keyMode) {
            s.mode = colourSpace(key, value);
        } else if (key == keyMethod) {
            const int m = integer(key, value);
            if (m != RunningMean && m != Gauss)
                invalid(key, value, QStringLiteral("a method 0 (running mean) or 1 (normal)"));
            s.method = m;
        } else if (key == keyWrap) {
            s.wrap = flag(key, value);
        } else if (key == keyMaster) {
            s.master = clampedInteger(key, value, 0, maximumRadius);
            s.radii.fill(s.master);
        } else if (key == keySelOnly) {
            s.selectedOnly = flag(key, value);
        } else {
            for (int k = 0; k < 4; ++k)
                if (key == componentKey(k))
                    s.radii[size_t(k)] = clampedInteger(key, value, 0, maximumRadius);
        }
    }
    return s;
}

BlurSettings BlurSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, BlurSettings());
}

SettingsText::Pairs BlurSettings::toPairs() const
{
    SettingsText::Pairs pairs{
        {keyMode, text(mode)}, {keyMethod, text(method)}, {keyWrap, text(wrap)}, {keyMaster, text(master)}};
    for (int k = 0; k < 4; ++k)
        pairs.emplace_back(componentKey(k), text(radii[size_t(k)]));
    pairs.emplace_back(keySelOnly, text(selectedOnly));
    return pairs;
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
            const int r = settings.radii[k];
            if (r <= 0)
                continue;
            double sum = 0.0, weightSum = 0.0;
            for (int j = -r; j <= r; ++j) {
                const int at = i + j;
                if (at < 0 || at >= n)
                    continue;
                const double w = kernels[k][size_t(j + r)];
                sum += w * source[size_t(at)][k];
                weightSum += w;
            }
            const double value = weightSum == 0.0 ? sum : sum / weightSum;
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
