#pragma once

#include "palette/palette.h"

#include <QImage>
#include <QVector>

#include <cstdint>
#include <vector>

// The colour table T of a palette: each entry's channels reduced to their high byte, alpha forced
// opaque. Every rendered picture takes its colours from here, so translucent entries show solid.
QVector<QRgb> paletteColourTable(const Palette<uint> &palette);

// Both renderers leave out null, and draw nothing, when a picture of that size cannot be built.

// Mode 3: cell v shows T[v], or T[N - 1] when v is past the palette.
void renderIndexed32(const uint32_t *cells, int width, int height, const Palette<uint> &palette, QImage &out);

// Mode 4: cell v maps to p = v * N / 65535 in single precision, limited to N - 1. The last entry
// therefore covers the band from (N - 1) * 65535 / N up to 65535 while every other entry covers
// 65535 / N: intentional, and kept. With interpolation the pixel blends entries i and i + 1 by
// p - i with the shared linear mix. Negative and NaN cells show entry 0.
void renderContinuous(const float *cells, int width, int height, const Palette<uint> &palette, bool interpolate,
                      QImage &out);

// The distinct 24-bit colours of an RGB picture, each once, ordered by their interleaved red,
// green and blue bits from the most significant down, as (byte << 8) channels with alpha 65535.
Palette<uint> distinctColours(const QImage &picture);
