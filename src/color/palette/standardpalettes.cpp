#include "palette/standardpalettes.h"

Palette<uint> grayscalePalette()
{
    Palette<uint> p;
    p.reserve(256);
    for (uint i = 0; i < 256; ++i)
        p.append({i << 8, i << 8, i << 8, 65535});
    return p;
}
