#pragma once

#include "quantization/quantizationalgorithm.h"

#include <cstdint>

// A fixed grid of 8 red, 8 green and 4 blue steps whatever is asked for: always 256 colours, red
// outermost and blue innermost. Each channel takes the mean of the values that fell into its
// step, independently of the other channels, so the palette is the product of the three lists
// (black where a step stayed empty).
class QA_Uniform : public QuantizationAlgorithm
{
public:
    int addColor(uint rgb) override;
    void setColorCount(uint) override {}
    void getPalette(Palette<uint> &out) override;

private:
    struct Bin
    {
        uint64_t sum = 0;
        uint64_t count = 0;
        uint mean() const { return count == 0 ? 0u : uint(sum / count); }
    };
    Bin m_red[8];
    Bin m_green[8];
    Bin m_blue[4];
};
