#include "spaces/luminance.h"

#include "spaces/colorspacemath.h"

#include <algorithm>

double relativeLuminance(const RGBAColor<uint> &colour)
{
    const auto linear = [](uint channel) {
        return ColorSpace::Math::srgbToLinear(std::min(channel, 65535u) / 65535.0);
    };
    return 0.2126729 * linear(colour.r) + 0.7151522 * linear(colour.g) + 0.0721750 * linear(colour.b);
}
