#include "quantization/qa_popularity.h"

#include <algorithm>

QA_Popularity::QA_Popularity() : m_buckets(size_t(1) << 18) {}

int QA_Popularity::addColor(uint rgb)
{
    Bucket &b = m_buckets[bucketKey(rgb)];
    b.sum[0] += (rgb >> 16) & 0xFF;
    b.sum[1] += (rgb >> 8) & 0xFF;
    b.sum[2] += rgb & 0xFF;
    ++b.count;
    return 0;
}

void QA_Popularity::getPalette(Palette<uint> &out)
{
    std::vector<const Bucket *> used;
    for (const Bucket &b : m_buckets)
        if (b.count > 0)
            used.push_back(&b);
    std::stable_sort(used.begin(), used.end(),
                     [](const Bucket *a, const Bucket *b) { return a->count > b->count; });
    const size_t n = std::min<size_t>(m_count, used.size());
    for (size_t i = 0; i < n; ++i) {
        const Bucket &b = *used[i];
        const auto mean = [&b](int c) { return std::min<uint32_t>(b.sum[c] / b.count, 255); };
        out.append(paletteColor(mean(0), mean(1), mean(2)));
    }
}
