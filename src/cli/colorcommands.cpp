#include "colorcommands.h"

#include "palette/describedexception.h"
#include "spaces/colorconversion.h"
#include "spaces/colorspace.h"

#include <cstdio>

namespace {

QString formatDouble(double v)
{
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return QString::fromLatin1(buf);
}

// A space given by its index (any integer; unknown ones behave as RGB) or by its table name.
int parseSpace(const QString &word)
{
    bool ok = false;
    const int index = word.toInt(&ok);
    if (ok)
        return index;
    const auto &table = colorSpaceTable();
    for (size_t i = 0; i < table.size(); ++i)
        if (table[i].name.compare(word, Qt::CaseInsensitive) == 0)
            return int(i);
    throw CliUsageError{QStringLiteral("unknown colour space '%1'").arg(elidedValue(word))};
}

uint parseComponent(const QString &word)
{
    bool ok = false;
    const uint v = word.toUInt(&ok);
    if (!ok)
        throw CliUsageError{QStringLiteral("'%1' is not an unsigned 32-bit component").arg(elidedValue(word))};
    return v;
}

double parseDouble(const QString &word)
{
    bool ok = false;
    const double v = word.toDouble(&ok);
    if (!ok)
        throw CliUsageError{QStringLiteral("'%1' is not a number").arg(elidedValue(word))};
    return v;
}

RGBAColor<uint> parseColour(const QStringList &args, int from)
{
    return {parseComponent(args[from]), parseComponent(args[from + 1]), parseComponent(args[from + 2]),
            parseComponent(args[from + 3])};
}

void expectArgs(const CliContext &ctx, int n)
{
    if (ctx.args.size() != n)
        throw CliUsageError{QStringLiteral("expected %1 arguments, got %2").arg(n).arg(ctx.args.size())};
}

} // namespace

int colorToSpace(CliContext &ctx)
{
    expectArgs(ctx, 5);
    const int space = parseSpace(ctx.args[0]);
    const SpaceComponents c = colourToSpace(parseColour(ctx.args, 1), space);
    ctx.out << formatDouble(c[0]) << ' ' << formatDouble(c[1]) << ' ' << formatDouble(c[2]) << ' '
            << formatDouble(c[3]) << '\n';
    return ExitOk;
}

int colorFromSpace(CliContext &ctx)
{
    expectArgs(ctx, 5);
    const int space = parseSpace(ctx.args[0]);
    const SpaceComponents c{parseDouble(ctx.args[1]), parseDouble(ctx.args[2]), parseDouble(ctx.args[3]),
                            parseDouble(ctx.args[4])};
    const RGBAColor<uint> colour = spaceToColour(c, space);
    ctx.out << colour.r << ' ' << colour.g << ' ' << colour.b << ' ' << colour.a << '\n';
    return ExitOk;
}

int colorHsva(CliContext &ctx)
{
    expectArgs(ctx, 4);
    const HSVAColor<double> c = toHSVA(parseColour(ctx.args, 0));
    ctx.out << formatDouble(c.h) << ' ' << formatDouble(c.s) << ' ' << formatDouble(c.v) << ' '
            << formatDouble(c.a) << '\n';
    return ExitOk;
}
