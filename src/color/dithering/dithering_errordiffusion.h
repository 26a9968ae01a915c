#pragma once

#include "dithering/dithering.h"

#include <cstddef>
#include <vector>

// Error diffusion with one of eight kernels, numbered in the alphabetical order of their names:
//   1 Atkinson  2 Burkes  3 Floyd-Steinberg  4 Jarvis, Judice and Ninke
//   5 two-row Sierra  6 Sierra (three rows)  7 Sierra Lite  8 Stucki
// Rows are walked top down and left to right in every row. The error buffer is clamped to
// 0..255 after every share, so negative error never builds up: a pixel darker than its palette
// colour passes nothing darker on. That clamping is what gives this error diffusion its look.
class Dithering_ErrorDiffusion : public Dithering
{
public:
    Dithering_ErrorDiffusion(ColorIndex *index, int method);

    DitherResult dither(const QImage &image, const Palette<uint> &palette, int target,
                        const Progress &progress = {}) override;

    int method() const { return m_method; }
    int kernelWidth() const { return m_width; }
    int kernelHeight() const { return m_height; }
    int weight(int row, int column) const { return m_weights[size_t(row * m_width + column)]; }
    int divisor() const { return m_divisor; }
    bool divisorIsShift() const { return m_divisorIsShift != 0; }
    int currentColumn() const { return m_currentColumn; }

    // The share of error e that weight w passes on: an arithmetic shift for the kernels whose
    // divisor is a power of two, a division truncating toward zero for the others.
    int share(int w, int e) const { return m_divisorIsShift ? (w * e) >> m_shift : (w * e) / m_divisor; }

private:
    struct Tap
    {
        int dx, dy;
        const int32_t *shares; // the share of each error, indexed by the error itself
        std::ptrdiff_t offset; // in error buffer entries, from the current pixel in this row
    };
    // error is the current row's slot of the error buffer.
    void diffuseRow(const QRgb *row, int y, int w, const Tap *taps, size_t tapCount, int left, int right,
                    int32_t *error, Output &out);

    int m_method = 3;
    std::vector<int32_t> m_weights;
    int m_width = 0;
    int m_height = 0;
    int m_divisor = 1;
    unsigned char m_divisorIsShift = 0;
    int m_shift = 0;
    int m_currentColumn = 0;
};
