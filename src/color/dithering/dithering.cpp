#include "dithering/dithering.h"

#include <limits>

Dithering::Output::Output(const Palette<uint> &palette, int target, int width, int height)
{
    const size_t pixels = size_t(width) * size_t(height);
    m_result.width = width;
    m_result.height = height;
    if (target == Continuous) {
        m_kind = 4;
        // The divisor is the size, not size - 1; an empty palette yields 0 everywhere.
        m_paletteSize = palette.isEmpty() ? std::numeric_limits<double>::infinity() : double(palette.size());
        m_result.values.assign(pixels, 0.0f);
    } else if (palette.size() <= 256) {
        m_kind = 2;
        m_remap.assign(256, 0);
        for (int i = 0; i < palette.size(); ++i) {
            const auto key = [&palette](int k) {
                const RGBAColor<uint> &c = palette[k];
                return ((c.r >> 8) & 0xFF) << 16 | ((c.g >> 8) & 0xFF) << 8 | ((c.b >> 8) & 0xFF);
            };
            int first = 0;
            while (key(first) != key(i))
                ++first;
            m_remap[size_t(i)] = uint8_t(first);
        }
        // Room for rows padded to 32 bits, so that an indexed picture can take the bytes over
        // in place instead of copying them.
        m_result.indexes8.reserve(size_t((width + 3) & ~3) * size_t(height));
        m_result.indexes8.assign(pixels, 0);
    } else {
        m_kind = 3;
        m_result.indexes32.assign(pixels, 0);
    }
    m_result.kind = m_kind;
}

QImage Dithering::rgbPicture(const QImage &image)
{
    if (image.format() == QImage::Format_ARGB32 || image.format() == QImage::Format_RGB32)
        return image;
    return image.convertToFormat(QImage::Format_ARGB32);
}

bool Dithering::report(const Progress &progress, int row, int rows)
{
    if (!progress || rows <= 0 || row % 64 != 0)
        return true;
    return progress(100 * row / rows);
}
