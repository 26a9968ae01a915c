#pragma once

#include "dithering/dithering.h"

// Every pixel gets the index of its own colour's lookup; nothing is spread.
class Dithering_Nearest : public Dithering
{
public:
    explicit Dithering_Nearest(ColorIndex *index) : Dithering(index) {}

    DitherResult dither(const QImage &image, const Palette<uint> &palette, int target,
                        const Progress &progress = {}) override;
};
