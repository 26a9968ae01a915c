#pragma once

#include <QImage>
#include <QVector>

#include <algorithm>
#include <vector>

// Walks the rows of a picture from the last to the first, handing each to row(pixels, y) as
// 32-bit 0xAARRGGBB values; the alpha byte is left for the reader to mask. An 8-bit indexed
// picture gives its colour-table entries (absent ones read 0); other formats than 32-bit RGB are
// converted a band of rows at a time, so no whole copy of the picture is made. row returns false
// to stop the walk, and so does this.
template <typename Row> bool forEachRowUpwards(const QImage &image, Row row)
{
    const int w = image.width(), h = image.height();
    if (image.format() == QImage::Format_ARGB32 || image.format() == QImage::Format_RGB32) {
        for (int y = h - 1; y >= 0; --y)
            if (!row(reinterpret_cast<const QRgb *>(image.constScanLine(y)), y))
                return false;
        return true;
    }
    if (image.format() == QImage::Format_Indexed8) {
        const QVector<QRgb> table = image.colorTable();
        QRgb lut[256];
        for (int i = 0; i < 256; ++i)
            lut[i] = i < table.size() ? table[i] : 0u;
        std::vector<QRgb> line(static_cast<size_t>(w));
        for (int y = h - 1; y >= 0; --y) {
            const uchar *src = image.constScanLine(y);
            for (int x = 0; x < w; ++x)
                line[size_t(x)] = lut[src[x]];
            if (!row(line.data(), y))
                return false;
        }
        return true;
    }
    constexpr int band = 64;
    for (int last = h - 1; last >= 0; last -= band) {
        const int first = std::max(0, last - band + 1);
        const QImage part = image.copy(0, first, w, last - first + 1).convertToFormat(QImage::Format_ARGB32);
        for (int y = last; y >= first; --y)
            if (!row(reinterpret_cast<const QRgb *>(part.constScanLine(y - first)), y))
                return false;
    }
    return true;
}
