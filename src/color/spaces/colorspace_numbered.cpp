// The numbered colour spaces the dialogs offer, converted through the classes of colorspace.cpp.
#include "spaces/colorspace.h"

using namespace ColorSpace;

const std::vector<ColorSpaceInfo> &colorSpaceTable()
{
    static const std::vector<ColorSpaceInfo> table = [] {
        const char *const rows[ColorSpaceCount][2] = {
            {"RGB", "red,green,blue"},
            {"XYZ", "x,y,z"},
            {"HSL", "hue,saturation,l"},
            {"Lab", "l,a,b"},
            {"LCH", "l,c,h"},
            {"Luv", "l,u,v"},
            {"Yxy", "y1,x,y2"},
            {"CMY", "cyan,magenta,yellow"},
            {"CMYK", "cyan,magenta,yellow,black"},
            {"HSV", "hue,saturation,value"},
            {"HSB", "hue,saturation,brightness"},
            {"HunterLab", "l,a,b"},
            {"OKLab", "l,a,b"},
            {"OKLCH", "l,c,h"},
        };
        std::vector<ColorSpaceInfo> t;
        for (const auto &row : rows)
            t.push_back({QString::fromLatin1(row[0]), QString::fromLatin1(row[1]).split(QLatin1Char(','))});
        return t;
    }();
    return table;
}

namespace {

constexpr double kWordMax = 65535.0;

uint truncatedChannel(double v)
{
    if (!(v > 0.0)) // also catches NaN
        return 0;
    if (v >= kWordMax)
        return 65535;
    return uint(v);
}

template <typename S> SpaceComponents forward(const Rgb &rgb, double S::*c0, double S::*c1, double S::*c2)
{
    S s;
    s.fromRgb(rgb);
    return {s.*c0, s.*c1, s.*c2, 0.0};
}

template <typename S> Rgb inverse(const SpaceComponents &c, double S::*c0, double S::*c1, double S::*c2)
{
    S s;
    s.*c0 = c[0];
    s.*c1 = c[1];
    s.*c2 = c[2];
    Rgb rgb;
    s.toRgb(rgb);
    return rgb;
}

} // namespace

SpaceComponents colourToSpace(const RGBAColor<uint> &colour, int space)
{
    const Rgb rgb(colour.r / kWordMax, colour.g / kWordMax, colour.b / kWordMax);
    // clang-format off
    switch (space) {
    case SpaceXYZ: return forward(rgb, &Xyz::x, &Xyz::y, &Xyz::z);
    case SpaceHSL: return forward(rgb, &Hsl::h, &Hsl::s, &Hsl::l);
    case SpaceLab: return forward(rgb, &Lab::l, &Lab::a, &Lab::b);
    case SpaceLCH: return forward(rgb, &Lch::l, &Lch::c, &Lch::h);
    case SpaceLuv: return forward(rgb, &Luv::l, &Luv::u, &Luv::v);
    case SpaceYxy: return forward(rgb, &Yxy::y1, &Yxy::x, &Yxy::y2);
    case SpaceCMY: return forward(rgb, &Cmy::c, &Cmy::m, &Cmy::y);
    case SpaceCMYK: {
        Cmyk s;
        s.fromRgb(rgb);
        return {s.c, s.m, s.y, s.k};
    }
    case SpaceHSV: return forward(rgb, &Hsv::h, &Hsv::s, &Hsv::v);
    case SpaceHSB: return forward(rgb, &Hsb::h, &Hsb::s, &Hsb::b);
    case SpaceHunterLab: return forward(rgb, &HunterLab::l, &HunterLab::a, &HunterLab::b);
    case SpaceOKLab: return forward(rgb, &Oklab::l, &Oklab::a, &Oklab::b);
    case SpaceOKLCH: return forward(rgb, &Oklch::l, &Oklch::c, &Oklch::h);
    default: return {rgb.r, rgb.g, rgb.b, colour.a / kWordMax};
    }
    // clang-format on
}

std::vector<SpaceComponents> colourToSpace(const Palette<uint> &p, int space)
{
    std::vector<SpaceComponents> out;
    out.reserve(p.entries().size());
    for (const auto &c : p.entries())
        out.push_back(colourToSpace(c, space));
    return out;
}

RGBAColor<uint> spaceToColour(const SpaceComponents &c, int space)
{
    Rgb rgb;
    // clang-format off
    switch (space) {
    case SpaceXYZ: rgb = inverse(c, &Xyz::x, &Xyz::y, &Xyz::z); break;
    case SpaceHSL: rgb = inverse(c, &Hsl::h, &Hsl::s, &Hsl::l); break;
    case SpaceLab: rgb = inverse(c, &Lab::l, &Lab::a, &Lab::b); break;
    case SpaceLCH: rgb = inverse(c, &Lch::l, &Lch::c, &Lch::h); break;
    case SpaceLuv: rgb = inverse(c, &Luv::l, &Luv::u, &Luv::v); break;
    case SpaceYxy: rgb = inverse(c, &Yxy::y1, &Yxy::x, &Yxy::y2); break;
    case SpaceCMY: rgb = inverse(c, &Cmy::c, &Cmy::m, &Cmy::y); break;
    case SpaceCMYK: {
        Cmyk s;
        s.c = c[0];
        s.m = c[1];
        s.y = c[2];
        s.k = c[3];
        s.toRgb(rgb);
        break;
    }
    case SpaceHSV: rgb = inverse(c, &Hsv::h, &Hsv::s, &Hsv::v); break;
    case SpaceHSB: rgb = inverse(c, &Hsb::h, &Hsb::s, &Hsb::b); break;
    case SpaceHunterLab: rgb = inverse(c, &HunterLab::l, &HunterLab::a, &HunterLab::b); break;
    case SpaceOKLab: rgb = inverse(c, &Oklab::l, &Oklab::a, &Oklab::b); break;
    case SpaceOKLCH: rgb = inverse(c, &Oklch::l, &Oklch::c, &Oklch::h); break;
    default:
        // The plain RGB components truncate, as every caller of index 0 expects.
        return {truncatedChannel(c[0] * kWordMax), truncatedChannel(c[1] * kWordMax),
                truncatedChannel(c[2] * kWordMax), 65535};
    }
    // clang-format on
    return {clampedChannel(rgb.r * kWordMax), clampedChannel(rgb.g * kWordMax),
            clampedChannel(rgb.b * kWordMax), 65535};
}

std::vector<RGBAColor<uint>> spaceToColour(const std::vector<SpaceComponents> &v, int space)
{
    std::vector<RGBAColor<uint>> out;
    out.reserve(v.size());
    for (const auto &c : v)
        out.push_back(spaceToColour(c, space));
    return out;
}
