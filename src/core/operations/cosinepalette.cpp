#include "operations/cosinepalette.h"

#include "storage/settingsfields.h"

#include <cmath>

using namespace SettingsValues;

const QString CosinePaletteSettings::settingsName = QStringLiteral("cosini");

namespace {

const SettingsFields<CosinePaletteSettings> &cosineFields()
{
    using S = CosinePaletteSettings;
    using F = SettingsFields<S>;
    static const F fields([] {
        std::vector<F::Field> list;
        // "a_r" .. "d_r", then green and blue likewise.
        const char channelSuffix[3] = {'r', 'g', 'b'};
        const std::pair<char, double S::Channel::*> coefficients[4] = {
            {'a', &S::Channel::a}, {'b', &S::Channel::b}, {'c', &S::Channel::c}, {'d', &S::Channel::d}};
        for (size_t ch = 0; ch < 3; ++ch)
            for (const auto &coefficient : coefficients) {
                double S::Channel::*const member = coefficient.second;
                list.push_back(F::number(
                    QStringLiteral("%1_%2")
                        .arg(QLatin1Char(coefficient.first))
                        .arg(QLatin1Char(channelSuffix[ch])),
                    [ch, member](auto &s) -> auto & { return s.channels[ch].*member; },
                    S::coefficientMinimum, S::coefficientMaximum));
            }
        list.push_back(F::integer(QStringLiteral("size"), &S::size, 1, maximumPaletteSize));
        list.push_back(F::flag(QStringLiteral("keep_aspect"), &S::keepAspect));
        return list;
    }());
    return fields;
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
    return cosineFields().read(pairs, base);
}

CosinePaletteSettings CosinePaletteSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, CosinePaletteSettings());
}

SettingsText::Pairs CosinePaletteSettings::toPairs() const
{
    return cosineFields().write(*this);
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
