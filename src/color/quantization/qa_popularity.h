#pragma once

#include "quantization/quantizationalgorithm.h"

#include <cstdint>
#include <vector>

// The most frequent colours, counted in buckets of the top 6 bits a channel. Each bucket keeps
// the sums of the full 8-bit channels, so its colour is the mean of what fell into it.
class QA_Popularity : public QuantizationAlgorithm
{
public:
    QA_Popularity();

    int addColor(uint rgb) override;
    void setColorCount(uint n) override { m_count = n; }
    // The n fullest buckets, fullest first; equal counts keep the order of their keys.
    void getPalette(Palette<uint> &out) override;

    static uint32_t bucketKey(uint rgb)
    {
        return (((rgb >> 18) & 0x3F) << 12) | (((rgb >> 10) & 0x3F) << 6) | ((rgb >> 2) & 0x3F);
    }

private:
    struct Bucket
    {
        uint32_t sum[3] = {0, 0, 0};
        uint32_t count = 0;
    };
    // Every possible key has its slot, so walking the slots is walking the keys in order: the
    // same order an ordered map would give, at a fixed 4 MiB and no allocation per pixel.
    std::vector<Bucket> m_buckets;
    uint m_count = 0;
};
