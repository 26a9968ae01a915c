#pragma once

#include "spaces/rgbacolor.h"

// Light as the eye weighs it, from the 16-bit channels read as sRGB. Unlike the numbered colour
// spaces, which keep their historical scaling, these follow the published sRGB definitions, so
// that a palette ordered by luminance runs from dark to light as a viewer sees it.

// Relative luminance Y in 0..1: the linear-light red, green and blue (each channel / 65535,
// channels above 65535 counting as 65535) weighted 0.2126729, 0.7151522 and 0.0721750, the Y row
// of the sRGB-to-XYZ matrix under D65. Alpha plays no part.
double relativeLuminance(const RGBAColor<uint> &colour);
