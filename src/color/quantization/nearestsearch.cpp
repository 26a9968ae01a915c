#include "quantization/nearestsearch.h"

#include <algorithm>
#include <limits>

// Built for AVX2 as well where the compiler can: the distances of a block vectorise, the search
// for the first minimum then runs over one small block only.
#if defined(__GNUC__) && defined(__x86_64__) && !defined(__clang__)
__attribute__((target_clones("avx2", "default")))
#endif
size_t
nearestColor(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n, int32_t r, int32_t g,
             int32_t b)
{
    constexpr size_t block = 256;
    int32_t dist[block];
    int32_t best = std::numeric_limits<int32_t>::max();
    size_t bestAt = 0;
    for (size_t start = 0; start < n; start += block) {
        const size_t m = std::min(block, n - start);
        int32_t low = std::numeric_limits<int32_t>::max();
        for (size_t i = 0; i < m; ++i) {
            const int32_t dr = r - reds[start + i], dg = g - greens[start + i], db = b - blues[start + i];
            dist[i] = dr * dr + dg * dg + db * db;
            low = std::min(low, dist[i]);
        }
        if (low < best) {
            best = low;
            size_t i = 0;
            while (dist[i] != low)
                ++i;
            bestAt = start + i;
        }
    }
    return bestAt;
}

void boxCandidates(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n,
                   const int32_t lo[3], const int32_t hi[3], std::vector<uint32_t> &out)
{
    const auto axis = [](int32_t c, int32_t low, int32_t high, int32_t &nearest, int32_t &farthest) {
        nearest = c < low ? low - c : (c > high ? c - high : 0);
        farthest = std::max(c > low ? c - low : low - c, c > high ? c - high : high - c);
    };
    // The smallest distance any colour keeps to all of the box: to its own farthest corner.
    int32_t bound = std::numeric_limits<int32_t>::max();
    for (size_t i = 0; i < n; ++i) {
        int32_t nr, fr, ng, fg, nb, fb;
        axis(reds[i], lo[0], hi[0], nr, fr);
        axis(greens[i], lo[1], hi[1], ng, fg);
        axis(blues[i], lo[2], hi[2], nb, fb);
        bound = std::min(bound, fr * fr + fg * fg + fb * fb);
    }
    for (size_t i = 0; i < n; ++i) {
        int32_t nr, fr, ng, fg, nb, fb;
        axis(reds[i], lo[0], hi[0], nr, fr);
        axis(greens[i], lo[1], hi[1], ng, fg);
        axis(blues[i], lo[2], hi[2], nb, fb);
        if (nr * nr + ng * ng + nb * nb <= bound)
            out.push_back(uint32_t(i));
    }
}

BlockNearest::BlockNearest(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n)
    : m_reds(reds), m_greens(greens), m_blues(blues), m_n(n), m_runs(size_t(1) << 15)
{
}

BlockNearest::Run BlockNearest::prepare(uint32_t block)
{
    const int32_t lo[3] = {int32_t(block >> 10) << 3, int32_t((block >> 5) & 31u) << 3,
                           int32_t(block & 31u) << 3};
    const int32_t hi[3] = {lo[0] + 7, lo[1] + 7, lo[2] + 7};
    Run run;
    run.first = uint32_t(m_positions.size());
    boxCandidates(m_reds, m_greens, m_blues, m_n, lo, hi, m_positions);
    run.count = uint32_t(m_positions.size()) - run.first;
    m_runs[block] = run;
    return run;
}
