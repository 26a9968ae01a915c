#include "document/imagerender.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <thread>
#include <vector>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define CHROMAXIS_HAVE_AVX2_PATHS 1
#else
#define CHROMAXIS_HAVE_AVX2_PATHS 0
#endif

namespace {

inline QRgb tableColour(const RGBAColor<uint> &c)
{
    return 0xFF000000u | (((c.r >> 8) & 0xFF) << 16) | (((c.g >> 8) & 0xFF) << 8) | ((c.b >> 8) & 0xFF);
}

// Opaque black for pictures shown through an empty palette: there is no colour to show.
constexpr QRgb emptyPaletteColour = 0xFF000000u;

void ensurePicture(QImage &out, int width, int height)
{
    if (out.width() != width || out.height() != height || out.format() != QImage::Format_ARGB32)
        out = QImage(width, height, QImage::Format_ARGB32);
}

// Spreads the 8 bits of v so that bit k lands on bit 3k.
inline uint32_t spread3(uint32_t v)
{
    v = (v | (v << 8)) & 0x0300F00Fu;
    v = (v | (v << 4)) & 0x030C30C3u;
    v = (v | (v << 2)) & 0x09249249u;
    return v;
}

} // namespace

QVector<QRgb> paletteColourTable(const Palette<uint> &palette)
{
    QVector<QRgb> table(palette.size());
    for (int i = 0; i < palette.size(); ++i)
        table[i] = tableColour(palette[i]);
    return table;
}

// The row kernels are built twice, for AVX2 (where the table lookups become gathers) and for
// the plain x86-64 baseline; the loader picks one at start-up. Both use the same IEEE operations
// in the same order, so the pictures are identical whichever runs.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define CHROMAXIS_ROW_KERNEL __attribute__((target_clones("avx2", "default")))
#else
#define CHROMAXIS_ROW_KERNEL
#endif

namespace {

#if CHROMAXIS_HAVE_AVX2_PATHS
bool hasAvx2()
{
    static const bool avx2 = __builtin_cpu_supports("avx2");
    return avx2;
}
#endif

void lookupIndexRowScalar(const uint32_t *src, QRgb *dst, int width, const QRgb *table, uint32_t n)
{
    const uint32_t last = n - 1;
    for (int x = 0; x < width; ++x)
        dst[x] = table[std::min(src[x], last)];
}

#if CHROMAXIS_HAVE_AVX2_PATHS
__attribute__((target("avx2"))) void lookupIndexRowAvx2(const uint32_t *src, QRgb *dst, int width,
                                                          const QRgb *table, uint32_t n)
{
    const __m256i last = _mm256_set1_epi32(int(n - 1));
    const auto *t = reinterpret_cast<const int *>(table);
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(src + x));
        const __m256i idx = _mm256_min_epu32(v, last); // indexes past the palette show the last colour
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + x), _mm256_i32gather_epi32(t, idx, 4));
    }
    lookupIndexRowScalar(src + x, dst + x, width - x, table, n);
}
#endif

void lookupIndexRow(const uint32_t *src, QRgb *dst, int width, const QRgb *table, uint32_t n)
{
#if CHROMAXIS_HAVE_AVX2_PATHS
    if (hasAvx2()) {
        lookupIndexRowAvx2(src, dst, width, table, n);
        return;
    }
#endif
    lookupIndexRowScalar(src, dst, width, table, n);
}

// Position of a cell in the palette: p = v * N / 65535 in single precision (as the picture has
// always been computed), limited to 0..N - 1. The quotient is taken as a product in double
// precision and rounded to single, which gives the single-precision quotient itself, only without
// a division: the quotient of a float by 65535 is never a float midpoint and lies at least 2^-41
// of itself away from every one, while the product errs by at most 2^-52 of it.
inline float position(float v, float n, float top)
{
    float p = float(double(v * n) * (1.0 / 65535.0));
    p = p > 0.0f ? p : 0.0f; // negative and NaN cells show the first entry
    return p < top ? p : top;
}

// The integer part and the fraction of each cell's position.
CHROMAXIS_ROW_KERNEL
void continuousPositions(const float *src, uint32_t *index, float *frac, int width, float n, float top)
{
    for (int x = 0; x < width; ++x) {
        const float p = position(src[x], n, top);
        const int32_t i = int32_t(p);
        index[x] = uint32_t(i);
        frac[x] = p - float(i);
    }
}

// A palette as the blending kernels read it. channels: red, green, blue and 0 of every entry and
// once more of the last (which only ever mixes with itself, by weight 0). steps: for every entry
// a << 15 of each channel, 0, then b - a of each channel and 0, where b is the next entry (the
// last one's own for the last). Channels wider than 16 bits take the plain path.
struct BlendTable
{
    std::vector<uint32_t> channels;
    std::vector<int32_t> steps;
    bool wide = false;
    float n = 1.0f, top = 0.0f;

    explicit BlendTable(const Palette<uint> &palette)
    {
        const int count = palette.size();
        n = float(count);
        top = float(count - 1);
        channels.reserve(size_t(count + 1) * 4);
        for (int i = 0; i <= count; ++i) {
            const RGBAColor<uint> &c = palette[i < count ? i : count - 1];
            channels.insert(channels.end(), {c.r, c.g, c.b, 0u});
            wide = wide || ((c.r | c.g | c.b) > 0xFFFFu);
        }
        if (wide)
            return;
        steps.reserve(size_t(count) * 8);
        for (int i = 0; i < count; ++i) {
            const uint32_t *a = &channels[size_t(i) * 4], *b = a + 4;
            steps.insert(steps.end(), {int32_t(a[0] << 15), int32_t(a[1] << 15), int32_t(a[2] << 15), 0,
                                       int32_t(b[0]) - int32_t(a[0]), int32_t(b[1]) - int32_t(a[1]),
                                       int32_t(b[2]) - int32_t(a[2]), 0});
        }
    }
};

// The written formula: the shared linear mix c_a * (1 - w) + c_b * w of entries i and i + 1 in
// double precision, truncated, reduced to the high byte. A zero weight yields c_a exactly, the
// table colour, so no branch is needed. Kept out of the vector kernels' functions, whose target
// would let the compiler fuse its multiply and add into one differently rounded step.
__attribute__((noinline)) void blendRowScalar(const float *src, QRgb *dst, int width, const BlendTable &t)
{
    for (int x = 0; x < width; ++x) {
        const float p = position(src[x], t.n, t.top);
        const int32_t i = int32_t(p);
        const uint32_t *a = t.channels.data() + size_t(i) * 4, *b = a + 4;
        const double w = double(p - float(i));
        const double u = 1.0 - w;
        const uint32_t r = uint32_t(int64_t(a[0] * u + b[0] * w));
        const uint32_t g = uint32_t(int64_t(a[1] * u + b[1] * w));
        const uint32_t bl = uint32_t(int64_t(a[2] * u + b[2] * w));
        dst[x] = 0xFF000000u | (((r >> 8) & 0xFFu) << 16) | (((g >> 8) & 0xFFu) << 8) | ((bl >> 8) & 0xFFu);
    }
}

#if CHROMAXIS_HAVE_AVX2_PATHS
// Eight pixels a step, in integers. From the second entry on the fraction w is a multiple of
// 2^-23 (the position is at least 1), so every step of the formula is exact in doubles and the
// pixel is floor(c_a + (c_b - c_a) w) >> 8 = floor((a 2^23 + d m) / 2^31) with m = w 2^23, a the
// channel and d the difference to the next entry. Split as m = 256 mh + ml, that is
// (a 2^15 + d mh + floor(d ml / 256)) >> 23, where every term fits 32 bits and the sum, being
// floor((a 2^23 + d m) / 256), lies in 0..2^31. Pixels of the first entry, whose fraction may be
// finer, take the formula in doubles as written (entries 0 and 1 for all of them).
// No fused multiply-add is enabled here, so the doubles round as the written formula does.
//
// Pixels k and k + 4 share a vector, red, green, blue and 0 each, so that their mh and ml sit in
// the same places of the two halves, and the packed bytes come out in order.
template <int k>
__attribute__((target("avx2"))) inline __m256i blendPair(const int32_t *steps, const uint32_t *at, __m256i mh,
                                                         __m256i ml)
{
    const __m256i e0 = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(steps + size_t(at[k]) * 8));
    const __m256i e1 = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(steps + size_t(at[k + 4]) * 8));
    const __m256i a = _mm256_permute2x128_si256(e0, e1, 0x20), d = _mm256_permute2x128_si256(e0, e1, 0x31);
    const __m256i h = _mm256_shuffle_epi32(mh, _MM_SHUFFLE(k, k, k, k));
    const __m256i l = _mm256_shuffle_epi32(ml, _MM_SHUFFLE(k, k, k, k));
    const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(a, _mm256_mullo_epi32(d, h)),
                                         _mm256_srai_epi32(_mm256_mullo_epi32(d, l), 8));
    return _mm256_srli_epi32(sum, 23);
}

__attribute__((target("avx2"))) void blendRowAvx2(const float *src, QRgb *dst, int width, const BlendTable &t)
{
    const __m256 n = _mm256_set1_ps(t.n), top = _mm256_set1_ps(t.top), zero = _mm256_setzero_ps();
    const __m256d reciprocal = _mm256_set1_pd(1.0 / 65535.0), one = _mm256_set1_pd(1.0);
    const __m256i low = _mm256_set1_epi32(255), opaque = _mm256_set1_epi32(int(0xFF000000u));
    const __m256i toBgra = _mm256_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1, 2, 1, 0,
                                            -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1);
    __m256d first[3], second[3];
    for (int c = 0; c < 3; ++c) {
        first[c] = _mm256_set1_pd(double(t.channels[size_t(c)]));
        second[c] = _mm256_set1_pd(double(t.channels[size_t(4 + c)]));
    }
    const int32_t *steps = t.steps.data();
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        // The positions, as position() takes them.
        const __m256 v = _mm256_mul_ps(_mm256_loadu_ps(src + x), n);
        const __m128 pLow =
            _mm256_cvtpd_ps(_mm256_mul_pd(_mm256_cvtps_pd(_mm256_castps256_ps128(v)), reciprocal));
        const __m128 pHigh =
            _mm256_cvtpd_ps(_mm256_mul_pd(_mm256_cvtps_pd(_mm256_extractf128_ps(v, 1)), reciprocal));
        __m256 p = _mm256_set_m128(pHigh, pLow);
        p = _mm256_min_ps(_mm256_and_ps(_mm256_cmp_ps(p, zero, _CMP_GT_OQ), p), top);
        const __m256i i = _mm256_cvttps_epi32(p);
        const __m256 w = _mm256_sub_ps(p, _mm256_cvtepi32_ps(i));
        const __m256i m = _mm256_cvttps_epi32(_mm256_mul_ps(w, _mm256_set1_ps(8388608.0f)));
        const __m256i mh = _mm256_srli_epi32(m, 8), ml = _mm256_and_si256(m, low);

        alignas(32) uint32_t at[8];
        _mm256_store_si256(reinterpret_cast<__m256i *>(at), i);
        __m256i channels[4];
        channels[0] = blendPair<0>(steps, at, mh, ml);
        channels[1] = blendPair<1>(steps, at, mh, ml);
        channels[2] = blendPair<2>(steps, at, mh, ml);
        channels[3] = blendPair<3>(steps, at, mh, ml);
        __m256i bytes = _mm256_packus_epi16(_mm256_packus_epi32(channels[0], channels[1]),
                                            _mm256_packus_epi32(channels[2], channels[3]));
        bytes = _mm256_shuffle_epi8(bytes, toBgra);

        const __m256i firstEntry = _mm256_cmpeq_epi32(i, _mm256_setzero_si256());
        if (!_mm256_testz_si256(firstEntry, firstEntry)) {
            const __m256d w0 = _mm256_cvtps_pd(_mm256_castps256_ps128(w)),
                          w1 = _mm256_cvtps_pd(_mm256_extractf128_ps(w, 1));
            const __m256d u0 = _mm256_sub_pd(one, w0), u1 = _mm256_sub_pd(one, w1);
            __m256i mixed = _mm256_setzero_si256();
            for (int c = 0; c < 3; ++c) {
                const __m128i c0 = _mm256_cvttpd_epi32(
                    _mm256_add_pd(_mm256_mul_pd(first[c], u0), _mm256_mul_pd(second[c], w0)));
                const __m128i c1 = _mm256_cvttpd_epi32(
                    _mm256_add_pd(_mm256_mul_pd(first[c], u1), _mm256_mul_pd(second[c], w1)));
                const __m256i byte = _mm256_and_si256(_mm256_srli_epi32(_mm256_set_m128i(c1, c0), 8), low);
                mixed = _mm256_or_si256(mixed, _mm256_slli_epi32(byte, 16 - 8 * c));
            }
            bytes = _mm256_blendv_epi8(bytes, mixed, firstEntry);
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + x), _mm256_or_si256(bytes, opaque));
    }
    blendRowScalar(src + x, dst + x, width - x, t);
}
#endif

void blendRow(const float *src, QRgb *dst, int width, const BlendTable &t)
{
#if CHROMAXIS_HAVE_AVX2_PATHS
    if (hasAvx2() && !t.wide) {
        blendRowAvx2(src, dst, width, t);
        return;
    }
#endif
    blendRowScalar(src, dst, width, t);
}

// Splits the rows of a large picture among the processor's cores: the live preview renders the
// whole image on every palette change, and rows are independent. Small pictures stay on the
// calling thread, where starting workers would cost more than it saves.
template <typename RowRange>
void forRowBands(int width, int height, RowRange rows)
{
    constexpr qint64 pixelsPerWorker = 256 * 1024;
    const qint64 pixels = qint64(width) * height;
    const int hardware = int(std::max(1u, std::thread::hardware_concurrency()));
    const int workers = int(std::min<qint64>(std::min(hardware, 8), std::max<qint64>(1, pixels / pixelsPerWorker)));
    if (workers <= 1) {
        rows(0, height);
        return;
    }
    std::vector<std::thread> threads;
    const int band = (height + workers - 1) / workers;
    for (int w = 1; w < workers; ++w) {
        const int first = w * band, last = std::min(height, first + band);
        if (first < last)
            threads.emplace_back([=]() { rows(first, last); });
    }
    rows(0, std::min(height, band));
    for (std::thread &t : threads)
        t.join();
}

} // namespace

void renderIndexed32(const uint32_t *cells, int width, int height, const Palette<uint> &palette, QImage &out)
{
    ensurePicture(out, width, height);
    const QVector<QRgb> table = paletteColourTable(palette);
    const uint32_t n = uint32_t(table.size());
    uchar *bits = out.bits();
    const qsizetype stride = out.bytesPerLine();
    forRowBands(width, height, [&](int first, int last) {
        for (int y = first; y < last; ++y) {
            auto *row = reinterpret_cast<QRgb *>(bits + y * stride);
            if (n == 0)
                std::fill(row, row + width, emptyPaletteColour);
            else
                lookupIndexRow(cells + size_t(y) * size_t(width), row, width, table.constData(), n);
        }
    });
}

void renderContinuous(const float *cells, int width, int height, const Palette<uint> &palette, bool interpolate,
                      QImage &out)
{
    ensurePicture(out, width, height);
    const QVector<QRgb> table = paletteColourTable(palette);
    const int n = table.size();
    uchar *bits = out.bits();
    const qsizetype stride = out.bytesPerLine();
    if (n == 0) {
        for (int y = 0; y < height; ++y) {
            auto *row = reinterpret_cast<QRgb *>(bits + y * stride);
            std::fill(row, row + width, emptyPaletteColour);
        }
        return;
    }
    if (interpolate) {
        const BlendTable blend(palette);
        forRowBands(width, height, [&](int first, int last) {
            for (int y = first; y < last; ++y)
                blendRow(cells + size_t(y) * size_t(width), reinterpret_cast<QRgb *>(bits + y * stride),
                         width, blend);
        });
        return;
    }
    forRowBands(width, height, [&](int first, int last) {
        std::vector<uint32_t> index(static_cast<size_t>(width));
        std::vector<float> frac(static_cast<size_t>(width));
        for (int y = first; y < last; ++y) {
            continuousPositions(cells + size_t(y) * size_t(width), index.data(), frac.data(), width, float(n),
                                float(n - 1));
            lookupIndexRow(index.data(), reinterpret_cast<QRgb *>(bits + y * stride), width,
                           table.constData(), uint32_t(n));
        }
    });
}

Palette<uint> distinctColours(const QImage &picture)
{
    const QImage argb = picture.format() == QImage::Format_ARGB32 || picture.format() == QImage::Format_RGB32
                            ? picture
                            : picture.convertToFormat(QImage::Format_ARGB32);
    // One bit per 24-bit colour: 2 MiB, cheaper than any tree for photos with many colours.
    std::vector<uint64_t> seen(size_t(1) << 18, 0);
    std::vector<uint32_t> keys;
    for (int y = argb.height() - 1; y >= 0; --y) {
        const auto *row = reinterpret_cast<const QRgb *>(argb.constScanLine(y));
        for (int x = argb.width() - 1; x >= 0; --x) {
            const uint32_t c = row[x] & 0xFFFFFFu;
            uint64_t &word = seen[c >> 6];
            const uint64_t bit = uint64_t(1) << (c & 63);
            if (word & bit)
                continue;
            word |= bit;
            const uint32_t r = c >> 16, g = (c >> 8) & 0xFF, b = c & 0xFF;
            keys.push_back((spread3(r) << 2) | (spread3(g) << 1) | spread3(b));
        }
    }
    std::sort(keys.begin(), keys.end());
    Palette<uint> out;
    out.reserve(int(keys.size()));
    for (uint32_t k : keys) {
        uint32_t r = 0, g = 0, b = 0;
        for (int bit = 7; bit >= 0; --bit) {
            r |= ((k >> (3 * bit + 2)) & 1u) << bit;
            g |= ((k >> (3 * bit + 1)) & 1u) << bit;
            b |= ((k >> (3 * bit)) & 1u) << bit;
        }
        out.append({r << 8, g << 8, b << 8, 65535});
    }
    return out;
}
