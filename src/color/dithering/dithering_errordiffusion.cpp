#include "dithering/dithering_errordiffusion.h"

#include <algorithm>

namespace {

struct Kernel
{
    int width;
    int height;
    std::vector<int32_t> weights; // row by row; the first row is zero up to the current pixel
    int divisor;
    bool shift;
};

Kernel kernelOf(int method)
{
    switch (method) {
    case 1: // Atkinson
        return {4, 3, {0, 0, 1, 1, 1, 1, 1, 0, 0, 1, 0, 0}, 8, true};
    case 2: // Burkes
        return {5, 2, {0, 0, 0, 8, 4, 2, 4, 8, 4, 2}, 32, true};
    case 4: // Jarvis, Judice and Ninke
        return {5, 3, {0, 0, 0, 7, 5, 3, 5, 7, 5, 3, 1, 3, 5, 3, 1}, 48, false};
    case 5: // two-row Sierra
        return {5, 2, {0, 0, 0, 4, 3, 1, 2, 3, 2, 1}, 16, true};
    case 6: // Sierra
        return {5, 3, {0, 0, 0, 5, 3, 2, 4, 5, 4, 2, 0, 2, 3, 2, 0}, 32, true};
    case 7: // Sierra Lite
        return {3, 2, {0, 0, 2, 1, 1, 0}, 4, true};
    case 8: // Stucki
        return {5, 3, {0, 0, 0, 8, 4, 2, 4, 8, 4, 2, 1, 2, 4, 2, 1}, 42, false};
    default: // 3 Floyd-Steinberg
        return {3, 2, {0, 0, 7, 3, 5, 1}, 16, true};
    }
}

} // namespace

Dithering_ErrorDiffusion::Dithering_ErrorDiffusion(ColorIndex *index, int method)
    : Dithering(index), m_method(method >= 1 && method <= 8 ? method : 3)
{
    Kernel k = kernelOf(m_method);
    m_width = k.width;
    m_height = k.height;
    m_weights = std::move(k.weights);
    m_divisor = k.divisor;
    m_divisorIsShift = k.shift ? 1 : 0;
    while (k.shift && (1 << m_shift) < k.divisor)
        ++m_shift;
    int firstWeight = 0;
    while (firstWeight < m_width && m_weights[size_t(firstWeight)] == 0)
        ++firstWeight;
    m_currentColumn = firstWeight - 1;
}

DitherResult Dithering_ErrorDiffusion::dither(const QImage &image, const Palette<uint> &palette, int target,
                                              const Progress &progress)
{
    const QImage rgb = rgbPicture(image);
    const int w = rgb.width(), h = rgb.height();
    Output out(palette, target, w, h);

    // The error of a channel lies in -255..510 (the value plus a buffered error of at most 255,
    // minus a palette channel), so every share a weight can pass on is looked up, not divided.
    constexpr int lowestError = -255, errorSpan = 510 - lowestError + 1;
    int heaviest = 0;
    for (int wgt : m_weights)
        heaviest = std::max(heaviest, wgt);
    std::vector<int32_t> shares(size_t(heaviest + 1) * errorSpan);
    for (int wgt = 0; wgt <= heaviest; ++wgt)
        for (int e = 0; e < errorSpan; ++e)
            shares[size_t(wgt) * errorSpan + size_t(e)] = share(wgt, e + lowestError);

    // The non-zero weights row by row, each with its column offset from the current pixel.
    std::vector<Tap> taps;
    int left = 0, right = 0;
    for (int dy = 0; dy < m_height; ++dy)
        for (int dx = 0; dx < m_width; ++dx)
            if (const int wgt = m_weights[size_t(dy * m_width + dx)]) {
                const int ox = dx - m_currentColumn;
                taps.push_back({ox, dy, shares.data() + size_t(wgt) * errorSpan + size_t(-lowestError), 0});
                left = std::max(left, -ox);
                right = std::max(right, ox);
            }

    // Error only ever reaches the kernel's height in rows, so the buffer holds that many rows and
    // is used round: row y lives in slot y mod height, three signed channels a pixel. The slot of
    // the row just finished is cleared to become the next row the kernel reaches.
    const size_t rowEntries = size_t(w) * 3;
    std::vector<int32_t> error(rowEntries * size_t(m_height), 0);
    const auto slot = [&](int row) { return std::ptrdiff_t(row % m_height) * std::ptrdiff_t(rowEntries); };
    for (int y = 0; y < h; ++y) {
        if (y > 0)
            std::fill_n(error.begin() + slot(y - 1), rowEntries, 0);
        // Taps of rows below the picture are dropped for this row.
        size_t rowTaps = 0;
        while (rowTaps < taps.size() && y + taps[rowTaps].dy < h)
            ++rowTaps;
        for (size_t t = 0; t < rowTaps; ++t)
            taps[t].offset = slot(y + taps[t].dy) - slot(y) + std::ptrdiff_t(taps[t].dx) * 3;
        diffuseRow(reinterpret_cast<const QRgb *>(rgb.constScanLine(y)), y, w, taps.data(), rowTaps, left,
                   right, error.data() + slot(y), out);
        if (!report(progress, y + 1, h))
            return {};
    }
    return out.take();
}

void Dithering_ErrorDiffusion::diffuseRow(const QRgb *row, int y, int w, const Tap *taps, size_t tapCount,
                                          int left, int right, int32_t *error, Output &out)
{
    const auto spread = [&](int x, int32_t *here, const int e[3], bool checkColumns) {
        for (size_t t = 0; t < tapCount; ++t) {
            const Tap &tap = taps[t];
            if (checkColumns && (x + tap.dx < 0 || x + tap.dx >= w))
                continue;
            int32_t *dst = here + tap.offset;
            for (int k = 0; k < 3; ++k)
                dst[k] = std::min(std::max(dst[k] + tap.shares[e[k]], 0), 255);
        }
    };
    const size_t firstPixel = size_t(y) * size_t(w);
    for (int x = 0; x < w; ++x) {
        int32_t *here = error + size_t(x) * 3;
        const QRgb p = row[x];
        const int v[3] = {qRed(p) + here[0], qGreen(p) + here[1], qBlue(p) + here[2]};
        const uint32_t c = uint32_t(std::min(v[0], 255)) << 16 | uint32_t(std::min(v[1], 255)) << 8 |
                           uint32_t(std::min(v[2], 255)); // the buffered error is never negative
        const uint32_t index = m_index->lookup(c);
        out.set(firstPixel + size_t(x), index);
        const uint32_t pc = m_index->colorOf(index);
        const int e[3] = {v[0] - int(pc >> 16), v[1] - int((pc >> 8) & 0xFF), v[2] - int(pc & 0xFF)};
        spread(x, here, e, x < left || x >= w - right);
    }
}
