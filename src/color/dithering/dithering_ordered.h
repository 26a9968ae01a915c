#pragma once

#include "dithering/dithering.h"

#include <vector>

// Bayer matrices of order 2, 3, 4 and 8 (methods 9 to 12). The threshold is only ever added,
// never centred on zero, so ordered dithering brightens the picture on average by up to about
// 255 / s with s = max(2, square root of the palette size). That look is intended.
class Dithering_Ordered : public Dithering
{
public:
    Dithering_Ordered(ColorIndex *index, int method, int paletteSize);

    DitherResult dither(const QImage &image, const Palette<uint> &palette, int target,
                        const Progress &progress = {}) override;

    int method() const { return m_method; }
    int matrixWidth() const { return m_width; }
    int matrixHeight() const { return m_height; }
    float threshold(int row, int column) const { return m_thresholds[size_t(row * m_width + column)]; }

    // The matrix of a method, row by row; empty for a number outside 9..12.
    static std::vector<int> matrix(int method);

private:
    int m_method = 9;
    int m_width = 2;
    int m_height = 2;
    std::vector<float> m_thresholds;
};
