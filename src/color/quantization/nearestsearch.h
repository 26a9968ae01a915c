#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The position of the colour nearest to (r, g, b) among n colours given channel by channel, by
// squared RGB distance; among equally near ones the first wins. n must be at least 1. Squared
// integer distances order the colours exactly as their Euclidean distances do.
size_t nearestColor(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n, int32_t r,
                    int32_t g, int32_t b);

// Appends to out, in their order, the positions among the n colours that can be the nearest (the
// first among equals) to some colour of the box lo..hi (bounds included, per channel). A colour
// left out is nearer to no point of the box than some other colour is to the box's farthest
// corner, so it can never win, nor tie: the first nearest among the kept positions is the first
// nearest among all n, for every colour of the box.
void boxCandidates(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n,
                   const int32_t lo[3], const int32_t hi[3], std::vector<uint32_t> &out);

// The first nearest among the colours at the given positions, as nearestColor ranks them; count
// must be at least 1. Returns the position itself.
inline uint32_t nearestAmong(const int32_t *reds, const int32_t *greens, const int32_t *blues,
                             const uint32_t *positions, size_t count, int32_t r, int32_t g, int32_t b)
{
    uint32_t bestAt = positions[0];
    int32_t dr = r - reds[bestAt], dg = g - greens[bestAt], db = b - blues[bestAt];
    int32_t best = dr * dr + dg * dg + db * db;
    for (size_t i = 1; i < count; ++i) {
        const uint32_t at = positions[i];
        dr = r - reds[at], dg = g - greens[at], db = b - blues[at];
        const int32_t d = dr * dr + dg * dg + db * db;
        // Selected, not branched on: which one is nearer is as good as random.
        const bool nearer = d < best;
        best = nearer ? d : best;
        bestAt = nearer ? at : bestAt;
    }
    return bestAt;
}

// The first nearest among a fixed list of colours, answered through the 8 x 8 x 8 blocks of the
// 24-bit colours: a block, when first met, keeps the few colours that can win in it, so a pixel
// compares itself with those only. The colours are the caller's and must outlive this.
class BlockNearest
{
public:
    BlockNearest(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n);

    // The position of the first nearest colour to (r, g, b), channels 0..255; n must be at least 1.
    uint32_t nearest(int32_t r, int32_t g, int32_t b)
    {
        const uint32_t block = uint32_t(((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3));
        const Run run = m_runs[block].count ? m_runs[block] : prepare(block);
        return nearestAmong(m_reds, m_greens, m_blues, m_positions.data() + run.first, run.count, r, g, b);
    }

private:
    struct Run
    {
        uint32_t first = 0, count = 0;
    };
    Run prepare(uint32_t block);

    const int32_t *m_reds, *m_greens, *m_blues;
    size_t m_n;
    std::vector<Run> m_runs;
    std::vector<uint32_t> m_positions;
};
