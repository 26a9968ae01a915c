#pragma once

#include "generators/generatorgrid.h"
#include "generators/generatorsettings.h"

#include <QImage>

#include <functional>
#include <vector>

// The escape-time and inversion fractals evaluated on the processor: the same formulas as the
// shaders, in float where they use float (in double with precision Double), vectorised across
// pixels and spread over every core. It is the reference the read-back tests compare with and
// the renderer where no OpenGL context can be made.
namespace FractalEvaluator {

// Progress in percent; returning false cancels (the evaluation then returns false).
using Progress = std::function<bool(int)>;

// Raw values (before the read-back encoding) of "mandelbrot" and the Julia-page generators
// ("julia", "ifs", "plasma") for every pixel of grid, row 0 at the top: 0 for a point that never
// escapes, else mod(i / norm, 1) (with smooth: the fractional count n + 1 - log2(log|z|)).
bool values(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out,
            const Progress &progress = {});

// The Apollonian gasket's own colours, ARGB32, row 0 at the top (transparent black where the
// 50 steps run out).
QImage apollonian(const GeneratorSettings &settings, const GeneratorGrid &grid);

// One pixel at texture coordinate (u, v), the plain scalar formula: what the vectorised path must
// equal, and the baseline of the speed measurements.
float mandelbrotAt(const GeneratorSettings &settings, float u, float v);
float juliaAt(const GeneratorSettings &settings, float u, float v);

} // namespace FractalEvaluator
