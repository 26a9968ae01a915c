#include "generators/generatoroutput.h"

#include <QImage>

#include <algorithm>
#include <cmath>

namespace GeneratorOutput {

namespace {

// What the framebuffer keeps of a channel the shader wrote as byte / 255: the fixed-point
// conversion rounds and limits it to a byte.
uint8_t stored(float byte)
{
    const float f = std::round(std::min(std::max(byte, 0.0f), 255.0f));
    return uint8_t(f);
}

} // namespace

Bytes encode(float value)
{
    // The shader's float arithmetic; floor of a negative value runs below zero, which the
    // channel limits then catch (and make the wrap a negative value shows in read-back).
    const float w = value * 65536.0f;
    const float red = std::floor(w / 65536.0f);
    const float green = std::floor((w - red * 65536.0f) / 256.0f);
    const float blue = std::floor(w - red * 65536.0f - green * 256.0f);
    return {stored(red), stored(green), stored(blue)};
}

double decode(Bytes bytes)
{
    return (double(bytes.r) * 65536.0 + double(bytes.g) * 256.0 + double(bytes.b)) / 65536.0;
}

float readBack(float value)
{
    if (std::isnan(value))
        return 0.0f;
    return float(decode(encode(value)));
}

uint32_t index(double value, int paletteSize)
{
    if (paletteSize <= 0 || !(value > 0.0))
        return 0;
    const double scaled = value * double(paletteSize);
    if (scaled >= double(paletteSize - 1))
        return uint32_t(paletteSize - 1);
    return uint32_t(scaled);
}

DocumentImage toImage(const GeneratorRaster &raster, const Palette<uint> &palette, int target)
{
    const int w = raster.width;
    const int h = raster.height;
    const size_t n = size_t(w) * size_t(h);
    const int size = palette.size();
    switch (target) {
    case 0: // indexed
        if (size <= 256) {
            std::vector<uint8_t> cells(n);
            for (size_t i = 0; i < n; ++i)
                cells[i] = uint8_t(index(raster.values[i], size));
            return DocumentImage::fromIndexes8(w, h, std::move(cells));
        } else {
            std::vector<uint32_t> cells(n);
            for (size_t i = 0; i < n; ++i)
                cells[i] = index(raster.values[i], size);
            return DocumentImage::fromIndexes32(w, h, std::move(cells));
        }
    case 2: { // RGB
        if (!raster.colours.isNull())
            return DocumentImage::fromPicture(raster.colours.convertToFormat(QImage::Format_ARGB32));
        QImage picture(w, h, QImage::Format_ARGB32);
        if (picture.isNull())
            return {};
        std::vector<QRgb> table(size_t(std::max(size, 1)), qRgba(0, 0, 0, 255));
        for (int i = 0; i < size; ++i) {
            const auto &c = palette[i];
            table[size_t(i)] = qRgba(int(c.r >> 8), int(c.g >> 8), int(c.b >> 8), int(c.a >> 8));
        }
        for (int y = 0; y < h; ++y) {
            auto *line = reinterpret_cast<QRgb *>(picture.scanLine(y));
            const float *row = raster.values.data() + size_t(y) * size_t(w);
            for (int x = 0; x < w; ++x)
                line[x] = table[index(row[x], size)];
        }
        return DocumentImage::fromPicture(picture);
    }
    default: { // continuous
        std::vector<float> cells(n);
        for (size_t i = 0; i < n; ++i)
            cells[i] = raster.values[i] * 65535.0f;
        return DocumentImage::fromContinuous(w, h, std::move(cells));
    }
    }
}

} // namespace GeneratorOutput
