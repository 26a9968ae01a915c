#pragma once

#include "generators/generatorgrid.h"
#include "generators/generatorsettings.h"

#include <functional>
#include <vector>

// The pattern generators ("noise", "gradient", "moiree") evaluated on the processor, in float as
// the shaders compute, over every core: the reference of the read-back tests and the renderer
// where no OpenGL context can be made.
namespace PatternEvaluator {

// Progress in percent, reported on the calling thread; returning false cancels.
using Progress = std::function<bool(int)>;

// Raw values (before the read-back encoding) for every pixel of grid, row 0 at the top.
void values(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out);
// The same with progress; false when progress cancelled (out is then incomplete).
bool values(const GeneratorSettings &settings, const GeneratorGrid &grid, std::vector<float> &out,
            const Progress &progress);

// One pixel at texture coordinate (u, v).
float valueAt(const GeneratorSettings &settings, float u, float v);

// The published textureless noise functions, as the shaders define them (for tests).
float cellular2D(float x, float y);          // F1
float cellular3D(float x, float y, float z); // F1
float classicNoise2D(float x, float y);
float classicNoise3D(float x, float y, float z);
float simplexNoise2D(float x, float y);
float simplexNoise3D(float x, float y, float z);

} // namespace PatternEvaluator
