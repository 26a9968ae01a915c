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
