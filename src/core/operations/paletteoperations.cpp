#include "operations/paletteoperations.h"

#include "operations/colorinterpolation.h"
#include "operations/cosinepalette.h"
#include "palette/describedexception.h"
#include "operations/paletteblur.h"
#include "operations/palettegenerators.h"
#include "operations/palettepatterns.h"
#include "operations/paletteresize.h"
#include "operations/palettesharpen.h"
#include "operations/palettesort.h"
#include "operations/palettetint.h"
#include "palette/standardpalettes.h"
#include "operations/tonemanipulation.h"

#include <map>
#include <mutex>

namespace PaletteOperations {

namespace {

std::map<QString, Operation> &registry()
{
    static std::map<QString, Operation> r;
    return r;
}

Operation simple(std::function<Palette<uint>(const Palette<uint> &, const std::set<int> &)> f, bool generator = false)
{
    return {[f](const Palette<uint> &p, const std::set<int> &s, const SettingsText::Pairs &) { return f(p, s); },
            generator};
}

} // namespace

void registerBuiltins()
{
    static std::once_flag once;
    std::call_once(once, [] {
        auto &r = registry();
        auto add = [&r](const char *name, Operation op) {
            if (r.find(QString::fromLatin1(name)) == r.end())
                r[QString::fromLatin1(name)] = std::move(op);
        };
        add("palette_generate_grayscale",
            simple([](const Palette<uint> &, const std::set<int> &) { return grayscalePalette(); }, true));
        add("palette_generate_extgrayscale",
            simple([](const Palette<uint> &, const std::set<int> &) { return PaletteGenerators::extendedGrayscale(); },
                   true));
        add("palette_generate_huerot256",
            simple([](const Palette<uint> &, const std::set<int> &) { return PaletteGenerators::hueRotation(256); },
                   true));
        add("palette_generate_huerot1024",
            simple([](const Palette<uint> &, const std::set<int> &) { return PaletteGenerators::hueRotation(1024); },
                   true));
        add("palette_invert_order",
            simple([](const Palette<uint> &p, const std::set<int> &) { return PaletteGenerators::invertOrder(p); }));
        add("interpolate_selected", simple([](const Palette<uint> &p, const std::set<int> &s) {
                return PaletteGenerators::interpolateSelected(p, s);
            }));
        add("shift_order", {[](const Palette<uint> &p, const std::set<int> &, const SettingsText::Pairs &settings) {
                                bool ok = false;
                                const int offset = SettingsText::value(settings, QStringLiteral("offset"),
                                                                       QStringLiteral("0"))
                                                       .toInt(&ok);
                                if (!ok)
                                    throw DescribedException(QStringLiteral("Invalid settings"),
                                                             QStringLiteral("The offset must be an integer."));
                                return PaletteGenerators::shiftOrder(p, offset);
                            },
                            false});
        const Registrar family = [&r](const QString &name, Operation op) {
            if (r.find(name) == r.end())
                r[name] = std::move(op);
        };
        ToneManipulation::registerOperations(family);
        PaletteBlur::registerOperations(family);
        PaletteTint::registerOperations(family);
        ColorInterpolation::registerOperations(family);
        CosinePalette::registerOperations(family);
        PaletteSort::registerOperations(family);
        PaletteSharpen::registerOperations(family);
        PaletteResize::registerOperations(family);
        PalettePatterns::registerOperations(family);
    });
}

void registerOperation(const QString &name, Operation operation)
{
    registerBuiltins();
    registry()[name] = std::move(operation);
}

bool exists(const QString &name)
{
    registerBuiltins();
    return registry().count(name) > 0;
}

bool isGenerator(const QString &name)
{
    registerBuiltins();
    const auto it = registry().find(name);
    return it != registry().end() && it->second.generator;
}

QStringList names()
{
    registerBuiltins();
    QStringList out;
    for (const auto &entry : registry())
        out << entry.first;
    return out;
}

Palette<uint> apply(const QString &name, const Palette<uint> &palette, const std::set<int> &selection,
                    const SettingsText::Pairs &settings)
{
    registerBuiltins();
    const auto it = registry().find(name);
    if (it == registry().end())
        throw DescribedException(QStringLiteral("Unknown operation"),
                                 QStringLiteral("There is no palette operation named '%1'.").arg(elidedValue(name)));
    return it->second.function(palette, selection, settings);
}

} // namespace PaletteOperations
