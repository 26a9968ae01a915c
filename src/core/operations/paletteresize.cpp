#include "operations/paletteresize.h"

#include "operations/colorinterpolation.h"
#include "palette/describedexception.h"
#include "spaces/colorspace.h"
#include "storage/settingsfields.h"

using namespace SettingsValues;

const QString ResizeSettings::settingsName = QStringLiteral("resize_palette");

namespace {

const SettingsFields<ResizeSettings> &resizeFields()
{
    using S = ResizeSettings;
    using F = SettingsFields<S>;
    static const F fields({
        F::integer(QStringLiteral("size"), &S::size, S::minimumSize, maximumPaletteSize),
        F::colourSpace(QStringLiteral("mode"), &S::mode),
        F::listPosition(QStringLiteral("method"), &S::method, S::MethodCount),
    });
    return fields;
}

} // namespace

ResizeSettings ResizeSettings::fromPairs(const SettingsText::Pairs &pairs, const ResizeSettings &base)
{
    return resizeFields().read(pairs, base);
}

ResizeSettings ResizeSettings::fromPairs(const SettingsText::Pairs &pairs)
{
    return fromPairs(pairs, ResizeSettings());
}

SettingsText::Pairs ResizeSettings::toPairs() const
{
    return resizeFields().write(*this);
}

namespace PaletteResize {

Palette<uint> resize(const Palette<uint> &palette, const ResizeSettings &settings)
{
    const int n = palette.size();
    if (n == 0)
        throw DescribedException(QStringLiteral("Empty palette"),
                                 QStringLiteral("An empty palette cannot be resized."));
    const int size = qBound(int(ResizeSettings::minimumSize), settings.size, maximumPaletteSize);
    const long long span = size - 1;
    const std::vector<SpaceComponents> space = settings.method == ResizeSettings::Nearest
                                                   ? std::vector<SpaceComponents>()
                                                   : colourToSpace(palette, settings.mode);
    const int easing = settings.method == ResizeSettings::Sigmoid ? ColorTick::Sigmoid : ColorTick::Linear;

    Palette<uint> out = palette;
    out.clear();
    out.reserve(size);
    for (int j = 0; j < size; ++j) {
        const long long at = (long long)j * (n - 1);
        const int i = int(at / span);
        const long long rest = at % span;
        if (rest == 0) {
            out.append(palette[i]);
        } else if (settings.method == ResizeSettings::Nearest) {
            out.append(palette[2 * rest >= span ? i + 1 : i]);
        } else {
            const double t = ColorInterpolation::ease(easing, double(rest) / double(span));
            const SpaceComponents &a = space[size_t(i)];
            const SpaceComponents &b = space[size_t(i) + 1];
            SpaceComponents mixed;
            for (size_t k = 0; k < 4; ++k)
                mixed[k] = a[k] * (1.0 - t) + b[k] * t;
            RGBAColor<uint> colour = spaceToColour(mixed, settings.mode);
            colour.a = uint(palette[i].a * (1.0 - t) + palette[i + 1].a * t);
            out.append(colour);
        }
    }
    return out;
}

void registerOperations(const PaletteOperations::Registrar &add)
{
    add(ResizeSettings::settingsName,
        {[](const Palette<uint> &p, const std::set<int> &, const SettingsText::Pairs &pairs) {
             return resize(p, ResizeSettings::fromPairs(pairs));
         },
         false});
}

} // namespace PaletteResize
