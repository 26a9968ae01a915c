#include "dithering/dithering_ordered.h"

#include <algorithm>
#include <cmath>

std::vector<int> Dithering_Ordered::matrix(int method)
{
    switch (method) {
    case 9:
        return {0, 2, 3, 1};
    case 10:
        return {0, 7, 3, 6, 5, 2, 4, 1, 8};
    case 11:
        return {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
    case 12:
        return {0,  48, 12, 60, 3,  51, 15, 63, 32, 16, 44, 28, 35, 19, 47, 31, 8,  56, 4,  52, 11, 59,
                7,  55, 40, 24, 36, 20, 43, 27, 39, 23, 2,  50, 14, 62, 1,  49, 13, 61, 34, 18, 46, 30,
                33, 17, 45, 29, 10, 58, 6,  54, 9,  57, 5,  53, 42, 26, 38, 22, 41, 25, 37, 21};
    default:
        return {};
    }
}

Dithering_Ordered::Dithering_Ordered(ColorIndex *index, int method, int paletteSize)
    : Dithering(index), m_method(method)
{
    std::vector<int> m = matrix(method);
    if (m.empty()) {
        m = matrix(9);
        m_method = 9;
    }
    const int n = int(std::lround(std::sqrt(double(m.size()))));
    m_width = m_height = n;
    const double s = std::max(2.0, std::sqrt(double(std::max(paletteSize, 0))));
    m_thresholds.reserve(m.size());
    for (int v : m)
        m_thresholds.push_back(float(double(v) / double(n * n) * 255.0 / s));
}

DitherResult Dithering_Ordered::dither(const QImage &image, const Palette<uint> &palette, int target,
                                       const Progress &progress)
{
    const QImage rgb = rgbPicture(image);
    const int w = rgb.width(), h = rgb.height();
    Output out(palette, target, w, h);
    const auto offset = [](int c, float t) { return uint32_t(std::clamp(float(c) + t, 0.0f, 255.0f)); };
    for (int y = 0; y < h; ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        const float *cells = m_thresholds.data() + size_t((y % m_height) * m_width);
        const size_t base = size_t(y) * size_t(w);
        for (int x = 0; x < w; ++x) {
            const float t = cells[x % m_width];
            const QRgb p = row[x];
            const uint32_t c = offset(qRed(p), t) << 16 | offset(qGreen(p), t) << 8 | offset(qBlue(p), t);
            out.set(base + size_t(x), m_index->lookup(c));
        }
        if (!report(progress, y + 1, h))
            return {};
    }
    return out.take();
}
