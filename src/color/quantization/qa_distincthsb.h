#pragma once

#include "quantization/quantizationalgorithm.h"

#include <cstdint>
#include <vector>

// Picks n of the image's distinct colours spread out in hue, saturation and value.
//
// The most frequent colour always comes first (the lowest colour value among equally frequent
// ones). The others are narrowed down in passes over the axes hue, saturation and value, in that
// order: on each axis that still holds more candidates than wanted, the candidates are sorted
// along the axis (ties by colour value) and an evenly spaced subset is kept, the first and the
// last included, of half the candidates (rounded up) or of exactly the number wanted, whichever
// is larger. Passes repeat while one of them removed anything. Halving on each axis in turn
// keeps the extremes of every axis for as long as possible, so the survivors span the colours
// rather than crowd where the image is busiest. The survivors follow the first colour, most
// frequent first.
class QA_DistinctHSB : public QuantizationAlgorithm
{
public:
    struct Record
    {
        uint32_t color = 0;
        uint32_t count = 0;
        double axis[3] = {0, 0, 0}; // hue, saturation, value, each times 5,000,000
    };

    int addColor(uint rgb) override;
    void setColorCount(uint n) override { m_count = n; }
    void getPalette(Palette<uint> &out) override;

    // One narrowing pass over the axes set in mask (1 hue, 2 saturation, 4 value) towards
    // target candidates; true when it removed any.
    static bool narrow(std::vector<Record> &candidates, size_t target, int mask);

private:
    // The fed colours; sorted and counted when the palette is asked for, which gives the records
    // in colour order as an ordered map would, without a node for every distinct colour.
    std::vector<uint32_t> m_fed;
    uint m_count = 0;
};
