#pragma once

#include <cstddef>
#include <cstdint>

// The position of the colour nearest to (r, g, b) among n colours given channel by channel, by
// squared RGB distance; among equally near ones the first wins. n must be at least 1. Squared
// integer distances order the colours exactly as their Euclidean distances do.
size_t nearestColor(const int32_t *reds, const int32_t *greens, const int32_t *blues, size_t n, int32_t r,
                    int32_t g, int32_t b);
