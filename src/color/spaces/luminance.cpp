#include "spaces/luminance.h"

#include <algorithm>
#include <cmath>

double srgbToLinear(double encoded)
{
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

double relativeLuminance(const RGBAColor<uint> &colour)
{
    const auto linear = [](uint channel) { return srgbToLinear(std::min(channel, 65535u) / 65535.0); };
    return 0.2126729 * linear(colour.r) + 0.7151522 * linear(colour.g) + 0.0721750 * linear(colour.b);
}
