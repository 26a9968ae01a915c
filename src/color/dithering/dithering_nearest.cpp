#include "dithering/dithering_nearest.h"

DitherResult Dithering_Nearest::dither(const QImage &image, const Palette<uint> &palette, int target,
                                       const Progress &progress)
{
    const QImage rgb = rgbPicture(image);
    const int w = rgb.width(), h = rgb.height();
    Output out(palette, target, w, h);
    // Bottom row first and right to left, as the quantisers feed: the colour index learns its
    // blocks in that order.
    for (int y = h - 1; y >= 0; --y) {
        const auto *row = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        const size_t base = size_t(y) * size_t(w);
        uint32_t lastColor = 0xFFFFFFFFu, lastIndex = 0;
        for (int x = w - 1; x >= 0; --x) {
            const uint32_t c = row[x] & 0xFFFFFFu;
            if (c != lastColor) { // runs of one colour are common; the answer cannot differ
                lastColor = c;
                lastIndex = m_index->lookup(c);
            }
            out.set(base + size_t(x), lastIndex);
        }
        if (!report(progress, h - y, h))
            return {};
    }
    return out.take();
}
