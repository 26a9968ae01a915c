#pragma once

#include "palette/palette.h"
#include "spaces/rgbacolor.h"

#include <QString>
#include <QStringList>

#include <array>
#include <vector>

// Colour spaces for interpolation, component manipulation, tinting and sorting.
//
// Every forward conversion starts from an Rgb whose components are the 16-bit channels divided
// by 65535 and then, inside the conversions, treats them as if they were on a 0..255 scale and
// divides by 255 again. The numbers every dialog, preset and sort order depends on come from
// this double scaling, so it is reproduced on purpose, and the inverses undo it.
//
// Oklab and Oklch came later and read the Rgb components as the 0..1 fractions they really are:
// nothing stored depends on them having the old scaling, and their published values (white has
// lightness 1) hold only on the true sRGB scale. Rgb itself means the same for every space, so
// convert() between an old space and a new one still gives the numbered spaces' values.
namespace ColorSpace {

class Rgb;

class IColorSpace
{
public:
    virtual ~IColorSpace();
    virtual void toRgb(Rgb &out) const = 0;
    virtual void copyTo(IColorSpace &other) const = 0;
    // The space's forward conversion from Rgb.
    virtual void fromRgb(const Rgb &in) = 0;
};

// Any space into any other: copyTo when both are of the same class, otherwise through Rgb.
void convert(const IColorSpace &from, IColorSpace &to);

#define CHROMAXIS_COLORSPACE_BODY(Class)                                                             \
public:                                                                                              \
    void toRgb(Rgb &out) const override;                                                             \
    void copyTo(IColorSpace &other) const override;                                                  \
    void fromRgb(const Rgb &in) override;

class Rgb : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Rgb)
    Rgb() = default;
    Rgb(double r_, double g_, double b_) : r(r_), g(g_), b(b_) {}
    double r{}, g{}, b{};
};
class Xyz : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Xyz)
    double x{}, y{}, z{};
};
class Hsl : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Hsl)
    double h{}, s{}, l{};
};
class Lab : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Lab)
    double l{}, a{}, b{};
};
class Lch : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Lch)
    double l{}, c{}, h{};
};
class Luv : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Luv)
    double l{}, u{}, v{};
};
class Yxy : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Yxy)
    double y1{}, x{}, y2{};
};
class Cmy : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Cmy)
    double c{}, m{}, y{};
};
class Cmyk : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Cmyk)
    double c{}, m{}, y{}, k{};
};
class Hsv : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Hsv)
    double h{}, s{}, v{};
};
class Hsb : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Hsb)
    double h{}, s{}, b{};
};
class HunterLab : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(HunterLab)
    double l{}, a{}, b{};
};
// Björn Ottosson's OKLab on linear sRGB: lightness 0..1, a and b about -0.4..0.4.
class Oklab : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Oklab)
    double l{}, a{}, b{};
};
// OKLab in polar form: chroma and hue in degrees (0..360). A grey has chroma 0 and hue 0.
class Oklch : public IColorSpace
{
    CHROMAXIS_COLORSPACE_BODY(Oklch)
    double l{}, c{}, h{};
};

#undef CHROMAXIS_COLORSPACE_BODY

} // namespace ColorSpace

// The numbered spaces as the dialogs' combo boxes offer them.
enum ColorSpaceIndex : int {
    SpaceRGB = 0, SpaceXYZ, SpaceHSL, SpaceLab, SpaceLCH, SpaceLuv,
    SpaceYxy, SpaceCMY, SpaceCMYK, SpaceHSV, SpaceHSB, SpaceHunterLab,
    // Appended after the first twelve, so that stored numbers keep their meaning.
    SpaceOKLab, SpaceOKLCH,
    ColorSpaceCount
};

struct ColorSpaceInfo
{
    QString name;
    QStringList components;
};

// Index 0..ColorSpaceCount - 1 -> display name and component names.
const std::vector<ColorSpaceInfo> &colorSpaceTable();

using SpaceComponents = std::array<double, 4>;

// The colour's components in the numbered space; index 0 and any unknown index give r, g, b, a
// divided by 65535; three-component spaces put 0.0 in the fourth place.
SpaceComponents colourToSpace(const RGBAColor<uint> &c, int space);
std::vector<SpaceComponents> colourToSpace(const Palette<uint> &p, int space);

// Back to a 16-bit colour with alpha 65535. Index 0 and unknown indexes multiply the first three
// components by 65535 and truncate; the other spaces invert their forward formula, rounding and
// clamping out-of-gamut results into 0..65535.
RGBAColor<uint> spaceToColour(const SpaceComponents &c, int space);
std::vector<RGBAColor<uint>> spaceToColour(const std::vector<SpaceComponents> &v, int space);
