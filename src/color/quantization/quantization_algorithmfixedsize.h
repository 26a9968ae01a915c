#pragma once

#include "quantization/quantization.h"

#include <memory>

class QuantizationAlgorithm;

// Runs one quantisation algorithm, chosen by number, over every pixel of an image:
//   0 median cut over the exact colour histogram   4 octree (only sparse branches are folded)
//   1 popularity of 6-bit buckets                  5 NeuQuant, learning while fed
//   2 Wu's cut with a refinement pass              6 uniform 8 x 8 x 4 grid, always 256 colours
//   3 distinct colours spread in HSB
class Quantization_AlgorithmFixedSize : public Quantization
{
public:
    enum Method : uint
    {
        MedianCut = 0,
        Popularity = 1,
        Wu = 2,
        DistinctHSB = 3,
        Octree = 4,
        NeuQuant = 5,
        Uniform = 6,
        LastMethod = Uniform
    };

    Quantization_AlgorithmFixedSize(uint colorCount, uint method) : m_colorCount(colorCount), m_method(method)
    {
    }

    Palette<uint> quantize(const QImage &image, const Progress &progress = {}) override;

    uint colorCount() const { return m_colorCount; }
    uint method() const { return m_method; }

    // Feeds every pixel from the last row to the first and, within a row, from the last column
    // to the first. The order is part of the result: it decides the network's learning sequence
    // and every first-found tie. False when progress cancelled.
    static bool feed(const QImage &image, QuantizationAlgorithm &algorithm, const Progress &progress = {});

private:
    uint m_colorCount = 256;
    uint m_method = Wu;
};
