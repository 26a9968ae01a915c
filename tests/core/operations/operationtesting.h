#pragma once

// Shared by the palette operation tests: colours as test data, readable failure messages, and
// seeded random palettes and selections for the invariant checks.

#include "palette/palette.h"

#include <QRandomGenerator>
#include <QtTest>

#include <set>
#include <vector>

using Colour = RGBAColor<uint>;
using Entries = std::vector<Colour>;

Q_DECLARE_METATYPE(Colour)
Q_DECLARE_METATYPE(Entries)

namespace QTest {
template <> inline char *toString(const Colour &c)
{
    return qstrdup(
        QStringLiteral("(%1, %2, %3, %4)").arg(c.r).arg(c.g).arg(c.b).arg(c.a).toUtf8().constData());
}
} // namespace QTest

inline Palette<uint> paletteOf(const Entries &entries)
{
    return Palette<uint>(entries);
}

// The fixed seeds of the randomised checks, so that a failure can be replayed.
inline std::vector<quint32> testSeeds()
{
    return {1u, 7u, 42u, 2024u, 65535u, 123456789u};
}

// Entries with 16-bit channels; now and then an alpha word outside 0..65535, as the hue rotation
// and the tone dialogs leave it, and the extremes 0 and 65535.
inline Palette<uint> randomPalette(QRandomGenerator &rng, int size)
{
    const auto channel = [&rng]() -> uint {
        switch (rng.bounded(8)) {
        case 0:
            return 0;
        case 1:
            return 65535;
        default:
            return rng.bounded(65536u);
        }
    };
    Palette<uint> p;
    p.setProperty(PaletteName, QStringLiteral("random"));
    for (int i = 0; i < size; ++i) {
        const uint r = channel(), g = channel(), b = channel();
        const uint a = rng.bounded(10) == 0 ? 4294836225u : channel();
        p.append({r, g, b, a});
    }
    return p;
}

inline std::set<int> randomSelection(QRandomGenerator &rng, int size)
{
    std::set<int> s;
    if (size == 0 || rng.bounded(4) == 0)
        return s;
    const int count = int(rng.bounded(quint32(size))) + 1;
    for (int k = 0; k < count; ++k)
        s.insert(int(rng.bounded(quint32(size))));
    return s;
}

inline int randomIn(QRandomGenerator &rng, int min, int max)
{
    return min + int(rng.bounded(quint32(max - min + 1)));
}
