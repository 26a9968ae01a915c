#pragma once

#include "quantization/colorblocktable.h"
#include "palette/palette.h"
#include "quantization/qa_octree.h"

#include <cstdint>
#include <vector>

// The nearest-colour index of a palette: an octree of the palette's 8-bit colours whose leaves
// carry the palette index, and a cache of every answer given.
//
// The search is approximate on purpose. A colour whose path through the tree exists to the
// bottom gets that leaf. Where the path breaks, the node lacking the child gives up, its parent
// gives up once more, and the node above searches its whole subtree for the leaf nearest in RGB
// (the first one in child order among equals); when the climb passes the root, the whole tree is
// searched. So a leaf of a nearby branch is preferred over the globally nearest colour.
// When two entries share one 8-bit colour, the later index wins, in the tree and in the cache.
class ColorIndex
{
public:
    explicit ColorIndex(const Palette<uint> &palette);

    // The palette index for 0xRRGGBB (the alpha byte must be clear). 0 for an empty palette.
    uint32_t lookup(uint32_t rgb)
    {
        uint32_t &cached = m_cache[rgb]; // the index plus one; 0 while unknown
        if (cached == 0)
            cached = search(rgb) + 1;
        return cached - 1;
    }
    // The same without touching the cache: what a lookup finds when the cache is cold.
    uint32_t search(uint32_t rgb) const;

    // The palette entry's colour reduced to 8 bits a channel, 0xRRGGBB.
    uint32_t colorOf(uint32_t index) const { return index < m_colors.size() ? m_colors[index] : 0u; }
    int paletteSize() const { return int(m_colors.size()); }
    // The cache's size in blocks of 512 colours (2 KiB each).
    size_t cacheBlocks() const { return m_cache.allocatedBlocks(); }
    // Whether the cache already holds an answer for rgb.
    bool isCached(uint32_t rgb) const { return m_cache.value(rgb) != 0; }

private:
    uint32_t nearestIn(uint32_t node, uint32_t rgb) const;

    QA_Octree<uint> m_tree;
    // The leaves in depth-first child order, so that each subtree's leaves are one run of them.
    std::vector<int32_t> m_leafR, m_leafG, m_leafB;
    std::vector<uint32_t> m_leafIndex;
    std::vector<uint32_t> m_firstLeaf, m_endLeaf; // per node
    std::vector<uint32_t> m_colors;               // index -> colour
    ColorBlockTable m_cache;                      // colour -> index + 1
};
