#pragma once

#include "palette/palette.h"

// The standard grayscale palette: entry i is (i << 8, i << 8, i << 8, 65535), so the brightest
// entry is 65280 (the widened 8-bit 255). Start-up, "New project" and the grayscale conversions use it.
Palette<uint> grayscalePalette();
