#pragma once

#include "spaces/rgbacolor.h"

// One key of a colour gradient: a colour at an index of the 0..255 scale, with the colour space
// and the easing function of the segment that starts at it. The colour ticks bar edits a list of
// these and the interpolation generator turns that list into a palette.
struct ColorTick
{
    enum Function : int
    {
        Linear = 0,
        Sigmoid = 1
    };

    int index = 0;
    uint color = 0xFF000000u; // 32-bit ARGB, 8 bits a channel, as QColor::rgba() gives it
    int colorSpace = 0;       // colour-space number (ColorSpaceIndex)
    int function = Linear;

    // The key colour as the generator uses it: each 8-bit channel as the high byte, alpha 65535
    // (the tick's own alpha byte plays no part).
    RGBAColor<uint> keyColour() const
    {
        return {((color >> 16) & 0xFFu) << 8, ((color >> 8) & 0xFFu) << 8, (color & 0xFFu) << 8, 65535};
    }

    bool operator==(const ColorTick &o) const
    {
        return index == o.index && color == o.color && colorSpace == o.colorSpace && function == o.function;
    }
    bool operator!=(const ColorTick &o) const { return !(*this == o); }
};
