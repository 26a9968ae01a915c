#include "generators/generatorsettings.h"

#include "document/imagelimits.h"
#include "palette/describedexception.h"
#include "storage/settingsfields.h"

#include <map>

namespace {

using S = GeneratorSettings;
using F = SettingsFields<S>;

// The ranges a dialog's controls would hold a value in. A zoom or a norm of zero would divide by
// zero in every formula; iterations stop where a render would no longer finish.
constexpr int maxIterations = 1000000;
constexpr double smallest = 1e-9;
constexpr double largest = 1e12;
constexpr double offsetRange = 1e9;

F::Field iterations() { return F::integer(QStringLiteral("iterations"), &S::iterations, 1, maxIterations); }
F::Field norm() { return F::number(QStringLiteral("norm"), &S::norm, smallest, largest); }
F::Field offset(const char *key, double S::*member)
{
    return F::number(QString::fromLatin1(key), member, -offsetRange, offsetRange);
}
F::Field zoom() { return F::number(QStringLiteral("zoom"), &S::zoom, smallest, largest); }
F::Field constant(const char *key, double S::*member)
{
    return F::number(QString::fromLatin1(key), member, -offsetRange, offsetRange);
}
std::vector<F::Field> output()
{
    const int side = int(ImageLimits::maxSide);
    return {F::integer(QStringLiteral("xsize"), &S::xsize, 1, side),
            F::integer(QStringLiteral("ysize"), &S::ysize, 1, side),
            F::listPosition(QStringLiteral("target"), &S::target, 3)};
}
std::vector<F::Field> beyond()
{
    return {F::listPosition(QStringLiteral("precision"), &S::precision, 2),
            F::flag(QStringLiteral("smooth"), &S::smooth)};
}

std::vector<F::Field> joined(std::vector<F::Field> a, const std::vector<F::Field> &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

std::vector<F::Field> escapeTime(bool withConstant)
{
    std::vector<F::Field> f{iterations(), norm(), offset("xoff", &S::xoff), offset("yoff", &S::yoff), zoom()};
    if (withConstant) {
        f.push_back(constant("c_r", &S::cr));
        f.push_back(constant("c_i", &S::ci));
    }
    return joined(joined(f, output()), beyond());
}

std::vector<F::Field> pattern(int methods)
{
    return joined({F::listPosition(QStringLiteral("method"), &S::method, methods), offset("xoff", &S::xoff),
                   offset("yoff", &S::yoff), offset("zoff", &S::zoff), offset("xadd", &S::xadd),
                   offset("yadd", &S::yadd)},
                  output());
}

const std::map<QString, F> &tables()
{
    static const std::map<QString, F> t = [] {
        std::map<QString, F> m;
        m.emplace(QStringLiteral("mandelbrot"), F(escapeTime(false)));
        for (const char *name : {"julia", "ifs", "plasma"})
            m.emplace(QString::fromLatin1(name), F(escapeTime(true)));
        m.emplace(QStringLiteral("apollonian"),
                  F(joined({iterations(), norm(), offset("xoff", &S::xoff), offset("yoff", &S::yoff), zoom()},
                           output())));
        m.emplace(QStringLiteral("noise"), F(pattern(6)));
        m.emplace(QStringLiteral("gradient"), F(pattern(3)));
        m.emplace(QStringLiteral("moiree"),
                  F(joined({offset("xoff", &S::xoff), offset("yoff", &S::yoff), zoom(), norm(),
                            offset("xadd", &S::xadd), offset("yadd", &S::yadd)},
                           output())));
        return m;
    }();
    return t;
}

const F &table(const QString &name)
{
    const auto it = tables().find(name);
    if (it == tables().end())
        throw DescribedException(QStringLiteral("Invalid settings"),
                                 QStringLiteral("There is no image generator named \"%1\".").arg(elidedValue(name)));
    return it->second;
}

} // namespace

const QStringList &GeneratorSettings::names()
{
    static const QStringList n{QStringLiteral("gradient"), QStringLiteral("moiree"), QStringLiteral("mandelbrot"),
                               QStringLiteral("julia"),    QStringLiteral("apollonian"), QStringLiteral("noise"),
                               QStringLiteral("plasma"),   QStringLiteral("ifs")};
    return n;
}

bool GeneratorSettings::exists(const QString &name)
{
    return tables().count(name) > 0;
}

GeneratorSettings GeneratorSettings::defaults(const QString &name)
{
    table(name); // refuses an unknown name
    GeneratorSettings s;
    s.name = name;
    if (name != QLatin1String("mandelbrot"))
        s.iterations = 60;
    return s;
}

GeneratorSettings GeneratorSettings::fromPairs(const QString &name, const SettingsText::Pairs &pairs,
                                               const GeneratorSettings &base)
{
    GeneratorSettings s = table(name).read(pairs, base);
    s.name = name;
    return s;
}

SettingsText::Pairs GeneratorSettings::toPairs() const
{
    return table(name).write(*this);
}

bool GeneratorSettings::isEscapeTime() const
{
    return name == QLatin1String("mandelbrot") || name == QLatin1String("julia") || name == QLatin1String("ifs")
           || name == QLatin1String("plasma");
}

bool GeneratorSettings::usesPalette() const
{
    return name != QLatin1String("apollonian");
}
