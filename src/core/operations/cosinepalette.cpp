#include "operations/cosinepalette.h"

#include "storage/settingsvalues.h"

#include <cmath>

using namespace SettingsValues;

const QString CosinePaletteSettings::settingsName = QStringLiteral("cosini");

namespace {

const char channelSuffix[3] = {'r', 'g', 'b'};

QString coefficientKey(char coefficient, size_t channel)
{
    return QStringLiteral("%1_%2").arg(QLatin1Char(coefficient)).arg(QLatin1Char(channelSuffix[channel]));
}

double *coefficient(CosinePaletteSettings::Channel &ch, char which)
{
    switch (which) {
    case 'a':
        return &ch.a;
    case 'b':
        return &ch.b;
    case 'c':
        return &ch.c;
    default:
        return &ch.d;
    }
}

uint channelValue(const CosinePaletteSettings::Channel &ch, double t)
{
    const double v = std::trunc((ch.a + ch.b * std::cos((ch.c * t + ch.d) * 6.28318530718)) * 65535.0);
    return uint(qBound(0.0, v, 65535.0));
}

} // namespace

CosinePaletteSettings CosinePaletteSettings::fromPairs(const SettingsText::Pairs &pairs,
                                                       const CosinePaletteSettings &base)
{
    CosinePaletteSettings s = base;
    for (const auto &[key, value] : pairs) {
        if (key == QLatin1String("size")) {
            s.size = clampedInteger(key, value, 1, maximumPaletteSize);
        } else if (key == QLatin1String("keep_aspect")) {
            s.keepAspect = flag(key, value);
        } else if (key.size() == 3 && key[1] == QLatin1Char('_')) {
            for (size_t ch = 0; ch < 3; ++ch)
                for (const char which : {'a', 'b', 'c', 'd'})
                    if (key == coefficientKey(which, ch))
                        *coefficient(s.channels[ch], which) =
                            clampedNumber(key, value, coefficientMinimum, coefficientMaximum);
        }
    }
    return s;
}

CosinePaletteSettings CosinePaletteSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, CosinePaletteSettings());
}

SettingsText::Pairs CosinePaletteSettings::toPairs() const
{
    SettingsText::Pairs pairs;
    for (size_t ch = 0; ch < 3; ++ch) {
        Channel c = channels[ch];
        for (const char which : {'a', 'b', 'c', 'd'})
            pairs.emplace_back(coefficientKey(which, ch), text(*coefficient(c, which)));
    }
    pairs.emplace_back(QStringLiteral("size"), text(size));
    pairs.emplace_back(QStringLiteral("keep_aspect"), text(keepAspect));
    return pairs;
}

namespace CosinePalette {

Palette<uint> generate(const CosinePaletteSettings &settings)
{
    Palette<uint> out;
    const int n = settings.size;
    if (n <= 0)
        return out;
    out.reserve(n);
    for (int i = 0; i < n; ++i) {
        const double t = settings.keepAspect ? double(i) / n : i * 0.00390625;
        out.append({channelValue(settings.channels[0], t), channelValue(settings.channels[1], t),
                    channelValue(settings.channels[2], t), 65535});
    }
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(CosinePaletteSettings::settingsName,
        {[](const Palette<uint> &, const std::set<int> &, const SettingsText::Pairs &pairs) {
             return generate(CosinePaletteSettings::fromPairs(pairs));
         },
         true});
}

} // namespace CosinePalette
