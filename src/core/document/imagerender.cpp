#include "document/imagerender.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
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

// Whether out now holds a picture of that size to draw into. One that cannot be built (no memory,
// or a size no picture can have) leaves out null, and nothing is drawn.
bool ensurePicture(QImage &out, int width, int height)
{
    if (out.width() != width || out.height() != height || out.format() != QImage::Format_ARGB32)
        out = QImage(width, height, QImage::Format_ARGB32);
    return !out.isNull();
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

// The position kernel is built three times, for AVX-512, for AVX2 and for the plain x86-64
// baseline; the loader picks one at start-up. All use the same IEEE operations in the same order,
// so the pictures are identical whichever runs.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define CHROMAXIS_ROW_KERNEL __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define CHROMAXIS_ROW_KERNEL
#endif

namespace {

#if CHROMAXIS_HAVE_AVX2_PATHS
// The widest vector kernels the processor runs, lowered by CHROMAXIS_SIMD ("avx2" or "none"), so
// that the tests can check every kernel on a machine that has the widest.
enum class Simd
{
    None,
    Avx2,
    Avx512
};

Simd simd()
{
    static const Simd level = [] {
        const char *cap = std::getenv("CHROMAXIS_SIMD");
        const std::string limit = cap ? cap : "";
        if (limit == "none" || !__builtin_cpu_supports("avx2"))
            return Simd::None;
        if (limit == "avx2" || !__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512bw"))
            return Simd::Avx2;
        return Simd::Avx512;
    }();
    return level;
}

bool hasAvx2()
{
    return simd() != Simd::None;
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

// Position of each cell in the palette: p = v * N / 65535 in single precision (as the picture has
// always been computed), limited to 0..N - 1; the integer part times scale and the fraction are
// kept.
CHROMAXIS_ROW_KERNEL
void continuousPositions(const float *src, uint32_t *index, float *frac, int width, float n, float top,
                         uint32_t scale = 1)
{
    for (int x = 0; x < width; ++x) {
        float p = src[x] * n / 65535.0f;
        p = p > 0.0f ? p : 0.0f; // negative and NaN cells show the first entry
        p = p < top ? p : top;
        const int32_t i = int32_t(p);
        index[x] = uint32_t(i) * scale;
        frac[x] = p - float(i);
    }
}

// A palette as the blending kernels read it: red, green, blue and 0 of every entry and once more
// of the last (which only ever mixes with itself, by weight 0), in 32 bits in channels and in 16
// in steps, where an entry and the next are one 16-byte load and a palette of 4096 entries fits
// the first-level cache. Channels wider than 16 bits take the plain path.
struct BlendTable
{
    std::vector<uint32_t> channels;
    std::vector<uint16_t> steps;
    bool wide = false;

    explicit BlendTable(const Palette<uint> &palette)
    {
        const int count = palette.size();
        if (count == 0)
            return;
        channels.reserve(size_t(count + 1) * 4);
        for (int i = 0; i <= count; ++i) {
            const RGBAColor<uint> &c = palette[i < count ? i : count - 1];
            channels.insert(channels.end(), {c.r, c.g, c.b, 0u});
            wide = wide || ((c.r | c.g | c.b) > 0xFFFFu);
        }
        if (!wide)
            for (uint32_t c : channels)
                steps.push_back(uint16_t(c));
    }
};

// The written formula: the shared linear mix c_a * (1 - w) + c_b * w of entries i and i + 1 in
// double precision, truncated, reduced to the high byte; step holds 4 i. A zero weight yields
// c_a exactly, the table colour, so no branch is needed. Built for the baseline only, where no
// fused multiply-add can round the mix differently.
__attribute__((noinline)) void blendRowScalar(const uint32_t *step, const float *frac, QRgb *dst, int width,
                                              const BlendTable &t)
{
    for (int x = 0; x < width; ++x) {
        const uint32_t *a = t.channels.data() + step[x], *b = a + 4;
        const double w = double(frac[x]);
        const double u = 1.0 - w;
        const uint32_t r = uint32_t(int64_t(a[0] * u + b[0] * w));
        const uint32_t g = uint32_t(int64_t(a[1] * u + b[1] * w));
        const uint32_t bl = uint32_t(int64_t(a[2] * u + b[2] * w));
        dst[x] = 0xFF000000u | (((r >> 8) & 0xFFu) << 16) | (((g >> 8) & 0xFFu) << 8) | ((bl >> 8) & 0xFFu);
    }
}

#if CHROMAXIS_HAVE_AVX2_PATHS
// The vector kernels blend in integers. From the second entry on the weight w is a multiple of
// 2^-23 (the position is at least 1), so every step of the written formula is exact in doubles
// and the pixel is floor(c_a + (c_b - c_a) w) >> 8 = floor((a 2^23 + d m) / 2^31), with m = w 2^23,
// a the channel and d the difference to the next entry. Split as m = 256 mh + ml, that is
// (a 2^15 + d mh + floor(d ml / 256)) >> 23, where every term fits 32 bits and the sum, being
// floor((a 2^23 + d m) / 256), lies in 0..2^31. Pixels of the first entry with a weight, which may
// be finer, are left to the written formula.
//
// Pixel k of a group shares a vector with pixels k + 4 (and k + 8, k + 12 in the wider kernel):
// their mh and ml then sit in the same place of every 128-bit lane, and the packed bytes come out
// in order. One load brings a pixel's entry a and the next, b, in 16 bits a channel.

// Entries i and i + 1 in 32 bits a channel, for the pixel whose entry starts at steps[step].
__attribute__((target("avx2"))) inline __m256i entryPair(const uint16_t *steps, uint32_t step)
{
    return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(steps + step)));
}

template <int k>
__attribute__((target("avx2"))) inline __m256i blendPair(const uint16_t *steps, const uint32_t *step,
                                                         __m256i mh, __m256i ml)
{
    const __m256i e0 = entryPair(steps, step[k]), e1 = entryPair(steps, step[k + 4]);
    const __m256i a = _mm256_permute2x128_si256(e0, e1, 0x20);
    const __m256i d = _mm256_sub_epi32(_mm256_permute2x128_si256(e0, e1, 0x31), a);
    const __m256i h = _mm256_shuffle_epi32(mh, _MM_SHUFFLE(k, k, k, k));
    const __m256i l = _mm256_shuffle_epi32(ml, _MM_SHUFFLE(k, k, k, k));
    const __m256i sum = _mm256_add_epi32(_mm256_add_epi32(_mm256_slli_epi32(a, 15), _mm256_mullo_epi32(d, h)),
                                         _mm256_srai_epi32(_mm256_mullo_epi32(d, l), 8));
    return _mm256_srli_epi32(sum, 23);
}

__attribute__((target("avx2"))) void blendRowAvx2(const uint32_t *step, const float *frac, QRgb *dst,
                                                  int width, const BlendTable &t)
{
    const __m256i low = _mm256_set1_epi32(255), opaque = _mm256_set1_epi32(int(0xFF000000u));
    const __m256i toBgra = _mm256_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1, 2, 1, 0,
                                            -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1);
    const uint16_t *steps = t.steps.data();
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i m =
            _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_loadu_ps(frac + x), _mm256_set1_ps(8388608.0f)));
        const __m256i mh = _mm256_srli_epi32(m, 8), ml = _mm256_and_si256(m, low);
        const uint32_t *s = step + x;
        const __m256i bytes = _mm256_packus_epi16(
            _mm256_packus_epi32(blendPair<0>(steps, s, mh, ml), blendPair<1>(steps, s, mh, ml)),
            _mm256_packus_epi32(blendPair<2>(steps, s, mh, ml), blendPair<3>(steps, s, mh, ml)));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(dst + x),
                            _mm256_or_si256(_mm256_shuffle_epi8(bytes, toBgra), opaque));
        const __m256i first = _mm256_andnot_si256(
            _mm256_castps_si256(_mm256_cmp_ps(_mm256_loadu_ps(frac + x), _mm256_setzero_ps(), _CMP_EQ_OQ)),
            _mm256_cmpeq_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(s)),
                               _mm256_setzero_si256()));
        for (uint32_t lanes = uint32_t(_mm256_movemask_ps(_mm256_castsi256_ps(first))); lanes;
             lanes &= lanes - 1) {
            const int k = __builtin_ctz(lanes);
            blendRowScalar(s + k, frac + x + k, dst + x + k, 1, t);
        }
    }
    blendRowScalar(step + x, frac + x, dst + x, width - x, t);
}

// GCC 12 takes the undefined vectors inside its AVX-512 intrinsics for uninitialised variables.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
template <int k>
__attribute__((target("avx512f,avx512bw"))) inline __m512i
blendQuad(const uint16_t *steps, const uint32_t *step, __m512i mh, __m512i ml)
{
    const __m512i e01 = _mm512_inserti64x4(_mm512_castsi256_si512(entryPair(steps, step[k])),
                                           entryPair(steps, step[k + 4]), 1);
    const __m512i e23 = _mm512_inserti64x4(_mm512_castsi256_si512(entryPair(steps, step[k + 8])),
                                           entryPair(steps, step[k + 12]), 1);
    const __m512i a = _mm512_shuffle_i64x2(e01, e23, _MM_SHUFFLE(2, 0, 2, 0));
    const __m512i d = _mm512_sub_epi32(_mm512_shuffle_i64x2(e01, e23, _MM_SHUFFLE(3, 1, 3, 1)), a);
    const __m512i h = _mm512_shuffle_epi32(mh, _MM_PERM_ENUM(_MM_SHUFFLE(k, k, k, k)));
    const __m512i l = _mm512_shuffle_epi32(ml, _MM_PERM_ENUM(_MM_SHUFFLE(k, k, k, k)));
    const __m512i sum = _mm512_add_epi32(_mm512_add_epi32(_mm512_slli_epi32(a, 15), _mm512_mullo_epi32(d, h)),
                                         _mm512_srai_epi32(_mm512_mullo_epi32(d, l), 8));
    return _mm512_srli_epi32(sum, 23);
}

__attribute__((target("avx512f,avx512bw"))) void blendRowAvx512(const uint32_t *step, const float *frac,
                                                                QRgb *dst, int width, const BlendTable &t)
{
    const __m512i low = _mm512_set1_epi32(255), opaque = _mm512_set1_epi32(int(0xFF000000u));
    const __m512i toBgra =
        _mm512_broadcast_i32x4(_mm_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1));
    const uint16_t *steps = t.steps.data();
    int x = 0;
    for (; x + 16 <= width; x += 16) {
        const __m512i m =
            _mm512_cvttps_epi32(_mm512_mul_ps(_mm512_loadu_ps(frac + x), _mm512_set1_ps(8388608.0f)));
        const __m512i mh = _mm512_srli_epi32(m, 8), ml = _mm512_and_si512(m, low);
        const uint32_t *s = step + x;
        const __m512i bytes = _mm512_packus_epi16(
            _mm512_packus_epi32(blendQuad<0>(steps, s, mh, ml), blendQuad<1>(steps, s, mh, ml)),
            _mm512_packus_epi32(blendQuad<2>(steps, s, mh, ml), blendQuad<3>(steps, s, mh, ml)));
        _mm512_storeu_si512(dst + x, _mm512_or_si512(_mm512_shuffle_epi8(bytes, toBgra), opaque));
        const __mmask16 first =
            _mm512_cmpeq_epi32_mask(_mm512_loadu_si512(s), _mm512_setzero_si512()) &
            _mm512_cmp_ps_mask(_mm512_loadu_ps(frac + x), _mm512_setzero_ps(), _CMP_NEQ_UQ);
        for (uint32_t lanes = first; lanes; lanes &= lanes - 1) {
            const int k = __builtin_ctz(lanes);
            blendRowScalar(s + k, frac + x + k, dst + x + k, 1, t);
        }
    }
    blendRowAvx2(step + x, frac + x, dst + x, width - x, t);
}
#pragma GCC diagnostic pop
#endif

// step holds 4 i of each pixel's entry i: where the entry starts in the tables.
void blendRow(const uint32_t *step, const float *frac, QRgb *dst, int width, const BlendTable &t)
{
#if CHROMAXIS_HAVE_AVX2_PATHS
    if (!t.wide && simd() == Simd::Avx512) {
        blendRowAvx512(step, frac, dst, width, t);
        return;
    }
    if (!t.wide && simd() == Simd::Avx2) {
        blendRowAvx2(step, frac, dst, width, t);
        return;
    }
#endif
    blendRowScalar(step, frac, dst, width, t);
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
    if (!ensurePicture(out, width, height))
        return;
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
    if (!ensurePicture(out, width, height))
        return;
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
    const BlendTable blend(interpolate ? palette : Palette<uint>());
    forRowBands(width, height, [&](int first, int last) {
        // A few hundred pixels at a time, so that the positions stay in the first-level cache
        // beside the palette's tables.
        constexpr int piece = 256;
        uint32_t index[piece];
        float frac[piece];
        for (int y = first; y < last; ++y) {
            const float *src = cells + size_t(y) * size_t(width);
            auto *row = reinterpret_cast<QRgb *>(bits + y * stride);
            for (int x = 0; x < width; x += piece) {
                const int count = std::min(piece, width - x);
                continuousPositions(src + x, index, frac, count, float(n), float(n - 1), interpolate ? 4 : 1);
                if (interpolate)
                    blendRow(index, frac, row + x, count, blend);
                else
                    lookupIndexRow(index, row + x, count, table.constData(), uint32_t(n));
            }
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
