#pragma once

#include "palette/palette.h"

#include <set>

// The fixed palette generators and reorderings. Each returns a new palette; the input is
// never changed.
namespace PaletteGenerators {

// 766 entries stepping through red and then green between the greys; alpha 0xFF00 throughout,
// unlike the plain grayscale, and kept so.
Palette<uint> extendedGrayscale();
// n hues at full saturation and value through the HSVA conversion, which leaves the alpha word
// at 65535 * 65535.
Palette<uint> hueRotation(int n);
// The shared linear mix of two colours, every component truncated, alpha included.
RGBAColor<uint> linearMix(const RGBAColor<uint> &a, const RGBAColor<uint> &b, double t);
// Entries strictly between consecutive selected indexes become the mix of those two.
Palette<uint> interpolateSelected(const Palette<uint> &palette, const std::set<int> &selection);
Palette<uint> invertOrder(const Palette<uint> &palette);
// New entry j is old entry (j + offset) reduced into the palette.
Palette<uint> shiftOrder(const Palette<uint> &palette, int offset);

} // namespace PaletteGenerators
