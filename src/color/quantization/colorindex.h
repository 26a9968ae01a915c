#pragma once

#include "palette/palette.h"
#include "quantization/nearestsearch.h"
#include "quantization/qa_octree.h"

#include <cstdint>
#include <memory>
#include <vector>

// The nearest-colour index of a palette: an octree of the palette's 8-bit colours whose leaves
// carry the palette index.
//
// The search is approximate on purpose. A colour whose path through the tree exists to the
// bottom gets that leaf. Where the path breaks, the node lacking the child gives up, its parent
// gives up once more, and the node above searches its whole subtree for the leaf nearest in RGB
// (the first one in child order among equals); when the climb passes the root, the whole tree is
// searched. So a leaf of a nearby branch is preferred over the globally nearest colour.
// When two entries share one 8-bit colour, the later index wins.
//
// lookup() gives what search() gives, through the 8 x 8 x 8 blocks of the colours instead of a
// cache of every colour met (which grows to tens of megabytes on a dithered photograph). The
// first five levels of a path depend on the block alone, so a block, when first met, learns where
// its paths break: above the fifth level the searched subtree is the block's own, and only the
// leaves of it that can be nearest to some colour of the block are kept (often a single one);
// below, the few levels left are walked for each colour. Where either would leave many leaves to
// compare (large palettes), the block remembers each of its colours' answers instead.
class ColorIndex
{
public:
    explicit ColorIndex(const Palette<uint> &palette);

    // The palette index for 0xRRGGBB (the alpha byte must be clear), as search() finds it. 0 for
    // an empty palette.
    uint32_t lookup(uint32_t rgb)
    {
        const uint32_t block = ((rgb >> 9) & 0x7C00u) | ((rgb >> 6) & 0x3E0u) | ((rgb >> 3) & 0x1Fu);
        const Block b = m_blocks[block].kind != Unprepared ? m_blocks[block] : prepare(block);
        if (b.kind == Answer)
            return b.first;
        if (b.kind == Candidates)
            return m_leafIndex[nearestAmong(m_leafR.data(), m_leafG.data(), m_leafB.data(),
                                            m_positions.data() + b.first, b.count, int32_t(rgb >> 16),
                                            int32_t((rgb >> 8) & 0xFF), int32_t(rgb & 0xFF))];
        if (b.kind == Deep)
            return searchBelow(m_deepPaths.data() + size_t(b.first) * 3, rgb);
        uint32_t &known = m_answers[b.first][((rgb >> 10) & 0x1C0u) | ((rgb >> 5) & 0x38u) | (rgb & 7u)];
        if (known == 0) // the index plus one; 0 while unknown
            known = search(rgb) + 1;
        return known - 1;
    }
    // The search itself, walking the tree from its root.
    uint32_t search(uint32_t rgb) const;

    // The palette entry's colour reduced to 8 bits a channel, 0xRRGGBB.
    uint32_t colorOf(uint32_t index) const { return index < m_colors.size() ? m_colors[index] : 0u; }
    int paletteSize() const { return int(m_colors.size()); }
    // Whether a lookup has already met the block of rgb.
    bool isPrepared(uint32_t rgb) const
    {
        return m_blocks[((rgb >> 9) & 0x7C00u) | ((rgb >> 6) & 0x3E0u) | ((rgb >> 3) & 0x1Fu)].kind !=
               Unprepared;
    }

private:
    enum Kind : uint8_t
    {
        Unprepared,
        Answer,     // every colour of the block has the index `first`
        Candidates, // the first nearest of m_positions[first .. first + count)
        Deep,       // the walk goes on below the fifth level from the nodes at m_deepPaths[3 * first]
        Remembered  // m_answers[first] holds each colour's answer once found
    };
    struct Block
    {
        uint32_t first = 0;
        uint16_t count = 0;
        Kind kind = Unprepared;
    };

    Block prepare(uint32_t block);
    uint32_t nearestIn(uint32_t node, uint32_t rgb) const;
    // path holds the nodes of levels 3, 4 and 5 on rgb's path.
    uint32_t searchBelow(const uint32_t *path, uint32_t rgb) const;

    QA_Octree<uint> m_tree;
    // The leaves in depth-first child order, so that each subtree's leaves are one run of them.
    std::vector<int32_t> m_leafR, m_leafG, m_leafB;
    std::vector<uint32_t> m_leafIndex;
    std::vector<uint32_t> m_firstLeaf, m_endLeaf; // per node
    std::vector<uint32_t> m_colors;               // index -> colour
    std::vector<Block> m_blocks;                  // per block of 8 x 8 x 8 colours
    std::vector<uint32_t> m_positions;            // leaf positions, a run per Candidates block
    std::vector<uint32_t> m_deepPaths;
    std::vector<std::unique_ptr<uint32_t[]>> m_answers;
};
