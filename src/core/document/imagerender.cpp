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

// Position of each cell in the palette: p = v * N / 65535 in single precision (as the picture has
// always been computed), limited to 0..N - 1; the integer part and the fraction are kept.
CHROMAXIS_ROW_KERNEL
void continuousPositions(const float *src, uint32_t *index, float *frac, int width, float n, float top)
{
    for (int x = 0; x < width; ++x) {
        float p = src[x] * n / 65535.0f;
        p = p > 0.0f ? p : 0.0f; // negative and NaN cells show the first entry
        p = p < top ? p : top;
        const int32_t i = int32_t(p);
        index[x] = uint32_t(i);
        frac[x] = p - float(i);
    }
}

// The shared linear mix c_a * (1 - t) + c_b * t in double precision, truncated, reduced to the
// high byte. A zero fraction yields c_a exactly, which is the table colour, so no branch is
// needed; the last entry mixes with itself. pairs holds, for each entry i, the channels of i and
// of i + 1 and their differences (red, green, blue, 0 each), so a pixel needs two adjacent loads
// and no gathers.
void mixRowScalar(const uint32_t *index, const float *frac, QRgb *dst, int width, const double *pairs)
{
    for (int x = 0; x < width; ++x) {
        const double *e = pairs + size_t(index[x]) * 12;
        const double w = double(frac[x]);
        const double u = 1.0 - w;
        const uint32_t r = uint32_t(int64_t(e[0] * u + e[4] * w));
        const uint32_t g = uint32_t(int64_t(e[1] * u + e[5] * w));
        const uint32_t b = uint32_t(int64_t(e[2] * u + e[6] * w));
        dst[x] = 0xFF000000u | (((r >> 8) & 0xFFu) << 16) | (((g >> 8) & 0xFFu) << 8) | ((b >> 8) & 0xFFu);
    }
}

#if CHROMAXIS_HAVE_AVX2_PATHS
// The same operations four lanes at a time (IEEE multiply and add, no fused multiply-add), so the
// result is bit-identical to the scalar loop; four pixels are packed and stored together. Needs
// channels of at most 16 bits, where the saturating packs cannot clip.
__attribute__((target("avx2"))) void mixRowAvx2(const uint32_t *index, const float *frac, QRgb *dst, int width,
                                                  const double *pairs)
{
    const __m256d one = _mm256_set1_pd(1.0);
    const __m128i toBgra = _mm_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1);
    const __m128i opaque = _mm_set1_epi32(int(0xFF000000u));
    int x = 0;
    for (; x + 4 <= width; x += 4) {
        const __m256d weights = _mm256_cvtps_pd(_mm_loadu_ps(frac + x));
        const __m256d lanes[4] = {_mm256_permute4x64_pd(weights, 0x00), _mm256_permute4x64_pd(weights, 0x55),
                                  _mm256_permute4x64_pd(weights, 0xAA), _mm256_permute4x64_pd(weights, 0xFF)};
        __m128i c[4];
        for (int k = 0; k < 4; ++k) {
            const uint32_t i = index[x + k];
            const double *e = pairs + size_t(i) * 12;
            const __m256d w = lanes[k];
            __m256d m;
            if (i != 0) {
                // From the second entry on the fraction has at most 23 bits, so c_a + (c_b - c_a) t
                // is exact in doubles, and so is the mix: both give the same number, this one cheaper.
                m = _mm256_add_pd(_mm256_loadu_pd(e), _mm256_mul_pd(_mm256_loadu_pd(e + 8), w));
            } else {
                const __m256d u = _mm256_sub_pd(one, w);
                m = _mm256_add_pd(_mm256_mul_pd(_mm256_loadu_pd(e), u), _mm256_mul_pd(_mm256_loadu_pd(e + 4), w));
            }
            c[k] = _mm_srli_epi32(_mm256_cvttpd_epi32(m), 8); // r, g, b, 0: their high bytes
        }
        const __m128i bytes = _mm_packus_epi16(_mm_packus_epi32(c[0], c[1]), _mm_packus_epi32(c[2], c[3]));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + x), _mm_or_si128(_mm_shuffle_epi8(bytes, toBgra), opaque));
    }
    mixRowScalar(index + x, frac + x, dst + x, width - x, pairs);
}
#endif

void mixRow(const uint32_t *index, const float *frac, QRgb *dst, int width, const double *pairs, bool wideChannels)
{
#if CHROMAXIS_HAVE_AVX2_PATHS
    if (hasAvx2() && !wideChannels) {
        mixRowAvx2(index, frac, dst, width, pairs);
        return;
    }
#endif
    (void)wideChannels;
    mixRowScalar(index, frac, dst, width, pairs);
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
    std::vector<double> pairs;
    bool wideChannels = false;
    if (interpolate) {
        pairs.assign(size_t(n) * 12, 0.0);
        for (int i = 0; i < n; ++i) {
            const RGBAColor<uint> &a = palette[i];
            const RGBAColor<uint> &b = palette[i + 1 < n ? i + 1 : i];
            double *e = pairs.data() + size_t(i) * 12;
            e[0] = a.r, e[1] = a.g, e[2] = a.b, e[4] = b.r, e[5] = b.g, e[6] = b.b;
            e[8] = double(b.r) - a.r, e[9] = double(b.g) - a.g, e[10] = double(b.b) - a.b;
            wideChannels = wideChannels || ((a.r | a.g | a.b) > 0xFFFFu);
        }
    }
    forRowBands(width, height, [&](int first, int last) {
        std::vector<uint32_t> index(static_cast<size_t>(width));
        std::vector<float> frac(static_cast<size_t>(width));
        for (int y = first; y < last; ++y) {
            auto *row = reinterpret_cast<QRgb *>(bits + y * stride);
            continuousPositions(cells + size_t(y) * size_t(width), index.data(), frac.data(), width, float(n),
                                float(n - 1));
            if (interpolate)
                mixRow(index.data(), frac.data(), row, width, pairs.data(), wideChannels);
            else
                lookupIndexRow(index.data(), row, width, table.constData(), uint32_t(n));
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
