#pragma once

#include "document/documentimage.h"
#include "generators/generatorraster.h"
#include "palette/palette.h"

#include <cstdint>

// The shaders' read-back encoding and what a read-back becomes in the document.
namespace GeneratorOutput {

struct Bytes
{
    uint8_t r = 0, g = 0, b = 0;
};

// The encoding of a value in gray mode, in the shader's float arithmetic, as the framebuffer
// stores it (each channel limited to 0..255): w = value x 65536, red = floor(w / 65536),
// green = floor((w - red x 65536) / 256), blue = floor(w - red x 65536 - green x 256). Green
// carries the high byte, blue the low byte; red is set only for 1.0. A negative value wraps.
Bytes encode(float value);
// (R x 65536 + G x 256 + B) / 65536.
double decode(Bytes bytes);
// decode(encode(value)): the value a read-back yields, which the processor's evaluation stores so
// that both renderers give the same picture.
float readBack(float value);

// The palette index of a decoded value: value x size truncated, limited to 0..size - 1.
uint32_t index(double value, int paletteSize);

// The document image of a read-back. Indexed: 8-bit indexes when the palette has at most 256
// entries, 32-bit ones otherwise. Continuous: value x 65535 a cell. RGB: the palette's colour
// at the index; a raster of its own colours (the gasket) keeps them.
DocumentImage toImage(const GeneratorRaster &raster, const Palette<uint> &palette, int target);

} // namespace GeneratorOutput
