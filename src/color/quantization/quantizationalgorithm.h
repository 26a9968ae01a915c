#pragma once

#include "palette/palette.h"

#include <QtGlobal>

// One colour-reduction algorithm. It is fed the pixels one at a time as 0xRRGGBB (alpha, if any,
// is masked off by the algorithm), told how many colours are wanted and asked once for its
// palette. Every object serves one run only and is not reused.
class QuantizationAlgorithm
{
public:
    virtual ~QuantizationAlgorithm() = default;
    // Always returns 0; the value exists for the callers that feed through a common interface.
    virtual int addColor(uint rgb) = 0;
    // Some algorithms reduce here, others only remember n.
    virtual void setColorCount(uint n) = 0;
    // Appends the result colours in the algorithm's own order.
    virtual void getPalette(Palette<uint> &out) = 0;

    // An 8-bit result colour as a palette entry: each channel widened by 256, opaque.
    static RGBAColor<uint> paletteColor(uint r, uint g, uint b) { return {r << 8, g << 8, b << 8, 65535}; }
};
